#include "toolkit/check/Check.h"

#include <rapidcheck/gtest.h>

#include <algorithm>

#include "tests/support/TempFile.h"
#include "toolkit/Machine.h"

using korvo::CheckResult;
using korvo::Diagnostic;
using korvo::Format;
using korvo::test::TempDir;

namespace {

CheckResult checkText(const std::string& text, Format format = Format::version1) {
  const TempDir folder;
  return korvo::check(folder.write("m.def", text), format);
}

std::vector<Diagnostic> withCode(const CheckResult& result, const std::string& code) {
  std::vector<Diagnostic> found;
  std::copy_if(result.diagnostics.begin(), result.diagnostics.end(), std::back_inserter(found),
               [&](const Diagnostic& d) { return d.code == code; });
  return found;
}

std::string machineWith(const std::string& lines) {
  return "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\n" + lines;
}

// What it says of the machine (no rotary axis, ...) is no fault of the file.
bool hasNotesOnly(const CheckResult& result) {
  return std::all_of(result.diagnostics.begin(), result.diagnostics.end(),
                     [](const Diagnostic& d) { return d.severity == korvo::Severity::note; });
}

TEST(Check, AGoodFileHasNotesAtMost) { EXPECT_TRUE(hasNotesOnly(checkText(machineWith("")))); }

TEST(Check, UnreadableFileIsAFinding) {
  const CheckResult result = korvo::check("/nonexistent/m.def");
  ASSERT_EQ(result.diagnostics.size(), 1u);
  EXPECT_EQ(result.diagnostics[0].code, "file-unreadable");
  EXPECT_EQ(korvo::toString(result.diagnostics[0]),
            "/nonexistent/m.def: error: expected a readable file, found none [file-unreadable]");
}

TEST(Check, AFolderIsUnreadable) {
  const TempDir folder;
  const auto found = withCode(korvo::check(folder.path()), "file-unreadable");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].text, "expected a readable file, found a folder");
}

// --- rotation points

struct PointRow {
  const char* label;
  const char* line;
  int column;         // 0: accepted
  const char* found;  // how the finding ends
};

class RotationPointTable : public testing::TestWithParam<PointRow> {};

TEST_P(RotationPointTable, FirstOperandThatIsNoNumberIsFound) {
  const PointRow& row = GetParam();
  const auto found = withCode(checkText(machineWith(row.line)), "rotation-point-number");
  ASSERT_EQ(found.size(), row.column ? 1u : 0u);
  if (!row.column) return;
  EXPECT_EQ(found[0].line, 6);
  EXPECT_EQ(found[0].column, row.column);
  EXPECT_EQ(found[0].text,
            std::string("expected a number in each of the first 12 operands of a rotation point, "
                        "found ") +
                row.found);
}

INSTANTIATE_TEST_SUITE_P(
    Check, RotationPointTable,
    testing::Values(
        PointRow{"Numbers", "rotationpoint=1,2.5,-3e2", 0, ""},
        PointRow{"NumbersWithATail", "rotationpoint=1mm,0x1p,nan(1)", 0, ""},
        PointRow{"NoOperandPart", "rotationpoint", 0, ""},
        PointRow{"EmptyOperandPart", "rotationpoint=", 0, ""},
        PointRow{"Word", "rotationpoint=1,abc,3", 17, "'abc' as operand 2"},
        PointRow{"EmptyOperand", "rotationpoint=1,,3", 17, "'' as operand 2"},
        PointRow{"OnlyACommaHasTwoEmptyOperands", "rotationpoint=,", 15, "'' as operand 1"},
        PointRow{"FrenchKeywordInCapitals", "POINTDEROTATION=x", 17, "'x' as operand 1"},
        PointRow{"ColumnsOfTheLineAsWritten", "  rotationpoint = 1 , abc", 23,
                 "'abc' as operand 2"},
        PointRow{"TwelfthOperand", "rotationpoint=1,2,3,4,5,6,7,8,9,10,11,x", 39,
                 "'x' as operand 12"},
        PointRow{"ThirteenthIsNotRead", "rotationpoint=1,2,3,4,5,6,7,8,9,10,11,12,x", 0, ""},
        PointRow{"Comment", "#rotationpoint=x", 0, ""},
        PointRow{"OtherKeyword", "rotationpoints=x", 0, ""}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(Check, EachBadRotationPointLineIsFoundOnce) {
  const auto found = withCode(checkText(machineWith("rotationpoint=a,b\n\nrotationpoint=c\n")),
                              "rotation-point-number");
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].line, 6);
  EXPECT_EQ(found[1].line, 8);
}

