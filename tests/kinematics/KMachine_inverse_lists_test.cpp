// The lists of all positions: where they start from, what they keep and in which order.
#include <limits>
#include <optional>

#include "tests/kinematics/KMachine_inverse.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

const UVec3d kUp(0, 0, 1);
const UVec3d kOrigin;

UVec3d alongB(double b) { return {std::sin(rad(b)), 0, std::cos(rad(b))}; }

// --- start angles. L is locked, so its start is its value in the result; B answers "0" from its
// one start, and the tool's direction does not depend on L.

const std::string kLB = kXYZ + "rotation=L,4,z,0,0,0,0,0\nrotation=B,5,y,0,0,0,0,0\n";

void setLimits(KMachine& machine, const wchar_t* axis, std::optional<double> low,
               std::optional<double> high) {
  KMachineElem& e = *machine.getElemByName(axis);
  e.setMin(low.value_or(0), low.has_value());
  e.setMax(high.value_or(0), high.has_value());
}

struct SeedRow {
  const char* name;
  std::optional<double> low, high;
  Numbers starts;
};

std::ostream& operator<<(std::ostream& out, const SeedRow& row) { return out << row.name; }

class StartAngles : public InverseTest, public testing::WithParamInterface<SeedRow> {};

TEST_P(StartAngles, AreTheMiddleTheEndsAndQuarterTurnsInside) {
  KMachine machine = head(kLB);
  machine.getElemByName(L"L")->setLocked(true);
  setLimits(machine, L"L", GetParam().low, GetParam().high);
  setLimits(machine, L"B", 0, 0);
  Entries entries;
  EXPECT_EQ(machine.getPossibleAngles(kUp, entries.list, 1), 0);
  EXPECT_EQ(entries.column(3), GetParam().starts);
}

INSTANTIATE_TEST_SUITE_P(
    Limits, StartAngles,
    testing::Values(
        SeedRow{"None", {}, {}, {0, -360, 360, -180, 180, -90, 90, -270, 270}},
        SeedRow{"ZeroTo90", 0, 90, {45, 0, 90}},
        SeedRow{"Beyond360AreCut", -400, 400, {0, -360, 360, -180, 180, -90, 90, -270, 270}},
        SeedRow{"HighBeyond360IsCut", 100, 400, {230, 100, 360, 180, 270}},
        SeedRow{"LowBeyond360IsCut", -1000, -100, {-230, -360, -100, -180, -270}},
        SeedRow{"LowAlone", -90, {}, {135, -90, 360, 180, 90, 270}},
        SeedRow{"HighAlone", {}, 90, {-135, -360, 90, -180, -90, -270}},
        SeedRow{"AMiddleOnTheGridComesOnce", 0, 180, {90, 0, 180}},
        SeedRow{"EndsOnTheGridComeOnce", -90, 90, {0, -90, 90}}, SeedRow{"EqualEnds", 30, 30, {30}},
        SeedRow{"CrossedGiveNone", 90, 0, {}}, SeedRow{"HardlyCrossedGiveNone", 30, 29.999, {}},
        SeedRow{"BeyondTheTurnGiveNone", 400, 500, {}}, SeedRow{"AtTheTurn", 360, 500, {360}}),
    [](const auto& row) { return std::string(row.param.name); });

using Starts = InverseTest;

TEST_F(Starts, TheFirstAxisOfTheChainVariesFastest) {
  // M comes before L in the chain and after it in positions: X Y Z L B M.
  KMachine machine = head(kXYZ + "rotation=M,7,z,0,0,0,0,0\n" +
                          "rotation=L,4,z,0,0,0,0,0\nrotation=B,5,y,0,0,0,0,0\n");
  for (const wchar_t* axis : {L"L", L"M"}) machine.getElemByName(axis)->setLocked(true);
  setLimits(machine, L"M", 0, 90);
  setLimits(machine, L"B", 0, 0);
  Entries entries;
  EXPECT_EQ(machine.getPossibleAngles(kUp, entries.list, 1), 0);
  const double first[] = {45, 0, 90}, second[] = {0, -360, 360, -180, 180, -90, 90, -270, 270};
  std::vector<Numbers> expected;
  for (int i = 0; i < 27; ++i) expected.push_back({0, 0, 0, second[i / 3], 0, first[i % 3]});
  EXPECT_EQ(entries.numbers(), expected);
}

