#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "tests/adapter/External.h"
#include "tests/support/TraceCapture.h"

namespace korvo::test {
namespace {

using Ombra::Kin::Entity;
using Ombra::Kin::Kinematic;
using zgeo::UVec3d;
using zkin::NMachine;

const UVec3d kWanted = toUVec3d(forkDirection(40, 30));  // also at C = -140, A = -30

void setRange(Machine& machine, int reg, double min, double max) {
  Kinematic& k = machine.EditKinematic();
  k.EditEntity(k.GetEntity(Register(reg))->GetEntityId())->SetRange(min, max);
}

/// The fork with C in [-180, 180] and A in [-100, 100].
Machine limitedFork() {
  Machine machine = headHead();
  setRange(machine, 3, -180, 180);
  setRange(machine, 4, -100, 100);
  return machine;
}

/// C about z carries B about y, that carries A about x. Registers C 3, B 4, A 5.
Machine threeTurns() {
  Machine machine;
  Kinematic& k = machine.EditKinematic();
  EntityId last = k.AddAxis(linear(L"X", 0, {1, 0, 0}));
  last = k.AddAxis(linear(L"Y", 1, {0, 1, 0}), last);
  last = k.AddAxis(linear(L"Z", 2, {0, 0, 1}), last);
  last = k.AddAxis(rotary(L"C", 3, {0, 0, 1}), last);
  last = k.AddAxis(rotary(L"B", 4, {0, 1, 0}), last);
  last = k.AddAxis(rotary(L"A", 5, {1, 0, 0}), last);
  k.AddHead(L"H", Matrix43(), last);
  k.AddTable(L"T");
  return machine;
}

/// Where threeTurns points at C = 0: A turns z to (0, -sin A, cos A), B turns that about y.
UVec3d directionOfBA(double b, double a) {
  return {std::sin(radians(b)) * std::cos(radians(a)), -std::sin(radians(a)),
          std::cos(radians(b)) * std::cos(radians(a))};
}

using Rows = std::vector<std::vector<double>>;

void expectRows(const Rows& found, const Rows& expected) {
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    EXPECT_THAT(found[i], testing::Pointwise(testing::DoubleNear(1e-9), expected[i])) << "at " << i;
  }
}

Rows anglesOf(const NMachine& adapter, const UVec3d& dir) {
  Positions positions;
  EXPECT_EQ(adapter.getPossibleAngles(dir, positions.list), 0);
  return positions.values();
}

Rows configsOf(const NMachine& adapter, const UVec3d& dir, const UVec3d& pos) {
  Positions positions;
  EXPECT_EQ(adapter.getPossibleConfigs(dir, pos, positions.list), 0);
  return positions.values();
}

// --- all angles

TEST(Angles, BothWaysToADirectionTheFirstSolutionFirst) {
  expectRows(anglesOf(Adapter(limitedFork()), kWanted), {{0, 0, 0, 40, 30}, {0, 0, 0, -140, -30}});
  expectRows(anglesOf(Adapter(limitedFork()), kWanted * 1e3),
             {{0, 0, 0, 40, 30}, {0, 0, 0, -140, -30}});
}

TEST(Angles, WithoutRangesAreThereForEveryTurnInReachOfAStart) {
  // Starts are within one turn either way, solutions within half a turn of them: each of the two
  // pairs in three turns of each axis.
  const Adapter adapter(headHead());
  const Rows found = anglesOf(adapter, kWanted);
  EXPECT_EQ(found.size(), 18u);
  for (const std::vector<double>& values : found) {
    UVec3d pos, dir;
    adapter.getTool(adapter.axisValues(values), pos, dir);
    EXPECT_THAT(dir, Near(kWanted, 1e-12));
    EXPECT_LE(std::abs(values[3]), 540);
    EXPECT_LE(std::abs(values[4]), 540);
  }
}

TEST(Angles, AreFoldedIntoTheRangeByWholeTurns) {
  Machine machine = limitedFork();
  setRange(machine, 4, 300, 420);
  // The first start is (0, 360): (40, 390) is nearer to it than (-140, 330).
  expectRows(anglesOf(Adapter(machine), kWanted), {{0, 0, 0, 40, 390}, {0, 0, 0, -140, 330}});
}

TEST(Angles, OutsideTheRangeWhateverTheTurnAreNotThere) {
  Machine machine = limitedFork();
  setRange(machine, 4, 10, 100);
  expectRows(anglesOf(Adapter(machine), kWanted), {{0, 0, 0, 40, 30}});
  setRange(machine, 4, -5, 5);
  EXPECT_TRUE(anglesOf(Adapter(machine), kWanted).empty());
  setRange(machine, 4, 100, -100);
  EXPECT_TRUE(anglesOf(Adapter(machine), kWanted).empty());
}

TEST(Angles, MayPassTheRangeByTheTolerance) {
  Machine machine = limitedFork();
  setRange(machine, 4, 0, 30 - 0.9e-4);
  EXPECT_EQ(anglesOf(Adapter(machine), kWanted).size(), 1u);
  setRange(machine, 4, 0, 30 - 1.1e-4);
  EXPECT_EQ(anglesOf(Adapter(machine), kWanted).size(), 0u);
}

TEST(Angles, RangesOfAxesOutsideThePairApplyToTheirZero) {
  Machine machine = threeTurns();
  for (const int reg : {3, 4, 5}) setRange(machine, reg, -180, 180);
  setRange(machine, 5, 350, 370);
  // The pair C, B leaves A at 0, which a turn brings into the range.
  Positions positions;
  ASSERT_EQ(Adapter(machine).getPossibleAngles(directionOfBA(40, 0), positions.list), 0);
  bool found = false;
  for (const auto& p : positions.values()) {
    EXPECT_GE(p[5], 350 - 1e-4);
    EXPECT_LE(p[5], 370 + 1e-4);
    found = found || (std::abs(p[4] - 40) < 1e-9 && std::abs(p[5] - 360) < 1e-9);
  }
  EXPECT_TRUE(found);
}

TEST(Angles, OtherRegistersAreZero) {
  Machine machine = threeTurns();
  for (const int reg : {3, 4, 5}) setRange(machine, reg, -180, 180);
  const Adapter adapter(machine);
  const UVec3d wanted = directionOfBA(40, 30);
  int missed = 0;
  for (const auto& p : anglesOf(adapter, wanted)) {
    EXPECT_TRUE(p[3] == 0 || p[4] == 0 || p[5] == 0);
    EXPECT_EQ(p[0], 0.0);
    UVec3d pos, dir;
    adapter.getTool(adapter.axisValues(p), pos, dir);
    missed += difference(dir, wanted) > 1e-3;
  }
  EXPECT_GT(missed, 0)
      << "solved with the third axis at its start, which is left out of the result";
}

TEST(Angles, EntriesOfTheHostCountAndStay) {
  const Adapter adapter(limitedFork());
  Positions positions;
  positions.list = {nullptr, new MachinePosition(position({0, 0, 0, 40.00005, 30})),
                    new MachinePosition(position({0, 0}))};
  EXPECT_EQ(adapter.getPossibleAngles(kWanted, positions.list), 0);
  ASSERT_EQ(positions.list.size(), 4u);
  EXPECT_EQ(positions.list[0], nullptr);
  EXPECT_EQ((*positions.list[1])[Register(3)], 40.00005);
  EXPECT_NEAR((*positions.list[3])[Register(3)], -140, 1e-9);
}

TEST(Angles, LockedRegistersTakePart) {
  Adapter adapter(limitedFork());
  adapter.lockAxis(3);
  EXPECT_EQ(anglesOf(adapter, kWanted).size(), 2u);
}

TEST(Angles, AxesWithoutRegisterAndGapsAreLeftOut) {
  Machine machine = limitedFork();
  Kinematic& k = machine.EditKinematic();
  const EntityId gone = k.AddAxis(rotary(L"V", -1, {0, 1, 0}));
  k.AddAxis(rotary(L"U", -1, {0, 1, 0}));
  ASSERT_TRUE(k.RemoveEntity(gone));
  EXPECT_EQ(anglesOf(Adapter(machine), kWanted).size(), 2u);
}

TEST(Angles, OfFewerThanTwoRotaryAxesAreNone) {
  Machine machine;
  machine.EditKinematic().AddAxis(rotary(L"C", 0, {0, 0, 1}));
  EXPECT_TRUE(anglesOf(Adapter(machine), kWanted).empty());
  EXPECT_TRUE(anglesOf(Adapter(Machine()), kWanted).empty());
}

TEST(Angles, OfNoDirectionAreNone) {
  EXPECT_TRUE(anglesOf(Adapter(limitedFork()), UVec3d()).empty());
  EXPECT_TRUE(
      anglesOf(Adapter(limitedFork()), {std::numeric_limits<double>::quiet_NaN(), 0, 1}).empty());
}

TEST(Angles, WithoutAMachineAreMinusOne) {
  Positions positions;
  const Adapter none(nullptr);
  EXPECT_EQ(none.getPossibleAngles(kWanted, positions.list), -1);
  EXPECT_EQ(none.getPossibleConfigs(kWanted, {}, positions.list), -1);
  EXPECT_TRUE(positions.list.empty());
}

// --- all positions

TEST(AdapterConfigs, PutTheTipOnThePoint) {
  Adapter adapter(limitedFork());
  adapter.setTHELength(50);
  const UVec3d point = UVec3d(1, 2, 3) + kWanted * 50;
  expectRows(configsOf(adapter, kWanted, {1, 2, 3}),
             {{point.x, point.y, point.z, 40, 30}, {point.x, point.y, point.z, -140, -30}});
}

TEST(AdapterConfigs, KeepToTheLinearRangesWithinTheTolerance) {
  Machine machine = limitedFork();
  setRange(machine, 2, -10, 3 - 0.9e-4);
  EXPECT_EQ(configsOf(Adapter(machine), kWanted, {1, 2, 3}).size(), 2u);
  setRange(machine, 2, -10, 3 - 1.1e-4);
  EXPECT_EQ(configsOf(Adapter(machine), kWanted, {1, 2, 3}).size(), 0u);
  setRange(machine, 2, 363, 370);
  EXPECT_EQ(configsOf(Adapter(machine), kWanted, {1, 2, 3}).size(), 0u) << "no turns of a slide";
}

TEST(AdapterConfigs, TryEveryThreeLinearAxesInOrder) {
  Machine machine = limitedFork();
  setRange(machine, 4, 0, 100);
  Kinematic& k = machine.EditKinematic();
  ASSERT_TRUE(k.LinkEntity(EntityId(1), k.AddAxis(linear(L"W", 5, {0, 0, 2}))));
  expectRows(configsOf(Adapter(machine), kWanted, {1, 2, 3}),
             {{1, 2, 3, 40, 30, 0}, {1, 2, 0, 40, 30, 1.5}});
}

TEST(AdapterConfigs, EqualOnesAreOneAndEntriesOfTheHostStay) {
  Machine machine = limitedFork();
  Positions positions;
  positions.list = {new MachinePosition(position({1, 2, 3, 40, 30.00005})),
                    new MachinePosition(position({9, 9, 9, 9, 9}))};
  EXPECT_EQ(Adapter(machine).getPossibleConfigs(kWanted, {1, 2, 3}, positions.list), 0);
  ASSERT_EQ(positions.list.size(), 3u);
  EXPECT_EQ(valuesOf(*positions.list[1]), (std::vector<double>{9, 9, 9, 9, 9}));
  EXPECT_NEAR((*positions.list[2])[Register(3)], -140, 1e-9);
}

TEST(AdapterConfigs, OfTwoLinearAxesAreNone) {
  Machine machine = limitedFork();
  machine.EditKinematic().LinkEntity(EntityId(4), EntityId(0));
  EXPECT_TRUE(configsOf(Adapter(machine), kWanted, {1, 2, 3}).empty());
}

// --- the nearest one

class Nearest : public TracedTest {
 protected:
  int of(const NMachine& adapter, const MachinePosition& current, const UVec3d& pos,
         const UVec3d& dir) {
    out = position({7, 7});
    const int code = adapter.getConfigPlus(current, pos, dir, out);
    lines = static_cast<int>(trace.lines().size());
    return code;
  }

