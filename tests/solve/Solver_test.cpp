// What the solver says of a machine and of each solution: kinds, refusals, branches, margins,
// singular distances, limits met exactly, limits ignored.
#include "toolkit/solve/Solver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "tests/solve/DenseSearch.h"
#include "tests/solve/Machines.h"
#include "tests/support/SphericalArm.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;

constexpr double kDegree = std::numbers::pi / 180.0;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr std::size_t kX = 0, kB = 3, kC = 4;

/// A fork head: C turns about z, B in it about y, both through the tool point at 0; X, Y, Z, B, C.
MachineLines forkHead() {
  MachineLines lines;
  lines.head = {linear("X", 1, {1, 0, 0}, -1000, 1000), linear("Y", 2, {0, 1, 0}, -500, 500),
                linear("Z", 3, {0, 0, 1}, -300, 300), rotary("C", 6, {0, 0, 1}, {}, -360, 360),
                rotary("B", 5, {0, 1, 0}, {}, -110, 110)};
  return lines;
}

/// The direction that B and C make: tilted from z by B, turned by C.
UVec3d pointing(double b, double c) {
  return {std::sin(b * kDegree) * std::cos(c * kDegree),
          std::sin(b * kDegree) * std::sin(c * kDegree), std::cos(b * kDegree)};
}

// --- kinds and refusals

TEST(SolverKinds, FollowTheFreeRotaryAxes) {
  MachineLines lines = forkHead();
  EXPECT_EQ(Solver(lines.machine()).kind(), SolverKind::twoRotary);
  Machine locked = lines.machine();
  locked->getElemByName("B")->setLocked(true);
  EXPECT_EQ(Solver(locked).kind(), SolverKind::oneRotary);
  locked->getElemByName("C")->setLocked(true);
  EXPECT_EQ(Solver(locked).kind(), SolverKind::linear);
  lines.part = {rotary("A", 4, {1, 0, 0})};
  EXPECT_EQ(Solver(lines.machine()).kind(), SolverKind::moreRotary);
  EXPECT_EQ(Solver(lines.machine()).unserved(), Unserved::served);
}

TEST(SolverKinds, HaveNames) {
  EXPECT_STREQ(toString(SolverKind::none), "none");
  EXPECT_STREQ(toString(SolverKind::twoRotary), "two-rotary");
  EXPECT_STREQ(toString(SolverKind::arm), "arm");
  EXPECT_STREQ(toString(Unserved::served), "served");
  EXPECT_STREQ(toString(Unserved::noBallWrist), "no-ball-wrist");
}

/// Nothing is served, by solvers of every kind of target.
void expectUnserved(const Solver& solver, Unserved reason) {
  EXPECT_EQ(solver.kind(), SolverKind::none);
  EXPECT_EQ(solver.unserved(), reason);
  EXPECT_TRUE(solutionsOf(solver, {{0, 0, 0}, {0, 0, 1}}, {}).empty());
  std::vector<Solution> out(3);
  solver.solve(FrameTarget{}, {}, out);
  EXPECT_TRUE(out.empty());
}

TEST(SolverRefuses, MachinesWithoutATool) {
  const auto kmachine = loadMachine(forkHead().text(), 1);
  zkin::KMachine unset;  // loading makes no tool current
  expectUnserved(Solver(Machine(unset)), Unserved::noTool);
  MachineLines lines = forkHead();
  lines.toolDirection = {0, 0, 0};
  expectUnserved(Solver(lines.machine()), Unserved::noTool);
}

TEST(SolverRefuses, AxesThatShareAValue) {
  Machine machine = forkHead().machine();
  machine->getElemByName("B")->setValueIndex(0);
  expectUnserved(Solver(machine), Unserved::coupledAxes);
}

TEST(SolverRefuses, TooFewJoints) {
  MachineLines lines;
  lines.head = {linear("X", 1, {1, 0, 0}), rotary("A", 4, {1, 0, 0}), rotary("B", 5, {0, 1, 0}),
                rotary("C", 6, {0, 0, 1})};
  expectUnserved(Solver(lines.machine()), Unserved::fewJoints);
}

