// How elements hang together: what the checker finds, where, and what it lets pass.

#include <gtest/gtest.h>

#include <rapidcheck/gtest.h>

#include <filesystem>
#include <set>

#include "tests/support/MachineGenerator.h"
#include "tests/toolkit/FindingTable.h"

using korvo::Diagnostic;
using korvo::Format;
using korvo::Severity;
using korvo::test::FindingRow;

namespace {

class CheckStructure : public testing::TestWithParam<FindingRow> {};

TEST_P(CheckStructure, Finds) { EXPECT_EQ(korvo::test::saidOf(GetParam()), GetParam().expected); }

constexpr auto kV2 = Format::version2;

// A head on the frame, its part still to come.
#define HEAD "frame\naxis=X,1,x\naxis=Y,2,y\ntool=z,0,0,0\n"

INSTANTIATE_TEST_SUITE_P(
    Chains, CheckStructure,
    testing::Values(
        FindingRow{"PartBehindTheTool",
                   "part-without-link",
                   HEAD "  piece = x,y,0,0,0\n",
                   {"5:3+5 expected a part on the frame or on axes of its own, found it behind the "
                    "tool of line 4"}},
        FindingRow{"PartOnAxesBehindTheTool",
                   "part-without-link",
                   HEAD "axis=Z,3,z\npart=x,y,0,0,0\n",
                   {"6:1+4 expected a part on the frame or on axes of its own, found it behind the "
                    "tool of line 4"}},
        FindingRow{"PartOnTheFrame", "part-without-link", HEAD "lien=BATI\npart=x,y,0,0,0\n", {}},
        FindingRow{"PartFirst",
                   "part-without-link",
                   "frame\naxis=X,1,x\npart=x,y,0,0,0\nlien=BATI\naxis=Y,2,y\ntool=z,0,0,0\n",
                   {}},
        // The link is the cause.
        FindingRow{"PartBehindALinkToNothing",
                   "part-without-link",
                   HEAD "lien=BATTI\npart=x,y,0,0,0\n",
                   {}},
        FindingRow{"PartLinkedToAMiddleAxis",
                   "link-middle",
                   HEAD "lien = X\npart=x,y,0,0,0\n",
                   {"5:8+1 expected the part's side to begin at the frame, found it linked to 'X', "
                    "which cuts the frame off"}},
        FindingRow{"AxesOnAMiddleAxis",
                   "link-middle",
                   HEAD "lien=Y\nrotation=C,6,z,0,0,0,0,0\npart=x,y,0,0,0\n",
                   {"5:6+1 expected the part's side to begin at the frame, found it linked to 'Y', "
                    "which cuts the frame off"}},
        FindingRow{"LinkToTheAxisAbove",
                   "link-middle",
                   "frame\naxis=X,1,x\nlien=X\npart=x,y,0,0,0\nlien=X\naxis=Y,2,y\ntool=z,0,0,0\n",
                   {"3:6+1 expected the part's side to begin at the frame, found it linked to 'X', "
                    "which cuts the frame off"}},
        FindingRow{"LinkToTheFrame",
                   "link-middle",
                   HEAD "lien=BATI\nrotation=C,6,z,0,0,0,0,0\npart=x,y,0,0,0\n",
                   {}},
        FindingRow{"AGunOnAMiddleAxis",
                   "link-middle",
                   "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\ntool=z,0,0,0\n"
                   "lien=X\ngun=z,0,0,0\n",
                   {}},
        FindingRow{
            "ToolBeyondTheLink",
            "tool-off-part",
            "frame\naxis=X,1,x\nlien=BATI\naxis=Z,3,z\ntool=z,0,0,0\nlien=X\n"
            "part=x,y,0,0,0\n",
            {"6:6+1 expected a way from the part to every tool, found the part's side ending "
             "at 'X' by this link, and the tool of line 5 beyond"}},
        FindingRow{"ToolBeyondIsNotAMiddleLinkToo",
                   "link-middle",
                   "frame\naxis=X,1,x\nlien=BATI\naxis=Z,3,z\ntool=z,0,0,0\nlien=X\n"
                   "part=x,y,0,0,0\n",
                   {}},
        FindingRow{"HeadOnTheTable",
                   "tool-off-frame",
                   "frame\naxis=X,1,x\npart=x,y,0,0,0\naxis=Z,3,z\n tool=z,0,0,0\n",
                   {"5:2+4 expected the frame between the part of line 3 and the tool, found the "
                    "tool on the part's side"}},
        FindingRow{"OneToolOfTwo",
                   "tool-off-frame",
                   "frame\naxis=X,1,x\npart=x,y,0,0,0\nlien=BATI\naxis=Z,3,z\ntool=z,0,0,0\n"
                   "lien=X\ntool=z,0,0,0\n",
                   {"8:1+4 expected the frame between the part of line 3 and the tool, found the "
                    "tool on the part's side"}},
        // Part and frame stand still against each other: the same machine.
        FindingRow{"HeadOnAPartWithoutAxes",
                   "tool-off-frame",
                   "frame\npart=x,y,0,0,0\naxis=Z,3,z\ntool=z,0,0,0\n",
                   {}},
        FindingRow{"FrameOnThePart",
                   "tool-off-frame",
                   "part=x,y,0,0,0\nframe\naxis=Z,3,z\ntool=z,0,0,0\n",
                   {}},
        FindingRow{"ToolOnATool",
                   "tool-not-at-end",
                   HEAD "tool=x,1,2,3\nlien=BATI\npart=x,y,0,0,0\n",
                   {"5:1+4 expected every tool at the end of its chain, found this one behind that "
                    "of line 4"}},
        FindingRow{"GunOnABodyOfATool",
                   "tool-not-at-end",
                   HEAD "geom=holder.stl\ngun=x,1,2,3\nlien=BATI\npart=x,y,0,0,0\n",
                   {"6:1+3 expected every tool at the end of its chain, found this one behind that "
                    "of line 4"}},
        FindingRow{"BodyOnATool",
                   "tool-not-at-end",
                   HEAD "geom=holder.stl\nlien=BATI\npart=x,y,0,0,0\n",
                   {}},
        FindingRow{"ToolBesideATool",
                   "tool-not-at-end",
                   HEAD "lien=Y\ntool=x,1,2,3\nlien=BATI\npart=x,y,0,0,0\n",
                   {}},
        // Its line turned the tool around: that is told, not what follows from it.
        FindingRow{"PartOnAToolWithAnother",
                   "tool-not-at-end",
                   HEAD "part=x,y,0,0,0\nlien=OUTIL\ntool=z,1,0,0\n",
                   {}}),
    korvo::test::labelOf);

INSTANTIATE_TEST_SUITE_P(
    Links, CheckStructure,
    testing::Values(
        FindingRow{"Unknown",
                   "link-unknown",
                   "frame\nlien= BATTI\n",
                   {"2:7+5 expected a link to an element of the file, found 'BATTI'"}},
        FindingRow{"ACommaBelongsToTheName",
                   "link-unknown",
                   "frame\nlien=BATI, X\n",
                   {"2:6+7 expected a link to an element of the file, found 'BATI,X'"}},
        FindingRow{"KeywordIsNotTheName",
                   "link-unknown",
                   "frame\nlien=frame\n",
                   {"2:6+5 expected a link to an element of the file, found 'frame'"}},
        FindingRow{
            "NoFrameAtAllIsToldElsewhere", "link-unknown", "part=x,y,0,0,0\nlien=BATI\n", {}},
        FindingRow{"ElementLineIgnored", "link-unknown", "frame\naxes=X,1,x\nlien=X\n", {}},
        FindingRow{"AnyCase", "link-unknown", "frame\naxis=X,x\nlien=axe_x\nlien=bati\n", {}, kV2},
        FindingRow{"Alone", "link-unknown", "frame\nlien\n", {}},
        FindingRow{"Before",
                   "link-before",
                   "frame\nlien=X\naxis=X,1,x\n",
                   {"2:6+1 expected a link to an element above, found 'X', which line 3 declares"}},
        FindingRow{"BeforeIsNotUnknown", "link-unknown", "frame\nlien=X\naxis=X,1,x\n", {}},
        FindingRow{
            "Prefix",
            "link-axe-prefix",
            "axis=AXE_X,1,x\nlien=AXE_X\n",
            {"2:6+5 expected the name of an element, found 'AXE_X', which does not find that "
             "of line 1"}},
        FindingRow{
            "PrefixOfALoop",
            "link-axe-prefix",
            "axis=X,1,x\nloop=axe_x,1,2,3\n",
            {"2:6+5 expected the name of an element, found 'axe_x', which does not find that "
             "of line 1"}},
        FindingRow{"PrefixOfVersion2", "link-axe-prefix", "axis=X,x\nlien=axe_x\n", {}, kV2},
        FindingRow{"ToTheFirstOfTwoTools",
                   "link-to-first",
                   HEAD "lien=Y\ntool=x,1,2,3\nlien=outil\ngeom=holder.stl\n",
                   {"7:6+5 expected a link to the only element of its name, found 'outil', which "
                    "finds that of line 4 and not that of line 6"}},
        FindingRow{"ToTheOnlyTool", "link-to-first", HEAD "lien=OUTIL\ngeom=holder.stl\n", {}},
        FindingRow{"TheSecondToolIsBelow",
                   "link-to-first",
                   HEAD "lien=OUTIL\ngeom=holder.stl\nlien=Y\ntool=x,1,2,3\n",
                   {}},
        FindingRow{"LoopUnknown",
                   "loop-unknown",
                   "frame\nboucle=B,1,2,3\n",
                   {"2:8+1 expected a loop to an element of the file, found 'B'"}},
        FindingRow{"LoopKnown", "loop-unknown", "frame\nboucle=bati,1,2,3\n", {}},
        FindingRow{"LoopBefore",
                   "loop-before",
                   "frame\nloop=X,1,2,3\naxis=X,1,x\n",
                   {"2:6+1 expected a loop to an element above, found 'X', which line 3 declares"}},
        FindingRow{"LoopWithoutPoint",
                   "loop-point",
                   "frame\nloop=BATI\n",
                   {"2:10+0 expected the point of a loop behind 'BATI', found none"}},
        FindingRow{"LoopWithSemicolons", "loop-point", "frame\nloop=BATI;1;2;3\n", {}},
        FindingRow{"LoopWithADirection", "loop-point", "frame\nloop=BATI,x\n", {}},
        FindingRow{"LoopWithAPoint", "loop-point", "frame\nloop=BATI,0,0,0\n", {}}),
    korvo::test::labelOf);

TEST(CheckStructureSuggestions, ANameAlmostRightIsSuggested) {
  const auto found = korvo::test::findingsOf("frame\nlien=BATTI\n", "link-unknown", kV2);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].suggestion, "did you mean 'BATI'?");
  EXPECT_EQ(found[0].severity, Severity::error);
}

