// Travels: names that find no axis, numbers that are none, limits that hold nothing.

#include <gtest/gtest.h>

#include "tests/toolkit/FindingTable.h"

using korvo::Format;
using korvo::Severity;
using korvo::test::FindingRow;
using korvo::test::findingsOf;
using korvo::test::mended;

namespace {

constexpr auto kV2 = Format::version2;

class CheckLimits : public testing::TestWithParam<FindingRow> {};

TEST_P(CheckLimits, Finds) {
  EXPECT_EQ(korvo::test::saidOf(GetParam(), true), GetParam().expected);
}

std::vector<std::string> unknown(const std::string& place, const std::string& found) {
  return {place + " expected limits of an axis of the file, found " + found};
}

std::vector<std::string> before(const std::string& found) {
  return {found + " | move the limits below the line of the axis"};
}

std::vector<std::string> prefix(const std::string& place, const std::string& found,
                                const std::string& suggestion) {
  return {place + " expected the name of an axis, found " + found + " | " + suggestion};
}

INSTANTIATE_TEST_SUITE_P(
    Names, CheckLimits,
    testing::Values(
        FindingRow{"Known", "limits-unknown-axis", "axis=X,1,x\nlimits=x,0,1\n", {}},
        FindingRow{"KnownWithPrefix", "limits-unknown-axis", "axis=X,1,x\nlimits=AXE_X,0,1\n", {}},
        FindingRow{"Unknown", "limits-unknown-axis", "axis=X,1,x\nlimits= Y ,0,1\n",
                   unknown("2:9+1", "'Y'")},
        FindingRow{"DidYouMean", "limits-unknown-axis",
                   "frame\naxis=BEAM,1,x\ncourseminimum=BEAN,0\n",
                   unknown("3:15+4", "'BEAN' | did you mean 'BEAM'?")},
        FindingRow{"OnlyAxesAreMeant", "limits-unknown-axis",
                   "frame\naxis=X,1,x\ncoursemaximum=BATTI,0\n", unknown("3:15+5", "'BATTI'")},
        FindingRow{"Empty", "limits-unknown-axis", "axis=X,1,x\nlimits=,0,1\n",
                   unknown("2:8+0", "''")},
        FindingRow{"NoOperandPart", "limits-unknown-axis", "axis=X,1,x\nlimits\nlimits=\n", {}},
        FindingRow{
            "SemicolonsAreNotAName", "limits-unknown-axis", "axis=X,1,x\nlimits=X;0;1\n", {}},
        // That the line is ignored which should declare it is told already.
        FindingRow{"AxisLineIgnored",
                   "limits-unknown-axis",
                   "axis=X,1,x\naxsi=AXE_Y,2,y\nlimits=Y,0,1\n",
                   {}},
        FindingRow{"Before", "limits-before-axis", "frame\nlimits=X,0,1\naxis=X,1,x\n",
                   before("2:8+1 expected limits below the line of their axis, found 'X', which "
                          "line 3 declares")},
        FindingRow{
            "BeforeWithPrefix", "limits-before-axis", "limits=AXE_X,0,1\naxis=x,x\n",
            before("1:8+5 expected limits below the line of their axis, found 'AXE_X', which "
                   "line 2 declares"),
            kV2},
        FindingRow{"BeforeIsNotUnknown", "limits-unknown-axis", "limits=X,0,1\naxis=X,1,x\n", {}},
        FindingRow{"Below", "limits-before-axis", "axis=X,1,x\nlimits=X,0,1\naxis=Y,2,y\n", {}},
        FindingRow{"SmallPrefix", "limits-axe-prefix", "axis=X,x\nlimits=axe_x,0,1\n",
                   prefix("2:8+5", "'axe_x', which does not find the one of line 1", "write 'X'"),
                   kV2},
        FindingRow{
            "PrefixInTheAxis", "limits-axe-prefix", "axis=AXE_X,1,x\nlimits=AXE_X,0,1\n",
            prefix("2:8+5", "'AXE_X', which does not find the one of line 1", "name the axis 'X'")},
        FindingRow{
            "PrefixIsNotUnknown", "limits-unknown-axis", "axis=X,x\nlimits=axe_x,0,1\n", {}, kV2},
        // The name as it stands, whatever its case: only "AXE_" in capitals is removed.
        FindingRow{
            "SmallPrefixOfTheAxis", "limits-axe-prefix", "axis=axe_x,1,x\nlimits=axe_x,0,1\n", {}},
        FindingRow{"OfATool",
                   "limits-not-an-axis",
                   "axis=X,1,x\ntool=z,0,0,0\ncourseminimum=outil,0\n",
                   {"3:15+5 expected limits of an axis, found 'outil', which is none | name a "
                    "linear or rotary axis"}},
        FindingRow{"OfAnAxis", "limits-not-an-axis", "axis=X,1,x\ncourseminimum=X,0\n", {}}),
    korvo::test::labelOf);

std::vector<std::string> number(const std::string& found) {
  return {found + " | write a number; for one end alone use courseminimum or coursemaximum"};
}

std::vector<std::string> missing(const std::string& found) {
  return {found + " | write all numbers; for one end alone use courseminimum or coursemaximum"};
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, CheckLimits,
    testing::Values(
        FindingRow{"Good", "limits-number", "axis=X,1,x\nlimits=X,-1e2,+.5\n", {}},
        FindingRow{"Minimum", "limits-number", "axis=X,1,x\nlimits=X,low,1\n",
                   number("2:10+3 expected a number as a limit, found 'low': neither end is set")},
        FindingRow{"Maximum", "limits-number", "axis=X,1,x\nlimits=X,0, high\n",
                   number("2:13+4 expected a number as a limit, found 'high': only the minimum is "
                          "set")},
        FindingRow{"BothAreSaidOnce", "limits-number", "axis=X,1,x\nlimits=X,low,high\n",
                   number("2:10+3 expected a number as a limit, found 'low': neither end is set")},
        // The maximum is looked for where the minimum should be.
        FindingRow{"EmptyMinimum", "limits-number", "axis=X,1,x\nlimits=X,,250\n",
                   number("2:10+0 expected a number as a limit, found '': neither end is set")},
        FindingRow{"CourseMinimum", "limits-number", "axis=X,1,x\ncourseminimum=X,none\n",
                   number("2:17+4 expected a number as a limit, found 'none': no minimum is set")},
        FindingRow{"CourseMaximum", "limits-number", "axis=X,1,x\ncoursemaximum=X,none\n",
                   number("2:17+4 expected a number as a limit, found 'none': no maximum is set")},
        FindingRow{"Semicolons", "limits-missing", "axis=X,1,x\nlimits=X,0;1\n", {}},
        FindingRow{"UnknownAxisSaysIt", "limits-number", "axis=X,1,x\nlimits=Y,low,1\n", {}},
        FindingRow{"OneNumber", "limits-missing", "axis=X,1,x\nlimits=X,250\n",
                   missing("2:13+0 expected a number for each limit, found none here: only the "
                           "minimum is set")},
        FindingRow{"EmptyMaximum", "limits-missing", "axis=X,1,x\nlimits=X,250,\n",
                   missing("2:14+0 expected a number for each limit, found none here: only the "
                           "minimum is set")},
        FindingRow{"NoNumber", "limits-missing", "axis=X,1,x\nlimits=X\n",
                   missing("2:9+0 expected a number for each limit, found none here: neither end "
                           "is set")},
        FindingRow{
            "NoMinimum", "limits-missing", "axis=X,1,x\ncourseminimum=X\n",
            missing("2:16+0 expected a number for each limit, found none here: no minimum is "
                    "set")},
        FindingRow{"LostMaximumIsNotMissing", "limits-missing", "axis=X,1,x\nlimits=X,,250\n", {}},
        FindingRow{"Nan",
                   "limits-nan",
                   "axis=X,1,x\nlimits=X,0,nano\n",
                   {"2:12+4 expected a limit that values can be compared with, found 'nano' for "
                    "'X' | write a number, or remove the limit"}},
        FindingRow{"Infinite", "limits-nan", "axis=X,1,x\nlimits=X,-inf,inf\n", {}}),
    korvo::test::labelOf);

std::vector<std::string> swapped(const std::string& place, const std::string& found) {
  return {place + " expected the minimum of 'X' below its maximum, found " + found +
          " | write the minimum first, then the maximum"};
}

std::vector<std::string> again(const std::string& place, const std::string& name,
                               const std::string& line) {
  return {place + " expected each limit once, found other ones for " + name +
          ", which replace those of line " + line + " | keep one of the two lines"};
}

INSTANTIATE_TEST_SUITE_P(
    Travels, CheckLimits,
    testing::Values(
        FindingRow{"Swapped", "limits-swapped", "axis=X,1,x\nlimits=X,400,-10\n",
                   swapped("2:10+7", "400 and -10")},
        FindingRow{"SwappedInTwoLines", "limits-swapped",
                   "axis=X,1,x\ncourseminimum=X,400\ncoursemaximum=X,0\n",
                   swapped("3:17+1", "400 and 0")},
        FindingRow{"MinimumReplacedInTime",
                   "limits-swapped",
                   "axis=X,1,x\nlimits=X,400,10\ncourseminimum=X,0\n",
                   {}},
        FindingRow{"InOrder", "limits-swapped", "axis=X,1,x\nlimits=X,-10,400\n", {}},
        FindingRow{"OneEnd", "limits-swapped", "axis=X,1,x\ncourseminimum=X,400\n", {}},
        FindingRow{"Equal",
                   "limits-equal",
                   "axis=X,1,x\nlimits=X,5,5.0\n",
                   {"2:10+5 expected a travel between two different limits, found 5 for both of "
                    "'X'"}},
        FindingRow{"NotEqual", "limits-equal", "axis=X,1,x\nlimits=X,5,5.001\n", {}},
        FindingRow{"AnEndWithoutNumberIsNotEqual", "limits-equal", "axis=X,1,x\nlimits=X,0\n", {}},
        FindingRow{"Again", "limits-again", "axis=X,1,x\nlimits=X,0,1\nlimits=x,0,2\n",
                   again("3:8+1", "'x'", "2")},
        FindingRow{"OneEndAgain", "limits-again",
                   "axis=X,1,x\nlimits=X,0,1\n\ncourseminimum=X,-1\n", again("4:15+1", "'X'", "2")},
        FindingRow{"TheLastOneBefore", "limits-again",
                   "axis=X,1,x\nlimits=X,0,1\nlimits=X,0,1\nlimits=X,0,2\n",
                   again("4:8+1", "'X'", "3")},
        FindingRow{
            "SameNumbersAgain", "limits-again", "axis=X,1,x\nlimits=X,0,1\nlimits=X,0.0,1\n", {}},
        FindingRow{"EachEndOnce",
                   "limits-again",
                   "axis=X,1,x\ncourseminimum=X,0\ncoursemaximum=X,9\n",
                   {}},
        FindingRow{"BeyondTurn",
                   "limits-beyond-turn",
                   "rotation=C,6,z,0,0,0,0,0\nlimits=C,-90,360.5\n",
                   {"2:14+5 expected limits within one turn either way, found 360.5 for 'C'"}},
        FindingRow{"BothBeyondAreSaidOnce",
                   "limits-beyond-turn",
                   "rotation=C,6,z,0,0,0,0,0\nlimits=C,-400,400\n",
                   {"2:10+4 expected limits within one turn either way, found -400 for 'C'"}},
        FindingRow{
            "OneTurn", "limits-beyond-turn", "rotation=C,6,z,0,0,0,0,0\nlimits=C,-360,360\n", {}},
        FindingRow{
            "LinearAxesHaveNoTurns", "limits-beyond-turn", "axis=X,1,x\nlimits=X,-400,400\n", {}},
        FindingRow{"ZeroBelow",
                   "limits-without-zero",
                   "axis=X,1,x\nlimits=X, 10,400\n",
                   {"2:11+2 expected limits with position zero between them, found the minimum 10 "
                    "for 'X'"}},
        FindingRow{"ZeroAbove",
                   "limits-without-zero",
                   "axis=X,1,x\ncoursemaximum=X,-10\n",
                   {"2:17+3 expected limits with position zero between them, found the maximum -10 "
                    "for 'X'"}},
        FindingRow{"ZeroAtTheEnd", "limits-without-zero", "axis=X,1,x\nlimits=X,0,400\n", {}},
        FindingRow{
            "DecimalCommasSayIt", "limits-without-zero", "axis=X,1,x\nlimits=X,10,5,40,5\n", {}},
        FindingRow{"SwappedSaysIt", "limits-without-zero", "axis=X,1,x\nlimits=X,400,10\n", {}}),
    korvo::test::labelOf);

TEST(CheckLimitFixes, SwappedNumbersChangePlacesAndKeepTheirBlanks) {
  EXPECT_EQ(
      mended("axis=X,1,x\nlimits=X, 400 , -10  # travel\n", "limits-swapped", Format::version1),
      "axis=X,1,x\nlimits=X, -10 , 400  # travel\n");
}

// 350 to 10 may be the small arc or all but that.
TEST(CheckLimitFixes, ARotaryAxisIsNotSwapped) {
  const auto found =
      findingsOf("rotation=C,6,z,0,0,0,0,0\nlimits=C,350,10\n", "limits-swapped", Format::version1);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_FALSE(found[0].fix);
}

TEST(CheckLimitFixes, TwoLinesAreNotSwapped) {
  const auto found = findingsOf("axis=X,1,x\ncourseminimum=X,9\ncoursemaximum=X,0\n",
                                "limits-swapped", Format::version1);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_FALSE(found[0].fix);
}

TEST(CheckLimitFixes, APrefixThatFindsNothingIsLeftOut) {
  EXPECT_EQ(mended("axis=X,x\nlimits= axe_x,0,1\n", "limits-axe-prefix", kV2),
            "axis=X,x\nlimits= X,0,1\n");
}

TEST(CheckLimits, WhatIsLostIsAnErrorAndWhatIsWorthKnowingANote) {
  const auto severityOf = [](const char* text, const char* code) {
    return findingsOf(text, code, Format::version1).at(0).severity;
  };
  EXPECT_EQ(severityOf("axis=X,1,x\nlimits=Y,0,1\n", "limits-unknown-axis"), Severity::error);
  EXPECT_EQ(severityOf("limits=X,0,1\naxis=X,1,x\n", "limits-before-axis"), Severity::error);
  EXPECT_EQ(severityOf("axis=X,1,x\nlimits=X,,1\n", "limits-number"), Severity::error);
  EXPECT_EQ(severityOf("axis=X,1,x\nlimits=X,1,0\n", "limits-swapped"), Severity::error);
  EXPECT_EQ(severityOf("axis=X,1,x\nlimits=X,1\n", "limits-missing"), Severity::warning);
  EXPECT_EQ(severityOf("axis=X,1,x\nlimits=X,1,2\n", "limits-without-zero"), Severity::note);
}

}  // namespace