TEST(SolverRefuses, ArmsWhoseLastThreeLinesDoNotMeet) {
  MachineLines lines;
  lines.head = {rotary("J1", 1, {0, 0, 1}),
                rotary("J2", 2, {0, 1, 0}, {0, 0, 300}),
                rotary("J3", 3, {0, 1, 0}, {0, 0, 700}),
                rotary("J4", 4, {1, 0, 0}, {0, 0, 700}),
                rotary("J5", 5, {0, 1, 0}, {400, 0, 700}),
                rotary("J6", 6, {1, 0, 0}, {0, 0, 712.5})};
  expectUnserved(Solver(lines.machine()), Unserved::noBallWrist);
}

/// Lines of J4, J5 and J6 that meet at (400, 0, 700), J3 beside them.
MachineLines ballWrist() {
  MachineLines lines;
  lines.head = {rotary("J1", 1, {0, 0, 1}),
                rotary("J2", 2, {0, 1, 0}, {0, 0, 300}),
                rotary("J3", 3, {0, 1, 0}, {0, 0, 700}),
                rotary("J4", 4, {1, 0, 0}, {0, 0, 700}),
                rotary("J5", 5, {0, 1, 0}, {400, 0, 700}),
                rotary("J6", 6, {0, 0, 1}, {400, 0, 700})};
  lines.toolPoint = {500, 0, 700};
  return lines;
}

TEST(SolverRefuses, ArmsWhoseThirdLinePassesThroughTheWristCentre) {
  MachineLines lines = ballWrist();
  EXPECT_EQ(Solver(lines.machine()).kind(), SolverKind::arm);
  lines.head[2].point = {400, 50, 700};
  expectUnserved(Solver(lines.machine()), Unserved::wristOnThird);
  EXPECT_STREQ(toString(Unserved::wristOnThird), "wrist-on-third");
}

TEST(SolverRefuses, LinearAxesThatPartTheLinesOfAWrist) {
  for (const std::ptrdiff_t behind : {4, 5}) {
    for (const UVec3d& along : {UVec3d(1, 0, 0), UVec3d(0, 1, 0), UVec3d(0, 0, 1)}) {
      MachineLines lines = ballWrist();
      lines.head.insert(lines.head.begin() + behind, linear("S", 7, along));
      const Solver solver(lines.machine());
      if (behind == 5 && along.z == 1) {  // J6 goes along itself: they meet where they met
        EXPECT_EQ(solver.kind(), SolverKind::arm);
      } else {
        expectUnserved(solver, Unserved::splitWrist);
      }
    }
  }
  EXPECT_STREQ(toString(Unserved::splitWrist), "split-wrist");
  EXPECT_STREQ(toString(Unserved::solvedSample), "solved-sample");
}

TEST(SolverRefuses, TargetsThatAreNone) {
  const Solver solver(forkHead().machine());
  const UVec3d up(0, 0, 1);
  for (const double bad : {kNan, kInf, -kInf}) {
    for (const UVec3d& v : {UVec3d(bad, 0, 0), UVec3d(0, bad, 0), UVec3d(0, 0, bad)}) {
      EXPECT_TRUE(solutionsOf(solver, {v, up}, {}).empty());
      EXPECT_TRUE(solutionsOf(solver, {{}, v}, {}).empty());
    }
  }
  EXPECT_TRUE(solutionsOf(solver, {{}, {0, 0, 0}}, {}).empty());
  EXPECT_FALSE(solutionsOf(solver, {{}, {0, 0, 1e-200}}, {}).empty());
  EXPECT_FALSE(solutionsOf(solver, {{}, {0, 0, 1e200}}, {}).empty());
}

