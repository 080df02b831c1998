#include "tests/toolkit/Answers.h"

#include <algorithm>

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

// --- a trunnion: the part turns about Z, then about the line y = -0.5, z = 60 along X. With A =
// -45
//     the nose of X 10, Y 20, Z 30 is at (10, 20, 150), 20.5 and 90 beside that line, and comes to
//     y' = 20.5 cos A - 90 sin A, z' = 20.5 sin A + 90 cos A.

const Target kTilted{{10, 110.5 * kHalf - 0.5, 69.5 * kHalf + 60}, {0, kHalf, kHalf}};

TEST(TableAC, IsPutOnAPointAndDirection) {
  const Machine machine = example("table-ac");
  const Answer answer = LibrarySolver(machine).nearest(kTilted, machine.position());
  expectReached(answer);
  expectValues(answer.position, {10, 20, 30, -45, 0});
  EXPECT_FALSE(answer.isLinearOnly);
}

TEST(TableAC, MarginsAreTheDistancesToTheLimits) {
  const Machine machine = example("table-ac");
  const Answer answer = LibrarySolver(machine).nearest(kTilted, machine.position());
  ASSERT_EQ(answer.margins.size(), 5u);
  EXPECT_NEAR(*answer.margins[0].toMin, 310, 1e-9);
  EXPECT_NEAR(*answer.margins[0].toMax, 290, 1e-9);
  EXPECT_NEAR(*answer.margins[3].toMin, 75, 1e-9);
  EXPECT_NEAR(*answer.margins[3].toMax, 75, 1e-9);
  EXPECT_FALSE(answer.margins[4].toMin);
  EXPECT_FALSE(answer.margins[4].toMax);
}

// The tool is square to A, A to C: every angle from C can be had, and C is free at 0 and 180.
TEST(TableAC, IsSingularWhereTheToolIsAlongTheTable) {
  const Machine machine = example("table-ac");
  for (const double a : {0.0, -45.0, -90.0, -120.0}) {
    const auto singular = korvo::singularity(machine, *machine.position({{"A", a}, {"C", 33.0}}));
    ASSERT_TRUE(singular);
    EXPECT_EQ(singular->first, 4);
    EXPECT_EQ(singular->second, 3);
    EXPECT_NEAR(singular->angleRad, std::min(-a, 180 + a) * kDegToRad, 1e-12);
  }
}

// The start picks the turn: C = 700 turns on to 720.
TEST(TableAC, TheStartPicksTheTurn) {
  const Machine machine = example("table-ac");
  const Answer answer =
      LibrarySolver(machine).nearest(kTilted, machine.position({{"C", 700.0}, {"A", -40.0}}));
  expectReached(answer);
  expectValues(answer.position, {10, 20, 30, -45, 720});
}

// At C = 0 the direction wants A = 40, which the cradle does not have: C = 180 and A = -40 do.
TEST(TableAC, OutsideItsLimitsTheOtherBranchIsTaken) {
  const Machine machine = example("table-ac");
  const Target target = above(fromZ(40, -90));
  const Answer answer = LibrarySolver(machine).nearest(target, machine.position());
  expectReached(answer);
  EXPECT_NEAR(answer.position["A"], -40, 1e-9);
  EXPECT_NEAR(std::abs(answer.position["C"]), 180, 1e-9);
}

// 130 degrees from Z: A = -130 is 10 beyond its limit, A = 130 is 100 beyond.
TEST(TableAC, SaysHowFarOutsideTheBetterBranchIs) {
  const Machine machine = example("table-ac");
  const Answer answer = LibrarySolver(machine).nearest(above(fromZ(130, 90)), machine.position());
  expectMissed(answer, Reason::outsideLimits, 10);
  EXPECT_EQ(answer.status, Status::outsideLimits);
  ASSERT_GE(answer.outside.size(), 1u);
  EXPECT_EQ(answer.outside.back().place, 3);
  EXPECT_NEAR(answer.outside.back().by, -10, 1e-9);
  EXPECT_NE(answer.text.find("A below by 10 degrees"), std::string::npos) << answer.text;
}

