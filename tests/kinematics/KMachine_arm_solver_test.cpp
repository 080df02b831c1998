#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

// The library does not export its wrapping of angles: this is a copy of its own for the test.
#include "kinematics/inverse/WrapNear.cpp"  // NOLINT(bugprone-suspicious-include): see above
#include "tests/kinematics/KMachine_arm.h"

// Arms that the solver can solve: every branch, every direction, and what a solve leaves behind.
// Their tool point is the wrist centre.

namespace korvo::test::arm {
namespace {

constexpr double kPointMm = 1e-7;    // 4 roundings of an arc cosine's argument, away from its ends
constexpr double kDirection = 1e-9;  // radians

/// The difference of two angles (degrees) but for full turns.
double apart(double a, double b) { return std::abs(std::remainder(a - b, 360.0)); }

struct NamedArm {
  const char* name;
  Arm arm;
};

void PrintTo(const NamedArm& row, std::ostream* out) { *out << row.name; }

/// The square arm with other senses of its axes; `flipped` holds joint numbers.
Arm flippedArm(const std::vector<std::size_t>& flipped) {
  Arm arm = squareArm();
  for (const std::size_t joint : flipped) {
    Line& line = arm.joints[joint - 1];
    line.direction = line.direction * -1;
  }
  return arm;
}

/// The square arm turned about its first axis at the zero position.
Arm headingArm(double degrees) {
  Arm arm = squareArm();
  const reference::Pose turn = reference::rz(degrees);
  for (Line& line : arm.joints) line = {turn.at(line.point), turn.at(line.direction)};
  arm.tool = {turn.at(arm.tool.point), turn.at(arm.tool.direction)};
  return arm;
}

Arm otherToolSense() {
  Arm arm = squareArm();
  arm.tool.direction = {0, 0, 1};
  return arm;
}

/// The third joint against the second: solvable without a forearm offset.
Arm thirdAgainstSecond() {
  Arm arm = squareArm();
  arm.joints[2].direction = {0, 1, 0};
  for (std::size_t i : {3u, 4u, 5u}) arm.joints[i].point.x = 450;
  arm.tool.point.x = 450;
  return arm;
}

class ArmSolverArms : public testing::TestWithParam<NamedArm> {
 protected:
  std::unique_ptr<KMachine> machine = GetParam().arm.load();
};

// The start is a degree beside a position with that wrist centre, so its branch is the nearest one:
// front and back, elbow on either side, in all quarters.
TEST_P(ArmSolverArms, EveryBranchIsFoundFromBesideIt) {
  for (const double j1 : {-170.0, -100.0, -20.0, 50.0, 130.0}) {
    for (const double j2 : {-150.0, -80.0, -10.0, 50.0, 110.0}) {
      for (const double j3 : {-140.0, -100.0, 60.0, 110.0}) {
        const ToolPlace at = toolAt(*machine, {j1, j2, j3, 0, 0, 0});
        const Solved solved =
            solve(*machine, {j1 + 1, j2 - 1, j3 + 1, 30, 40, 50}, at.point, {1, 2, 3});
        EXPECT_NEAR(solved.values[0], j1, 1e-7) << j1 << ' ' << j2 << ' ' << j3;
        EXPECT_NEAR(solved.values[1], j2, 1e-7) << j1 << ' ' << j2 << ' ' << j3;
        EXPECT_NEAR(apart(solved.values[2], j3), 0, 1e-7) << j1 << ' ' << j2 << ' ' << j3;
        const Miss miss = missOf(*machine, solved, at.point, {1, 2, 3});
        EXPECT_LE(miss.point.norm(), kPointMm);
        EXPECT_LE(miss.direction, kDirection);
      }
    }
  }
}

TEST_P(ArmSolverArms, EveryDirectionIsReached) {
  const ToolPlace at = toolAt(*machine, {20, 30, 70, 0, 0, 0});
  for (const UVec3d& dir : manyDirections()) {
    for (const double j5 : {0.0, 60.0, -120.0}) {
      const Solved solved = solve(*machine, {25, 28, 75, 10, j5, 30}, at.point, dir);
      const Miss miss = missOf(*machine, solved, at.point, dir);
      EXPECT_EQ(solved.code, 0);
      EXPECT_LE(miss.point.norm(), kPointMm);
      EXPECT_LE(miss.direction, kDirection) << dir << " from " << j5;
    }
  }
}

// Solutions of the first two joints come to within half a turn of the start, however many turns
// that is away.
TEST_P(ArmSolverArms, FirstTwoJointsStayInTheTurnOfTheStart) {
  const ToolPlace at = toolAt(*machine, {20, 30, 70, 0, 0, 0});
  for (const double turns : {-1000.0, -17.0, -16.0, -15.0, -1.0, 1.0, 2.0, 15.0, 16.0, 17.0, 1e6}) {
    const double away = 360 * turns;
    const Solved solved =
        solve(*machine, {25 + away, 28 - away, 75, 0, 10, 0}, at.point, {1, 2, 3});
    EXPECT_NEAR(solved.values[0], 20 + away, 1e-5);
    EXPECT_NEAR(solved.values[1], 30 - away, 1e-5);
  }
}

INSTANTIATE_TEST_SUITE_P(
    LaidOutAsWanted, ArmSolverArms,
    testing::Values(
        NamedArm{"Square", squareArm()}, NamedArm{"Puma560", pumaArm()},
        NamedArm{"OrthoParallel", orthoParallelArm()}, NamedArm{"ReversedAxes", reversedArm()},
        NamedArm{"SecondAndThirdReversed", flippedArm({2, 3})},
        NamedArm{"FourthReversed", flippedArm({4})}, NamedArm{"FifthReversed", flippedArm({5})},
        NamedArm{"SixthReversed", flippedArm({6})},
        NamedArm{"AllButTheFirstReversed", flippedArm({2, 3, 4, 5, 6})},
        NamedArm{"HomeHeading30", headingArm(30)}, NamedArm{"HomeHeading180", headingArm(180)},
        NamedArm{"HomeHeadingMinus100", headingArm(-100)},
        NamedArm{"ToolTheOtherWay", otherToolSense()},
        NamedArm{"ThirdAgainstSecondWithoutForearmOffset", thirdAgainstSecond()}),
    [](const auto& row) { return std::string(row.param.name); });

// --- Single promises

/// Wrist 300 out and 400 up from the shoulder of the square arm at J1 = 36.87 degrees.
const UVec3d kTarget = {370, 90, 700};

TEST(ArmSolver, ThirdJointMayBeATurnAway) {
  const auto machine = squareArm().load();
  for (const double start : {37.0, 397.0, -323.0}) {
    const Solved solved = solve(*machine, {36, 16, start, 0, 0, 0}, kTarget, {1, 0, 0});
    EXPECT_NEAR(solved.values[2], 36.869897645844, 1e-9) << "from " << start;
  }
}

TEST(ArmSolver, DirectionOfAnyLengthIsTheSame) {
  const auto machine = squareArm().load();
  const Solved one = solveArm(*machine, {1, 2, 3, 4, 5, 6}, kTarget, {0, 0.6, 0.8});
  const Solved far = solveArm(*machine, {1, 2, 3, 4, 5, 6}, kTarget, {0, 600, 800});
  for (std::size_t i = 0; i < 6; ++i) EXPECT_NEAR(one.values[i], far.values[i], 1e-11);
}

TEST(ArmSolver, SecondTurnOfTheWristChangesNothing) {
  for (const Arm& arm : {squareArm(), pumaArm(), orthoParallelArm(40), reversedArm(40)}) {
    const auto machine = arm.load();
    const UVec3d pos = toolAt(*machine, {20, 30, 70, 0, 0, 0}).point;
    for (const UVec3d& dir : manyDirections()) {
      const std::vector<double> start = {25, 28, 75, 10, 40, 30};
      const Solved once = solveArm(*machine, start, pos, dir);
      const Solved twice = solve(*machine, start, pos, dir);
      EXPECT_EQ(twice.code, 0);
      for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_NEAR(twice.values[i], once.values[i], 1e-6) << "J" << i + 1 << ", " << dir;
      }
    }
  }
}

TEST(ArmSolver, SixthJointNeverTurns) {
  const auto machine = squareArm().load();
  EXPECT_EQ(solve(*machine, {1, 2, 3, 4, 5, 77}, kTarget, {1, 2, 3}).values[5], 77);
}

TEST(ArmSolver, OutOfReachStillAnswersZeroAndTurnsTheWrist) {
  const auto machine = squareArm().load();
  const std::vector<double> start = {10, 20, 30, 40, 50, 60};
  const Solved solved = solve(*machine, start, {3000, 0, 500}, {1, 1, 1});
  EXPECT_EQ(solved.code, 0);
  EXPECT_EQ(solved.values[1], 20);
  EXPECT_EQ(solved.values[2], 30);
  EXPECT_NEAR(missOf(*machine, solved, {}, {1, 1, 1}).direction, 0, kDirection);
  EXPECT_GT(missOf(*machine, solved, {3000, 0, 500}, {1, 1, 1}).point.norm(), 1000);
}

// --- What a solve leaves in the elements

void expectAngles(const KMachine& machine, const std::vector<double>& values) {
  for (int joint = 1; joint <= 6; ++joint) {
    const KMachineElem& e = *machine.getElemByIndex(joint);
    EXPECT_NEAR(e.getDHmValue(true),
                e.getDHmRef().theta + values[static_cast<std::size_t>(joint - 1)] * kDegree, 1e-12)
        << "J" << joint;
  }
}

TEST(ArmSolver, LeavesTheSolvedAnglesOfTheFirstThreeJoints) {
  const auto machine = squareArm().load();
  const std::vector<double> start = {10, 20, 30, 40, 50, 60};
  for (const auto& solver : {solve, solveArm}) {
    const Solved solved = solver(*machine, start, kTarget, {1, 2, 3});
    EXPECT_NEAR(solved.values[0], 36.869897645844, 1e-9);
    EXPECT_NE(solved.values[3], 40);
    expectAngles(*machine, {solved.values[0], solved.values[1], solved.values[2], 40, 50, 60});
  }
}

TEST(ArmSolver, OutOfReachLeavesOnlyTheFirstAngleSolved) {
  const auto machine = squareArm().load();
  solveArm(*machine, {10, 20, 30, 40, 50, 60}, {370, 90, 2300}, {1, 2, 3});
  expectAngles(*machine, {36.869897645844, 20, 30, 40, 50, 60});
}

TEST(ArmSolver, UnsolvedShapesLeaveTheStart) {
  Arm arm = squareArm();
  arm.joints[1].direction = {0, -1, 0.1};
  const auto machine = arm.load();
  machine->updateDHm(*positionOf(*machine, {9, 9, 9, 9, 9, 9}), 1);
  solveArm(*machine, {10, 20, 30, 40, 50, 60}, kTarget, {1, 2, 3});
  expectAngles(*machine, {10, 20, 30, 40, 50, 60});
}

TEST(ArmSolver, ChangesNothingElse) {
  const auto machine = pumaArm(56).load();
  const KMachine before(*machine);
  solve(*machine, {10, 20, 30, 40, 50, 60}, {500, 100, 800}, {1, 2, 3});
  for (int rank = 0; rank < machine->getElemNumber(); ++rank) {
    const KMachineElem& e = *machine->getElemByRank(rank);
    const KMachineElem& old = *before.getElemByRank(rank);
    EXPECT_TRUE(e == old);
    for (const auto field : {&KMachineElem::_sUDHm::alpha, &KMachineElem::_sUDHm::a,
                             &KMachineElem::_sUDHm::theta, &KMachineElem::_sUDHm::d}) {
      EXPECT_EQ(e.getDHmRef().*field, old.getDHmRef().*field);
      if (field == &KMachineElem::_sUDHm::theta) continue;
      EXPECT_EQ(e.getDHmCur().*field, old.getDHmCur().*field);
    }
  }
}

// --- Who is asked: the record decides

TEST(ArmRecords, RecordsWithoutTheArmShapeOnlyTurnTheWrist) {
  const KMachine::_sUKine records[] = {
      {.toolIndex = -101, .rotuleIndex = 0, .kinematicClass = 5, .armType = 1},
      {.toolIndex = -101, .rotuleIndex = 5, .kinematicClass = 5, .armType = 3},
      {.toolIndex = -101, .rotuleIndex = 5, .kinematicClass = 5, .armType = -1},
  };
  for (const auto& record : records) {
    const auto machine = squareArm().load();
    machine->addKine(1, record);
    const Solved solved = solve(*machine, {10, 20, 30, 40, 50, 60}, kTarget, {1, 2, 3});
    EXPECT_EQ(solved.code, 0);
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(solved.values[i], 10.0 * (1.0 + double(i)));
    EXPECT_NEAR(missOf(*machine, solved, {}, {1, 2, 3}).direction, 0, kDirection);
  }
}

const KMachine::_sUKine kArmRecord = {
    .toolIndex = -101, .rotuleIndex = 1, .kinematicClass = 5, .armType = 1};
const std::string kTwoJoints = "frame\npart=x,y,0,0,0\nlien=BATI\nrotation=J1,1,z,0,0,0,0,0\n";

// Two joints are refused by the arm solver, but they turn the tool.
TEST(ArmRecords, AWristAnswersZeroWhereTheArmRefuses) {
  const auto machine =
      fromText(kTwoJoints + "rotation=J2,2,-y,0,0,50,0,300\ntool=x,600,0,300\n", 1);
  machine->addKine(1, kArmRecord);
  EXPECT_EQ(solveArm(*machine, {10, 20}, {1, 2, 3}, {1, 2, 3}).code, -1);
  const Solved solved = solve(*machine, {10, 20}, {1, 2, 3}, {1, 2, 3});
  EXPECT_EQ(solved.code, 0);
  EXPECT_NEAR(missOf(*machine, solved, {}, {1, 2, 3}).direction, 0, kDirection);
}

TEST(ArmRecords, WithoutAWristTheArmAnswers) {
  const auto machine = fromText(kTwoJoints + "rotation=J2,2,z,0,0,50,0,300\ntool=z,600,0,300\n", 1);
  machine->addKine(1, kArmRecord);
  const Solved refused = solve(*machine, {10, 20}, {1, 2, 3}, {1, 2, 3});
  EXPECT_EQ(refused.code, -1);
  EXPECT_EQ(refused.values, (std::vector<double>{10, 20}));
}

// Four parallel joints: the arm solver is asked, its shape test fails, no wrist can be turned.
TEST(ArmRecords, ParallelJointsAnswerZeroAndStay) {
  const auto machine = fromText(kTwoJoints +
                                    "rotation=J2,2,z,0,0,50,0,300\nrotation=J3,3,z,0,0,450,0,300\n"
                                    "tool=z,600,0,300\n",
                                1);
  machine->addKine(1, kArmRecord);
  const Solved solved = solve(*machine, {10, 20, 30}, {1, 2, 3}, {1, 2, 3});
  EXPECT_EQ(solved.code, 0);
  EXPECT_EQ(solved.values, (std::vector<double>{10, 20, 30}));
}

// --- Wrapping an angle near another

constexpr double kPi = std::numbers::pi;
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

struct Wrap {
  const char* name;
  double angle, reference, expected;
};

void PrintTo(const Wrap& row, std::ostream* out) { *out << row.name; }

class WrapNear : public testing::TestWithParam<Wrap> {};

TEST_P(WrapNear, GivesTheTurnOfTheReference) {
  const auto& [name, angle, reference, expected] = GetParam();
  EXPECT_NEAR(zkin::wrapNear(angle, reference), expected, 1e-12 * (1 + std::abs(expected)));
}

INSTANTIATE_TEST_SUITE_P(
    Angles, WrapNear,
    testing::Values(Wrap{"NearStays", 1, 0.5, 1}, Wrap{"HalfATurnAboveStays", kPi, 0, kPi},
                    Wrap{"HalfATurnBelowStays", -kPi, 0, -kPi},
                    Wrap{"MoreThanHalfATurnAbove", kPi + 0.1, 0, 0.1 - kPi},
                    Wrap{"MoreThanHalfATurnBelow", -kPi - 0.1, 0, kPi - 0.1},
                    Wrap{"ManyTurnsAbove", 0.5 + 10 * kPi, 0, 0.5},
                    Wrap{"ManyTurnsBelow", 0.5 - 10 * kPi, 0, 0.5},
                    Wrap{"LastTurnsByLoop", 0.5 + 30 * kPi, 0, 0.5},
                    Wrap{"JustBeforeOneStep", 99.9, 0, 99.9 - 32 * kPi},
                    Wrap{"JustBeyondOneStep", 100.1, 0, 100.1 - 32 * kPi},
                    Wrap{"JustBeyondOneStepBelow", -100.1, 0, 32 * kPi - 100.1},
                    Wrap{"FarReference", 0.5, 2000 * kPi + 1, 2000 * kPi + 0.5},
                    Wrap{"VeryFarReference", 0.5, 1e17, 1e17},
                    Wrap{"ReferenceWithoutATurnBetweenDoubles", 0.5, -1e18, -1e18},
                    Wrap{"LargestReference", 0.5, 1e308, 1e308}),
    [](const auto& row) { return std::string(row.param.name); });

// Every turn rounds: bit by bit these are not the same.
TEST(WrapNear, TakesTurnsOneByOneUpTo100RadiansAndAllAtOnceBeyond) {
  double expected = 99.0;
  for (int turn = 0; turn < 16; ++turn) expected -= 2 * kPi;  // 99 - 16 * 6.2832 = -1.53
  EXPECT_EQ(zkin::wrapNear(99.0, 0.0), expected);
  EXPECT_EQ(zkin::wrapNear(-99.0, 0.0), -expected);
  for (const double away : {101.0, 150.0, -199.0, 1e6}) {
    EXPECT_EQ(zkin::wrapNear(away, 0.0), std::remainder(away, 2 * kPi)) << away;
    EXPECT_EQ(zkin::wrapNear(7.0 + away, 7.0), 7.0 + std::remainder(away, 2 * kPi)) << away;
  }
}

TEST(WrapNear, LeavesWhatIsNotFinite) {
  EXPECT_EQ(zkin::wrapNear(1, kInfinity), 1);
  EXPECT_EQ(zkin::wrapNear(1, -kInfinity), 1);
  EXPECT_EQ(zkin::wrapNear(200, kNan), 200);
  EXPECT_EQ(zkin::wrapNear(kInfinity, 1), kInfinity);
  EXPECT_EQ(zkin::wrapNear(-kInfinity, kInfinity), -kInfinity);
  EXPECT_TRUE(std::isnan(zkin::wrapNear(kNan, 1)));
}

// Upper arm level, or the forearm as at zero: rounding puts a cosine beside 1 or -1, where the arc
// cosine must not give a NaN. There it is off by the root of a rounding, 2e-8 rad at 500 mm.
TEST(ArmSolver, JointsAtZeroAndHalfATurnAreNumbers) {
  const auto machine = squareArm().load();
  for (const double j2 : {0.0, 180.0, 30.0}) {
    for (int i = 0; i < 1000; ++i) {
      const double j3 = j2 == 30 ? 180.0 * (i % 2) : 0.36 * i + 0.1;
      const double j1 = 0.359 * i - 179.5;
      const UVec3d pos = toolAt(*machine, {j1, j2, j3, 0, 0, 0}).point;
      const Solved solved = solve(*machine, {j1 + 1, j2 - 1, j3, 0, 10, 0}, pos, {1, 2, 3});
      ASSERT_LE(missOf(*machine, solved, pos, {1, 2, 3}).point.norm(), 2e-5) << j1 << ' ' << j3;
    }
  }
}

// Values that no control has: the answer is of no use, but it comes.
TEST(ArmSolver, EndsForAnyStartAndTarget) {
  const auto machine = squareArm().load();
  const double values[] = {0, 1e20, -1e20, 1e300, -1e300, kInfinity, -kInfinity, kNan};
  for (const double v : values) {
    for (const double w : values) {
      EXPECT_EQ(solve(*machine, {v, w, 0, 0, 0, 0}, {300, 100, 600}, {1, 0, 0}).code, 0);
      EXPECT_EQ(solve(*machine, {w, 0, v, 0, 0, 0}, {300, 100, 600}, {1, 0, 0}).code, 0);
      EXPECT_EQ(solve(*machine, {0, 0, 0, 0, 0, 0}, {v, w, 600}, {1, w, v}).code, 0);
    }
  }
}

}  // namespace
}  // namespace korvo::test::arm
