// Numbers, names and places of axes: what the checker finds, where, and what it lets pass.

#include <gtest/gtest.h>

#include "tests/toolkit/FindingTable.h"

using korvo::Format;
using korvo::test::FindingRow;

namespace {

class CheckAxes : public testing::TestWithParam<FindingRow> {};

TEST_P(CheckAxes, Finds) { EXPECT_EQ(korvo::test::saidOf(GetParam()), GetParam().expected); }

constexpr auto kV2 = Format::version2;

std::vector<std::string> low(const std::string& place, const std::string& found) {
  return {place + " expected an axis number from 1 up, found " + found + ", which never moves"};
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, CheckAxes,
    testing::Values(
        FindingRow{"ZeroWritten", "axis-number-low", "axis=W,0,z\n", low("1:8+1", "0 for 'W'")},
        FindingRow{"Negative", "axis-number-low", "frame\naxis = W , -3 , z\n",
                   low("2:12+2", "-3 for 'W'")},
        FindingRow{"ScansInPart", "axis-number-low", "axis=W,0abc,z\n", low("1:8+4", "0 for 'W'")},
        FindingRow{"One", "axis-number-low", "axis=W,1,z\n", {}},
        FindingRow{"NotWritten", "axis-number-low", "axis=W,z\n", {}},
        FindingRow{"Version2HasNoNumber", "axis-number-low", "axis=W,z\n", {}, kV2},
        FindingRow{"NegativeOfATool", "axis-number-low", "rotation=C,-101,z,0,0,0,0,0\n",
                   low("1:12+4", "-101 for 'C'")},
        // The ring is told, and once is enough.
        FindingRow{"NegativeThatMakesARing", "axis-number-low", "axis=W,-10,z\n", {}},
        FindingRow{"ADirectionTakenForIt",
                   "axis-number-low",
                   "axis=X,1,1,0,0\naxis=Y,2,0,1,0\naxis=Z,0,0,1\n",
                   {}},
        FindingRow{"Alone", "axis-place", "axis\naxis=X;1;x\n", {}},
        FindingRow{"WrittenZeroIsNotSaidTwice", "axis-place", "axis=W,0,z\n", {}},
        FindingRow{"WithoutNumber",
                   "axis-place",
                   "axis=W,a.stl\n",
                   {"1:6+1 expected an axis number from 1 up behind the name, found 'W' without "
                    "one, which never moves"}},
        FindingRow{"WithADirectionForIt", "axis-place", "axis=W,z\n", {}},
        FindingRow{"WithADirectionForItIsAnError",
                   "axis-number-missing",
                   "axis=W,z\n",
                   {"1:8+1 expected an axis number behind the axis name in format 1, found the "
                    "direction 'z'"}},
        FindingRow{"TooLarge",
                   "axis-number",
                   "axis=W, 20000,z\n",
                   {"1:9+5 expected axis numbers up to 10000, found 20000"}},
        // Its semicolon is told, too; the table of 20000 entries has to be kept from the library.
        FindingRow{"TooLargeBesideASemicolon",
                   "axis-number",
                   "axis=X,20000,1;\n",
                   {"1:8+5 expected axis numbers up to 10000, found 20000"}},
        FindingRow{"TooLargeWithABlankInside",
                   "axis-number",
                   "axis=X,20000 1\n",
                   {"1:8+7 expected axis numbers up to 10000, found 200001"}},
        FindingRow{"Twice",
                   "axis-number-twice",
                   "axis=X,1,x\n\nrotation=C,1,z,0,0,0,0,0\n",
                   {"3:12+1 expected each axis number once, found 1 again, after line 1"}},
        FindingRow{
            "Version2HasNoNumberTwice", "axis-number-twice", "axis=X,x\naxis=X,y\n", {}, kV2},
        FindingRow{"Version2NameTwice",
                   "axis-name-twice",
                   "axis=X,x\naxis=AXE_x,y\n",
                   {"2:6+5 expected each axis name once, found 'X' again, after line 1"},
                   kV2}),
    korvo::test::labelOf);

// Each gets the lowest number that none has, and that none before it got.
TEST(CheckAxes, AnAxisWithoutNumberGetsTheNextFreeOne) {
  const auto some = korvo::test::findingsOf(
      "axis=X,1,x\naxis=Y,+y\naxis=Z,3,z\nrotation=B, 0,1,0, 0,0,0,0,9\naxis=W,w.stl\n",
      "axis-number-missing", Format::version1);
  ASSERT_EQ(some.size(), 2u);
  EXPECT_EQ(some[0].suggestion, "write the axis number between name and direction: axis=Y,2,+y");
  EXPECT_EQ(some[1].suggestion,
            "write the axis number between name and direction: rotation=B,4,0,1,0,0,0,0,0,9");
  EXPECT_EQ(some[0].severity, korvo::Severity::error);
}

std::vector<std::string> gap(const std::string& place, const std::string& numbers) {
  return {place + " expected axis numbers without a gap, found none between " + numbers};
}

INSTANTIATE_TEST_SUITE_P(
    Gaps, CheckAxes,
    testing::Values(
        FindingRow{"Dense", "axis-number-gap", "axis=J1,1,x\naxis=J2,2,y\n", {}},
        FindingRow{"Joints", "axis-number-gap", "axis=J1,1,x\naxis=J2,4,y\n",
                   gap("2:9+1", "1 and 4, that of 'J2'")},
        FindingRow{"InAnyOrder", "axis-number-gap", "axis=J2,4,x\naxis=J1,1,y\n",
                   gap("1:9+1", "1 and 4, that of 'J2'")},
        FindingRow{"TwoGaps",
                   "axis-number-gap",
                   "axis=P,1,x\naxis=Q,3,y\naxis=R,5,z\n",
                   {"2:8+1 expected axis numbers without a gap, found none between 1 and 3, that "
                    "of 'Q'",
                    "3:8+1 expected axis numbers without a gap, found none between 3 and 5, that "
                    "of 'R'"}},
        FindingRow{"BeginsLate", "axis-number-gap", "axis=J1,7,x\naxis=J2,8,y\n", {}},
        // X is 1, ... C is 6: what the machine has not leaves its number out.
        FindingRow{
            "Letters", "axis-number-gap", "axis=X,1,x\naxis=Y,2,y\nrotation=C,6,z,0,0,0,0,0\n", {}},
        FindingRow{"LettersAndASeventh",
                   "axis-number-gap",
                   "axis=X,1,x\nrotation=a,4,x,0,0,0,0,0\naxis=W,7,z\n",
                   {}},
        FindingRow{"LettersAndAnEighth", "axis-number-gap", "axis=X,1,x\naxis=W,8,z\n",
                   gap("2:8+1", "1 and 8, that of 'W'")},
        FindingRow{"LetterWithTheNumberOfAnother", "axis-number-gap", "axis=X,1,x\naxis=Z,4,z\n",
                   gap("2:8+1", "1 and 4, that of 'Z'")},
        FindingRow{"Version2", "axis-number-gap", "axis=X,x\nrotation=C,z,0,0,0,0,0\n", {}, kV2}),
    korvo::test::labelOf);

std::vector<std::string> unknownLinear(const std::string& place, const std::string& name) {
  return {place + " expected X, Y or Z as the name of such an axis in format 2, found " + name +
          ", which never moves"};
}

INSTANTIATE_TEST_SUITE_P(
    Names, CheckAxes,
    testing::Values(
        FindingRow{"UnknownLinear", "axis-name-unknown", "axis=X,x\naxis=W,z\n",
                   unknownLinear("2:6+1", "'W'"), kV2},
        FindingRow{"PrefixIsNotTheName", "axis-name-unknown", "axis=X,x\naxis=AXE_w,z\n",
                   unknownLinear("2:6+5", "'W'"), kV2},
        FindingRow{"LinearNamedAsRotary", "axis-name-unknown", "axis=X,x\naxis=C,z\n",
                   unknownLinear("2:6+1", "'C'"), kV2},
        FindingRow{"RotaryNamedAsLinear",
                   "axis-name-unknown",
                   "axis=Y,y\nrotation=X,x,0,0,0,0,0\n",
                   {"2:10+1 expected A, B or C as the name of such an axis in format 2, found 'X', "
                    "which never moves"},
                   kV2},
        FindingRow{"KnownInAnyCase",
                   "axis-name-unknown",
                   "axis=x,x\naxis=AXE_Y,y\nrotation=axe_c,z,0,0,0,0,0\n",
                   {},
                   kV2},
        FindingRow{"FreeInVersion1", "axis-name-unknown", "axis=W,7,z\n", {}},
        // Every line has a number: that the file is of format 1 is said once for all of them.
        FindingRow{
            "FileOfTheOtherFormat", "axis-name-unknown", "axis=U,1,x\naxis=W,2,z\n", {}, kV2},
        FindingRow{"NameTwice",
                   "axis-name-twice",
                   "axis=Rail,1,x\naxis=RAIL,2,y\n",
                   {"2:6+4 expected each axis name once, found 'RAIL' again, after line 1"}},
        FindingRow{"ThreeTimes",
                   "axis-name-twice",
                   "axis=X,1,x\naxis=X,2,y\naxis=X,3,z\n",
                   {"2:6+1 expected each axis name once, found 'X' again, after line 1",
                    "3:6+1 expected each axis name once, found 'X' again, after line 1"}},
        FindingRow{"PrefixMakesAnotherName", "axis-name-twice", "axis=X,1,x\naxis=AXE_X,2,y\n", {}},
        FindingRow{"NumberTwiceSaysIt", "axis-name-twice", "axis=X,1,x\naxis=X,1,x\n", {}},
        FindingRow{"Reserved",
                   "axis-name-reserved",
                   "axis=Piece,1,x\n",
                   {"1:6+5 expected an axis name that means no other element, found 'Piece'"}},
        FindingRow{"ReservedForAllTools",
                   "axis-name-reserved",
                   "rotation=GUN,1,z,0,0,0,0,0\n",
                   {"1:10+3 expected an axis name that means no other element, found 'GUN'"}},
        FindingRow{"NotReserved", "axis-name-reserved", "axis=PIECE2,1,x\naxis=TABLE,2,y\n", {}}),
    korvo::test::labelOf);

#define MACHINE "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\n"

INSTANTIATE_TEST_SUITE_P(
    OffChain, CheckAxes,
    testing::Values(
        FindingRow{"BehindTheTool",
                   "axis-off-chain",
                   MACHINE "axis=Y,2,y\n",
                   {"6:6+1 expected every axis between the part and a tool, found 'Y' in none"}},
        FindingRow{
            "CarriesAGun", "axis-off-chain", MACHINE "lien=X\naxis=Y,2,y\ngun=z,0,0,0\n", {}},
        FindingRow{
            "NoTool", "axis-off-chain", "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\n", {}},
        // The causes are told instead: a link to nothing, a number that the frame has, a number
        // twice, a part on the tool.
        FindingRow{"LinkToNothing", "axis-off-chain", MACHINE "lien=Q\naxis=Y,2,y\n", {}},
        FindingRow{"NumberZero",
                   "axis-off-chain",
                   "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\naxis=W,0,z\ntool=z,0,0,0\n",
                   {}},
        FindingRow{"NumberTwice",
                   "axis-off-chain",
                   "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\naxis=Y,1,y\ntool=z,0,0,0\n",
                   {}},
        FindingRow{"PartOnTheTool",
                   "axis-off-chain",
                   "frame\naxis=X,1,x\ntool=z,0,0,0\npart=x,y,0,0,0\n",
                   {}}),
    korvo::test::labelOf);

}  // namespace