TEST(TableAC, ALinearAxisOutsideIsNamedWithItsDistance) {
  const Machine machine = example("table-ac");
  const Answer answer = LibrarySolver(machine).nearest({{350, 0, 120}, kUp}, machine.position());
  // upright the table may turn anywhere, but the solver has no reason to turn it
  expectMissed(answer, Reason::outsideLimits, 50);
  EXPECT_EQ(answer.text, "outside the limits: X above by 50 mm");
}

// On a limit is inside, whatever rounding does.
TEST(TableAC, ALimitCanBeReached) {
  const Machine machine = example("table-ac");
  for (const double heading : {90.0, 10.0, 200.0, 333.0}) {
    const Answer answer =
        LibrarySolver(machine).nearest(above(fromZ(120, heading)), machine.position());
    expectReached(answer);
    EXPECT_NEAR(answer.position["A"], -120, 1e-9);
    EXPECT_GE(answer.position["A"], -120);
  }
}

// C = 0, 360 and -360 are the starts' only ways to A = -45; A = 45 is outside.
TEST(TableAC, ListsAllPositionsNearestFirst) {
  const Machine machine = example("table-ac");
  const Answers all = LibrarySolver(machine).all(kTilted, machine.position({{"C", 350.0}}), 20);
  ASSERT_EQ(all.positions.size(), 3u);
  EXPECT_EQ(all.total, 3u);
  EXPECT_FALSE(all.none);
  expectValues(all.positions[0].position, {10, 20, 30, -45, 360});
  expectValues(all.positions[1].position, {10, 20, 30, -45, 0});
  expectValues(all.positions[2].position, {10, 20, 30, -45, -360});
  EXPECT_NEAR(all.distances[0], 10 + 20 + 30 + 45 + 10, 1e-9);
  for (const Answer& answer : all.positions) expectReached(answer);
  EXPECT_EQ(LibrarySolver(machine).all(kTilted, machine.position(), 1).positions.size(), 1u);
  EXPECT_EQ(LibrarySolver(machine).all(kTilted, machine.position(), 1).total, 3u);
}

// Nine starts of C without limits, four of A in -120 to 30: -45, -120, 30, -90.
TEST(TableAC, SeedsAreCountedForTheList) { EXPECT_EQ(korvo::seedCount(example("table-ac")), 36u); }

TEST(TableAC, ToolLengthAndPartZeroCount) {
  Machine machine = example("table-ac");
  machine->setTHELength(50.0, 1);
  machine->setUNI2MAC(zgeo::UMatrix::_translation({1, 2, 3}));
  const Target target = korvo::fromPartZero(machine, {{9, 18, 97}, kUp});
  EXPECT_EQ(target.tip, UVec3d(10, 20, 100));
  const Answer answer = LibrarySolver(machine).nearest(target, machine.position());
  expectReached(answer);
  expectValues(answer.position, {10, 20, 100 + 50 - 120, 0, 0});
}

// With C locked one axis is left: the tool, square to A, sweeps the plane square to X.
TEST(TableAC, ALockedAxisStaysAndNarrowsTheReach) {
  const Machine machine = withLock(example("table-ac"), 4);
  const Position from = machine.position({{"C", 90.0}});
  const Answer answer = LibrarySolver(machine).nearest({{0, 0, 100}, fromZ(30, 0)}, from);
  // at C = 90 the cradle's line lies along Y and A tilts the tool in the plane of X and Z
  EXPECT_EQ(answer.position["C"], 90.0);
  EXPECT_LE(answer.residual.directionRad, korvo::kReachedRad);
  EXPECT_FALSE(korvo::singularity(machine, *from));
  const Answer beside = LibrarySolver(machine).nearest({{0, 0, 100}, fromZ(30, 90)}, from);
  expectMissed(beside, Reason::outsideCone, 30);
  EXPECT_NE(beside.text.find("the cone that the tool describes about A"), std::string::npos);
}

TEST(TableAC, TheListKeepsLockedAxes) {
  const Machine machine = withLock(example("table-ac"), 4);
  const Answers all =
      LibrarySolver(machine).all(above(fromZ(20, 90)), machine.position({{"C", 0.0}}), 20);
  ASSERT_EQ(all.total, 1u);
  EXPECT_EQ(all.positions[0].position["C"], 0.0);
  EXPECT_NEAR(all.positions[0].position["A"], -20, 1e-9);
}