TEST(CheckStructureSuggestions, ANameLikeNoneHasNone) {
  const auto found = korvo::test::findingsOf("frame\nlien=SPINDLE\n", "link-unknown", kV2);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].suggestion, "");
}

TEST(CheckStructure, AHundredToolsAreEnough) {
  std::string text = "frame\n";
  for (int i = 0; i < 100; ++i) text += "gun=z,0,0,0\n";
  EXPECT_TRUE(korvo::test::findingsOf(text, "tool-count", kV2).empty());
  const auto found = korvo::test::findingsOf(text + "tool=z,0,0,0\n", "tool-count", kV2);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(korvo::test::said(found[0], false),
            "102:1+4 expected at most 100 tools and guns, found 101");
}

// --- what is written every day

const std::set<std::string> kCodes = {"element-cycle",
                                      "one-frame",
                                      "one-part",
                                      "some-tool",
                                      "tool-count",
                                      "part-without-link",
                                      "tool-not-at-end",
                                      "link-unknown",
                                      "link-before",
                                      "link-axe-prefix",
                                      "link-to-first",
                                      "link-middle",
                                      "tool-off-part",
                                      "tool-off-frame",
                                      "loop-unknown",
                                      "loop-before",
                                      "loop-point",
                                      "axis-number",
                                      "axis-number-low",
                                      "axis-number-gap",
                                      "axis-number-twice",
                                      "axis-name-unknown",
                                      "axis-name-twice",
                                      "axis-name-reserved",
                                      "axis-count",
                                      "axis-place",
                                      "axis-off-chain",
                                      "limits-unknown-axis",
                                      "limits-before-axis",
                                      "limits-axe-prefix",
                                      "limits-not-an-axis",
                                      "limits-number",
                                      "limits-missing",
                                      "limits-swapped",
                                      "limits-equal",
                                      "limits-nan",
                                      "limits-again",
                                      "limits-beyond-turn",
                                      "limits-without-zero",
                                      "rotation-point-number",
                                      "rotation-point-short",
                                      "strategy-value",
                                      "strategy-other",
                                      "mode-value",
                                      "setting-twice",
                                      "collision-unknown",
                                      "collision-before",
                                      "collision-axe-prefix",
                                      "collision-before-tool",
                                      "collision-short",
                                      "collision-self",
                                      "collision-twice",
                                      "collision-first-tool"};