TEST(SolverRefuses, DirectionsOutsideTheReachOfTheAxes) {
  MachineLines lines = forkHead();
  lines.head.pop_back();  // C alone
  lines.toolDirection = pointing(30, 0);
  const Solver one(lines.machine());
  EXPECT_FALSE(solutionsOf(one, {{}, pointing(30, 50)}, {}).empty());
  EXPECT_TRUE(solutionsOf(one, {{}, pointing(30.0001, 50)}, {}).empty());
  lines.head.pop_back();  // no rotary axis at all
  const Solver none(lines.machine());
  EXPECT_EQ(solutionsOf(none, {{}, pointing(30, 0) * 7.0}, {}).size(), 1u);
  EXPECT_TRUE(solutionsOf(none, {{}, pointing(30, 1e-4)}, {}).empty());
}

TEST(SolverRefuses, FramesOfMachinesThatAreNoArms) {
  const Solver solver(forkHead().machine());
  std::vector<Solution> out(2);
  solver.solve(FrameTarget{}, {}, out);
  EXPECT_TRUE(out.empty());
}

TEST(SolverRefuses, EmptiesTheList) {
  const Solver solver(forkHead().machine());
  std::vector<Solution> out(5);
  solver.solve(Target{{}, {0, 0, 0}}, {}, out);
  EXPECT_TRUE(out.empty());
}

// --- what a solution carries

// Tilted by 30 degrees to heading 20: B = 30, C = 20 or B = -30, C = 200, and C a turn less.
TEST(SolverSolutions, ComeBranchByBranchTurnsAscending) {
  const Solver solver(forkHead().machine());
  const auto found = solutionsOf(solver, {{10, 20, 30}, pointing(30, 20)}, {});
  ASSERT_EQ(found.size(), 4u);
  const double b[] = {30, 30, -30, -30}, c[] = {-340, 20, -160, 200};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_NEAR(found[i].values[kB], b[i], 1e-9) << i;
    EXPECT_NEAR(found[i].values[kC], c[i], 1e-9) << i;
    EXPECT_NEAR(found[i].values[kX], 10, 1e-9) << i;
    EXPECT_FALSE(found[i].isFamily());
    EXPECT_EQ(found[i].branch.shoulder, 0);
    EXPECT_EQ(found[i].branch.elbow, 0);
  }
}

TEST(SolverSolutions, NameTheSideOfTheTool) {
  const Solver solver(forkHead().machine());
  const auto found = solutionsOf(solver, {{}, pointing(30, 20)}, {});
  ASSERT_EQ(found.size(), 4u);
  EXPECT_EQ(found[0].branch, found[1].branch);
  EXPECT_EQ(found[2].branch, found[3].branch);
  // z x y is -x: at C = 0 the tool tilted by B = 30 leans to +x, the side away from it.
  EXPECT_EQ(found[0].branch.wrist, -1);
  EXPECT_EQ(found[2].branch.wrist, 1);
  EXPECT_EQ(found[0].branch.label(SolverKind::twoRotary), "-");
  EXPECT_EQ(found[2].branch.label(SolverKind::twoRotary), "+");
  EXPECT_EQ(Branch{}.label(SolverKind::linear), "0");
  EXPECT_EQ((Branch{1, -1, 1}.label(SolverKind::arm)), "shoulder+ elbow- wrist+");
}

TEST(SolverSolutions, TellTheLeastMarginAndItsAxis) {
  const Solver solver(forkHead().machine());
  // X 1000 - 950 = 50, Y 500 - 440 = 60, B 110 - 30 = 80, C 360 - 340 = 20 or 340 or 160.
  auto found = solutionsOf(solver, {{950, -440, 0}, pointing(30, 20)}, {});
  ASSERT_EQ(found.size(), 4u);
  EXPECT_NEAR(found[0].margin, 20, 1e-9);
  EXPECT_EQ(found[0].marginPlace, static_cast<int>(kC));
  EXPECT_NEAR(found[1].margin, 50, 1e-9);
  EXPECT_EQ(found[1].marginPlace, static_cast<int>(kX));
  found = solutionsOf(solver, {{0, 0, 296}, pointing(30, 20)}, {});
  ASSERT_EQ(found.size(), 4u);
  EXPECT_NEAR(found[0].margin, 4, 1e-9);
  EXPECT_EQ(found[0].marginPlace, 2);
}