TEST(TableAC, NoTargetIsNoAnswer) {
  const Machine machine = example("table-ac");
  const double nan = std::nan("");
  for (const Target& target :
       {Target{{0, 0, 0}, {0, 0, 0}}, Target{{nan, 0, 0}, kUp}, Target{{0, 0, 0}, {nan, 0, 1}}}) {
    LibrarySolver solver(machine);
    expectMissed(solver.nearest(target, machine.position()), Reason::noDirection, 0);
    ASSERT_TRUE(solver.all(target, machine.position(), 5).none);
    Position at = machine.position();
    korvo::Residual residual;
    EXPECT_TRUE(solver.follow(target, at, residual));
  }
}

TEST(TableAC, TranslationShiftsTheTipAtTheSameDirection) {
  const Machine machine = example("table-ac");
  const Position at = machine.position({{"X", 5.0}, {"C", 90.0}});
  const Answer answer = LibrarySolver(machine).translate({0, 10, 0}, at);
  expectReached(answer);
  expectValues(answer.position, {15, 0, 0, 0, 90});  // at C = 90 the head's X lies along Y
}

// --- a head whose second axis is tilted by 45 degrees: it reaches 0 to 90 degrees from Z

TEST(HeadNutating, LaysTheSpindleDown) {
  const Machine machine = example("head-nutating");
  // B = 180 brings the nose, 260 below the pivot, to (0, -260, 260); C = -90 on to (-260, 0, 260)
  const Answer answer =
      LibrarySolver(machine).nearest({{0, 0, 300}, {1, 0, 0}}, machine.position({{"B", 100.0}}));
  EXPECT_LE(answer.residual.pointMm, korvo::kReachedMm);
  expectReached(answer);
  EXPECT_NEAR(answer.position["X"], 260, 1e-3);
  EXPECT_NEAR(answer.position["Z"], 40, 1e-3);
  EXPECT_NEAR(answer.position["C"], -90, 1e-4);
  EXPECT_NEAR(std::abs(answer.position["B"]), 180, 1e-4);
}

// cos t = 1/2 + 1/2 cos B: B = 90 gives t = 60, 30 from the edge at 90; the other edge is at 0.
TEST(HeadNutating, IsSingularAtBothEdgesOfItsBand) {
  const Machine machine = example("head-nutating");
  const auto at = [&](double b) {
    const auto singular = korvo::singularity(machine, *machine.position({{"B", b}, {"C", 20.0}}));
    return singular->angleRad / kDegToRad;
  };
  EXPECT_NEAR(at(90), 30, 1e-9);
  EXPECT_NEAR(at(0), 0, 1e-9);
  EXPECT_NEAR(at(180), 0, 1e-6);
  EXPECT_NEAR(at(60), std::acos(0.75) / kDegToRad, 1e-9);
}

TEST(HeadNutating, SaysHowFarADirectionIsBesideItsBand) {
  const Machine machine = example("head-nutating");
  const Answer answer =
      LibrarySolver(machine).nearest({{0, 0, 500}, fromZ(100, 33)}, machine.position());
  expectMissed(answer, Reason::outsideCone, 10);
  EXPECT_NE(answer.text.find("C and B"), std::string::npos) << answer.text;
  EXPECT_EQ(answer.status, Status::notReached);
}

// --- one rotary axis, none

TEST(Mill4Axis, TurnsThePalletAndSaysWhatItCannot) {
  const Machine machine = example("mill-4axis");
  LibrarySolver solver(machine);
  // R_y(90) (x, y, z) = (z, y, -x); the nose starts at (0, 80, 250)
  const Answer answer = solver.nearest({{300, 100, 40}, {1, 0, 0}}, machine.position());
  expectReached(answer);
  EXPECT_NEAR(answer.position["X"], -40, 1e-9);
  EXPECT_NEAR(answer.position["Y"], 20, 1e-9);
  EXPECT_NEAR(answer.position["Z"], 50, 1e-9);
  EXPECT_NEAR(answer.position["B"], 90, 1e-9);
  EXPECT_FALSE(answer.singularity);
  const UVec3d up30(0, 0.5, std::sqrt(0.75));
  expectMissed(solver.nearest({{0, 200, 300}, up30}, machine.position()), Reason::outsideCone, 30);
  // along the axis itself the library's solver gives up; the angle is said all the same
  expectMissed(solver.nearest({{0, 200, 300}, {0, 1, 0}}, machine.position()), Reason::outsideCone,
               90);
}