// --- rings

struct RingRow {
  const char* label;
  const char* text;
  int line;  // of the finding; 0: none
};

class RingTable : public testing::TestWithParam<RingRow> {};

TEST_P(RingTable, IsFoundAtTheLineThatClosesIt) {
  const RingRow& row = GetParam();
  const auto found = withCode(checkText(row.text), "element-cycle");
  ASSERT_EQ(found.size(), row.line ? 1u : 0u);
  if (row.line) {
    EXPECT_EQ(found[0].line, row.line);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Check, RingTable,
    testing::Values(
        RingRow{"PlainMachine", "frame\npart\nlien=BATI\naxis=X,1,x\ntool=z,0,0,0\n", 0},
        // Axis number -10 is what a root has as its previous element: every root hangs on it.
        RingRow{"PartOnTheAxisThatHangsOnIt", "frame\naxis=X,-10,x\npart\ntool=z,0,0,0\n", 3},
        RingRow{"RootOnTheEndOfItsChain", "part\nlien=PIECE\nframe\ntool=z,0,0,0\naxis=X,-10,x\n",
                5},
        RingRow{"ElementOnItself", "axis=X,-10,x\nframe\n", 1},
        // The second part turns the links around up to the first part, which has its own number.
        RingRow{"PartBehindAPart", "frame\naxis=X,1,x\npart\naxis=Y,2,y\npart\ntool=z,0,0,0\n", 4},
        RingRow{"SameAxisTwice", "frame\npart\nlien=BATI\naxis=X,1,x\naxis=X,1,x\ntool=z,0,0,0\n",
                0}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(Check, ARingNamesItsMembersAndTheirLines) {
  const auto found = withCode(checkText("axis=X,-10,x\n"), "element-cycle");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].text, "expected chains of elements that end, found a ring, X (line 1) on X");
}

// --- axes, frame, part, tool

struct CountRow {
  const char* label;
  const char* text;
  const char* code;
  int line;
  const char* wantedAndFound;
};

class CountTable : public testing::TestWithParam<CountRow> {};

TEST_P(CountTable, IsFound) {
  const CountRow& row = GetParam();
  const auto found = withCode(checkText(row.text), row.code);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].line, row.line);
  EXPECT_EQ(found[0].text, row.wantedAndFound);
  EXPECT_EQ(found[0].severity, korvo::Severity::error);
}