// Errors and warnings of these rules, and the notes when asked for.
std::vector<std::string> alarms(const korvo::CheckResult& result, bool notes = false) {
  std::vector<std::string> found;
  for (const Diagnostic& d : result.diagnostics) {
    if (kCodes.count(d.code) && (notes || d.severity != Severity::note)) {
      found.push_back(korvo::toString(d));
    }
  }
  return found;
}

TEST(CheckFalseAlarms, EveryCodeIsARule) {
  std::set<std::string> codes;
  for (const korvo::RulePage& page : korvo::rulePages()) codes.insert(page.code);
  for (const std::string& code : kCodes) EXPECT_EQ(codes.count(code), 1u) << code;
}

TEST(CheckFalseAlarms, NoneOnTheExampleMachines) {
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(KORVO_MACHINES)) {
    if (entry.path().extension() != ".def") continue;
    ++files;
    EXPECT_EQ(alarms(korvo::check(entry.path())), std::vector<std::string>()) << entry.path();
  }
  EXPECT_GE(files, 12);
}

// Only the joints that really turn further than once are worth a note.
TEST(CheckFalseAlarms, FewNotesOnTheExampleMachines) {
  std::set<std::string> noted;
  for (const auto& entry : std::filesystem::directory_iterator(KORVO_MACHINES)) {
    if (entry.path().extension() != ".def") continue;
    if (!alarms(korvo::check(entry.path()), true).empty()) noted.insert(entry.path().stem());
  }
  EXPECT_EQ(noted, (std::set<std::string>{"arm-irb2400", "arm-irb2400-rail"}));
}