TEST(Mill3Axis, IsAnsweredByItsLinearAxes) {
  Machine machine = example("mill-3axis");
  machine->setTHELength(50.0, 1);
  const Answer answer =
      LibrarySolver(machine).nearest({{10, 20, 300}, {0, 0, 3}}, machine.position());
  expectReached(answer);
  EXPECT_TRUE(answer.isLinearOnly);
  expectValues(answer.position, {10, 20, 300 + 50 - 110});
  EXPECT_FALSE(answer.singularity);
}

TEST(Mill3Axis, CannotTurnTheTool) {
  const Machine machine = example("mill-3axis");
  LibrarySolver solver(machine);
  const Answer answer = solver.nearest({{0, 0, 200}, fromZ(30, 0)}, machine.position());
  expectMissed(answer, Reason::noRotaryAxis, 30);
  expectMissed(solver.nearest({{400, 0, 200}, kUp}, machine.position()), Reason::outsideLimits, 19);
  EXPECT_EQ(solver.all({{1, 2, 200}, kUp}, machine.position(), 20).total, 1u);
}

TEST(Mill3Axis, TranslatesThoughTheLibraryGivesNoIncrements) {
  const Machine machine = example("mill-3axis");
  const Answer answer =
      LibrarySolver(machine).translate({1, 2, 3}, machine.position({{"Z", 100.0}}));
  expectReached(answer);
  EXPECT_TRUE(answer.isLinearOnly);
  expectValues(answer.position, {1, 2, 103});
}

TEST(Mill3Axis, ALockedLinearAxisLeavesThePoint) {
  const Machine machine = withLock(example("mill-3axis"), 0);
  LibrarySolver solver(machine);
  const Answer answer = solver.nearest({{10, 0, 110}, kUp}, machine.position());
  expectMissed(answer, Reason::linearAxes, 10);
  EXPECT_NE(answer.text.find("2 free linear axes"), std::string::npos) << answer.text;
}

// --- four linear axes

TEST(GantryW, TheBeamStaysWhereItIsWithAndWithoutItsLock) {
  for (const bool isLocked : {false, true}) {
    Machine machine = example("gantry-w");
    const int beam = machine.axisNames().find("W");
    if (isLocked) machine = withLock(machine, beam);
    const Position from = machine.position({{"W", -100.0}, {"X", 10.0}});
    LibrarySolver solver(machine);
    const Answer answer = solver.nearest({{100, 50, -300}, kUp}, from);
    expectReached(answer);
    EXPECT_NEAR(answer.position["X"], 100, 1e-9);
    EXPECT_NEAR(answer.position["Y"], 50, 1e-9);
    EXPECT_NEAR(answer.position["Z"], -200, 1e-9);
    EXPECT_EQ(answer.position["W"], -100);
    const Answers all = solver.all({{100, 50, -300}, fromZ(30, 20)}, from, 100);
    EXPECT_GE(all.total, 2u);
    for (const Answer& one : all.positions) {
      expectReached(one);
      EXPECT_EQ(one.position["W"], -100);
    }
  }
}

// W lies along X: the last three linear axes, counted from the tool, are dependent, and the library
// calls every position unsolved.
constexpr const char* kSpareX =
    "frame\npart=x,y,0,0,0\nlien=BATI\naxis=W,7,x\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\n"
    "rotation=C,6,z,0,0,0,0,0\nrotation=A,4,x,0,0,0,0,100\ntool=z,0,0,0\nlimits=A,-90,90\n";

TEST(FourLinearAxes, AreAnsweredWhereTheLibrarysCodeSaysFailed) {
  const Machine machine = machineOf(kSpareX);
  const Position from = machine.position({{"W", 5.0}});
  Position out = machine.position();
  const Target target{{50, 60, 70}, fromZ(20, 30)};
  ASSERT_NE(machine->getConfigPlus(from, target.tip, target.direction, out), 0);
  LibrarySolver solver(machine);
  const Answer answer = solver.nearest(target, from);
  expectReached(answer);
  EXPECT_EQ(answer.position["W"], 5.0);
  korvo::PositionList list;
  machine->getPossibleConfigs(target.direction, target.tip, list.raw(), 1);
  EXPECT_TRUE(list.empty());
  const Answers all = solver.all(target, from, 100);
  EXPECT_GE(all.total, 2u);
  for (const Answer& one : all.positions) expectReached(one);
}