TEST_F(Starts, ThatFailAreTracedOneByOne) {
  const KMachine machine = table("rotation=C,6,z,0,0,0,0,0\n");  // the tool is along C
  Entries entries;
  EXPECT_EQ(machine.getPossibleAngles(UVec3d(1, 0, 0), entries.list, 1), 0);
  EXPECT_TRUE(entries.list.empty());
  const auto lines = trace.lines();
  ASSERT_EQ(lines.size(), 27u);
  for (std::size_t i = 0; i < lines.size(); i += 3) {
    EXPECT_EQ(lines[i].rfind(L"solveRot_conical (4X) failed : rotAxis(", 0), 0u);
    EXPECT_EQ(lines[i + 1], kNoRotations);
    EXPECT_EQ(lines[i + 2], kNoSolution);
  }
  trace.claimAll();
}

TEST_F(Starts, AreOnceZeroWithoutRotaryAxes) {
  const KMachine machine = head(kXYZ);
  Entries entries;
  EXPECT_EQ(machine.getPossibleAngles(kUp, entries.list, 1), 0);
  EXPECT_TRUE(entries.list.empty());
  EXPECT_EQ(count(kNoRotations), 1);
  EXPECT_EQ(count(kNoSolution), 1);
}

TEST_F(Starts, OfAnAxisWithoutPlaceAreNone) {
  KMachine machine = head(kLB);
  setLimits(machine, L"L", 0, 90);
  setLimits(machine, L"B", 0, 0);
  machine.getElemByName(L"L")->setElemIndex(50);
  machine.getElemByName(L"L")->setValueIndex(-1);
  machine.getElemByName(L"B")->setPrevIndex(50);
  Entries entries;
  EXPECT_EQ(machine.getPossibleAngles(kUp, entries.list, 1), 0);
  EXPECT_EQ(entries.numbers(), (std::vector<Numbers>{{0, 0, 0, 0, 0}}));
}

// --- which tool

/// Tool 1 on L and B, tool 2 on M alone (from the frame). Values X Y Z L B M.
class TwoTools : public InverseTest {
 protected:
  TwoTools() : machine(head(kLB + "tool=z,0,0,0\nlien=BATI\nrotation=M,7,x,0,0,0,0,0\n")) {
    setLimits(machine, L"B", 0, 0);
    machine.getElemByName(L"L")->setLocked(true);
    setLimits(machine, L"L", 0, 90);
  }

  KMachine machine;
  Entries entries;
};

// Deliberate: starts are those of the tool asked for, the solver's tool is the current one.
TEST_F(TwoTools, StartsAreThoseOfTheToolAskedFor) {
  EXPECT_EQ(machine.getToolNumber(), 2);
  EXPECT_EQ(machine.getPossibleAngles(kUp, entries.list, 2), 0);
  EXPECT_EQ(entries.column(5), (Numbers{0, -360, 360, -180, 180, -90, 90, -270, 270}));
  EXPECT_EQ(entries.column(3), Numbers(9, 0.0));
}

TEST_F(TwoTools, BelowOneIsTheCurrentTool) {
  for (const int tool : {0, -1, -101}) {
    Entries own;
    EXPECT_EQ(machine.getPossibleAngles(kUp, own.list, tool), 0);
    EXPECT_EQ(own.column(3), (Numbers{45, 0, 90}));
  }
}

TEST_F(TwoTools, AToolThatIsNoneStartsFromZero) {
  EXPECT_EQ(machine.getPossibleAngles(kUp, entries.list, 7), 0);
  EXPECT_EQ(entries.numbers(), (std::vector<Numbers>{{0, 0, 0, 0, 0, 0}}));
}

TEST_F(TwoTools, RotaryLimitsOfTheWholeMachineHold) {
  setLimits(machine, L"M", 10, 20);  // M stays at 0: outside
  EXPECT_EQ(machine.getPossibleAngles(kUp, entries.list, 1), 0);
  EXPECT_TRUE(entries.list.empty());
  setLimits(machine, L"M", 0, 20);
  EXPECT_EQ(machine.getPossibleAngles(kUp, entries.list, 1), 0);
  EXPECT_EQ(entries.list.size(), 3u);
}

