// getConfigPlus: which solver a class of machine has, and the wrist of machines of class 5.
#include "tests/kinematics/KMachine_inverse.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

const std::string kA = "rotation=A,4,x,0,0,0,0,0\n";
const std::string kB = "rotation=B,5,y,0,0,0,0,0\n";
const std::string kC = "rotation=C,6,z,0,0,0,0,0\n";
const std::string kD = "rotation=D,7,z,0,0,0,0,0\n";

const UVec3d kUp(0, 0, 1);

/// The direction (0.36, 0.48, 0.8) is at C = 143.13, A = 36.87.
const UVec3d kSkew(0.36, 0.48, 0.8);
const double kSkewA = std::acos(0.8) * 180 / std::numbers::pi;
const double kSkewC = std::atan2(0.36, -0.48) * 180 / std::numbers::pi;

/// Lets a test say what the last lookup of a record found.
struct SharedRecord : KMachine {
  static Kine& get() { return _NOKine; }
};

/// A later record of tool 1.
void setRecord(KMachine& machine, int kinematicClass, int armType, int rotuleIndex = -1) {
  Kine k;
  k.toolIndex = -101;
  k.kinematicClass = kinematicClass;
  k.armType = armType;
  k.rotuleIndex = rotuleIndex;
  machine.addKine(1, k);
}

// --- classes

using Dispatch = InverseTest;

TEST_F(Dispatch, Classes1To4AreSolvedAsRotaryAndLinearAxes) {
  KMachine machine = head(kXYZ + kC + kA);
  for (int kinematicClass = 1; kinematicClass <= 4; ++kinematicClass) {
    setRecord(machine, kinematicClass, 5);
    const Solved s = solve(machine, {0, 0, 0, 40, 130}, UVec3d(1, 2, 3), kSkew);
    EXPECT_EQ(s.code, 0);
    EXPECT_THAT(s.v, AllNear(Numbers{1, 2, 3, kSkewA, kSkewC}, 1e-9));
  }
}

TEST_F(Dispatch, EveryClassIsWhatTheLoadFound) {
  const std::pair<std::string, int> heads[] = {{"", 1}, {kB, 2}, {kC + kB, 3}, {kC + kA + kB, 4}};
  for (const auto& [axes, kinematicClass] : heads) {
    const KMachine machine = head(kXYZ + axes);
    EXPECT_EQ(machine.getKine(1).kinematicClass, kinematicClass);
    const Numbers start(static_cast<std::size_t>(machine.getAxisNum()));
    const Solved s = solve(machine, start, UVec3d(1, 2, 3), kUp);
    EXPECT_EQ(s.code, kinematicClass == 1 ? -1 : 0);
    EXPECT_EQ(s.v[2], kinematicClass == 1 ? 0 : 3);
  }
  EXPECT_TRUE(trace.claim(kNoRotations));
}

TEST_F(Dispatch, OtherClassesLeaveTheResultUntouched) {
  KMachine machine = head(kXYZ + kC + kA);
  for (const int kinematicClass : {0, 6, -1}) {
    setRecord(machine, kinematicClass, 5);
    const Solved s = solve(machine, {1, 2, 3, 4, 5}, UVec3d(), kUp);
    EXPECT_EQ(s.code, -1);
    EXPECT_EQ(s.v, Numbers(kUntouched.begin(), kUntouched.begin() + 5));
  }
}

// Looking a record up shows it to all: what a solver looked up is what a machine without finds.
TEST_F(Dispatch, LeavesTheRecordThatItUsed) {
  KMachine machine = head(kXYZ + kC + kA);
  const KMachine fresh;
  for (const int kinematicClass : {5, 3}) {
    setRecord(machine, kinematicClass, 4);
    SharedRecord::get() = Kine();
    solve(machine, {0, 0, 0, 40, 130}, UVec3d(), kSkew);
    EXPECT_EQ(fresh.getKine(1).kinematicClass, kinematicClass);
    EXPECT_EQ(fresh.getKine(1).armType, 4);
  }
}

TEST_F(Dispatch, AMachineWithoutRecordUsesTheLastOneFound) {
  KMachine machine = head(kXYZ + kC + kA);
  machine.setCurrentTool(0);  // refused: there is no tool 0
  EXPECT_EQ(machine.getCurrentTool(), 1);
  const KMachine fresh;
  zkin::KMachineValue<3> start, out;
  start[0] = 1, out[0] = 12345;
  SharedRecord::get() = Kine();
  EXPECT_EQ(fresh.getConfigPlus(start, UVec3d(), kUp, out), -1);
  EXPECT_EQ(out[0], 12345);
  SharedRecord::get().kinematicClass = 3;
  EXPECT_EQ(fresh.getConfigPlus(start, UVec3d(), kUp, out), -1);
  EXPECT_EQ(out[0], 1);
  EXPECT_TRUE(trace.claim(kNoRotations));
}