// --- arms

TEST(Puma560, ReachesWithItsToolPointInTheWristCentre) {
  const Machine machine = example("arm-puma560");
  const Position from = machine.position({{"J1", 10.0}, {"J2", 15.0}, {"J3", 20.0}, {"J5", 30.0}});
  // the tool of the zero position, and the same turned about the wrist centre
  for (const UVec3d& direction : {UVec3d(0, 0, -1), fromZ(150, 40), fromZ(120, 200)}) {
    const Answer answer =
        LibrarySolver(machine).nearest({{452.1, -150.05, 1103.63}, direction}, from);
    EXPECT_LE(answer.residual.pointMm, korvo::kReachedMm) << answer.text;
    EXPECT_LE(answer.residual.directionRad, korvo::kReachedRad);
    EXPECT_NE(answer.status, Status::notReached);
  }
}

// The wrist centre 150.05 beside the first axis, the arms 431.8 and the root of 20.3^2 + 431.8^2.
TEST(Puma560, SaysHowFarATargetIsOutOfReach) {
  const Machine machine = example("arm-puma560");
  LibrarySolver solver(machine);
  const double ahead = std::sqrt(2000.0 * 2000.0 - 150.05 * 150.05);
  const double reach = 431.8 + std::hypot(20.3, 431.8);
  expectMissed(solver.nearest({{2000, 0, 671.83}, {0, 0, -1}}, machine.position()),
               Reason::outOfReach, ahead - reach);
  expectMissed(solver.nearest({{100, 0, 700}, {0, 0, -1}}, machine.position()), Reason::outOfReach,
               50.05);
}

// A flange 85 mm from the wrist centre.
TEST(Irb2400, PointsItsToolAnyWay) {
  const Machine machine = example("arm-irb2400");
  for (const UVec3d& direction : {UVec3d(-1, 0, 0), fromZ(30, 0), fromZ(60, 180)}) {
    const Answer answer =
        LibrarySolver(machine).nearest({{800, 0, 1200}, direction}, machine.position());
    EXPECT_LE(answer.residual.pointMm, korvo::kReachedMm) << answer.text;
    EXPECT_LE(answer.residual.directionRad, korvo::kReachedRad);
    EXPECT_NE(answer.status, Status::notReached);
  }
}

TEST(Irb2400, ReachesStraightDown) {
  const Machine machine = example("arm-irb2400");
  const Answer answer = LibrarySolver(machine).nearest({{800, 0, 500}, kUp}, machine.position());
  EXPECT_NE(answer.status, Status::notReached) << answer.text;
  EXPECT_LE(answer.residual.pointMm, korvo::kReachedMm);
}

TEST(Irb2400, OnARailIsToldThatAnAxisStandsBeforeItsFirstJoint) {
  const Machine machine = example("arm-irb2400-rail");
  const Answer answer =
      LibrarySolver(machine).nearest({{800, 300, 500}, kUp}, machine.position({{"RAIL", 1000.0}}));
  EXPECT_EQ(answer.reason, Reason::missed) << answer.text;
  ASSERT_FALSE(answer.conditions.empty());
  EXPECT_EQ(answer.conditions[0], "an axis stands before J1, the first joint");
}

TEST(Arm, MovesLockedJointsAndIsToldSo) {
  const Machine machine = withLock(example("arm-puma560"), 0);
  const Answer answer = LibrarySolver(machine).nearest({{452.1, -150.05, 1103.63}, {0, 0, -1}},
                                                       machine.position({{"J1", 30.0}}));
  EXPECT_EQ(answer.reason, Reason::lockedAxis);
  EXPECT_EQ(answer.text, "the arm solver moves locked axes: J1");
}