INSTANTIATE_TEST_SUITE_P(
    Check, CountTable,
    testing::Values(
        CountRow{"FileOfOneModeHasNoFrame", "mode=0\n", "one-frame", 0,
                 "expected one frame line, found none"},
        CountRow{"FileOfOneModeHasNoPart", "mode=0\n", "one-part", 0,
                 "expected one part line, found none"},
        CountRow{"FileOfOneModeHasNoTool", "mode=0\n", "some-tool", 0,
                 "expected at least one tool line, found none"},
        CountRow{"FileOfOneModeHasNoAxes", "mode=0\n", "axis-count", 0,
                 "expected 1 to 12 numbered axes, found 0"},
        CountRow{"TwoFrames", "frame\n\nbati\n", "one-frame", 3,
                 "expected one frame line, found another one, after line 1"},
        CountRow{"TwoParts", "frame\npart\npiece\n", "one-part", 3,
                 "expected one part line, found another one, after line 2"},
        CountRow{"GunsOnly", "frame\npart\nlien=BATI\naxis=X,1,x\ngun=z,0,0,0\n", "some-tool", 0,
                 "expected at least one tool line, found drill guns only"},
        CountRow{"AxisNumberTooLarge", "frame\naxis=X,10001,x\n", "axis-number", 2,
                 "expected axis numbers up to 10000, found 10001"},
        CountRow{"AxisWithoutNumberDoesNotCount",
                 "frame\npart\nlien=BATI\naxis=W,x\ntool=z,0,0,0\n", "axis-count", 0,
                 "expected 1 to 12 numbered axes, found 0"},
        CountRow{"ThirteenAxes",
                 "axis=a,1,x\naxis=a,2,x\naxis=a,3,x\naxis=a,4,x\naxis=a,5,x\naxis=a,6,x\n"
                 "axis=a,7,x\naxis=a,8,x\naxis=a,9,x\naxis=a,10,x\naxis=a,11,x\naxis=a,12,x\n"
                 "axis=a,13,x\n",
                 "axis-count", 0, "expected 1 to 12 numbered axes, found 13"}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(Check, LargestAxisNumberIsAccepted) {
  EXPECT_TRUE(hasNotesOnly(checkText("frame\npart\nlien=BATI\naxis=X,10000,x\ntool=z,0,0,0\n")));
}

// The table of axis numbers would fill the memory, whatever else is wrong with the line.
TEST(Check, AnAxisNumberTooLargeIsKeptFromTheLibraryOnEveryLine) {
  const TempDir folder;
  for (const char* line : {"axis=X,700000000,x", "axis=X,700000000,x;", "axis=X,700000000 x"}) {
    const auto path =
        folder.write("m.def", "frame\npart\n" + std::string(line) + "\ntool=z,0,0,0\n");
    const korvo::Loaded none = korvo::load(path, Format::version1, korvo::Checks::endless);
    EXPECT_FALSE(none) << line;
    EXPECT_EQ(withCode({{}, {}, none.reasons}, "axis-number").size(), 1u) << line;
  }
}

// --- what loads, but hardly as meant

struct WarningRow {
  const char* label;
  const char* lines;  // after frame, part, lien, X (line 4) and the tool (line 5)
  const char* code;
  int line;
  const char* wantedAndFound;
};

class WarningTable : public testing::TestWithParam<WarningRow> {};

TEST_P(WarningTable, IsSaidAndTheMachineLoads) {
  const WarningRow& row = GetParam();
  const TempDir folder;
  const auto path = folder.write("m.def", machineWith(row.lines));
  const korvo::Loaded loaded = korvo::load(path, Format::version1);
  ASSERT_TRUE(loaded);
  const auto found = withCode({{}, {}, loaded.reasons}, row.code);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].severity, korvo::Severity::warning);
  EXPECT_EQ(found[0].line, row.line);
  EXPECT_EQ(found[0].text, row.wantedAndFound);
}