  MachinePosition out;
  int lines = 0;  ///< That the last call traced.
};

TEST_F(Nearest, TracesStartTargetAndResultInOneLine) {
  Adapter adapter(headHead());
  adapter.setTHELength(50);
  // Level along -y: A = 90 at C = 0. The tool point lies 50 along it.
  EXPECT_EQ(of(adapter, position({4, 5, 6, 0, 0}), {1, 2, 3}, {0, -1, 0}), 0);
  EXPECT_THAT(valuesOf(out),
              testing::Pointwise(testing::DoubleNear(1e-9), std::vector<double>{1, -48, 3, 0, 90}));
  EXPECT_TRUE(
      trace.claim(L"NMP<5> (zkin::NMachine::getConfigPlus) [     +4.000 |     +5.000 |     +6.000 |"
                  L"     +0.000 |     +0.000 ] pos(1.000, 2.000, 3.000) dir(0.000, -1.000, 0.000)"
                  L"NMP<5> ((minmaxdif)) [     +1.000 |    -48.000 |     +3.000 |     +0.000 |"
                  L"    +90.000 ]"))
      << narrow(trace.lines().empty() ? L"no line" : trace.lines().front());
}

TEST_F(Nearest, WithoutASolutionIsZeroAndOutStays) {
  Machine machine = limitedFork();
  setRange(machine, 4, -5, 5);
  EXPECT_EQ(of(Adapter(machine), position({0, 0, 0, 0, 0}), {1, 2, 3}, {0, -1, 0}), 0);
  EXPECT_EQ(valuesOf(out), (std::vector<double>{7, 7}));
  EXPECT_TRUE(trace.claim(
      L"NMP<5> (zkin::NMachine::getConfigPlus) [     +0.000 |     +0.000 |     +0.000 |"
      L"     +0.000 |     +0.000 ] pos(1.000, 2.000, 3.000) dir(0.000, -1.000, 0.000)(NO RES)"));
}

TEST_F(Nearest, WithoutAMachineIsOne) {
  EXPECT_EQ(of(Adapter(nullptr), position({}), {1, 2, 3}, {0, -1, 0}), 1);
  EXPECT_EQ(valuesOf(out), (std::vector<double>{7, 7}));
  EXPECT_TRUE(trace.claim(L"zkin::NMachine::getConfigPlus, no machine"));
}

TEST_F(Nearest, IsTheOneWithTheSmallestLargestTurn) {
  // B and A alone turn by 40 and 30; any pair with C tilts by the angle to z at least, 48 degrees.
  EXPECT_EQ(
      of(Adapter(threeTurns()), position({0, 0, 0, 0, 0, 0}), {0, 0, 0}, directionOfBA(40, 30)), 0);
  EXPECT_THAT(valuesOf(out), testing::Pointwise(testing::DoubleNear(1e-9),
                                                std::vector<double>{0, 0, 0, 0, 40, 30}));
  trace.claimAll(L"NMP<6>");
}

TEST_F(Nearest, OfEquallyNearOnesIsTheFirst) {
  // 90 degrees to either side are as far; the solver's first pair has the larger A. Not every start
  // takes the two changes through radians to the same last bit.
  for (const double start : {0.0, 24.0, 26.0, 33.0}) {
    of(Adapter(headHead()), position({0, 0, 0, start, 0}), {0, 0, 0},
       toUVec3d(forkDirection(start + 90, 30)));
    EXPECT_NEAR(out[Register(3)], start + 90, 1e-9);
    EXPECT_NEAR(out[Register(4)], 30, 1e-9);
  }
  trace.claimAll(L"NMP<5>");
}

TEST_F(Nearest, GoesFromWhereTheMachineIs) {
  of(Adapter(headHead()), position({0, 0, 0, -130, -20}), {0, 0, 0}, kWanted);
  EXPECT_NEAR(out[Register(3)], -140, 1e-9);
  EXPECT_NEAR(out[Register(4)], -30, 1e-9);
  of(Adapter(headHead()), position({0, 0, 0, 350, 350}), {0, 0, 0}, kWanted);
  EXPECT_NEAR(out[Register(3)], 400, 1e-9);
  EXPECT_NEAR(out[Register(4)], 390, 1e-9);
  trace.claimAll(L"NMP<5>");
}

TEST_F(Nearest, IsFoldedIntoTheRange) {
  Machine machine = limitedFork();
  setRange(machine, 4, 0, 100);
  of(Adapter(machine), position({0, 0, 0, 170, 30}), {0, 0, 0}, toUVec3d(forkDirection(-170, 30)));
  EXPECT_NEAR(out[Register(3)], -170, 1e-9) << "190 is nearer, but outside";
  setRange(machine, 4, 300, 420);
  of(Adapter(machine), position({0, 0, 0, 0, 0}), {0, 0, 0}, kWanted);
  EXPECT_NEAR(out[Register(4)], 330, 1e-9) << "C = -140 and 330: a change of 330, not of 390";
  trace.claimAll(L"NMP<5>");
}

TEST_F(Nearest, NeedsTheLinearAxesInTheirRanges) {
  Machine machine = limitedFork();
  setRange(machine, 0, 0, 10);
  EXPECT_EQ(of(Adapter(machine), position({0, 0, 0, 0, 0}), {11, 2, 3}, kWanted), 0);
  EXPECT_EQ(valuesOf(out), (std::vector<double>{7, 7}));
  of(Adapter(machine), position({0, 0, 0, 0, 0}), {10.00009, 2, 3}, kWanted);
  EXPECT_NEAR(out[Register(0)], 10.00009, 1e-9);
  trace.claimAll(L"NMP<5>");
}

TEST_F(Nearest, LeavesLockedRegistersOut) {
  Adapter adapter(threeTurns());
  adapter.lockAxis(5);
  of(adapter, position({0, 0, 0, 0, 0, 0}), {0, 0, 0}, directionOfBA(40, 30));
  EXPECT_EQ(out[Register(5)], 0.0);
  EXPECT_NEAR(out[Register(4)],
              std::acos(std::cos(radians(40)) * std::cos(radians(30))) * 180 / std::numbers::pi,
              1e-9);
  adapter.lockAxis(0);
  EXPECT_EQ(of(adapter, position({0, 0, 0, 0, 0, 0}), {0, 0, 0}, directionOfBA(40, 30)), 0);
  EXPECT_EQ(valuesOf(out), (std::vector<double>{7, 7})) << "two linear axes are too few";
  trace.claimAll(L"NMP<6>");
}

TEST_F(Nearest, StartsFromZeroBesideTheSolvedPair) {
  Adapter adapter(threeTurns());
  adapter.lockAxis(3);
  const UVec3d wanted = directionOfBA(40, 30);
  EXPECT_EQ(of(adapter, position({0, 0, 0, 50, 0, 0}), {1, 2, 3}, wanted), 0);
  EXPECT_EQ(out[Register(3)], 0.0) << "not the 50 at which B and A were solved";
  UVec3d pos, dir;
  adapter.getTool(out, pos, dir);
  EXPECT_GT(difference(dir, wanted), 1e-3);
  EXPECT_THAT(pos, Near(UVec3d(1, 2, 3), 1e-9)) << "the point is reached in any case";
  trace.claimAll(L"NMP<6>");
}

TEST_F(Nearest, MayBeWrittenOverTheStart) {
  const Adapter adapter(headHead());
  MachinePosition p = position({0, 0, 0, 0, 0});
  EXPECT_EQ(adapter.getConfigPlus(p, {1, 2, 3}, kWanted, p), 0);
  EXPECT_NEAR(p[Register(3)], 40, 1e-9);
  trace.claimAll(L"NMP<5>");
}

TEST_F(Nearest, OfAStartOfAnotherSizeIsNone) {
  EXPECT_EQ(of(Adapter(headHead()), position({0, 0}), {1, 2, 3}, kWanted), 0);
  EXPECT_EQ(valuesOf(out), (std::vector<double>{7, 7}));
  EXPECT_EQ(lines, 1);
  trace.claimAll(L"NMP<5>");
}

}  // namespace
}  // namespace korvo::test