// Two sides of the base, two elbows, two wrists: a ball-wrist arm reaches a place in eight ways.
// Within half a turn of every joint each way counts once; J6 only turns the tool about itself.
TEST(Arm, ListsEverySideElbowAndWristFromAnyStart) {
  Machine machine = example("arm-puma560");
  for (int place = 0; place < 6; ++place) {
    axisAt(machine, place).setMin(-180, true);
    axisAt(machine, place).setMax(180, true);
  }
  const Target target{{500, -150, 900}, UVec3d(0.3, 0.2, -1).normalised()};
  for (const double start : {-100.0, 0.0, 70.0}) {
    const korvo::Position from = machine.position({{"J1", start}, {"J3", -start}, {"J6", 12.0}});
    const Answers all = LibrarySolver(machine).all(target, from, 100);
    EXPECT_EQ(all.total, 8u);
    for (const Answer& answer : all.positions) {
      expectReached(answer);
      EXPECT_EQ(answer.position[5], 12.0);
    }
    EXPECT_TRUE(std::is_sorted(all.distances.begin(), all.distances.end()));
  }
}

// J4 and J5 have a second turn within 266 degrees whenever the first lies beyond 94.
TEST(Arm, ListsTheTurnsOfItsJoints) {
  Machine machine = example("arm-puma560");
  const Target target{{500, -150, 900}, UVec3d(0.3, 0.2, -1).normalised()};
  const Answers all = LibrarySolver(machine).all(target, machine.position(), 100);
  ASSERT_GT(all.total, 0u);
  for (const Answer& answer : all.positions) {
    const double j4 = answer.position[3];
    const double other = j4 > 0 ? j4 - 360 : j4 + 360;
    const auto isOther = [&](const Answer& a) {
      return std::abs(a.position[3] - other) < 1e-6 &&
             std::abs(a.position[4] - answer.position[4]) < 1e-6 &&
             std::abs(a.position[0] - answer.position[0]) < 1e-6 &&
             std::abs(a.position[2] - answer.position[2]) < 1e-6;
    };
    EXPECT_EQ(std::any_of(all.positions.begin(), all.positions.end(), isOther),
              std::abs(other) <= 266);
  }
}

// Six joints without limits: nine starts each.
TEST(Arm, ListsOfTooManyStartsAreRefusedWithTheirNumber) {
  Machine machine = example("arm-puma560");
  for (int place = 0; place < 6; ++place) {
    axisAt(machine, place).setMin(0, false);
    axisAt(machine, place).setMax(0, false);
  }
  EXPECT_EQ(korvo::seedCount(machine), 531441u);
  machine = machineOf(
      "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\n"
      "rotation=A,4,x\nrotation=B,5,y\nrotation=C,6,z\nrotation=D,7,x\nrotation=E,8,y\n"
      "rotation=F,9,z\nrotation=G,10,x\ntool=z,0,0,0\n");
  const Answers all = LibrarySolver(machine).all({{1, 2, 3}, fromZ(10, 20)}, machine.position(), 5);
  ASSERT_TRUE(all.tooManySeeds);
  EXPECT_EQ(*all.tooManySeeds, 4782969u);
  ASSERT_EQ(all.positions.size(), 1u);  // what `nearest` gives
  expectReached(all.positions[0]);
}

// --- one broken condition of an arm a row

struct ArmRow {
  const char* label;
  const char* line;  // of the arm below
  const char* instead;
  const char* expected;  // a condition that is said
};

// Upright J1, J2 and J3 along -Y, a ball wrist at (400, 0, 1100), the tool on J6.
constexpr const char* kArm =
    "frame\npart=x,y,0,0,0\nlien=BATI\n"
    "rotation=J1,1,+z,0,0,0,0,0\nrotation=J2,2,-y,0,0,0,0,600\nrotation=J3,3,-y,0,0,400,0,600\n"
    "rotation=J4,4,+z,0,0,400,0,1100\nrotation=J5,5,-y,0,0,400,0,1100\n"
    "rotation=J6,6,+z,0,0,400,0,1100\ntool=-z,400,0,1100\n";

class ArmConditions : public testing::TestWithParam<ArmRow> {};