// What the generator leaves out now and then is the link in front of a second tool or gun.
RC_GTEST_PROP(CheckFalseAlarms, NoneOnUsualMachines, ()) {
  const korvo::test::MachineText machine = *korvo::test::anyMachine();
  const korvo::test::TempDir folder;
  const auto path = folder.write("m.def", machine.text);
  for (const std::string& alarm :
       alarms(korvo::check(path, static_cast<Format>(machine.version)))) {
    RC_LOG(alarm);
    RC_ASSERT(alarm.find("[tool-not-at-end]") != std::string::npos);
  }
}

// --- long files

std::string manyLines(int count) {
  std::string axes = "frame\npart=x,y,0,0,0\nlien=BATI\n", limits, more;
  for (int i = 1; i <= count; ++i) {
    const std::string n = std::to_string(i);
    axes += "axis=J" + n + "," + n + ",x\n";
    limits += "limits=J" + n + ",0,1\n";
    more += "lien=J" + n + "\nloop=Q" + n + "\ncollisions=J" + n + ",Q" + n + "\n";
  }
  return axes + "tool=z,0,0,0\n" + limits + more;
}

TEST(CheckLongFiles, TwentyThousandAxesWithLimitsLinksAndPairsAreChecked) {
  const auto twelve = korvo::test::findingsOf(manyLines(20000), "axis-count", Format::version1);
  ASSERT_EQ(twelve.size(), 1u);
  EXPECT_EQ(twelve[0].text, "expected 1 to 12 numbered axes, found 20000");
}

TEST(CheckLongFiles, EveryUnknownNameIsSaid) {
  EXPECT_EQ(korvo::test::findingsOf(manyLines(2000), "loop-unknown", Format::version1).size(),
            2000u);
}

TEST(CheckLongFiles, ManyToolsOnEachOtherAreChecked) {
  std::string text = "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\n";
  for (int i = 0; i < 20000; ++i) text += "tool=z,0,0,0\nlien=OUTIL\ncollisions=tool,outil,gun\n";
  EXPECT_EQ(korvo::test::findingsOf(text, "tool-count", Format::version1).size(), 1u);
}

}  // namespace
