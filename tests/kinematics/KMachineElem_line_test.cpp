// An element read from one line of the definition file.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <string>
#include <vector>

#include "kinematics/KMachineElem.h"
#include "tests/kinematics/LineRow.h"
#include "tests/kinematics/SampleElem.h"
#include "tests/support/TraceCapture.h"

using korvo::test::expectColour;
using korvo::test::expectDefaults;
using korvo::test::expectElem;
using korvo::test::lineName;
using korvo::test::LineRow;
using korvo::test::TracedTest;
using zkin::KMachineElem;

using namespace korvo::test::elemtype;  // kFrame, kPart ...

namespace {

// --- keywords

struct KeywordRow {
  const char* name;
  const wchar_t* keyword;
  Type type;
  const wchar_t* elemName;  ///< Null: the first operand.
  int index;
};

class KMachineElemKeyword : public TracedTest, public testing::WithParamInterface<KeywordRow> {
 protected:
  /// What the element is with operands that begin with an axis name "Q" of no known index.
  void expectKeyword(const std::wstring& keyword) {
    KMachineElem e;
    EXPECT_TRUE(e.setFromLine(keyword + L"=Q", 1));
    EXPECT_EQ(static_cast<int>(e.getElemType()), GetParam().type);
    EXPECT_EQ(e.getElemName(), GetParam().elemName ? GetParam().elemName : L"Q");
    EXPECT_EQ(e.getElemIndex(), GetParam().index);
  }
};

INSTANTIATE_TEST_SUITE_P(
    Word, KMachineElemKeyword,
    testing::Values(KeywordRow{"bati", L"bati", kFrame, L"BATI", 0},
                    KeywordRow{"frame", L"frame", kFrame, L"BATI", 0},
                    KeywordRow{"piece", L"piece", kPart, L"PIECE", -1},
                    KeywordRow{"table", L"table", kPart, L"PIECE", -1},
                    KeywordRow{"part", L"part", kPart, L"PIECE", -1},
                    KeywordRow{"outil", L"outil", kTool, L"OUTIL", -2},
                    KeywordRow{"tool", L"tool", kTool, L"OUTIL", -2},
                    KeywordRow{"geom", L"geom", kGeometry, L"GEOM", -3},
                    KeywordRow{"geometry", L"geometry", kGeometry, L"GEOM", -3},
                    KeywordRow{"axe", L"axe", kLinear, nullptr, 0},
                    KeywordRow{"axis", L"axis", kLinear, nullptr, 0},
                    KeywordRow{"translation", L"translation", kLinear, nullptr, 0},
                    KeywordRow{"canon", L"canon", kGun, L"DRILL", -2},
                    KeywordRow{"gun", L"gun", kGun, L"DRILL", -2},
                    KeywordRow{"drillgun", L"drillgun", kGun, L"DRILL", -2},
                    KeywordRow{"rotation", L"rotation", kRotary, nullptr, 0}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(KMachineElemKeyword, IsReadInAnyCase) {
  std::wstring word = GetParam().keyword;
  expectKeyword(word);
  word[0] = static_cast<wchar_t>(word[0] - L'a' + L'A');
  expectKeyword(word);
  for (wchar_t& c : word) c = c >= L'a' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
  expectKeyword(word);
}

TEST_P(KMachineElemKeyword, AloneIsEnough) {
  KMachineElem e;
  EXPECT_TRUE(e.setFromLine(GetParam().keyword, 1));
  EXPECT_EQ(static_cast<int>(e.getElemType()), GetParam().type);
  EXPECT_EQ(e.getElemName(), GetParam().elemName ? GetParam().elemName : L"");
  EXPECT_EQ(e.getElemIndex(), GetParam().index);
  EXPECT_EQ(e.getGeomFile(), L"");
  expectColour(e, 0, 0, 0);
}

TEST_P(KMachineElemKeyword, WithMoreLettersIsUnknown) {
  KMachineElem e = korvo::test::sampleElem();
  EXPECT_FALSE(e.setFromLine(std::wstring(GetParam().keyword) + L"q=Q", 2));
  expectDefaults(e);
}

struct UnknownRow {
  const char* name;
  const wchar_t* line;
};

class KMachineElemUnknownLine : public TracedTest,
                                public testing::WithParamInterface<UnknownRow> {};
INSTANTIATE_TEST_SUITE_P(
    Line, KMachineElemUnknownLine,
    testing::Values(UnknownRow{"Empty", L""}, UnknownRow{"Blanks", L"  \t \r\n"},
                    UnknownRow{"OtherWord", L"spindle=1,2,3"}, UnknownRow{"OnlyEquals", L"==="},
                    UnknownRow{"OnlyOperands", L"=1,2,3"}, UnknownRow{"Comment", L"#bati"},
                    UnknownRow{"KeywordWithOperandsBehindComma", L"bati,1"},
                    UnknownRow{"LinkIsNoElement", L"lien=BATI"},
                    UnknownRow{"LimitsAreNoElement", L"limits=X,0,1"},
                    UnknownRow{"AccentedPart", L"pi\u00e8ce=x,y"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_P(KMachineElemUnknownLine, GivesFalseAndLeavesTheElementReset) {
  for (const int version : {1, 2}) {
    KMachineElem e = korvo::test::sampleElem();
    EXPECT_FALSE(e.setFromLine(GetParam().line, version));
    expectDefaults(e);
  }
}

// --- operands

class KMachineElemLine : public TracedTest, public testing::WithParamInterface<LineRow> {};

INSTANTIATE_TEST_SUITE_P(
    Frame, KMachineElemLine,
    testing::Values(LineRow{"Alone", 2, L"bati", {kFrame, L"BATI", 0}},
                    LineRow{"VectorAsReadInVersion2",
                            2,
                            L"bati=0,0,2,frame.stl",
                            {kFrame, L"BATI", 0, {0, 0, 2}, {}, {}, L"frame.stl", 200, 200, 200}},
                    LineRow{"WordInVersion2", 2, L"frame=-z", {kFrame, L"BATI", 0, {0, 0, -1}}},
                    LineRow{"FileOnlyInVersion2",
                            2,
                            L"bati=frame.stl,1,2,3",
                            {kFrame, L"BATI", 0, {}, {}, {}, L"frame.stl", 1, 2, 3}},
                    LineRow{"NoVectorInVersion1",
                            1,
                            L"bati=frame.stl,1,2,3",
                            {kFrame, L"BATI", 0, {}, {}, {}, L"frame.stl", 1, 2, 3}},
                    // Version 1 takes the first operand for the file, the others for the colour.
                    LineRow{"VectorIsAFileInVersion1",
                            1,
                            L"bati=0,4,2,frame.stl",
                            {kFrame, L"BATI", 0, {}, {}, {}, L"0", 4, 2, 0}}),
    lineName);

INSTANTIATE_TEST_SUITE_P(
    Part, KMachineElemLine,
    testing::Values(
        LineRow{"PositionIsDiscarded",
                1,
                L"part=x,y,10,20,30",
                {kPart, L"PIECE", -1, {0, 0, 1}, {1, 0, 0}}},
        LineRow{"PositionIsDiscardedInVersion2",
                2,
                L"part=x,y,10,20,30",
                {kPart, L"PIECE", -1, {0, 0, 1}, {1, 0, 0}}},
        LineRow{"FileBehindThePosition",
                1,
                L"part=x,y,10,20,30,p.stl,1,2,3",
                {kPart, L"PIECE", -1, {0, 0, 1}, {1, 0, 0}, {}, L"p.stl", 1, 2, 3}},
        LineRow{"FileWithoutPosition",
                1,
                L"part=x,y,p.stl",
                {kPart, L"PIECE", -1, {0, 0, 1}, {1, 0, 0}, {}, L"p.stl", 200, 200, 200}},
        LineRow{"WordAsPosition",
                1,
                L"part=x,y,z,p.stl",
                {kPart, L"PIECE", -1, {0, 0, 1}, {1, 0, 0}, {}, L"p.stl", 200, 200, 200}},
        // X = (0, 1, 0), Y = (0, 0, 1): Z = X x Y = (1, 0, 0)
        LineRow{"DirectionsInVersion1",
                1,
                L"part=0,4,0,z",
                {kPart, L"PIECE", -1, {1, 0, 0}, {0, 1, 0}}},
        LineRow{"DirectionsAreFixedInVersion2",
                2,
                L"part=0,4,0,z,1,2,3,p.stl",
                {kPart, L"PIECE", -1, {0, 0, 1}, {1, 0, 0}, {}, L"p.stl", 200, 200, 200}},
        LineRow{"DirectionsAreFixedInVersion2WithoutOperands",
                2,
                L"part",
                {kPart, L"PIECE", -1, {0, 0, 1}, {1, 0, 0}}},
        LineRow{"NoOperandsInVersion1", 1, L"part", {kPart, L"PIECE", -1}},
        LineRow{"YMissingInVersion1", 1, L"part=x", {kPart, L"PIECE", -1, {}, {1, 0, 0}}},
        LineRow{"ParallelDirections", 1, L"part=x,-x", {kPart, L"PIECE", -1, {}, {1, 0, 0}}},
        // X x Y = (1, 0, 0) x (0.6, 0.8, 0) has length 0.8 and is normalised
        LineRow{
            "YNotPerpendicular", 1, L"part=x,3,4,0", {kPart, L"PIECE", -1, {0, 0, 1}, {1, 0, 0}}},
        LineRow{"XIsNormalised",
                1,
                L"part=0,3,4,x",
                {kPart, L"PIECE", -1, {0, 0.8, -0.6}, {0, 0.6, 0.8}}},
        // Two numbers are no position, so the file name is "10".
        LineRow{"PositionOfTwoNumbers",
                1,
                L"part=x,y,10,20",
                {kPart, L"PIECE", -1, {0, 0, 1}, {1, 0, 0}, {}, L"10", 200, 200, 200}}),
    lineName);

INSTANTIATE_TEST_SUITE_P(
    ToolAndGun, KMachineElemLine,
    testing::Values(
        LineRow{"Tool",
                2,
                L"tool=z,0,0,0,holder.stl,255,0,0",
                {kTool, L"OUTIL", -2, {0, 0, 1}, {}, {}, L"holder.stl", 255, 0, 0}},
        LineRow{
            "ToolInVersion1", 1, L"outil=z,1,2,3", {kTool, L"OUTIL", -2, {0, 0, 1}, {}, {1, 2, 3}}},
        LineRow{"AxisIsNormalised",
                1,
                L"tool=0,3,-4,5,6,7",
                {kTool, L"OUTIL", -2, {0, 0.6, -0.8}, {}, {5, 6, 7}}},
        LineRow{
            "NullAxisStaysNull", 1, L"tool=0,0,0,5,6,7", {kTool, L"OUTIL", -2, {}, {}, {5, 6, 7}}},
        LineRow{"WordAsPoint", 1, L"tool=z,-y", {kTool, L"OUTIL", -2, {0, 0, 1}, {}, {0, -1, 0}}},
        LineRow{"FileInPlaceOfThePoint",
                1,
                L"tool=z,t.stl",
                {kTool, L"OUTIL", -2, {0, 0, 1}, {}, {}, L"t.stl", 200, 200, 200}},
        LineRow{"FileOnly",
                1,
                L"tool=t.stl",
                {kTool, L"OUTIL", -2, {}, {}, {}, L"t.stl", 200, 200, 200}},
        LineRow{"Gun",
                2,
                L"gun=0,0,-2,10,0,-40,g.stl,1,2,3",
                {kGun, L"DRILL", -2, {0, 0, -1}, {}, {10, 0, -40}, L"g.stl", 1, 2, 3}},
        LineRow{
            "GunInVersion1", 1, L"canon=x,1,2,3", {kGun, L"DRILL", -2, {1, 0, 0}, {}, {1, 2, 3}}}),
    lineName);

INSTANTIATE_TEST_SUITE_P(
    Geometry, KMachineElemLine,
    testing::Values(LineRow{"FileAndColour",
                            2,
                            L"geom=body.stl,1,2,3",
                            {kGeometry, L"GEOM", -3, {}, {}, {}, L"body.stl", 1, 2, 3}},
                    LineRow{"FileKeepsItsCase",
                            1,
                            L"GEOM=Body.STL",
                            {kGeometry, L"GEOM", -3, {}, {}, {}, L"Body.STL", 200, 200, 200}},
                    LineRow{"IncompleteColour",
                            1,
                            L"geom=body.stl,1,2",
                            {kGeometry, L"GEOM", -3, {}, {}, {}, L"body.stl", 200, 200, 200}},
                    LineRow{"BadRed",
                            1,
                            L"geom=body.stl,r,2,3",
                            {kGeometry, L"GEOM", -3, {}, {}, {}, L"body.stl", 0, 0, 0}},
                    LineRow{"BadGreen",
                            1,
                            L"geom=body.stl,1,g,3",
                            {kGeometry, L"GEOM", -3, {}, {}, {}, L"body.stl", 1, 0, 0}},
                    // An empty name is no file: the colour behind it is dropped too.
                    LineRow{"EmptyName", 1, L"geom=,1,2,3", {kGeometry, L"GEOM", -3}},
                    LineRow{"NoOperands", 1, L"geom=", {kGeometry, L"GEOM", -3}},
                    LineRow{"SecondEqualsEndsTheOperands",
                            1,
                            L"geom=a=b.stl",
                            {kGeometry, L"GEOM", -3, {}, {}, {}, L"a", 200, 200, 200}},
                    LineRow{"EmptyPartsBetweenEqualsAreDropped",
                            1,
                            L"=geom==a.stl",
                            {kGeometry, L"GEOM", -3, {}, {}, {}, L"a.stl", 200, 200, 200}},
                    LineRow{"Path",
                            1,
                            L"geom=$ZRN_MACHINE_DEF\\b\u00e2ti.stl",
                            {kGeometry,
                             L"GEOM",
                             -3,
                             {},
                             {},
                             {},
                             L"$ZRN_MACHINE_DEF\\b\u00e2ti.stl",
                             200,
                             200,
                             200}}),
    lineName);

TEST_P(KMachineElemLine, GivesTheElement) {
  KMachineElem e = korvo::test::sampleElem();
  EXPECT_TRUE(e.setFromLine(GetParam().line, GetParam().version));
  expectElem(e, GetParam().read);
  expectElem(KMachineElem(GetParam().line, GetParam().version), GetParam().read);
}

// --- white space

INSTANTIATE_TEST_SUITE_P(
    WhiteSpace, KMachineElemLine,
    testing::Values(
        LineRow{
            "Around", 1, L" \t tool=z,1,2,3 \r\n", {kTool, L"OUTIL", -2, {0, 0, 1}, {}, {1, 2, 3}}},
        LineRow{"OneBlank", 1, L"tool= z,1,2,3", {kTool, L"OUTIL", -2, {0, 0, 1}, {}, {1, 2, 3}}},
        LineRow{
            "OneRun", 1, L"tool=z,1,2, \t\v\f  3", {kTool, L"OUTIL", -2, {0, 0, 1}, {}, {1, 2, 3}}},
        LineRow{"OneBlankInTheKeyword",
                1,
                L"to ol=z,1,2,3",
                {kTool, L"OUTIL", -2, {0, 0, 1}, {}, {1, 2, 3}}},
        // Two blanks: the last character comes twice, "-xx" is no axis word but a file name.
        LineRow{
            "TwoBlanks", 2, L"axis=X , -x", {kLinear, L"X", 1, {}, {}, {}, L"-xx", 200, 200, 200}},
        // Four blanks: the last three characters stay behind, " -x".
        LineRow{"FourBlanks",
                2,
                L"axis = X , -x",
                {kLinear, L"X", 1, {}, {}, {}, L"-x -x", 200, 200, 200}},
        // Three blanks: "tool=z,1,2,35" and the last two characters "35".
        LineRow{"ThreeBlanksInNumbers",
                1,
                L"tool=z, 1, 2, 35",
                {kTool, L"OUTIL", -2, {0, 0, 1}, {}, {1, 2, 3535}}},
        LineRow{"TwoBlanksInAFileName",
                1,
                L"geom= a .stl",
                {kGeometry, L"GEOM", -3, {}, {}, {}, L"a.stll", 200, 200, 200}},
        // Six blanks: "canon=0,0,1" and "0 , 1", a new operand.
        LineRow{"SixBlanks",
                1,
                L"canon = 0 , 0 , 1",
                {kGun, L"DRILL", -2, {0, 0, 1}, {}, {}, L" 1", 200, 200, 200}},
        LineRow{"TabsCountAsBlanks",
                1,
                L"geom=\ta\t.stl",
                {kGeometry, L"GEOM", -3, {}, {}, {}, L"a.stll", 200, 200, 200}}),
    lineName);

RC_GTEST_PROP(KMachineElemWhiteSpace, AllBlanksButOneLeaveACharacterAtTheEnd, ()) {
  const auto words = *rc::gen::container<std::vector<std::string>>(
      rc::gen::nonEmpty(rc::gen::container<std::string>(rc::gen::inRange('a', 'f'))));
  std::wstring simple = L"geom=file", squeezed = L"file";
  for (const std::string& word : words) {
    simple += L" " + std::wstring(word.begin(), word.end());
    squeezed += std::wstring(word.begin(), word.end());
  }
  const std::size_t kept = words.empty() ? 0 : words.size() - 1;
  KMachineElem e;
  RC_ASSERT(e.setFromLine(simple, *rc::gen::inRange(0, 4)));
  RC_ASSERT(e.getGeomFile() == squeezed + simple.substr(simple.size() - kept));
}

RC_GTEST_PROP(KMachineElemLineReader, TakesAnyText, ()) {
  const auto text = *rc::gen::container<std::wstring>(
      rc::gen::elementOf(std::wstring(L"=,.+-xyzXAB_ \t015e#\u00e9") + std::wstring(6, L',')));
  const std::wstring keyword = *rc::gen::element<std::wstring>(
      L"", L"bati=", L"part=", L"tool=", L"geom=", L"axe=", L"rotation=", L"gun", L"rotation=B,");
  for (const int version : {1, 2}) {
    KMachineElem e = korvo::test::sampleElem();
    const bool known = e.setFromLine(keyword + text, version);
    RC_ASSERT(known == (e.getElemType() != KMachineElem::KMET_TYPE_NONE));
    RC_ASSERT(known || e == KMachineElem());
  }
}

}  // namespace