/// A loaded machine has no current tool until the host sets one.
class WithoutCurrentTool : public InverseTest {
 protected:
  WithoutCurrentTool() {
    machine = load("frame\npart=x,y\nlien=BATI\n" + kXYZ + kC + kA + "tool=z,0,0,0\n", 1);
  }

  Solved solveNow() { return solve(machine, {1, 2, 3, 4, 5}, UVec3d(), kUp); }

  KMachine machine;
};

TEST_F(WithoutCurrentTool, TheRecordOfTheLastToolLeadsToFailure) {
  EXPECT_EQ(machine.getCurrentTool(), 0);
  machine.getKine(1);  // class 3, as the load itself leaves it
  const Solved s = solveNow();
  EXPECT_EQ(s.code, -1);
  EXPECT_EQ(s.v, (Numbers{1, 2, 3, 4, 5}));
  EXPECT_TRUE(trace.claim(kNoRotations));
}

TEST_F(WithoutCurrentTool, NoRecordAtAllLeavesTheResultUntouched) {
  SharedRecord::get() = Kine();
  const Solved s = solveNow();
  EXPECT_EQ(s.code, -1);
  EXPECT_EQ(s.v, Numbers(kUntouched.begin(), kUntouched.begin() + 5));
}

TEST_F(WithoutCurrentTool, ARecordOfAnArmGivesTheStart) {
  for (const int armType : {1, -1}) {
    SharedRecord::get() = Kine();
    SharedRecord::get().kinematicClass = 5;
    SharedRecord::get().armType = armType;
    const Solved s = solveNow();
    EXPECT_EQ(s.code, -1);
    EXPECT_EQ(s.v, (Numbers{1, 2, 3, 4, 5}));
    trace.claimAll();
  }
}

// --- the wrist of class 5, without the arm solver

struct WristRow {
  const char* name;
  std::string axes;
  UVec3d dir;
  Numbers start, expected;  ///< In value order A B C D.
};

std::ostream& operator<<(std::ostream& out, const WristRow& row) { return out << row.name; }

class WristTurn : public InverseTest, public testing::WithParamInterface<WristRow> {};

TEST_P(WristTurn, IsTurnedByTheTwoAxesNextToTheTool) {
  const WristRow& row = GetParam();
  KMachine machine = head(row.axes);
  EXPECT_EQ(machine.getKine(1).kinematicClass, 5);
  setRecord(machine, 5, -1);  // three rotary axes look like an arm
  const Solved s = solve(machine, row.start, UVec3d(1, 2, 3), row.dir);
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(row.expected, 1e-9));
}

