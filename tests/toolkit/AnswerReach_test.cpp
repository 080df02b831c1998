// Spare and locked linear axes, tools beyond the wrist centre, full turns, what comes nearest.
#include <algorithm>
#include <cmath>

#include "tests/toolkit/Answers.h"

using korvo::Answer;
using korvo::Answers;
using korvo::LibrarySolver;
using korvo::Machine;
using korvo::Position;
using korvo::Reason;
using korvo::Status;
using korvo::Target;
using zgeo::UVec3d;
using namespace korvo::test;

namespace {

Target targetAt(const Machine& machine, const Position& at) {
  UVec3d nose, direction;
  machine->getTool(at, nose, direction, -1);
  return {nose - direction * machine->getTHELength(-1), direction};
}

bool holds(const Answers& all, const Position& at) {
  return std::any_of(all.positions.begin(), all.positions.end(), [&](const Answer& answer) {
    return korvo::distance(answer.position, at) < 1e-6;
  });
}

// --- a quill W along the spindle, behind the head's rotary axes. B = b turns the nose, 300 below
// the pivot, to (-300 sin b, 0, 300 - 300 cos b); upright W and Z carry along one line.

constexpr const char* kRam =
    "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\n"
    "rotation=C,6,z,0,0,0,0,0\nrotation=B,5,y,0,0,0,0,300\naxis=W,7,z\ntool=z,0,0,0\n";
constexpr const char* kRamLimits =
    "limits=X,-1000,1000\nlimits=Y,-1000,1000\nlimits=Z,-1000,1000\nlimits=W,-300,0\n"
    "limits=B,-110,110\n";

const Target kLow{{100, 50, -600}, fromZ(1, 0)};

void expectQuillStays(const Machine& machine, double w) {
  const Position from = machine.position({{"W", w}});
  const double b = kDegToRad, length = 300 - w;  // from the pivot to the tip
  LibrarySolver solver(machine);
  const Answer answer = solver.nearest(kLow, from);
  expectReached(answer);
  EXPECT_NEAR(answer.position["X"], 100 + length * std::sin(b), 1e-6);
  EXPECT_NEAR(answer.position["Y"], 50, 1e-6);
  EXPECT_NEAR(answer.position["Z"], -600 - 300 + length * std::cos(b), 1e-6);
  EXPECT_EQ(answer.position["W"], w);
  EXPECT_TRUE(holds(solver.all(kLow, from, 1000), answer.position));
  Position at = from;
  korvo::Residual residual;
  EXPECT_FALSE(solver.follow(kLow, at, residual));
  EXPECT_EQ(at, answer.position);
}

// W, Z and Y span space by the sine of 1 degree: W would travel 6 m for the 100 mm along X.
TEST(Quill, StaysWhereItsTravelEndsOutsideTheLimits) {
  expectQuillStays(machineOf(std::string(kRam) + kRamLimits), 0);
  expectQuillStays(machineOf(std::string(kRam) + kRamLimits), -100);
}

TEST(Quill, StaysWithoutLimitsWhereItsTravelIsFarForLittle) {
  expectQuillStays(machineOf(kRam), 0);
}

// 30 degrees and more from Z the library's own choice is inside and stays.
TEST(Quill, MovesWhereTheLibraryMovesItInsideTheLimits) {
  const Machine machine = machineOf(std::string(kRam) + kRamLimits);
  const Position at = machine.position({{"B", 60.0}, {"W", -100.0}, {"X", 20.0}});
  const Position from = machine.position({{"B", 60.0}, {"X", 20.0}});
  const Answer answer = LibrarySolver(machine).nearest(targetAt(machine, at), from);
  expectReached(answer);
  expectValues(answer.position, {20, 0, 0, 60, 0, -100}, 1e-6);
}

// The tool at arccos(1/sqrt 3) from Z: its nose, 230 below the pivot, comes up by 230 (1 - 1/sqrt
// 3). Z alone would end 847 mm below its travel, W alone 597.
TEST(GantryW, TheBeamHelpsWhereTheRamEnds) {
  const Machine machine = example("gantry-w");
  const Target target{{1000, 200, -2000}, {1, 1, 1}};
  const Answer answer = LibrarySolver(machine).nearest(target, machine.position());
  expectReached(answer);
  const double z = answer.position["Z"], w = answer.position["W"];
  EXPECT_NEAR(z + w, -2000 - 230 * (1 - 1 / std::sqrt(3)), 1e-6);
  EXPECT_TRUE(z == -1250 || w == -1500) << z << ' ' << w;
  Position at = machine.position();
  korvo::Residual residual;
  EXPECT_FALSE(LibrarySolver(machine).follow(target, at, residual));
}

TEST(GantryW, TheBeamDoesNotHelpWhenItIsLocked) {
  Machine machine = example("gantry-w");
  machine = withLock(machine, machine.axisNames().find("W"));
  const Answer answer =
      LibrarySolver(machine).nearest({{1000, 200, -2000}, {1, 1, 1}}, machine.position());
  expectMissed(answer, Reason::outsideLimits, 2000 + 230 * (1 - 1 / std::sqrt(3)) - 1250, 1e-6);
}

// --- locked linear axes

TEST(LockedLinearAxis, NeedNotMoveWhereItStandsRight) {
  const Machine mill = withLock(example("mill-3axis"), 0);
  const Answer answer =
      LibrarySolver(mill).nearest({{10, 20, 150}, kUp}, mill.position({{"X", 10.0}}));
  expectReached(answer);
  expectValues(answer.position, {10, 20, 40});
  EXPECT_TRUE(answer.isLinearOnly);

  // the nose of X 10, Y 20, Z 30, A -45: see the trunnion of the other tests
  const Machine table = withLock(example("table-ac"), 0);
  const Target tilted{{10, 110.5 * kHalf - 0.5, 69.5 * kHalf + 60}, {0, kHalf, kHalf}};
  const Position from = table.position({{"X", 10.0}});
  const Answer turned = LibrarySolver(table).nearest(tilted, from);
  expectReached(turned);
  expectValues(turned.position, {10, 20, 30, -45, 0});
  EXPECT_TRUE(holds(LibrarySolver(table).all(tilted, from, 100), turned.position));
}

TEST(LockedLinearAxis, LeavesWhatTheOthersCannotCarry) {
  const Machine machine = withLock(example("mill-3axis"), 0);
  const Answer answer = LibrarySolver(machine).nearest({{14, 20, 150}, kUp}, machine.position());
  expectMissed(answer, Reason::linearAxes, 14);
  expectValues(answer.position, {0, 20, 40});  // as near as the free ones come
}

TEST(LockedLinearAxis, TranslationsTakeTheFreeOnes) {
  const Machine table = withLock(example("table-ac"), 0);
  const Position at = table.position({{"A", -30.0}});
  const Answer answer = LibrarySolver(table).translate({0, 0, 5}, at);
  expectReached(answer);
  EXPECT_EQ(answer.position["X"], 0);
  EXPECT_NEAR(std::hypot(answer.position["Y"], answer.position["Z"]), 5, 1e-9);
  EXPECT_EQ(answer.position["A"], -30);

  const Machine mill = withLock(withLock(example("mill-3axis"), 0), 1);
  const Answer up = LibrarySolver(mill).translate({0, 0, 5}, mill.position());
  expectReached(up);
  expectValues(up.position, {0, 0, 5});
  expectMissed(LibrarySolver(mill).translate({0, 3, 4}, mill.position()), Reason::linearAxes, 3);
}

// --- arms whose tip is not their wrist centre

TEST(Irb2400, ReachesItsOwnZeroPose) {
  const Machine machine = example("arm-irb2400");
  const Target zero{{940, 0, 1455}, {-1, 0, 0}};
  LibrarySolver solver(machine);
  const Answer answer = solver.nearest(zero, machine.position());
  expectReached(answer);
  expectValues(answer.position, {0, 0, 0, 0, 0, 0}, 1e-6);
  EXPECT_TRUE(holds(solver.all(zero, machine.position(), 1000), machine.position()));
}

// Any tool point and length along the last joint: the position that gave the target is found again.
TEST(Irb2400, ReachesWithAnyToolLength) {
  Machine machine = example("arm-irb2400");
  for (const double length : {0.0, 200.0, -85.0, 35.5}) {
    machine->setTHELength(length, 1);
    LibrarySolver solver(machine);
    for (const double turn : {-40.0, 10.0, 55.0}) {
      const Position at = machine.position(
          {{"J1", turn}, {"J2", turn / 2}, {"J3", -10.0}, {"J4", 2 * turn}, {"J5", turn + 5}});
      const Target target = targetAt(machine, at);
      const Answer answer = solver.nearest(target, at);
      expectReached(answer);
      EXPECT_LT(korvo::distance(answer.position, at), 1e-6);
      EXPECT_TRUE(holds(solver.all(target, at, 1000), at));
      Position next = at;
      korvo::Residual residual;
      EXPECT_FALSE(solver.follow(target, next, residual));
      const Answer shifted = solver.translate({5, 3, -4}, at);
      expectReached(shifted);
    }
  }
}

TEST(Irb2400, ReachesDownwardsWithALongTool) {
  Machine machine = example("arm-irb2400");
  machine->setTHELength(200.0, 1);
  expectReached(LibrarySolver(machine).nearest({{855, 100, 1300}, kUp}, machine.position()));
}

TEST(Puma560, ReachesWithAToolLength) {
  Machine machine = example("arm-puma560");
  machine->setTHELength(100.0, 1);
  const Position at = machine.position({{"J2", 20.0}, {"J3", -30.0}, {"J4", 40.0}, {"J5", 50.0}});
  const Answer answer = LibrarySolver(machine).nearest(targetAt(machine, at), at);
  expectReached(answer);
  EXPECT_LT(korvo::distance(answer.position, at), 1e-6);
}

// Solvers look past the length that the machine itself is asked with.
TEST(Irb2400, TheMachineKeepsItsToolLength) {
  Machine machine = example("arm-irb2400");
  machine->setTHELength(200.0, 1);
  LibrarySolver solver(machine);
  solver.nearest({{855, 100, 1300}, kUp}, machine.position());
  EXPECT_EQ(machine->getTHELength(1), 200.0);
}

TEST(Arm, AnotherToolOnTheSameWristIsNoMatter) {
  const Machine machine = machineOf(
      "frame\npart=x,y,0,0,0\nlien=BATI\n"
      "rotation=J1,1,+z,0,0,0,0,0\nrotation=J2,2,-y,0,0,0,0,600\n"
      "rotation=J3,3,-y,0,0,400,0,600\nrotation=J4,4,+z,0,0,400,0,1100\n"
      "rotation=J5,5,-y,0,0,400,0,1100\nrotation=J6,6,+z,0,0,400,0,1100\n"
      "tool=-z,400,0,1000\nlien=J6\ntool=-z,400,0,1050\n");
  const Position at = machine.position({{"J1", 15.0}, {"J2", 10.0}, {"J3", -20.0}, {"J5", 20.0}});
  const Answer answer = LibrarySolver(machine).nearest(targetAt(machine, at), at);
  expectReached(answer);
  EXPECT_LT(korvo::distance(answer.position, at), 1e-6);
}

// --- full turns

const Target kTilted{{10, 110.5 * kHalf - 0.5, 69.5 * kHalf + 60}, {0, kHalf, kHalf}};

std::vector<double> turnsOfC(const Machine& machine, double from) {
  const Answers all = LibrarySolver(machine).all(kTilted, machine.position({{"C", from}}), 1000);
  std::vector<double> turns;
  for (const Answer& answer : all.positions) turns.push_back(std::round(answer.position["C"]));
  std::sort(turns.begin(), turns.end());
  return turns;
}

// C = 0 and its turns: within 360 of zero, and from 640 to 1360.
TEST(AllPositions, HoldTheTurnsAboutZeroAndAboutTheStart) {
  const Machine machine = example("table-ac");
  EXPECT_EQ(turnsOfC(machine, 1000), (std::vector<double>{-360, 0, 360, 720, 1080}));
  const Answers all = LibrarySolver(machine).all(kTilted, machine.position({{"C", 1000.0}}), 1);
  EXPECT_NEAR(all.positions[0].position["C"], 1080, 1e-9);
}

TEST(AllPositions, HoldAllTurnsInsideTheLimits) {
  Machine machine = example("table-ac");
  axisAt(machine, 4).setMin(-1000, true);
  axisAt(machine, 4).setMax(800, true);
  EXPECT_EQ(turnsOfC(machine, 0), (std::vector<double>{-720, -360, 0, 360, 720}));
}

// Millions of turns are no list: such limits count as none.
TEST(AllPositions, OfLimitsFarApartHoldTheTurnsNearby) {
  Machine machine = example("table-ac");
  axisAt(machine, 4).setMin(-1e9, true);
  axisAt(machine, 4).setMax(700, true);
  EXPECT_EQ(turnsOfC(machine, 710), (std::vector<double>{-360, 0, 360}));
  EXPECT_EQ(turnsOfC(machine, -1000), (std::vector<double>{-1080, -720, -360, 0, 360}));
}

TEST(AllPositions, HoldTheNearestWhereverItStarts) {
  for (const char* name : {"table-ac", "table-bc", "head-cb-fork", "gantry-w"}) {
    const Machine machine = example(name);
    LibrarySolver solver(machine);
    for (const double c : {0.0, 170.0, -1000.0, 100'000.0}) {
      const Position from = machine.position({{"C", c}});
      const Target target{{100, 20, -100}, fromZ(25, 40)};
      const Answer nearest = solver.nearest(target, from);
      if (nearest.status != Status::reached) continue;
      EXPECT_TRUE(holds(solver.all(target, from, 1000), nearest.position)) << name << ' ' << c;
    }
  }
}

// --- what cannot be

// X and Z of a lathe, its spindle C under the part.
TEST(Lathe, IsToldThatNoSolverKnowsIt) {
  const Machine machine = machineOf(
      "frame\nrotation=C,6,z,0,0,0,0,0\npart=x,y,0,0,0\nlien=BATI\naxis=Z,3,z\naxis=X,1,x\n"
      "tool=x,100,0,50\n");
  LibrarySolver solver(machine);
  const Answer beside = solver.nearest({{60, 10, 20}, {1, 0, 0}}, machine.position());
  expectMissed(beside, Reason::noSolver, 10);
  EXPECT_TRUE(beside.conditions.empty());
  EXPECT_STREQ(korvo::toString(beside.reason), "no-solver");
  const Answer inPlane = solver.nearest({{60, 0, 20}, {1, 0, 0}}, machine.position());
  expectReached(inPlane);
  expectValues(inPlane.position, {-40, -30, 0});
}

// The head lays the spindle down to the horizon, not below.
TEST(HeadNutating, ComesAsNearAsItCan) {
  const Machine machine = example("head-nutating");
  const Target target{{0, 100, 300}, {0, 1, -0.01}};
  const Answer answer = LibrarySolver(machine).nearest(target, machine.position());
  const double below = std::atan(0.01);
  expectMissed(answer, Reason::outsideCone, below / kDegToRad, 1e-6);
  EXPECT_NEAR(answer.residual.directionRad, below, 1e-6);
  EXPECT_NEAR(std::abs(answer.position["B"]), 180, 0.1);
  EXPECT_LT(answer.residual.pointMm, 1e-3);
}

}  // namespace