// --- what is kept. A table B alone: from each start the nearest turn of its angle.

/// Values X Y Z B; the point (0, 0, 0) is at X = Y = Z = 0.
class TableB : public InverseTest {
 protected:
  TableB() : machine(table("rotation=B,5,y,0,0,0,0,0\n")) {}

  Numbers angles(double b) {
    Entries entries;
    EXPECT_EQ(machine.getPossibleAngles(alongB(b), entries.list, 1), 0);
    return entries.column(3);
  }

  KMachine machine;
};

// From 0, -360, 360: 30, -330, 390. From -180: -330. From 180, -90 and 90: 30. From -270: -330.
// From 270: 390.
TEST_F(TableB, EveryTurnNearAStartComesOnceInOrder) {
  EXPECT_THAT(angles(30), AllNear(Numbers{30, -330, 390}, 1e-9));
}

// Starts end at 360, results are compared with the limit itself.
TEST_F(TableB, SolutionsAreHeldAgainstTheLimitsThemselves) {
  setLimits(machine, L"B", 300, 400);
  EXPECT_THAT(angles(30), AllNear(Numbers{390}, 1e-9));
  setLimits(machine, L"B", 300, 389);
  EXPECT_THAT(angles(30), AllNear(Numbers{}, 0));
}

TEST_F(TableB, SolutionsOnALimitAreInside) {
  setLimits(machine, L"B", -90, 90);
  EXPECT_THAT(angles(0), AllNear(Numbers{0}, 1e-9));
  setLimits(machine, L"B", 0, 90);
  EXPECT_THAT(angles(0), AllNear(Numbers{0}, 1e-9));
  setLimits(machine, L"B", -90, 0);
  EXPECT_THAT(angles(0), AllNear(Numbers{0}, 1e-9));
}

TEST_F(TableB, LinearValuesArePutOnTheOriginAndNotChecked) {
  setLimits(machine, L"X", 500, 600);
  machine.setTHELength(100, 1);
  Entries entries;
  EXPECT_EQ(machine.getPossibleAngles(alongB(30), entries.list, 1), 0);
  ASSERT_EQ(entries.list.size(), 3u);
  for (const Numbers& v : entries.numbers()) {
    EXPECT_THAT(tipAt(machine, v).point, Near(kOrigin, 1e-9));
    EXPECT_NEAR(v[2], 100, 1e-9);
  }
}

TEST_F(TableB, TheListIsNotEmptied) {
  Entries entries;
  entries.add(machine, {1, 2, 3, 4});
  EXPECT_EQ(machine.getPossibleAngles(alongB(30), entries.list, 1), 0);
  ASSERT_EQ(entries.list.size(), 4u);
  EXPECT_EQ(numbersOf(*entries.list[0]), (Numbers{1, 2, 3, 4}));
}

TEST_F(TableB, WhatIsInTheListAlreadyIsNotAddedAgain) {
  Entries entries;
  entries.add(machine, {0, 0, 0, -330 + 0.99e-5});
  entries.add(machine, {0, 0, 0, 390 + 1.01e-5});
  EXPECT_EQ(machine.getPossibleAngles(alongB(30), entries.list, 1), 0);
  EXPECT_THAT(entries.column(3), AllNear(Numbers{-330 + 0.99e-5, 390 + 1.01e-5, 30, 390}, 1e-9));
  EXPECT_EQ(machine.getPossibleAngles(alongB(30), entries.list, 1), 0);
  EXPECT_EQ(entries.list.size(), 4u);
}

TEST_F(TableB, EntriesThatDifferInALinearValueDiffer) {
  Entries entries;
  entries.add(machine, {1, 0, 0, 30});
  EXPECT_EQ(machine.getPossibleAngles(alongB(30), entries.list, 1), 0);
  EXPECT_EQ(entries.list.size(), 4u);
}

// --- complete positions

class Configs : public TableB {
 protected:
  int configs(Entries& entries, double b, const UVec3d& pos) {
    return machine.getPossibleConfigs(alongB(b), pos, entries.list, 1);
  }
};