TEST(SolverSolutions, WithoutLimitsHaveNoMargin) {
  MachineLines lines;
  lines.head = linearXyz();
  const auto found = solutionsOf(Solver(lines.machine()), {{1, 2, 3}, {0, 0, 1}}, {});
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].margin, kInf);
  EXPECT_EQ(found[0].marginPlace, -1);
  EXPECT_EQ(found[0].singular.directionRad, kInf);
}

// The fork's singular directions are up and down: B degrees away. Of the 45 degree head, whose tool
// starts along the first axis, they are that and the edge at 90.
TEST(SolverSolutions, TellHowFarTheNearestSingularDirectionIs) {
  const Solver fork(forkHead().machine());
  for (const double b : {30.0, 1.0, 89.0, 100.0}) {
    const double nearest = std::min(b, 180 - b);
    for (const Solution& s : solutionsOf(fork, {{}, pointing(b, 33)}, {})) {
      EXPECT_NEAR(s.singular.directionRad, nearest * kDegree, 1e-12) << b;
      EXPECT_EQ(s.singular.elbowRad, kInf);
      EXPECT_EQ(s.singular.shoulderMm, kInf);
    }
  }
  MachineLines lines = forkHead();
  lines.head[4].direction = {0, 1, 1};
  const Solver nutating(lines.machine());
  for (const double tilt : {30.0, 60.0, 89.0}) {
    const auto found = solutionsOf(nutating, {{}, pointing(tilt, 33)}, {}, Limits::ignored);
    EXPECT_EQ(found.size(), 2u);
    for (const Solution& s : found) {
      EXPECT_NEAR(s.singular.directionRad, std::min(tilt, 90 - tilt) * kDegree, 1e-12) << tilt;
    }
  }
}

TEST(SolverSolutions, HaveTheResidualOfTheirForward) {
  const Machine machine = forkHead().machine();
  const Solver solver(machine);
  const Target target{{10.1, 20.2, 30.3}, pointing(31, 20)};
  for (const Solution& s : solutionsOf(solver, target, {})) {
    const Target at = tipAt(*machine, s.values);
    EXPECT_EQ(s.residual.pointMm, at.tip.distanceTo(target.tip));
    EXPECT_NEAR(s.residual.directionRad, radiansBetween(at.direction, target.direction), 1e-15);
    const Residual again = solver.residual(s.values, target);
    EXPECT_EQ(again.pointMm, s.residual.pointMm);
    EXPECT_EQ(again.directionRad, s.residual.directionRad);
  }
  Values off{};  // at zero: 10.1, 20.2, 30.3 away, 31 degrees
  EXPECT_NEAR(solver.residual(off, target).pointMm, UVec3d(10.1, 20.2, 30.3).norm(), 1e-12);
  EXPECT_NEAR(solver.residual(off, target).directionRad, 31 * kDegree, 1e-12);
}

// --- limits

TEST(SolverLimits, AValueOnALimitIsInside) {
  const Solver solver(forkHead().machine());
  const auto found = solutionsOf(solver, {{1000, -500, 300}, pointing(110, 0)}, {});
  ASSERT_EQ(found.size(), 5u);  // B = 110: C = -360, 0, 360; B = -110: C = -180, 180
  for (const Solution& s : found) {
    EXPECT_EQ(s.values[kX], 1000);
    EXPECT_EQ(s.values[1], -500);
    EXPECT_EQ(s.values[2], 300);
    EXPECT_EQ(std::abs(s.values[kB]), 110);  // put on the limit that rounding misses
    EXPECT_EQ(s.margin, 0);
  }
}

