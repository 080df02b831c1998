// Axes that a target leaves free, that are held or that are locked: where they have to stand, and
// what is said of it.
#include <algorithm>
#include <cmath>

#include "tests/toolkit/Answers.h"
#include "toolkit/answer/Reach.h"
#include "toolkit/answer/Served.h"

using korvo::Answer;
using korvo::Answers;
using korvo::AxisOutside;
using korvo::Machine;
using korvo::Position;
using korvo::Reach;
using korvo::Reason;
using korvo::Redundancy;
using korvo::SolverOptions;
using korvo::Status;
using korvo::Target;
using zgeo::UVec3d;
using namespace korvo::test;

namespace {

// Arms of 400 and 500 from a shoulder at 600 above the rail; the tip is the wrist centre.
constexpr const char* kRailArm =
    "frame\npart=x,y,0,0,0\nlien=BATI\naxis=RAIL,7,y\n"
    "rotation=J1,1,+z,0,0,0,0,0\nrotation=J2,2,-y,0,0,0,0,600\nrotation=J3,3,-y,0,0,400,0,600\n"
    "rotation=J4,4,+z,0,0,400,0,1100\nrotation=J5,5,-y,0,0,400,0,1100\n"
    "rotation=J6,6,+z,0,0,400,0,1100\ntool=-z,400,0,1100\nlimits=RAIL,0,1000\n";

// The part is tilted about X by 30 degrees at most, the tool to any side by 20.
constexpr const char* kThreeRotary =
    "frame\nrotation=A,4,+x,0,0,0,0,0\npart=x,y,0,0,0\nlien=BATI\n"
    "axis=X,1,+x\naxis=Y,2,+y\naxis=Z,3,+z\n"
    "rotation=C,6,+z,0,0,0,0,0\nrotation=B,5,+y,0,0,0,0,200\ntool=z,0,0,0\n"
    "limits=X,-1000,1000\nlimits=Y,-1000,1000\nlimits=Z,-1000,1000\n"
    "limits=A,-30,30\nlimits=B,-20,20\nlimits=C,-180,180\n";

// The quill W lengthens what B turns: 200 + W from its pivot to the tip.
constexpr const char* kQuill =
    "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,+x\naxis=Y,2,+y\naxis=Z,3,+z\n"
    "rotation=C,6,+z,0,0,0,0,0\nrotation=B,5,+y,0,0,0,0,200\naxis=W,7,-z\ntool=z,0,0,0\n"
    "limits=X,-500,500\nlimits=Y,-500,500\nlimits=Z,-300,300\n"
    "limits=C,-360,360\nlimits=B,-100,100\nlimits=W,0,150\n";

// Seven joints, an upper arm and a forearm of 400 that J3 and J5 turn about themselves.
constexpr const char* kSevenJoints =
    "frame\npart=x,y,0,0,0\nlien=BATI\nrotation=J1,1,+z,0,0,0,0,0\nrotation=J2,2,+y,0,0,0,0,340\n"
    "rotation=J3,3,+z,0,0,0,0,340\nrotation=J4,4,-y,0,0,0,0,740\nrotation=J5,5,+z,0,0,0,0,740\n"
    "rotation=J6,6,+y,0,0,0,0,1140\nrotation=J7,7,+z,0,0,0,0,1140\ntool=-z,0,0,1266\n"
    "limits=J1,-170,170\nlimits=J2,-120,120\nlimits=J3,-170,170\nlimits=J4,-120,120\n"
    "limits=J5,-170,170\nlimits=J6,-120,120\nlimits=J7,-175,175\n";

// An arm beside a turntable.
constexpr const char* kArmAndTable =
    "frame\nrotation=E1,7,+z,0,0,0,0,0\npart=x,y,0,0,0\nlien=BATI\n"
    "rotation=J1,1,+z,0,0,-1200,0,0\nrotation=J2,2,+y,0,0,-1100,0,615\n"
    "rotation=J3,3,+y,0,0,-1100,0,1320\nrotation=J4,4,+x,0,0,-345,0,1455\n"
    "rotation=J5,5,+y,0,0,-345,0,1455\nrotation=J6,6,+x,0,0,-345,0,1455\ntool=-x,-260,0,1455\n"
    "limits=E1,-360,360\nlimits=J1,-180,180\nlimits=J2,-100,110\nlimits=J3,-60,65\n"
    "limits=J4,-200,200\nlimits=J5,-120,120\nlimits=J6,-400,400\n";

int placeOf(const Machine& machine, const char* axis) { return machine.axisNames().find(axis); }

SolverOptions held(const Machine& machine, const char* axis, double value) {
  SolverOptions options;
  options.redundancy[static_cast<std::size_t>(placeOf(machine, axis))] = {Redundancy::Rule::value,
                                                                          value, 2};
  return options;
}

SolverOptions sampled(const Machine& machine, const char* axis, int samples) {
  SolverOptions options;
  options.redundancy[static_cast<std::size_t>(placeOf(machine, axis))] = {Redundancy::Rule::sampled,
                                                                          0.0, samples};
  return options;
}

Machine locked(Machine machine, const char* axis) {
  const int place = placeOf(machine, axis);
  return withLock(std::move(machine), place);
}

Target targetAt(const Machine& machine, const Position& at) {
  UVec3d nose, direction;
  machine->getTool(at, nose, direction, -1);
  return {nose - direction * machine->getTHELength(-1), direction};
}

// --- an axis that a target leaves free need not stay at the start

void expectMoved(const Machine& machine, const Answer& answer, const char* axis, double value,
                 double tolerance = 1e-8) {
  expectReached(answer);
  ASSERT_EQ(answer.moved.size(), 1u);
  EXPECT_EQ(answer.moved[0].place, placeOf(machine, axis));
  EXPECT_EQ(answer.moved[0].value, answer.position[axis]);
  EXPECT_NEAR(answer.position[axis], value, tolerance);
}

// Level with the shoulder the arm reaches 900, so to 1899 from 999 on.
TEST(FreeAxis, TheRailMovesAsFarAsTheStretchedArmNeedsIt) {
  const Machine machine = machineOf(kRailArm);
  const Target target{{0, 1899, 600}, {0, 1, -1}};
  Reach reach(machine);
  expectMoved(machine, reach.nearest(target, machine.position()), "RAIL", 999);
  const Answers all = reach.all(target, machine.position(), 5);
  ASSERT_EQ(all.total, 1u);
  expectMoved(machine, all.positions[0], "RAIL", 999);
  Position at = machine.position();
  korvo::Residual residual;
  EXPECT_FALSE(reach.follow(target, at, residual));
  EXPECT_NEAR(at["RAIL"], 999, 1e-8);
}

TEST(FreeAxis, TheRailWithoutLimitsMovesAsFar) {
  Machine machine = machineOf(kRailArm);
  machine->getElemByName("RAIL")->setMin(0, false);
  machine->getElemByName("RAIL")->setMax(0, false);
  Reach reach(machine);
  expectMoved(machine, reach.nearest({{0, 30000, 600}, {0, 1, -1}}, machine.position()), "RAIL",
              29100);
  expectMoved(machine, reach.nearest({{0, -2000, 600}, {0, 1, -1}}, machine.position()), "RAIL",
              -1100);
}

TEST(FreeAxis, StaysWhereItStartsWhereThatReaches) {
  const Machine machine = machineOf(kRailArm);
  const Answer answer = Reach(machine).nearest({{0, 700, 600}, {0, 1, -1}}, machine.position());
  expectReached(answer);
  EXPECT_TRUE(answer.moved.empty());
  EXPECT_EQ(answer.position["RAIL"], 0);
}

// The direction stands 45 degrees from Z, the tool 20 at most: the part is tilted by 25 or more.
TEST(FreeAxis, TheThirdRotaryAxisTurnsWhereTheOtherTwoEnd) {
  const Machine machine = machineOf(kThreeRotary);
  const Target target{{10, 20, 30}, {0, 1, 1}};
  const Answer answer = Reach(machine).nearest(target, machine.position());
  expectReached(answer);
  ASSERT_EQ(answer.moved.size(), 1u);
  EXPECT_EQ(answer.moved[0].value, answer.position[answer.moved[0].place]);
  EXPECT_NEAR(std::abs(answer.position["A"]) + std::abs(answer.position["B"]), 45, 1e-8);
  double nearest = 1e9;
  for (const double a : {-25.0, 25.0}) {
    const Answer tilted = Reach(machine, held(machine, "A", a)).nearest(target, machine.position());
    if (tilted.status == Status::reached) {
      nearest = std::min(nearest, korvo::distance(tilted.position, machine.position()));
    }
  }
  EXPECT_LE(korvo::distance(answer.position, machine.position()), nearest + 1e-6);
}

// A short reach between the places that are tried first.
TEST(FreeAxis, IsFoundWhereItReachesForAFewDegreesAlone) {
  const Machine table = machineOf(kArmAndTable);
  expectReached(
      Reach(table).nearest({{-1870, -1700, 642}, {-0.1425, 0.0769, -0.9868}}, table.position()));
}

TEST(FreeAxis, OfSevenJointsTheFirstMovesWhereTheOthersEnd) {
  const Machine machine = machineOf(kSevenJoints);
  expectReached(
      Reach(machine).nearest({{703.2, 427.2, 124.6}, {-0.54, 0.35, 0.76}}, machine.position()));
}

// Stretched from the end of the rail, 900 of the 2999 that are left: the amount is of that place.
TEST(FreeAxis, WhatIsOutOfReachIsSaidOfItsBestPlace) {
  const Machine machine = machineOf(kRailArm);
  const Answer answer = Reach(machine).nearest({{0, 3999, 600}, {0, 1, -1}}, machine.position());
  expectMissed(answer, Reason::outOfReach, 2999 - 900, 1e-6);
  EXPECT_NEAR(answer.position["RAIL"], 1000, 1e-9);
}

// The lines of C1, under the part, and C, which the tool's nose lies on, are parallel: with C1
// where it starts C turns by 90 and the nose goes from (50, 0, 0) to the point.
TEST(FreeAxis, OfTwoAboutParallelLinesTheOneStaysThatLeavesThePositionNearer) {
  const Machine machine = machineOf(
      "frame\nrotation=C1,7,+z,0,0,0,0,0\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,+x\naxis=Y,2,+y\n"
      "axis=Z,3,+z\nrotation=C,6,+z,0,0,50,0,0\ntool=0,1,1,50,0,0\n"
      "limits=X,-500,500\nlimits=Y,-500,500\nlimits=Z,-300,300\n");
  const Answers all = Reach(machine).all({{10, 20, 30}, {1, 0, 1}}, machine.position(), 20);
  ASSERT_EQ(all.total, 1u);
  EXPECT_NEAR(all.distances[0], 90 + 40 + 20 + 30, 1e-9);
  EXPECT_EQ(all.positions[0].position["C1"], 0);
  EXPECT_EQ(all.positions[0].freeAxes, std::vector<int>{placeOf(machine, "C1")});
}

// --- the least excess

// B = 45: Z = -640 + (200 + W) cos 45, so a mm of W is worth 0.71 of Z: W ends at 150.
TEST(LeastExcess, HasTheQuillAtItsLimit) {
  const Machine machine = machineOf(kQuill);
  const Answer answer = Reach(machine).nearest({{10, 20, -440}, {1, 0, 1}}, machine.position());
  expectMissed(answer, Reason::outsideLimits, 640 - 350 * kHalf - 300, 1e-6);
  ASSERT_EQ(answer.outside.size(), 1u);
  EXPECT_EQ(answer.outside[0].place, placeOf(machine, "Z"));
}

// Tilted by 30 about X, of its 45 there 15 are left beside the 1 along X.
TEST(LeastExcess, HasTheThirdRotaryAxisAtItsLimit) {
  const Machine machine = machineOf(kThreeRotary);
  const Answer answer = Reach(machine).nearest({{10, 20, 30}, {1, 1, 1}}, machine.position());
  const double tilt = std::acos(std::sqrt(2.0 / 3.0) * std::cos(15 * kDegToRad)) / kDegToRad;
  expectMissed(answer, Reason::outsideLimits, tilt - 20, 1e-6);
  ASSERT_EQ(answer.outside.size(), 1u);
  EXPECT_EQ(answer.outside[0].place, placeOf(machine, "B"));
}

// Y, from 0 up, stands 80 lower than the tip: the best that is found is outside.
// The part on C turns the target by -C, B turns the tip on a circle of 30 about (10, 0): what X and
// Y would have to be beyond their limits.
double excessOf(const UVec3d& tip, double bDegrees, double cDegrees) {
  const double b = bDegrees * kDegToRad, c = cDegrees * kDegToRad;
  const double x = tip.x * std::cos(c) + tip.y * std::sin(c) - 10 - 30 * std::cos(b);
  const double y = tip.y * std::cos(c) - tip.x * std::sin(c) - 30 * std::sin(b);
  const auto beyond = [](double value) { return std::max(std::abs(value) - 100, 0.0); };
  return beyond(x) + beyond(y);
}

TEST(LeastExcess, OfTwoAxesAlongTheToolIsThatOfBoth) {
  const Machine machine = machineOf(
      "frame\nrotation=C,6,z,0,0,0,0,0\npart=x,y,0,0,0\nlien=BATI\n"
      "axis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\nrotation=B,5,z,0,0,10,0,0\ntool=z,40,0,0\n"
      "limits=X,-100,100\nlimits=Y,-100,100\nlimits=C,-95,95\nlimits=B,-90,90\n");
  for (const UVec3d& tip : {UVec3d(180, 130, 0), UVec3d(-50, 210, 0), UVec3d(-240, -10, 0)}) {
    double least = 1e9;
    for (int b = -90; b <= 90; ++b) {
      for (int c = -95; c <= 95; ++c) least = std::min(least, excessOf(tip, b, c));
    }
    const Answer answer = Reach(machine).nearest({tip, kUp}, machine.position());
    const double excess = excessOf(tip, answer.position["B"], answer.position["C"]);
    EXPECT_LE(excess, least + 1e-9) << tip.x;
    EXPECT_GE(excess, least - 6) << tip.x;  // half a degree beside the grid: 240 and 30 mm away
    EXPECT_NEAR(std::max(std::abs(answer.position["X"]) - 100, 0.0) +
                    std::max(std::abs(answer.position["Y"]) - 100, 0.0),
                excess, 1e-8);
  }
}

TEST(LeastExcess, OfTheBestFoundIsSaidBesideAnyReason) {
  const Machine machine = example("mill-4axis");
  const Answer answer = Reach(machine).nearest({{0, 20, 300}, {0, 1, 0}}, machine.position());
  EXPECT_EQ(answer.reason, Reason::outsideCone);
  ASSERT_EQ(answer.outside.size(), 1u);
  EXPECT_EQ(answer.outside[0].place, placeOf(machine, "Y"));
  EXPECT_NEAR(answer.outside[0].by, -60, 1e-9);
}

// --- what is held stands there

// The wrist centre, 85 behind the tip, lies at (815, 100): J1 turns to it.
TEST(HeldAxis, OfAnArmStandsThere) {
  const Machine machine = example("arm-irb2400");
  const Target target{{900, 100, 1400}, {-1, 0, 0}};
  const double wanted = std::atan2(100.0, 815.0) / kDegToRad;
  const Answer right =
      Reach(machine, held(machine, "J1", wanted)).nearest(target, machine.position());
  expectReached(right);
  EXPECT_EQ(right.position["J1"], wanted);
  const Answer wrong = Reach(machine, held(machine, "J1", 10)).nearest(target, machine.position());
  expectMissed(wrong, Reason::heldAxis, 10 - wanted, 1e-8);
  EXPECT_NEAR(wrong.wanted.at(0).value, wanted, 1e-8);
  EXPECT_EQ(wrong.position["J1"], 10);
}

TEST(HeldAxis, OfAMillStandsThere) {
  const Machine machine = example("mill-3axis");
  const Answer answer =
      Reach(machine, held(machine, "X", 12)).nearest({{10, 20, 150}, kUp}, machine.position());
  expectMissed(answer, Reason::heldAxis, 2);
  EXPECT_EQ(answer.text, "X is held: the target would be reached with X at 10 mm, 2 mm away");
  expectReached(
      Reach(machine, held(machine, "X", 10)).nearest({{10, 20, 150}, kUp}, machine.position()));
}

TEST(HeldAxis, IsWantedAtTheNearestPlaceThatReaches) {
  const Machine machine = machineOf(kRailArm);
  const Answer answer = Reach(machine, held(machine, "RAIL", 500))
                            .nearest({{0, 1899, 600}, {0, 1, -1}}, machine.position());
  expectMissed(answer, Reason::heldAxis, 499, 1e-8);
  EXPECT_NEAR(answer.wanted.at(0).value, 999, 1e-8);
}

// --- what is sampled is free to choose

void expectRefused(const Machine& machine, const char* axis) {
  const Reach reach(machine, sampled(machine, axis, 4));
  EXPECT_EQ(reach.solver().kind(), korvo::SolverKind::none) << axis;
  EXPECT_EQ(reach.solver().unserved(), korvo::Unserved::solvedSample) << axis;
  EXPECT_EQ(reach.solver().solvedSamples(), std::vector<int>{placeOf(machine, axis)}) << axis;
}

void expectTaken(const Machine& machine, const char* axis) {
  EXPECT_TRUE(Reach(machine, sampled(machine, axis, 4)).solver().solvedSamples().empty()) << axis;
}

TEST(SampledAxis, ThatATargetDeterminesIsRefused) {
  for (const char* axis : {"X", "A", "C"}) expectRefused(example("table-ac"), axis);
  for (const char* axis : {"J1", "J3", "J5"}) expectRefused(example("arm-irb2400"), axis);
  for (const char* axis : {"J2", "J4", "J6"}) expectRefused(machineOf(kSevenJoints), axis);
  for (const char* axis : {"X", "Y"}) expectRefused(example("gantry-w"), axis);
  const Machine machine = example("table-ac");
  const Answer answer = Reach(machine, sampled(machine, "A", 4))
                            .nearest({{10, 20, 150}, {0, 1, 2}}, machine.position());
  EXPECT_EQ(answer.reason, Reason::noSolver);
  EXPECT_EQ(answer.axes, std::vector<int>{placeOf(machine, "A")});
  EXPECT_EQ(answer.text,
            "a target does not leave A free to choose: an axis that is solved for is not sampled");
}

TEST(SampledAxis, ThatATargetLeavesFreeIsTaken) {
  for (const char* axis : {"W", "Z"}) expectTaken(example("gantry-w"), axis);
  for (const char* axis : {"A", "B", "C"}) expectTaken(machineOf(kThreeRotary), axis);
  expectTaken(example("arm-irb2400"), "J6");  // turns the tool about itself
  expectTaken(machineOf(kSevenJoints), "J1");
  expectTaken(machineOf(kRailArm), "RAIL");
}

// Every place of the last joint, which turns the tool about itself, has the same branches.
TEST(SampledAxis, ThatTurnsTheToolAboutItselfStandsAtItsPlaces) {
  const Machine machine = example("arm-irb2400");
  const Target target{{900, 100, 1400}, {-1, 0, 0}};
  const std::size_t once = Reach(machine).all(target, machine.position(), 1).total;
  const Answers all =
      Reach(machine, sampled(machine, "J6", 5)).all(target, machine.position(), 1000);
  EXPECT_EQ(all.total, 5 * once);  // of limits that are two turns apart: -400, -200, 0, ...
}

// --- what is locked is wanted at the nearest place

// Z + W = -1600 and W ends at -1500.
TEST(LockedAxis, OfTwoThatCarryAlongOneLineIsWantedWhereTheOtherEnds) {
  const Machine machine = locked(example("gantry-w"), "Z");
  const Answer answer = Reach(machine).nearest({{1000, 200, -1600}, kUp}, machine.position());
  expectMissed(answer, Reason::lockedAxis, 100, 1e-8);
  EXPECT_EQ(answer.wanted.at(0).place, placeOf(machine, "Z"));
  EXPECT_NEAR(answer.wanted.at(0).value, -100, 1e-8);
}

TEST(LockedAxis, OfARailIsWantedAsFarAsTheStretchedArmNeedsIt) {
  const Machine machine = locked(machineOf(kRailArm), "RAIL");
  const Answer answer = Reach(machine).nearest({{0, 1899, 600}, {0, 1, -1}}, machine.position());
  expectMissed(answer, Reason::lockedAxis, 999, 1e-8);
}

// With C at 0 the tool points within the plane of Y and Z: what X asks for is missed.
TEST(LockedAxis, LeavesTheBestThatTheOthersFind) {
  const Machine machine = locked(example("table-ac"), "C");
  const Answer answer = Reach(machine).nearest({{10, 20, 150}, {1, 1, 2}}, machine.position());
  EXPECT_EQ(answer.reason, Reason::lockedAxis) << answer.text;
  EXPECT_LE(answer.residual.pointMm, 1e-6);
  EXPECT_NEAR(answer.residual.directionRad, std::asin(1 / std::sqrt(6.0)), 1e-8);
  EXPECT_EQ(answer.position["C"], 0);
}

// --- words

TEST(FarStart, IsSaidOfAMachineWithoutAWrist) {
  const Machine machine = example("table-ac");
  const Position from = machine.position({{"A", 1e9}, {"C", 1e12}});
  const Answer answer = Reach(machine).nearest({{10, 20, 150}, {1, 1, 2}}, from);
  EXPECT_EQ(answer.text.find("wrist"), std::string::npos) << answer.text;
}

// 1 / 3 of a mm beyond X's end at 381.
TEST(Reasons, SayNineDigits) {
  const Machine machine = example("mill-3axis");
  const Answer answer = Reach(machine).nearest({{381 + 1.0 / 3, 0, 200}, kUp}, machine.position());
  EXPECT_EQ(answer.text.substr(0, 46), "outside the limits: X above by 0.333333333 mm");
}

// --- how far an elbow is from straight

TEST(Elbow, OfAnUpperArmThatTurnsAboutItselfIsItsBend) {
  const Machine machine = machineOf(kSevenJoints);
  for (const double bend : {-68.7, 30.0, -110.0}) {
    const Position at = machine.position(
        {{"J1", 10}, {"J2", 20}, {"J3", 30}, {"J4", bend}, {"J5", 40}, {"J6", 50}});
    const Answer answer = Reach(machine).nearest(targetAt(machine, at), at);
    expectReached(answer);
    EXPECT_NEAR(answer.position["J4"], bend, 1e-6);
    EXPECT_NEAR(answer.singular.elbowRad / kDegToRad,
                std::min(std::abs(bend), 180 - std::abs(bend)), 1e-6);
  }
}

}  // namespace
