// Strategy, mode, rotation points and collision pairs: what the checker finds, where, and what not.

#include <gtest/gtest.h>

#include "tests/toolkit/FindingTable.h"

using korvo::Format;
using korvo::test::FindingRow;

namespace {

class CheckSettings : public testing::TestWithParam<FindingRow> {};

TEST_P(CheckSettings, Finds) { EXPECT_EQ(korvo::test::saidOf(GetParam()), GetParam().expected); }

#define AXES "axis=X,1,x\naxis=Y,2,y\n"

INSTANTIATE_TEST_SUITE_P(
    RotationPoints, CheckSettings,
    testing::Values(
        FindingRow{"Short",
                   "rotation-point-short",
                   AXES "rotationpoint=1\n",
                   {"3:16+0 expected a number for each of the 2 axes in a rotation point, found "
                    "1"}},
        FindingRow{"AxesBelowCountToo",
                   "rotation-point-short",
                   "rotationpoint=1,2\n" AXES "axis=Z,3,z\n",
                   {"1:18+0 expected a number for each of the 3 axes in a rotation point, found "
                    "2"}},
        FindingRow{"OneForEach", "rotation-point-short", AXES "rotationpoint=1,2\n", {}},
        FindingRow{"More", "rotation-point-short", AXES "pointderotation=1,2,3\n", {}},
        FindingRow{"NumberTwiceIsOneAxis",
                   "rotation-point-short",
                   "axis=X,1,x\naxis=Y,1,y\nrotationpoint=1\n",
                   {}},
        FindingRow{"Semicolons", "rotation-point-short", AXES "rotationpoint=1;2\n", {}},
        FindingRow{"Alone", "rotation-point-short", AXES "rotationpoint\n", {}}),
    korvo::test::labelOf);

INSTANTIATE_TEST_SUITE_P(
    Values, CheckSettings,
    testing::Values(
        FindingRow{"Word",
                   "strategy-value",
                   "strategy = best\n",
                   {"1:12+4 expected a whole number as the strategy, found 'best', which is read "
                    "as 0"}},
        // What is read in part is told by the rule about such numbers.
        FindingRow{"Part", "strategy-value", "strategie=1.5\n", {}},
        FindingRow{"Whole", "strategy-value", "strategy=+2\nstrategy=-7\n", {}},
        FindingRow{"Alone", "strategy-value", "strategy\n", {}},
        FindingRow{"Mode",
                   "mode-value",
                   "mode=on\n",
                   {"1:6+2 expected a whole number as the mode, found 'on', which is read as 0"}},
        FindingRow{"ModeWhole", "mode-value", "mode=12\n", {}},
        FindingRow{"StrategyIsNoMode", "mode-value", "strategy=on\n", {}},
        FindingRow{"Other",
                   "strategy-other",
                   "strategy=3\n",
                   {"1:10+1 expected strategy 0, 1 or 2, found '3', which chooses as 0 does"}},
        FindingRow{"Negative",
                   "strategy-other",
                   "strategy=-1\n",
                   {"1:10+2 expected strategy 0, 1 or 2, found '-1', which chooses as 0 does"}},
        FindingRow{"ZeroOneTwo", "strategy-other", "strategy=0\nstrategy=1\nstrategy=2\n", {}},
        FindingRow{"AWordIsNotAnother", "strategy-other", "strategy=best\nstrategy=7.5\n", {}},
        FindingRow{"Twice",
                   "setting-twice",
                   "strategy=1\nmode=1\n  strategie=2\n",
                   {"3:3+9 expected 'strategie' once, found 2 here, which replaces 1 of line 1"}},
        FindingRow{"ModeTwice",
                   "setting-twice",
                   "mode=1\nmode=2\nmode=3\n",
                   {"2:1+4 expected 'mode' once, found 2 here, which replaces 1 of line 1",
                    "3:1+4 expected 'mode' once, found 3 here, which replaces 2 of line 2"}},
        FindingRow{"TheSameTwice", "setting-twice", "strategy=2\nstrategie=2\n", {}}),
    korvo::test::labelOf);

// Frame, X, and the tool in line 3.
#define BODIES "frame\naxis=X,1,x\ntool=z,0,0,0\n"

INSTANTIATE_TEST_SUITE_P(
    Collisions, CheckSettings,
    testing::Values(
        FindingRow{"Unknown",
                   "collision-unknown",
                   BODIES "collisions=tool, HEAD ,Q\n",
                   {"4:18+4 expected the name of an element, or a word for all tools, found 'HEAD'",
                    "4:24+1 expected the name of an element, or a word for all tools, found 'Q'"}},
        FindingRow{"Empty",
                   "collision-unknown",
                   BODIES "collisions=tool,\n",
                   {"4:17+0 expected the name of an element, or a word for all tools, found ''"}},
        FindingRow{"Known",
                   "collision-unknown",
                   BODIES "collision=AXE_OUTIL,bati,axe_x\ncollision=gundrill,AXE_X\n",
                   {}},
        FindingRow{
            "WordsForToolsAreNotUnknown", "collision-unknown", "frame\ncollision=gun,BATI\n", {}},
        FindingRow{"Before",
                   "collision-before",
                   "frame\ncollision=BATI,X\naxis=X,1,x\n",
                   {"2:16+1 expected elements above the line, found 'X', which line 3 declares"}},
        FindingRow{
            "BeforeIsNotUnknown", "collision-unknown", "frame\ncollision=BATI,X\naxis=X,1,x\n", {}},
        FindingRow{"Prefix",
                   "collision-axe-prefix",
                   "frame\naxis=AXE_X,1,x\ncollision=BATI,AXE_X\n",
                   {"3:16+5 expected the name of an element, found 'AXE_X', which does not find "
                    "that of line 2"}},
        FindingRow{
            "BeforeTool",
            "collision-before-tool",
            "frame\ncollision=tool,BATI\ntool=z,0,0,0\n",
            {"2:11+4 expected a tool above the line that speaks of all tools, found none for "
             "'tool'"}},
        FindingRow{
            "OutilBeforeTool",
            "collision-before-tool",
            "frame\ncollision=BATI,Outil\ntool=z,0,0,0\n",
            {"2:16+5 expected a tool above the line that speaks of all tools, found none for "
             "'Outil'"}},
        FindingRow{"OutilBeforeToolIsSaidOnce",
                   "collision-before",
                   "frame\ncollision=BATI,Outil\ntool=z,0,0,0\n",
                   {}},
        FindingRow{"NoToolAtAllIsToldElsewhere",
                   "collision-before-tool",
                   "frame\ncollision=tool,BATI\n",
                   {}},
        FindingRow{"AGunIsEnough",
                   "collision-before-tool",
                   "frame\ngun=z,0,0,0\ncollision=tool,BATI\n",
                   {}},
        FindingRow{"Short",
                   "collision-short",
                   BODIES "collision=tool\n",
                   {"4:15+0 expected at least two names in a collision line, found only 'tool'"}},
        FindingRow{"Two", "collision-short", BODIES "collision=tool,X\n", {}},
        FindingRow{"Self",
                   "collision-self",
                   BODIES "collision=X,BATI,AXE_x\n",
                   {"4:18+5 expected two different bodies in a pair, found 'X' and 'AXE_x', which "
                    "are one"}},
        FindingRow{"OneToolByTwoWords",
                   "collision-self",
                   BODIES "collision=tool,outil\n",
                   {"4:16+5 expected two different bodies in a pair, found 'tool' and 'outil', "
                    "which are one"}},
        FindingRow{
            "TwoTools", "collision-self", BODIES "lien=X\ntool=x,0,0,0\ncollision=tool,tool\n", {}},
        FindingRow{"TwoNothings", "collision-self", BODIES "collision=Q,Q\n", {}},
        FindingRow{"Twice",
                   "collision-twice",
                   BODIES "collision=tool,X,BATI\ncollision=X,tool\n",
                   {"5:13+4 expected each pair once, found 'X' and 'tool' again, after line 4"}},
        FindingRow{"TwiceInALine",
                   "collision-twice",
                   BODIES "collision=tool,X,x\n",
                   {"4:18+1 expected each pair once, found 'tool' and 'x' again, after line 4"}},
        FindingRow{"MoreToolsByNow",
                   "collision-twice",
                   BODIES "collision=tool,X\nlien=X\ntool=x,0,0,0\ncollision=tool,X\n",
                   {}},
        FindingRow{"OtherPairs",
                   "collision-twice",
                   BODIES "collision=tool,X,BATI\ncollision=X,BATI\n",
                   {}},
        FindingRow{"FirstToolAlone",
                   "collision-first-tool",
                   BODIES "lien=X\ngun=x,0,0,0\ncollision=outil,BATI,drill\n",
                   {"6:11+5 expected a word for all 2 tools and guns, found 'outil', which finds "
                    "one alone",
                    "6:22+5 expected a word for all 2 tools and guns, found 'drill', which finds "
                    "one alone"}},
        FindingRow{"TheOnlyTool", "collision-first-tool", BODIES "collision=outil,BATI\n", {}},
        FindingRow{"AllTools",
                   "collision-first-tool",
                   BODIES "lien=X\ngun=x,0,0,0\ncollision=tool,BATI\n",
                   {}}),
    korvo::test::labelOf);

TEST(CheckSettingSuggestions, ANameAlmostRightIsSuggested) {
  const auto found = korvo::test::findingsOf(BODIES "collision=tools,BATI\n", "collision-unknown",
                                             Format::version1);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].suggestion, "did you mean 'tool'?");
}

}  // namespace