TEST(SolverLimits, AValueBeyondALimitIsOutside) {
  const Solver solver(forkHead().machine());
  const UVec3d direction = pointing(30, 20);
  EXPECT_EQ(solutionsOf(solver, {{1000, 0, 0}, direction}, {}).size(), 4u);
  EXPECT_EQ(solutionsOf(solver, {{1000 + 1e-9, 0, 0}, direction}, {}).size(), 0u);
  EXPECT_EQ(solutionsOf(solver, {{0, 0, 0}, pointing(110 + 1e-8, 20)}, {}).size(), 0u);
  EXPECT_EQ(solutionsOf(solver, {{0, 0, 0}, pointing(110 - 1e-8, 20)}, {}).size(), 4u);
}

TEST(SolverLimits, AxesWithoutLimitsGiveTheTurnsWithinOneTurnOfTheStart) {
  MachineLines lines = forkHead();
  lines.head[3].min = -kInf, lines.head[3].max = kInf;
  Values start{};
  start[kC] = 1000;  // 640 to 1360: 740, 1100 (= 20 by full turns) and 920, 1280 (= 200)
  const auto found = solutionsOf(Solver(lines.machine()), {{0, 0, 0}, pointing(30, 20)}, start);
  ASSERT_EQ(found.size(), 4u);
  const double c[] = {740, 1100, 920, 1280};
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(found[i].values[kC], c[i], 1e-9);
}

TEST(SolverLimits, IgnoredGiveEveryBranchOnceAtTheTurnNearestToTheStart) {
  const Solver solver(forkHead().machine());
  Values start{};
  start[kB] = 400, start[kC] = -1000;  // B: 390 and 330; C: -1060 (20 - 1080) and -880 (200 - 1080)
  const auto found = solutionsOf(solver, {{5000, 0, 0}, pointing(30, 20)}, start, Limits::ignored);
  ASSERT_EQ(found.size(), 2u);
  EXPECT_NEAR(found[0].values[kB], 390, 1e-9);
  EXPECT_NEAR(found[0].values[kC], -1060, 1e-9);
  EXPECT_NEAR(found[1].values[kB], 330, 1e-9);
  EXPECT_NEAR(found[1].values[kC], -880, 1e-9);
  EXPECT_NEAR(found[0].values[kX], 5000, 1e-9);
  EXPECT_NEAR(found[0].margin, -4000, 1e-9);
  EXPECT_EQ(found[0].marginPlace, static_cast<int>(kX));
}

TEST(SolverLimits, AreThoseOfWhenTheSolverWasMade) {
  Machine machine = forkHead().machine();
  const Solver before(machine);
  machine->getElemByName("B")->setMax(20, true);
  machine->setTHELength(100, 1);
  const Solver after(machine);
  const Target target{{0, 0, 0}, pointing(30, 20)};
  EXPECT_EQ(solutionsOf(before, target, {}).size(), 4u);
  EXPECT_EQ(before.chain().toolLength, 0);
  EXPECT_EQ(solutionsOf(after, target, {}).size(), 2u);  // B = -30 alone
  EXPECT_EQ(after.chain().toolLength, 100);
}

// The tip is the tool's length back from the tool point: 100 mm of it along B = 30, C = 20.
TEST(SolverSolutions, CountTheToolLength) {
  Machine machine = forkHead().machine();
  machine->setTHELength(100, 1);
  const UVec3d direction = pointing(30, 20);
  const auto found = solutionsOf(Solver(machine), {{1, 2, 3}, direction}, {});
  ASSERT_EQ(found.size(), 4u);
  EXPECT_NEAR(found[0].values[0], 1 + 100 * direction.x, 1e-9);
  EXPECT_NEAR(found[0].values[1], 2 + 100 * direction.y, 1e-9);
  EXPECT_NEAR(found[0].values[2], 3 + 100 * direction.z, 1e-9);
}

}  // namespace
}  // namespace korvo::test