TEST_F(Configs, PutTheTipOnThePointInTheOrderOfTheAngles) {
  Entries entries;
  EXPECT_EQ(configs(entries, 30, {10, 20, 30}), 0);
  EXPECT_THAT(entries.column(3), AllNear(Numbers{30, -330, 390}, 1e-9));
  for (const Numbers& v : entries.numbers()) {
    EXPECT_THAT(tipAt(machine, v).point, Near(UVec3d(10, 20, 30), 1e-9));
  }
}

TEST_F(Configs, OnALinearLimitAreInside) {
  setLimits(machine, L"B", 0, 0);
  setLimits(machine, L"X", -10, 280);
  const std::pair<double, std::size_t> rows[] = {{-10, 1}, {-10.001, 0}, {280, 1}, {280.001, 0}};
  for (const auto& [x, kept] : rows) {
    Entries entries;
    EXPECT_EQ(configs(entries, 0, {x, 0, 0}), 0);
    EXPECT_EQ(entries.list.size(), kept) << x;
  }
}

TEST_F(Configs, EntriesOfTheHostAreSolvedToo) {
  Entries entries;
  entries.add(machine, {1, 2, 3, 0});
  const auto* const host = entries.list[0];
  setLimits(machine, L"B", 0, 90);
  EXPECT_EQ(configs(entries, 30, {10, 20, 30}), 0);
  ASSERT_EQ(entries.list.size(), 2u);  // Deliberate: not looked through for equal ones again
  EXPECT_EQ(entries.list[0], host);    // overwritten in its place
  EXPECT_THAT(numbersOf(*entries.list[0]), AllNear(numbersOf(*entries.list[1]), 1e-9));
}

// Deliberate: rotary limits are those of the list of angles, not looked at again.
TEST_F(Configs, RotaryLimitsAreNotCheckedAgain) {
  setLimits(machine, L"B", 0, 90);
  Entries entries;
  entries.add(machine, {0, 0, 0, 750});
  EXPECT_EQ(configs(entries, 30, {10, 20, 30}), 0);
  EXPECT_THAT(entries.column(3), AllNear(Numbers{750, 30}, 1e-9));
}

TEST_F(Configs, EntriesWithoutSolutionLeave) {
  Entries entries;
  entries.add(machine, {1, 2, 3, 0});
  entries.add(machine, {4, 5, 6, 7});
  EXPECT_EQ(machine.getPossibleConfigs(UVec3d(0, 1, 0), kOrigin, entries.list, 1), 0);
  EXPECT_TRUE(entries.list.empty());
  EXPECT_EQ(count(kNoSolution), 9);       // the starts
  EXPECT_EQ(count(kNoRotations), 9 + 2);  // and the entries, without a line of their own
  EXPECT_EQ(trace.claimAll(L"solveRot_conical (4X) failed : rotAxis"), 9 + 2);
}

TEST_F(Configs, AnEmptyListOfAnglesStaysEmpty) {
  setLimits(machine, L"B", 90, 0);
  Entries entries;
  EXPECT_EQ(configs(entries, 30, {10, 20, 30}), 0);
  EXPECT_TRUE(entries.list.empty());
}

/// C under A under the part's side, as on a trunnion: A through (0, 10, -35), C through (10, -20).
class TrunnionConfigs : public InverseTest {
 protected:
  TrunnionConfigs()
      : machine(table("rotation=A,4,x,0,0,0,10,-35\nrotation=C,6,z,0,0,10,-20,0\n")) {}

  std::vector<Numbers> configs() {
    Entries entries;
    EXPECT_EQ(machine.getPossibleConfigs(UVec3d(1, 1, 1), UVec3d(25, 40, 60), entries.list, 1), 0);
    return entries.numbers();
  }

  KMachine machine;
};

// A = 54.7 (or a turn from it) stands at X = 41.82, A = -54.7 at X = -21.82.
TEST_F(TrunnionConfigs, LeaveTheListWhenALinearAxisEndsOutsideAndTheRestKeepsItsOrder) {
  std::vector<Numbers> expected = configs();
  const auto all = expected.size();
  std::erase_if(expected, [](const Numbers& v) { return std::sin(rad(v[3])) < 0; });
  EXPECT_GT(expected.size(), 2u);
  EXPECT_LT(expected.size(), all);
  setLimits(machine, L"X", 0, 100);
  EXPECT_EQ(configs(), expected);
}