INSTANTIATE_TEST_SUITE_P(
    Check, WarningTable,
    testing::Values(
        WarningRow{"NoDirection", "axis=Y,2\n", "axis-direction", 6,
                   "expected a direction for every axis, found none for 'Y'"},
        WarningRow{"NullDirection", "rotation=C,2,0,0,0,0,0,0,0,0\n", "axis-direction", 6,
                   "expected a direction for every axis, found none for 'C'"},
        WarningRow{"DirectionNotFinite", "axis=Y,2,0,inf,0\n", "axis-direction", 6,
                   "expected a direction for every axis, found one that is not finite for 'Y'"},
        WarningRow{"AxisWithoutNumber", "\naxis=W,w.stl\n", "axis-place", 7,
                   "expected an axis number from 1 up behind the name, found 'W' without one, "
                   "which never moves"},
        WarningRow{"NumberTwice", "axis=Y,1,y\n", "axis-number-twice", 6,
                   "expected each axis number once, found 1 again, after line 4"},
        WarningRow{"BehindTheTool", "axis=Y,2,y\n", "axis-off-chain", 6,
                   "expected every axis between the part and a tool, found 'Y' in none"},
        WarningRow{"BesideTheTool", "lien=X\naxis=Y,2,y\n", "axis-off-chain", 7,
                   "expected every axis between the part and a tool, found 'Y' in none"}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(Check, AnAxisBehindATableIsOnTheChain) {
  EXPECT_TRUE(
      hasNotesOnly(checkText("frame\nrotation=C,2,z,0,0,0,0,0\npart\nlien=BATI\naxis=X,1,x\n"
                             "tool=z,0,0,0\nlien=X\naxis=Y,3,y\ngun=z,0,0,0\n")));
}

TEST(Check, AVersion2NameThatIsNoneIsSaid) {
  const auto result = checkText(
      "frame=z\npart=x,y,0,0,0\nlien=BATI\naxis=X,x\naxis=W,z\ntool=z,0,0,0\n", Format::version2);
  ASSERT_EQ(withCode(result, "axis-name-unknown").size(), 1u);
  EXPECT_EQ(withCode(result, "axis-name-unknown")[0].line, 5);
}

TEST(Check, DiagnosticsReadAsPlaceSeverityTextAndCode) {
  using korvo::Severity;
  EXPECT_EQ(korvo::toString(Diagnostic{"a.def", 41, 3, "x", Severity::error, "wanted, found"}),
            "a.def:41:3: error: wanted, found [x]");
  EXPECT_EQ(korvo::toString(Diagnostic{"a.def", 7, 0, "x", Severity::warning, "wanted, found"}),
            "a.def:7: warning: wanted, found [x]");
  EXPECT_EQ(korvo::toString(Diagnostic{"a.def", 0, 0, "x", Severity::note, "wanted, found"}),
            "a.def: note: wanted, found [x]");
  EXPECT_STREQ(korvo::toString(Severity::note), "note");
  EXPECT_STREQ(korvo::toString(Severity::warning), "warning");
  EXPECT_STREQ(korvo::toString(Severity::error), "error");
}

// --- laws

std::string anyLine() {
  static const std::vector<std::string> kLines = {"frame",
                                                  "part=x,y,0,0,0",
                                                  "part",
                                                  "lien=BATI",
                                                  "lien=PIECE",
                                                  "lien=X",
                                                  "lien=OUTIL",
                                                  "lien=Q",
                                                  "tool=z,0,0,0",
                                                  "gun=z,0,0,0",
                                                  "axis=X,1,x",
                                                  "axis=Y,2,y",
                                                  "axis=Q,-10,x",
                                                  "axis=Q,-1,x",
                                                  "axis=Q,-101,y",
                                                  "axis=Q,0,z",
                                                  "axis=Q,-201,z",
                                                  "rotation=C,3,z,0,0,0,0,0",
                                                  "geom=a.stl",
                                                  "rotationpoint=1,2,3",
                                                  "rotationpoint=1,,3",
                                                  "loop=X,1,2,3",
                                                  "limits=X,0,1"};
  return *rc::gen::elementOf(kLines);
}

// The library ends on whatever the checker lets through: the machine loads, every chain ends.
RC_GTEST_PROP(CheckLaws, WhatIsAcceptedLoads, ()) {
  std::string text;
  const int lines = *rc::gen::inRange(0, 12);
  for (int i = 0; i < lines; ++i) text += anyLine() + "\n";
  const TempDir folder;
  const auto path = folder.write("m.def", text);
  const bool accepted = !korvo::hasError(korvo::check(path, Format::version1).diagnostics);
  const korvo::Loaded loaded = korvo::load(path, Format::version1);
  RC_ASSERT(accepted == static_cast<bool>(loaded));
  if (!loaded) return;
  for (int r = 0; r < (*loaded.machine)->getElemNumber(); ++r) {
    const auto* e = (*loaded.machine)->getElemByRank(r);
    RC_ASSERT((*loaded.machine)->getChain(e).size() <=
              static_cast<std::size_t>((*loaded.machine)->getElemNumber()));
  }
}

}  // namespace