TEST_P(ArmConditions, AreSaidInWords) {
  const ArmRow& row = GetParam();
  std::string text = kArm;
  const std::size_t place = text.find(row.line);
  ASSERT_NE(place, std::string::npos);
  text.replace(place, std::string(row.line).size(), row.instead);
  const Machine machine = machineOf(text);
  const Answer answer = LibrarySolver(machine).nearest(
      {{500, 100, 900}, fromZ(150, 10)}, machine.position({{"J2", 10.0}, {"J5", 20.0}}));
  EXPECT_EQ(answer.reason, Reason::missed) << answer.text;
  std::string said;
  for (const std::string& condition : answer.conditions) said += condition + "\n";
  EXPECT_NE(said.find(row.expected), std::string::npos) << said;
}

INSTANTIATE_TEST_SUITE_P(
    Arm, ArmConditions,
    testing::Values(
        ArmRow{"FirstJointDownward", "J1,1,+z", "J1,1,-z", "J1 is not upright"},
        ArmRow{"FirstJointBesideTheLine", "J1,1,+z,0,0,0,0,0", "J1,1,+z,0,0,50,0,0",
               "J1 is not upright (+Z) on the machine's Z line"},
        ArmRow{"NumbersExchanged", "J1,1,+z,0,0,0,0,0\nrotation=J2,2",
               "J1,2,+z,0,0,0,0,0\nrotation=J2,1", "do not have the three lowest axis numbers"},
        ArmRow{"SecondNotSquare", "J2,2,-y", "J2,2,0,-1,0.5", "the second square to the first"},
        ArmRow{"ThirdNotParallel", "J3,3,-y", "J3,3,0,-1,0.5", "the third parallel to the second"},
        ArmRow{"ForearmSkew", "J4,4,+z", "J4,4,0,0.5,1", "the fourth joint is not square"},
        ArmRow{"WristOffset", "J5,5,-y,0,0,400,0,1100", "J5,5,-y,0,0,420,0,1100",
               "do not meet in one point"},
        ArmRow{"ToolBeside", "tool=-z,400,0,1100", "tool=-z,430,0,1100",
               "the tool does not lie on the line of the last joint"},
        ArmRow{"RailBefore", "lien=BATI\n", "lien=BATI\naxis=RAIL,7,+y\n",
               "an axis stands before J1"}),
    [](const auto& row) { return std::string(row.param.label); });

TEST(Arm, OfTheOneLayoutReachesTheSameTarget) {
  const Machine machine = machineOf(kArm);
  const Answer answer = LibrarySolver(machine).nearest(
      {{500, 100, 900}, fromZ(150, 10)}, machine.position({{"J2", 10.0}, {"J5", 20.0}}));
  expectReached(answer);
}

// A straight wrist turns about one line with two joints.
TEST(Arm, IsSingularWithAStraightWrist) {
  const Machine machine = machineOf(kArm);
  const auto at = [&](double j5) {
    return korvo::singularity(machine, *machine.position({{"J2", 20.0}, {"J5", j5}}));
  };
  EXPECT_NEAR(at(0)->angleRad, 0, 1e-9);
  EXPECT_NEAR(at(25)->angleRad, 25 * kDegToRad, 1e-9);
  EXPECT_EQ(at(25)->first, 3);
  EXPECT_EQ(at(25)->second, 4);
}

// --- one after the other

TEST(Follow, GoesFromTargetToTargetAndStaysWhereOneHasNoAnswer) {
  const Machine machine = example("table-ac");
  LibrarySolver solver(machine);
  Position at = machine.position();
  korvo::Residual residual;
  EXPECT_FALSE(solver.follow(kTilted, at, residual));
  expectValues(at, {10, 20, 30, -45, 0});
  EXPECT_LE(residual.pointMm, korvo::kReachedMm);
  const auto missed = solver.follow(above(fromZ(170, 90)), at, residual);
  ASSERT_TRUE(missed);
  EXPECT_EQ(missed->reason, Reason::outsideLimits);
  expectValues(at, {10, 20, 30, -45, 0});
}

TEST(Follow, TakesTheOtherBranchAtALimit) {
  const Machine machine = example("table-ac");
  LibrarySolver solver(machine);
  Position at = machine.position();
  korvo::Residual residual;
  EXPECT_FALSE(solver.follow(above(fromZ(40, -90)), at, residual));
  EXPECT_NEAR(at["A"], -40, 1e-9);
}

}  // namespace