TEST_F(TrunnionConfigs, CountEveryLinearAxisOfTheMachine) {
  setLimits(machine, L"Z", 38.7, 1000);  // 87.6 for A = 54.7, 38.65 for A = -54.7
  for (const Numbers& v : configs()) EXPECT_GT(std::sin(rad(v[3])), 0);
  EXPECT_FALSE(configs().empty());
}

using GunConfigs = InverseTest;

// Deliberate: a gun has no place in positions, so its limits are looked at nowhere.
TEST_F(GunConfigs, LimitsOfGunsHaveNoEffect) {
  KMachine machine = table("rotation=B,5,y,0,0,0,0,0\n", "tool=z,0,0,0\nlien=Z\ngun=z,5,0,0\n");
  machine.setCurrentTool(2);
  machine.setTHELength(100, 2);
  machine.getElemByIndex(-102)->setMin(500, true);
  machine.getElemByIndex(-102)->setMax(-500, true);
  Entries entries;
  EXPECT_EQ(machine.getPossibleConfigs(alongB(30), UVec3d(1, 2, 3), entries.list, 2), 0);
  EXPECT_EQ(entries.list.size(), 3u);
  for (const Numbers& v : entries.numbers()) {
    EXPECT_THAT(tipAt(machine, v).point, Near(UVec3d(1, 2, 3), 1e-9));
  }
}

using FourLinear = InverseTest;

// Deliberate: a fourth axis along X or Y makes every solved position count as failed.
TEST_F(FourLinear, ListsStayEmptyUntilTheParallelAxisIsLocked) {
  KMachine machine = head("axis=W,7,x\n" + kXYZ + "rotation=B,5,y,0,0,0,0,0\n");
  Entries entries;
  EXPECT_EQ(machine.getPossibleConfigs(alongB(30), UVec3d(1, 2, 3), entries.list, 1), 0);
  EXPECT_TRUE(entries.list.empty());
  EXPECT_EQ(count(kNoSolution), 9);
  machine.getElemByName(L"W")->setLocked(true);
  EXPECT_EQ(machine.getPossibleConfigs(alongB(30), UVec3d(1, 2, 3), entries.list, 1), 0);
  EXPECT_EQ(entries.list.size(), 3u);
}

// --- machines without positions

using NoPositions = InverseTest;

TEST_F(NoPositions, NothingIsListedWithoutAxes) {
  const KMachine machine;
  Entries entries;
  EXPECT_EQ(machine.getPossibleAngles(kUp, entries.list, 1), 0);
  EXPECT_EQ(machine.getPossibleConfigs(kUp, kOrigin, entries.list, 1), 0);
  EXPECT_TRUE(entries.list.empty());
  trace.claimAll(noPositionLine(0));
}

TEST_F(NoPositions, NothingIsListedWithThirteenAxes) {
  std::string axes;
  for (int i = 1; i <= 13; ++i) {
    const std::string n = std::to_string(i);
    axes += i <= 3 ? "axis=L" + n + "," + n +
                         (i == 1   ? ",x\n"
                          : i == 2 ? ",y\n"
                                   : ",z\n")
                   : "rotation=R" + n + "," + n + ",y,0,0,0,0,0\n";
  }
  KMachine machine = loadText("frame\npart=x,y\nlien=BATI\n" + axes + "tool=z,0,0,0\n", 1);
  trace.claimAll();
  machine.setCurrentTool(1);
  EXPECT_EQ(machine.getAxisNum(), 13);
  Entries entries;
  EXPECT_EQ(machine.getPossibleAngles(kUp, entries.list, 1), 0);
  EXPECT_EQ(machine.getPossibleConfigs(kUp, kOrigin, entries.list, 1), 0);
  EXPECT_TRUE(entries.list.empty());
  trace.claimAll(noPositionLine(13));
}

}  // namespace
}  // namespace korvo::test