INSTANTIATE_TEST_SUITE_P(
    Axes, WristTurn,
    testing::Values(
        WristRow{"CA", kC + kA, kSkew, {40, 130}, {kSkewA, kSkewC}},
        WristRow{"AnyLength", kC + kA, kSkew * 1e6, {40, 130}, {kSkewA, kSkewC}},
        WristRow{"StartPicksTheTurn", kC + kA, kSkew, {400, -230}, {360 + kSkewA, kSkewC - 360}},
        // D turns about the tool and stays
        WristRow{
            "AxesAlongTheToolAreSkipped", kC + kA + kD, kSkew, {40, 130, 77}, {kSkewA, kSkewC, 77}},
        // the second axis: E is parallel to A, C is not
        WristRow{"AxesAlongTheFirstAreSkipped",
                 kC + "rotation=E,8,-x,0,0,0,0,0\n" + kA,
                 kSkew,
                 {40, 130, 0},
                 {kSkewA, kSkewC, 0}},
        WristRow{
            "TheOutermostOfThreeStays", kB + kC + kA, kSkew, {40, 0, 130}, {kSkewA, 0, kSkewC}},
        WristRow{"MissingTheSecond", kA, kSkew, {40}, {40}},
        WristRow{"MissingTheSecondOfParallels",
                 kA + "rotation=E,8,-x,0,0,0,0,0\n",
                 kSkew,
                 {40, 3},
                 {40, 3}},
        WristRow{"MissingBoth", kC + kD, kSkew, {40, 130}, {40, 130}},
        WristRow{"Unreachable",
                 kC + "rotation=B,5,0,1,1,0,0,0,0,0\n",
                 UVec3d(0, 0, -1),
                 {40, 130},
                 {40, 130}},
        WristRow{"NullDirection", kC + kA, UVec3d(), {40, 130}, {40, 130}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(WristTurn, TakesTheWayOfTheStrategy) {
  KMachine machine = head(kC + kA);  // turns (30, 50) and (-150, 20) from C = 0, A = -35
  const UVec3d n(std::sin(rad(30)) * std::sin(rad(15)), -std::cos(rad(30)) * std::sin(rad(15)),
                 std::cos(rad(15)));
  const std::pair<int, Numbers> ways[] = {{0, {-15, -150}}, {1, {15, 30}}, {2, {-15, -150}}};
  for (const auto& [strategy, expected] : ways) {
    machine.setStrategy(strategy);
    EXPECT_THAT(solve(machine, {-35, 0}, UVec3d(), n).v, AllNear(expected, 1e-9));
  }
}

// Own directions within 0.18 degrees count as parallel, others do not.
TEST_F(WristTurn, HardlyParallelAxesCount) {
  const KMachine near = head(kC + "rotation=A,4,0.003,0,1,0,0,0,0,0\n");
  EXPECT_EQ(solve(near, {4, 5}, UVec3d(), UVec3d(0, 0.001, 1)).v, (Numbers{4, 5}));
  const KMachine far = head(kC + "rotation=A,4,0.0033,0,1,0,0,0,0,0\n");
  const Numbers v = solve(far, {4, 5}, UVec3d(), UVec3d(0, 0.001, 1)).v;
  EXPECT_THAT(tipAt(far, v).dir, Near(UVec3d(0, 0.001, 1).normalised(), 1e-9));
}

// Deliberate: the wrist is turned whether its axes are locked or not.
TEST_F(WristTurn, LocksAreNotLookedAt) {
  KMachine machine = head(kC + kA);
  for (const wchar_t* axis : {L"C", L"A"}) machine.getElemByName(axis)->setLocked(true);
  EXPECT_THAT(solve(machine, {40, 130}, UVec3d(), kSkew).v, AllNear(Numbers{kSkewA, kSkewC}, 1e-9));
}

TEST_F(WristTurn, AxesWithoutPlaceAreSkipped) {
  KMachine machine = head(kC + kA + kB);
  setRecord(machine, 5, -1);
  machine.getElemByName(L"A")->setElemIndex(50);
  machine.getElemByName(L"A")->setValueIndex(-1);
  machine.getElemByName(L"B")->setPrevIndex(50);
  const Numbers v = solve(machine, {0, 0, 0}, UVec3d(), UVec3d(0, -0.6, 0.8)).v;
  EXPECT_THAT(v, AllNear(Numbers{0, kSkewA, -90}, 1e-9));  // C and B: acos 0.8 again
}

TEST_F(WristTurn, StandsWhereTheStartIsForPoints) {
  const KMachine machine = head("axis=X,1,x\naxis=Y,2,y\n" + kC + kA);
  const Solved s = solve(machine, {7, 8, 40, 130}, UVec3d(1, 2, 3), kSkew);
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{7, 8, kSkewA, kSkewC}, 1e-9));
}

// --- the arm solver's part

/// C and A are no arm: the arm solver refuses them, having too few elements after the first axis.
using ArmCode = InverseTest;

TEST_F(ArmCode, ArmsTooShortAreRefusedByTheirSolver) {
  const KMachine machine = head(kC + kA);
  const Solved s = solvedBy(&KMachine::solveConfig1, machine, {40, 130}, UVec3d(1, 2, 3), kSkew);
  EXPECT_EQ(s.code, -1);
  EXPECT_EQ(s.v, Numbers(kUntouched.begin(), kUntouched.begin() + 2));
  trace.claimAll();
}

// Deliberate: whatever the arm solver found, a machine with a wrist answers 0.
TEST_F(ArmCode, IsForgottenWhereThereIsAWrist) {
  KMachine machine = head(kC + kA);
  setRecord(machine, 5, 1);
  const Solved s = solve(machine, {40, 130}, UVec3d(1, 2, 3), kSkew);
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{kSkewA, kSkewC}, 1e-9));
  trace.claimAll();
}

TEST_F(ArmCode, IsTheAnswerWhereAllAxesAreAlongTheTool) {
  KMachine machine = head(kC + kD);
  setRecord(machine, 5, 1);
  const Solved s = solve(machine, {40, 130}, UVec3d(1, 2, 3), kSkew);
  EXPECT_EQ(s.code, -1);
  EXPECT_EQ(s.v, (Numbers{40, 130}));
  trace.claimAll();
}

TEST_F(ArmCode, IsZeroWhereTheArmSolverIsNotAsked) {
  KMachine machine = head(kC + kD);
  setRecord(machine, 5, 1, 0);
  EXPECT_EQ(solve(machine, {40, 130}, UVec3d(1, 2, 3), kSkew).code, 0);
  for (const int armType : {-1, 3, 4}) {
    setRecord(machine, 5, armType);
    EXPECT_EQ(solve(machine, {40, 130}, UVec3d(1, 2, 3), kSkew).code, 0);
  }
}

// --- conversions kept in the interface, never supported

TEST(Conversions, AreNotSupported) {
  const KMachine machine;
  UVec3d out(1, 2, 3);
  EXPECT_EQ(machine.pts2xyz(kUp, kSkew, out), -1);
  EXPECT_EQ(out, UVec3d(1, 2, 3));
  EXPECT_EQ(machine.ijk2abc(kUp, kSkew, out), -1);
  EXPECT_EQ(out, UVec3d());
  out = UVec3d(1, 2, 3);
  EXPECT_EQ(machine.abc2ijk(kSkew, out), -1);
  EXPECT_EQ(out, UVec3d());
}

}  // namespace
}  // namespace korvo::test
