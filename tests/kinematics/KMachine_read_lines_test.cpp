// What the lines that are no elements do to a machine: limits, hooks, collision pairs, rotation
// points; and what a second load keeps.

#include "tests/support/LoadText.h"

#include <unistd.h>
#include <csignal>

#include "tests/kinematics/KMachine_describe.h"

using korvo::test::change;
using korvo::test::describe;
using korvo::test::LoadingTest;
using korvo::test::TempDir;
using zkin::KMachine;
using zkin::KMachineElem;

namespace {

/// A three-axis mill with a table axis C, two tools and a gun; version 2.
const std::string kBase =
    "frame\naxis=X,x\nrotation=C,z,1,1,10,20,0\npart=x,y\n"
    "lien=BATI\naxis=Z,z\ntool=z,0,0,50\nlien=Z\ntool=z,0,0,70\nlien=Z\ngun=z,30,0,0\n"
    "strategy=7\nmode=8\nlimits=Z,-1,1\n";

struct LineRow {
  const char* name;
  const char* lines;     ///< added to the machine above
  const char* expected;  ///< what they change
};

std::ostream& operator<<(std::ostream& out, const LineRow& row) { return out << row.name; }

const auto rowName = [](const auto& info) { return std::string(info.param.name); };

class DefinitionLine : public LoadingTest, public testing::WithParamInterface<LineRow> {
 protected:
  void expectChange(int version) {
    const KMachine before = load(kBase, version);
    ASSERT_EQ(result, 0);
    const KMachine after = load(kBase + GetParam().lines + "\n", version);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(change(before, after), GetParam().expected);
    EXPECT_EQ(after.getElemNumber(), before.getElemNumber());
    trace.claimAll(L"... ? Unrecognized stuff");
  }
};

TEST_P(DefinitionLine, ChangesTheMachine) { expectChange(2); }

INSTANTIATE_TEST_SUITE_P(
    Limits, DefinitionLine,
    testing::Values(
        LineRow{"Both", "limits=X,-100,250", "+X max 250, +X min -100"},
        LineRow{"BothInFrench", "limites=X,-100,250", "+X max 250, +X min -100"},
        LineRow{"PrefixIsDropped", "limits=AXE_X,-100,250", "+X max 250, +X min -100"},
        LineRow{"LowerCaseName", "limits=x,-100,250", "+X max 250, +X min -100"},
        // Deliberate: the prefix is looked for before the case is folded.
        LineRow{"LowerCasePrefixFindsNothing", "limits=axe_x,-100,250", ""},
        LineRow{"OnePrefixIsDropped", "limits=AXE_AXE_X,-100,250", ""},
        LineRow{"PrefixInsideTheNameIsDropped", "limits=XAXE_,-100,250", "+X max 250, +X min -100"},
        LineRow{"UnknownName", "limits=Q,-100,250", ""},
        LineRow{"Minimum", "courseminimum=X,-5.5", "+X min -5.5"},
        LineRow{"MinimumWithPrefix", "CourseMinimum = AXE_X , -5.5", "+X min -5.5"},
        LineRow{"Maximum", "coursemaximum=C,360", "+C max 360"},
        LineRow{"MaximumWithPrefix", "coursemaximum=AXE_C,360", "+C max 360"},
        LineRow{"MinimumUnknownName", "courseminimum=Q,1", ""},
        LineRow{"MaximumUnknownName", "coursemaximum=Q,1", ""},
        LineRow{"MinimumLowerCasePrefix", "courseminimum=axe_x,1", ""},
        LineRow{"NumberPrefix", "limits=X,-1mm,2e1x", "+X max 20, +X min -1"},
        LineRow{"HexAndBareExponent", "limits=X,0x10,20e+", "+X max 20, +X min 16"},
        LineRow{"Infinities", "limits=X,-inf,Infinity", "+X max inf, +X min -inf"},
        LineRow{"Overflow", "limits=X,-1e999,1e999", "+X max inf, +X min -inf"},
        LineRow{"MinimumAboveMaximumIsKept", "limits=X,5,-5", "+X max -5, +X min 5"},
        LineRow{"NoMaximum", "limits=X,5", "+X min 5"},
        LineRow{"MaximumUnreadable", "limits=X,5,far", "+X min 5"},
        // The maximum is tried on the operand on which the minimum failed.
        LineRow{"MinimumUnreadable", "limits=X,near,5", ""},
        LineRow{"MinimumEmpty", "limits=X,,5", ""}, LineRow{"NameOnly", "limits=X", ""},
        LineRow{"MinimumUnreadableUnsetsBoth", "limits=Z,near,5", "-Z max 1, -Z min -1"},
        LineRow{"MinimumEmptyUnsetsBoth", "limits=Z,,5", "-Z max 1, -Z min -1"},
        LineRow{"NameOnlyUnsetsBoth", "limits=Z", "-Z max 1, -Z min -1"},
        LineRow{"MaximumUnreadableUnsetsIt", "limits=Z,-1,far", "-Z max 1"},
        LineRow{"MoreOperandsAreIgnored", "limits=X,1,2,3", "+X max 2, +X min 1"},
        LineRow{"MinimumUnreadableUnsets", "courseminimum=Z,far", "-Z min -1"},
        LineRow{"MinimumMissingUnsets", "courseminimum=Z", "-Z min -1"},
        LineRow{"MaximumUnreadableUnsets", "coursemaximum=Z,far", "-Z max 1"},
        LineRow{"MaximumMissingUnsets", "coursemaximum=Z", "-Z max 1"},
        LineRow{"LastLineWins", "limits=Z,-2,2", "+Z max 2, +Z min -2, -Z max 1, -Z min -1"},
        LineRow{"MinimumLeavesMaximum", "courseminimum=Z,-9", "+Z min -9, -Z min -1"},
        LineRow{"AnyElementByName", "limits=BATI,1,2", "+BATI max 2, +BATI min 1"},
        LineRow{"FirstToolOfTheName", "limits=outil,1,2", "+OUTIL max 2, +OUTIL min 1"},
        LineRow{"Gun", "limits=DRILL,0,40", "+DRILL max 40, +DRILL min 0"},
        LineRow{"Part", "limits=piece,0,40", "+PIECE max 40, +PIECE min 0"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Hooks, DefinitionLine,
    testing::Values(
        LineRow{"ElementAddedLast", "loop=X,1,2,3", "+DRILL hook 1 at 1 2 3"},
        LineRow{"InFrench", "boucle=X,1,2,3", "+DRILL hook 1 at 1 2 3"},
        LineRow{"PrefixAndCase", "LOOP=axe_c,0,0,4", "+DRILL hook 6 at 0 0 4"},
        LineRow{"UpperCasePrefix", "loop=AXE_C,0,0,4", "+DRILL hook 6 at 0 0 4"},
        LineRow{"TwoPrefixes", "loop=AXE_AXE_C,0,0,4", "+DRILL hook 6 at 0 0 4"},
        LineRow{"ThreePrefixesAreTooMany", "loop=AXE_AXE_AXE_C,0,0,4", "+DRILL hook -10 at 0 0 4"},
        LineRow{"AxisWordAsPoint", "loop=C,-y", "+DRILL hook 6 at 0 -1 0"},
        // Deliberate: the link is hooked, which after a link line is not the element added last.
        LineRow{"LinkNotTheLastElement", "lien=X\nloop=C,1,2,3", "+X hook 6 at 1 2 3"},
        LineRow{"ByFixedName", "loop=PIECE,1,2,3", "+DRILL hook -1 at 1 2 3"},
        LineRow{"Frame", "loop=BATI,1,2,3", "+DRILL hook 0 at 1 2 3"},
        LineRow{"UnknownNameStoresThePoint", "loop=Q,1,2,3", "+DRILL hook -10 at 1 2 3"},
        LineRow{"UnreadableVector", "loop=X,1,2", "+DRILL hook 1 at 0 0 0"},
        LineRow{"NoVector", "loop=X", "+DRILL hook 1 at 0 0 0"},
        LineRow{"UnknownNameWithoutVector", "loop=Q", ""}, LineRow{"NoOperands", "loop", ""},
        LineRow{"LastHookWins", "loop=X,1,2,3\nloop=C,4,5,6", "+DRILL hook 6 at 4 5 6"},
        LineRow{"FailedHookUndoesTheFormer", "loop=X,1,2,3\nloop=Q", ""},
        LineRow{"FollowingOperandsAreIgnored", "loop=X,z,9,9,9", "+DRILL hook 1 at 0 0 1"}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    Pairs, DefinitionLine,
    testing::Values(
        LineRow{"Two", "collision=X,Z", "+pair 1 3"},
        LineRow{"SmallerFirst", "collisions=Z,X", "+pair 1 3"},
        LineRow{"OneAgainstSeveral", "collisions=C,X,Z,BATI", "+pair 0 6, +pair 1 6, +pair 3 6"},
        LineRow{"PrefixAndCase", "COLLISIONS=axe_c,AXE_X", "+pair 1 6"},
        LineRow{"Twice", "collision=X,Z\ncollision=Z,X,X,Z", "+pair 1 3"},
        LineRow{"NeverWithItself", "collision=X,X,Z", "+pair 1 3"},
        LineRow{"OneOperandIsTooFew", "collision=X", ""}, LineRow{"NoOperands", "collision", ""},
        LineRow{"UnknownFirst", "collision=Q,X,Z", ""},
        LineRow{"UnknownAmongOthers", "collision=X,Q,Z,,W", "+pair 1 3"},
        LineRow{
            "EveryTool", "collisions=tool,BATI,C",
            "+pair -101 0, +pair -101 6, +pair -102 0, +pair -102 6, +pair -103 0, +pair -103 6"},
        LineRow{"EveryToolAsGun", "collisions=X,Gun", "+pair -101 1, +pair -102 1, +pair -103 1"},
        LineRow{"EveryToolAsGunDrill", "collisions=gundrill,X",
                "+pair -101 1, +pair -102 1, +pair -103 1"},
        LineRow{"ToolsAmongThemselves", "collision=tool,tool",
                "+pair -102 -101, +pair -103 -101, +pair -103 -102"},
        // Deliberate: names come first, and every tool is named OUTIL, so these give one tool.
        LineRow{"OutilIsTheFirstTool", "collisions=outil,X", "+pair -101 1"},
        LineRow{"AxeOutilIsTheFirstTool", "collisions=axe_outil,X", "+pair -101 1"},
        LineRow{"DrillIsTheFirstGun", "collisions=drill,X", "+pair -103 1"},
        LineRow{"PartByItsName", "collisions=piece,X", "+pair -1 1"},
        LineRow{"ToolWordTakesNoPrefix", "collisions=AXE_TOOL,X", ""},
        LineRow{"GunWordTakesNoPrefix", "collisions=X,AXE_GUN", ""},
        LineRow{"GunDrillWordTakesNoPrefix", "collisions=AXE_GUNDRILL,X", ""},
        LineRow{"CanonIsNoToolWord", "collisions=canon,X", ""},
        LineRow{"PartByItsKeywordIsUnknown", "collisions=part,X", ""},
        LineRow{"DrillGunIsNoToolWord", "collisions=drillgun,X", ""}),
    rowName);

INSTANTIATE_TEST_SUITE_P(
    RotationPoints, DefinitionLine,
    testing::Values(
        LineRow{"One", "rotationpoint=1", "+point 1 0 0 0 0 0 0 0 0 0 0 0"},
        LineRow{"InFrench", "PointDeRotation = 1.5 , -2 , 3e1",
                "+point 1.5 -2 30 0 0 0 0 0 0 0 0 0"},
        LineRow{"Two", "rotationpoint=1,2\nrotationpoint=3",
                "+point 1 2 0 0 0 0 0 0 0 0 0 0, +point 3 0 0 0 0 0 0 0 0 0 0 0"},
        LineRow{"Twelve", "rotationpoint=1,2,3,4,5,6,7,8,9,10,11,12",
                "+point 1 2 3 4 5 6 7 8 9 10 11 12"},
        LineRow{"AtMostTwelve", "rotationpoint=1,2,3,4,5,6,7,8,9,10,11,12,13,14",
                "+point 1 2 3 4 5 6 7 8 9 10 11 12"},
        LineRow{"BehindTheTwelfthNothingIsRead", "rotationpoint=1,2,3,4,5,6,7,8,9,10,11,12,far,",
                "+point 1 2 3 4 5 6 7 8 9 10 11 12"},
        LineRow{"NumberPrefixesCount", "rotationpoint=1a,inf", "+point 1 inf 0 0 0 0 0 0 0 0 0 0"},
        LineRow{"NoOperands", "rotationpoint", ""},
        LineRow{"EmptyOperandPart", "rotationpoint=", ""}),
    rowName);

TEST_F(LoadingTest, Version1NamesKeepThePrefixAndLimitsDoNot) {
  const KMachine machine = load("axis=AXE_X,1,x\naxis=X,2,x\nlimits=AXE_X,-100,250\n", 1);
  EXPECT_FALSE(machine.getElemByRank(0)->hasMin());
  EXPECT_FALSE(machine.getElemByRank(0)->hasMax());
  EXPECT_EQ(machine.getElemByRank(1)->getMin(), -100.0);
  EXPECT_EQ(machine.getElemByRank(1)->getMax(), 250.0);
  EXPECT_EQ(describe(load("axis=AXE_X,1,x\nlimits=AXE_X,-1,2\n", 1)), "AXE_X(1<-10) dir 1 0 0");
  EXPECT_EQ(describe(load("axis=AXE_X,1,x\nlimits=axe_x,-1,2\n", 1)),
            "AXE_X(1<-10) dir 1 0 0 min -1 max 2");
}

TEST_F(LoadingTest, UnreadableLimitsAreZero) {
  const KMachine machine = load("axis=X,x\ncourseminimum=X,far\ncoursemaximum=X\n", 2);
  EXPECT_EQ(machine.getElemByRank(0)->getMin(), 0.0);
  EXPECT_EQ(machine.getElemByRank(0)->getMax(), 0.0);
  EXPECT_FALSE(machine.getElemByRank(0)->hasMin());
  EXPECT_FALSE(machine.getElemByRank(0)->hasMax());
}

TEST_F(LoadingTest, LimitsGoToTheFirstElementOfTheName) {
  EXPECT_EQ(describe(load("axis=Q,1,x\naxis=q,2,y\nlimits=q,1,2\n", 1)),
            "Q(1<-10) dir 1 0 0 min 1 max 2; q(2<1) dir 0 1 0");
}

TEST_F(LoadingTest, LinesBeforeTheirElementsFindNothing) {
  const KMachine machine =
      load("limits=X,1,2\nloop=X,1,2,3\ncollision=X,Y\ncollision=tool,X\naxis=X,x\naxis=Y,y\n", 2);
  EXPECT_EQ(describe(machine), "X(1<-10) dir 1 0 0; Y(2<1) dir 0 1 0");
  EXPECT_TRUE(machine.getCollCheck().empty());
}

TEST_F(LoadingTest, ToolWordsMeanTheToolsReadSoFar) {
  const KMachine machine = load("axis=X,x\ntool\ncollision=X,tool\nlien=X\ngun\n", 2);
  const std::vector<std::pair<int, int>> expected = {{-101, 1}};
  EXPECT_EQ(machine.getCollCheck(), expected);
  trace.claimAll(L"... ? Unrecognized stuff");
}

TEST_F(LoadingTest, OutilMeansEveryGunWhenThereIsNoTool) {
  const std::vector<std::pair<int, int>> expected = {{-101, 1}, {-102, 1}};
  for (const std::string word : {"outil", "axe_outil", "OUTIL", "Axe_Outil"}) {
    const KMachine machine = load("axis=X,x\ngun\nlien=X\ngun\ncollision=" + word + ",X\n", 2);
    EXPECT_EQ(machine.getCollCheck(), expected) << word;
  }
  trace.claimAll(L"... ? Unrecognized stuff");
}

TEST_F(LoadingTest, AnAxisNamedLikeAToolWordIsFoundFirst) {
  const KMachine machine = load("axis=X,1,x\ntool\naxis=Tool,2,y\ncollision=tool,X\n", 1);
  const std::vector<std::pair<int, int>> expected = {{1, 2}};
  EXPECT_EQ(machine.getCollCheck(), expected);
  trace.claimAll(L"... ? Unrecognized stuff");
}

TEST_F(LoadingTest, CollisionNamesFollowVersion2InEveryVersion) {
  const KMachine machine =
      load("axis=AXE_X,1,x\naxis=X,2,x\naxis=Y,3,y\ncollision=AXE_X,axe_y\n", 1);
  const std::vector<std::pair<int, int>> expected = {{2, 3}};
  EXPECT_EQ(machine.getCollCheck(), expected);
}

// --- hooks and the machine's version

TEST_F(LoadingTest, HookNamesFollowTheVersionOfTheMachine) {
  const std::string axes = "axis=AXE_X,1,x\naxis=X,2,y\n";
  // Lower case keeps its prefix, which version 1 leaves in the wanted name.
  EXPECT_EQ(describe(load(axes + "loop=axe_x,1,2,3\n", 1)),
            "AXE_X(1<-10) dir 1 0 0; X(2<1) dir 0 1 0 hook 1 at 1 2 3");
  EXPECT_EQ(describe(load(axes + "loop=AXE_X,1,2,3\n", 1)),
            "AXE_X(1<-10) dir 1 0 0; X(2<1) dir 0 1 0 hook 2 at 1 2 3");
  EXPECT_EQ(describe(load("axis=AXE_X,1,x\nloop=AXE_X,1,2,3\n", 1)),
            "AXE_X(1<-10) dir 1 0 0 hook -10 at 1 2 3");
}

TEST_F(LoadingTest, HookGoesToTheFirstElementOfADoubledIndex) {
  EXPECT_EQ(describe(load("axis=X,x\naxis=Y,y\naxis=X,z\nloop=Y,1,2,3\n", 2)),
            "X(1<-10) dir 1 0 0 hook 2 at 1 2 3; Y(2<1) dir 0 1 0; X(1<2) dir 0 0 1");
}

// --- order of pairs

using Pairs = std::vector<std::pair<int, int>>;

TEST_F(LoadingTest, PairsAreInTheOrderOfTheirFirstAddition) {
  const std::string axes = "axis=X,x\naxis=Y,y\naxis=Z,z\ntool\ntool\n";
  const auto pairsOf = [&](const std::string& lines) {
    return load(axes + lines, 2).getCollCheck();
  };
  EXPECT_EQ(pairsOf("collision=tool,Z,X\n"), (Pairs{{-101, 3}, {-101, 1}, {-102, 3}, {-102, 1}}));
  EXPECT_EQ(pairsOf("collision=tool,X,tool,X,Z\n"),
            (Pairs{{-101, 1}, {-102, -101}, {-101, 3}, {-102, 1}, {-102, 3}}));
  EXPECT_EQ(pairsOf("collision=Y,X\ncollision=X,Z,Y\ncollision=Z,Y,X\n"),
            (Pairs{{1, 2}, {1, 3}, {2, 3}}));
  trace.claimAll(L"... ? Unrecognized stuff");
}

TEST_F(LoadingTest, AThousandToolsAmongThemselvesAreHeldOnce) {
  std::string text = "axis=X,x\n";
  for (int i = 0; i < 1000; ++i) text += "lien=X\ngun\n";
  std::string line = "collision=tool";
  while (line.size() < 1198) line += ",tool";
  for (int i = 0; i < 4; ++i) text += line + "\n";
  const KMachine machine = load(text, 2);
  Pairs expected;  // each tool with those behind it: the larger number is the smaller index
  for (int a = 1; a <= 1000; ++a) {
    for (int b = a + 1; b <= 1000; ++b) expected.emplace_back(-100 - b, -100 - a);
  }
  EXPECT_TRUE(machine.getCollCheck() == expected) << machine.getCollCheck().size();
  trace.claimAll(L"... ? Unrecognized stuff");
}

// --- a second load

class Reload : public LoadingTest {
 protected:
  /// Loads another file into the same machine.
  int again(const std::string& text, int version = 2) {
    machine.setDataFilePNE(folder.write("m.def", text).wstring(), version);
    const int answer = machine.readDataFile();
    trace.claimAll(L"e[");
    trace.claimAll(L"... ? Unrecognized stuff");
    if (machine.getAxisNum() == 0) {
      EXPECT_TRUE(trace.claim(korvo::test::noPositionLine(0)));
    }
    return answer;
  }

  TempDir folder;
  KMachine machine;
};

TEST_F(Reload, KeepsSettingsPairsAndCurrentTool) {
  ASSERT_EQ(again(kBase + "collision=X,Z\n"), 0);
  machine.setCurrentTool(2);
  ASSERT_EQ(again("frame\npart\nlien=BATI\naxis=Y,y\ntool\n"), 0);
  EXPECT_EQ(machine.getStrategy(), 7);
  EXPECT_EQ(machine.getMode_RTCP(), 8);
  EXPECT_EQ(machine.getCollCheck().size(), 1u);
  EXPECT_EQ(machine.getCurrentTool(), 2);
  EXPECT_EQ(machine.getElemNumber(), 4);
  EXPECT_EQ(machine.getAxisNum(), 1);
  EXPECT_EQ(machine.getKine(2).toolIndex, -102);  // of the first load: there is one tool now
}

TEST_F(Reload, PairsOfTheFormerLoadComeFirstAndCountAsPresent) {
  ASSERT_EQ(again(kBase + "collision=C,Z,X\n"), 0);
  ASSERT_EQ(again(kBase + "collision=X,Z,C\ncollision=Z,C\n"), 0);
  EXPECT_EQ(machine.getCollCheck(), (Pairs{{3, 6}, {1, 6}, {1, 3}}));
}

/// A load that is refused changes nothing that can be asked for.
TEST_F(Reload, RefusedLoadChangesNothing) {
  ASSERT_EQ(again(kBase + "collision=C,Z,X\nrotationpoint=1,2\n"), 0);
  machine.setCurrentTool(2);
  const KMachine before = machine;
  const int stored = machine.getKine(3).toolIndex;
  const auto expectUnchanged = [&] {
    EXPECT_EQ(machine.readDataFile(), -1);
    EXPECT_EQ(change(before, machine), "");
    EXPECT_EQ(describe(machine), describe(before));
    EXPECT_EQ(machine.getStrategy(), 7);
    EXPECT_EQ(machine.getMode_RTCP(), 8);
    EXPECT_EQ(machine.getCurrentTool(), 2);
    EXPECT_EQ(machine.getCollCheck(), (Pairs{{3, 6}, {1, 6}}));
    ASSERT_NE(machine.getRotationPoint(0), nullptr);
    EXPECT_EQ((*machine.getRotationPoint(0))[1], 2.0);
    EXPECT_EQ(machine.getRotationPoint(1), nullptr);
    EXPECT_EQ(machine.getAxisNum(), 3);
    EXPECT_EQ(machine.getAxisElem(1), machine.getElemByIndex(1));
    EXPECT_EQ(machine.getKine(2).toolIndex, -102);
    EXPECT_EQ(machine.getKine(3).toolIndex, stored);
  };
  EXPECT_EQ(stored, -103);
  machine.setDataFilePNE(
      folder.write("n.def", "strategy=1\nmode=1\nframe\ncollision=BATI,X\n").wstring(), 0);
  expectUnchanged();
  machine.setDataFilePNE((folder.path() / "gone.def").wstring(), 2);
  expectUnchanged();
  machine.setDataFilePNE(folder.path().wstring(), 1);  // a folder
  expectUnchanged();
}

TEST_F(Reload, EmptiesElementsAndRotationPoints) {
  ASSERT_EQ(again(kBase + "rotationpoint=1\n"), 0);
  ASSERT_NE(machine.getRotationPoint(0), nullptr);
  EXPECT_EQ(again("# nothing\n"), -1);
  EXPECT_EQ(machine.getElemNumber(), 0);
  EXPECT_EQ(machine.getAxisNum(), 0);
  EXPECT_EQ(machine.getRotationPoint(0), nullptr);
  EXPECT_EQ(machine.getAxisElem(1), nullptr);
}

TEST_F(Reload, RotationPointsNeedMoreOperandsThanTheFormerLoadHadAxes) {
  ASSERT_EQ(again(kBase + "rotationpoint=1\n"), 0);  // X, Z, C; no axis before this load
  ASSERT_EQ(machine.getAxisNum(), 3);
  ASSERT_EQ(again(kBase + "rotationpoint=1,2,3\nrotationpoint=4,5,6,7\n"), 0);
  ASSERT_NE(machine.getRotationPoint(0), nullptr);
  EXPECT_EQ((*machine.getRotationPoint(0))[0], 4.0);
  EXPECT_EQ((*machine.getRotationPoint(0))[3], 7.0);
  EXPECT_EQ(machine.getRotationPoint(1), nullptr);
}

TEST_F(Reload, ShortRotationPointLineWithoutNumbersIsPassedOver) {
  ASSERT_EQ(again(kBase), 0);
  EXPECT_EQ(again(kBase + "rotationpoint=a,b,c\n"), 0);  // three operands, three axes: not read
  EXPECT_EQ(machine.getRotationPoint(0), nullptr);
}

TEST_F(Reload, IncompleteFileLeavesNoAxisElement) {
  ASSERT_EQ(again(kBase), 0);
  ASSERT_NE(machine.getAxisElem(1), nullptr);
  EXPECT_EQ(again("frame\naxis=X,x\ntool\n"), -1);
  EXPECT_EQ(machine.getAxisElem(1), nullptr);
  EXPECT_EQ(machine.getElemByIndex(1)->getValueIndex(), -1);
  EXPECT_EQ(machine.newMachineValue(), nullptr);
  EXPECT_TRUE(trace.claim(korvo::test::noPositionLine(0)));
}

// --- lines that never end, and those that might

/// A child that loads the text, and is ended by its alarm when that takes two seconds.
void loadForTwoSeconds(const std::string& text, int version = 2) {
  alarm(2);
  korvo::test::loadText(text, version);
  _exit(0);
}

class EndlessLine : public testing::TestWithParam<LineRow> {};

// Deliberate: an operand that does not scan is not passed over. Files are checked beforehand.
TEST_P(EndlessLine, NeverEnds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(loadForTwoSeconds(GetParam().lines), testing::KilledBySignal(SIGALRM), "");
}

INSTANTIATE_TEST_SUITE_P(
    RotationPoint, EndlessLine,
    testing::Values(LineRow{"Word", "rotationpoint=far\n", ""},
                    LineRow{"WordBehindNumbers", "rotationpoint=1,2,far\n", ""},
                    LineRow{"EmptyOperand", "rotationpoint=1,,2\n", ""},
                    LineRow{"OnlyEmptyOperands", "rotationpoint=,\n", ""},
                    LineRow{"TwelfthOperand", "pointderotation=1,2,3,4,5,6,7,8,9,10,11,far\n", ""}),
    rowName);

// Deliberate: links are followed without a count. Files are checked beforehand.
TEST(EndlessChain, OfAToolNeverEnds) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  // What hangs on nothing hangs on the number -10: an axis that takes it closes a ring.
  EXPECT_EXIT(loadForTwoSeconds("frame\npart=x,y,0,0,0\naxis=X,-10,x\ntool=z,0,0,0\n", 1),
              testing::KilledBySignal(SIGALRM), "");
}

class RingOfLinks : public testing::TestWithParam<LineRow> {};

// A part line turns the links behind it around. Where they lead back to an earlier part, which has
// the same index, this would go on for ever: it is left.
TEST_P(RingOfLinks, IsLeft) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(loadForTwoSeconds(GetParam().lines), testing::ExitedWithCode(0), "");
}

INSTANTIATE_TEST_SUITE_P(
    Part, RingOfLinks,
    testing::Values(LineRow{"ThirdPart", "part\naxis=X,x\npart\npart\n", ""},
                    LineRow{"FourthPart", "frame\npart\naxis=X,x\npart\npart\npart\n", ""},
                    LineRow{"BehindAnAxis", "part\naxis=X,x\npart\naxis=Y,y\npart\n", ""}),
    rowName);

// A hangs on nothing (-10) until Q, which hangs on A, takes that number: a ring. The part meets it
// from V, whose number B has too. The walk goes V U T Q A and comes back Q T U V: all but A are
// turned twice and are as before.
TEST_F(LoadingTest, RingWithoutAnEarlierPartIsLeftTheWayItWasEntered) {
  EXPECT_EQ(describe(load("axis=A,1,x\naxis=Q,-10,y\naxis=T,5,x\naxis=U,6,x\naxis=V,7,x\n"
                          "axis=S,3,z\nlien=S\naxis=B,7,x\npart\n",
                          1)),
            "A(1<-10) inv dir 1 0 0; Q(-10<1) dir 0 1 0; T(5<-10) dir 1 0 0; U(6<5) dir 1 0 0; "
            "V(7<6) dir 1 0 0; S(3<7) dir 0 0 1; B(7<3) dir 1 0 0; PIECE(-1<-10)");
}

}  // namespace
