// getConfig: rotary axes onto the direction, then linear axes onto the point.
#include "tests/kinematics/KMachine_inverse.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

const std::string kB = "rotation=B,5,y,0,0,0,0,0\n";
const std::string kC = "rotation=C,6,z,0,0,0,0,0\n";
const std::string kA = "rotation=A,4,x,0,0,0,0,0\n";

UVec3d alongB(double b) { return {std::sin(rad(b)), 0, std::cos(rad(b))}; }

/// The linear values of a table B (value 3): what stands at `p` on the part before the table turns.
Numbers onTableB(const UVec3d& p, double b) {
  const double c = std::cos(rad(b)), s = std::sin(rad(b));
  return {c * p.x - s * p.z, p.y, s * p.x + c * p.z, b};
}

// --- one free rotary axis

using OneRotaryAxis = InverseTest;

TEST_F(OneRotaryAxis, TurnsOntoTheDirectionAndGoesToThePoint) {
  const KMachine machine = table(kB);
  const Solved s = solve(machine, {1, 2, 3, 4}, UVec3d(10, 20, 30), alongB(30));
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(onTableB({10, 20, 30}, 30), 1e-10));
}

TEST_F(OneRotaryAxis, StartPicksTheTurn) {
  const KMachine machine = table(kB);
  for (const double start : {370.0, 210.001, 569.999}) {
    EXPECT_NEAR(solve(machine, {0, 0, 0, start}, UVec3d(), alongB(30)).v[3], 390, 1e-9);
  }
}

TEST_F(OneRotaryAxis, DirectionsOfAnyLengthMeanTheSame) {
  const KMachine machine = table(kB);
  machine.setTHELength(100, 1);
  const Solved one = solve(machine, {0, 0, 0, 0}, UVec3d(10, 20, 30), alongB(30));
  const Solved two = solve(machine, {0, 0, 0, 0}, UVec3d(10, 20, 30), alongB(30) * 250);
  EXPECT_THAT(two.v, AllNear(one.v, 1e-10));
}

// The cone of the tool about B is the plane y = 0: the nearest direction is the shadow on it.
TEST_F(OneRotaryAxis, TakesTheNearestDirectionWhenItsConeMissesTheWantedOne) {
  const KMachine machine = table(kB);
  const Solved s = solve(machine, {0, 0, 0, 0}, UVec3d(10, 20, 30), UVec3d(0.6, 0.64, 0.48));
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(
      s.v, AllNear(onTableB({10, 20, 30}, std::atan2(0.6, 0.48) * 180 / std::numbers::pi), 1e-10));
}

TEST_F(OneRotaryAxis, FailureIsTracedAndLeavesTheStart) {
  const KMachine machine = table(kB);
  const Solved s = solve(machine, {1, 2, 3, 0}, UVec3d(10, 20, 30), UVec3d(0, 7, 0));
  EXPECT_EQ(s.code, -1);
  EXPECT_EQ(s.v, (Numbers{1, 2, 3, 0}));
  const auto lines = trace.lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(narrow(lines[0]),
            "solveRot_conical (4X) failed : rotAxis(0.000, 1.000, 0.000) from(0.000, 0.000, 1.000)"
            " to(0.000, 1.000, 0.000)");
  EXPECT_EQ(lines[1], kNoRotations);
  trace.claimAll();
}

// A tool along the only axis reaches its own direction and no other.
TEST_F(OneRotaryAxis, AToolAlongItReachesItsOwnDirection) {
  const KMachine machine = table(kC);
  const Solved s = solve(machine, {0, 0, 0, 90}, UVec3d(10, 20, 30), UVec3d(0, 0, 2));
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{20, -10, 30, 90}, 1e-10));
  EXPECT_EQ(solve(machine, {0, 0, 0, 90}, UVec3d(), UVec3d(1, 0, 0)).code, -1);
  EXPECT_EQ(trace.claimAll(L"solveRot_conical (4X) failed : rotAxis"), 1);
  EXPECT_TRUE(trace.claim(kNoRotations));
}

TEST_F(OneRotaryAxis, ANullDirectionFails) {
  const KMachine machine = table(kB);
  EXPECT_EQ(solve(machine, {0, 0, 0, 0}, UVec3d(), UVec3d()).code, -1);
  EXPECT_EQ(trace.claimAll(L"solveRot_conical (4X) failed : rotAxis"), 1);
  EXPECT_TRUE(trace.claim(kNoRotations));
}

// --- no free rotary axis

using NoRotaryAxis = InverseTest;

// Deliberate: a mill without rotary axes is never solved.
TEST_F(NoRotaryAxis, IsNeverSolved) {
  const KMachine machine = head(kXYZ);
  const Solved s = solve(machine, {1, 2, 3}, UVec3d(10, 20, 30), UVec3d(0, 0, 1));
  EXPECT_EQ(s.code, -1);
  EXPECT_EQ(s.v, (Numbers{1, 2, 3}));
  EXPECT_TRUE(trace.claim(kNoRotations));
}

TEST_F(NoRotaryAxis, IsWhatLockedAxesLeave) {
  KMachine machine = head(kXYZ + kC + kA);
  machine.getElemByName(L"C")->setLocked(true);
  machine.getElemByName(L"A")->setLocked(true);
  EXPECT_EQ(solve(machine, {0, 0, 0, 0, 0}, UVec3d(), UVec3d(0, 0, 1)).code, -1);
  EXPECT_TRUE(trace.claim(kNoRotations));
}

// --- two and more

using RotaryAxes = InverseTest;

TEST_F(RotaryAxes, ParallelOnesOffTheDirectionAreNotSolved) {
  const KMachine machine = head(kXYZ + kC + "rotation=D,7,z,0,0,0,0,0\n");
  const Solved s = solve(machine, {1, 2, 3, 4, 5}, UVec3d(), UVec3d(1, 0, 0));
  EXPECT_EQ(s.code, -1);
  EXPECT_EQ(s.v, (Numbers{1, 2, 3, 4, 5}));
  EXPECT_TRUE(trace.claim(kNoRotations));
}

// A fixed tilt of 45 degrees between the axes and of 45 between B and the tool reaches up to 90.
TEST_F(RotaryAxes, DirectionsBeyondTheirConeAreNotSolved) {
  const KMachine machine = head(kXYZ + kC + "rotation=B,5,0,1,1,0,0,0,0,0\n");
  EXPECT_EQ(solve(machine, {0, 0, 0, 0, 0}, UVec3d(), UVec3d(0, 1, -0.01)).code, -1);
  EXPECT_TRUE(trace.claim(kNoRotations));
  EXPECT_EQ(solve(machine, {0, 0, 0, 0, 0}, UVec3d(), UVec3d(0, 1, 0.01)).code, 0);
}

TEST_F(RotaryAxes, TakeTheirDirectionsFromTheStart) {
  const KMachine machine = head(kXYZ + kC + kA);
  const UVec3d n(0.36, 0.48, 0.8);  // A = acos 0.8, C = atan2(0.36, -0.48), or both of the other
  const double a = std::acos(0.8) * 180 / std::numbers::pi;
  const double c = std::atan2(0.36, -0.48) * 180 / std::numbers::pi;
  const Solved s = solve(machine, {5, 6, 7, 40, 130}, UVec3d(1, 2, 3), n);
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{1, 2, 3, a, c}, 1e-9));
}

// C, A, B in the head. Onto (sin 20, 0, cos 20): C and A turn by 90 and 20, C and B by 0 and 20, A
// and B by 0 and 20.
TEST_F(RotaryAxes, ThreeTakeThePairWithTheSmallestSum) {
  const KMachine machine = head(kXYZ + kC + kA + kB);
  const Solved s = solve(machine, {0, 0, 0, 0, 0, 0}, UVec3d(1, 2, 3), alongB(20));
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{1, 2, 3, 0, 20, 0}, 1e-9));
}

// C and D turn about the same line: C with B and D with B turn by the same angles.
TEST_F(RotaryAxes, ThreeTakeTheEarlierPairOfEqualSums) {
  const UVec3d n(std::cos(rad(30)) * std::sin(rad(20)), std::sin(rad(30)) * std::sin(rad(20)),
                 std::cos(rad(20)));
  const KMachine cdb = head(kXYZ + kC + "rotation=D,7,z,0,0,0,0,0\n" + kB);
  EXPECT_THAT(solve(cdb, {0, 0, 0, 0, 0, 0}, UVec3d(), n).v,  // values X Y Z B C D
              AllNear(Numbers{0, 0, 0, 20, 30, 0}, 1e-9));
  const KMachine dcb = head(kXYZ + "rotation=D,7,z,0,0,0,0,0\n" + kC + kB);
  EXPECT_THAT(solve(dcb, {0, 0, 0, 0, 0, 0}, UVec3d(), n).v,
              AllNear(Numbers{0, 0, 0, 20, 0, 30}, 1e-9));
}

// Only the pair (2, 3) reaches: the outer two are along the tool, C1 with B cannot leave x = 0.
TEST_F(RotaryAxes, ThreeUseALaterPairWhenEarlierOnesFail) {
  const KMachine machine = head(kXYZ + "rotation=E,7,y,0,0,0,0,0\n" + kC + kB);
  const UVec3d n(std::sin(rad(20)) * 0.6, std::sin(rad(20)) * 0.8, std::cos(rad(20)));
  const Solved s = solve(machine, {0, 0, 0, 0, 0, 0}, UVec3d(), n);  // values X Y Z B C E
  EXPECT_EQ(s.code, 0);
  // E with C: C is along the tool and E keeps y = 0; E with B: parallel. C with B is left.
  EXPECT_THAT(
      s.v, AllNear(Numbers{0, 0, 0, 20, std::atan2(0.8, 0.6) * 180 / std::numbers::pi, 0}, 1e-9));
}

TEST_F(RotaryAxes, LockedOnesStay) {
  KMachine machine = head(kXYZ + kC + kA + kB);
  machine.getElemByName(L"B")->setLocked(true);
  const Solved s = solve(machine, {0, 0, 0, 0, 0, 0}, UVec3d(), alongB(20));
  EXPECT_THAT(s.v, AllNear(Numbers{0, 0, 0, 20, 0, 90}, 1e-9));
  machine.getElemByName(L"A")->setLocked(true);  // one is left, along the tool
  EXPECT_EQ(solve(machine, {0, 0, 0, 0, 0, 0}, UVec3d(), alongB(20)).code, -1);
  EXPECT_EQ(trace.claimAll(L"solveRot_conical (4X) failed : rotAxis"), 1);
  EXPECT_TRUE(trace.claim(kNoRotations));
}

TEST_F(RotaryAxes, ALockedOneCarriesTheOthersAtItsStart) {
  KMachine machine = head(kXYZ + kC + kA);
  machine.getElemByName(L"C")->setLocked(true);
  const Solved s = solve(machine, {0, 0, 0, 0, 90}, UVec3d(), alongB(20));
  EXPECT_THAT(s.v, AllNear(Numbers{0, 0, 0, 20, 90}, 1e-9));  // A lies along y now
}

/// Gives an axis a number beyond all numbers: it stays in the chain and has no place in positions.
void takePlace(KMachine& machine, const wchar_t* axis, const wchar_t* next) {
  machine.getElemByName(axis)->setElemIndex(50);
  machine.getElemByName(axis)->setValueIndex(-1);
  machine.getElemByName(next)->setPrevIndex(50);
}

TEST_F(RotaryAxes, OnesWithoutPlaceAreNotFree) {
  KMachine machine = head(kXYZ + kC + kA + kB);
  takePlace(machine, L"A", L"B");
  const Solved s = solve(machine, {0, 0, 0, 0, 0, 0}, UVec3d(), UVec3d(0, -0.6, 0.8));
  const double b = std::acos(0.8) * 180 / std::numbers::pi;
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{0, 0, 0, 0, b, -90}, 1e-9));  // C and B, not A
}

// --- linear axes

using LinearStage = InverseTest;

TEST_F(LinearStage, PointsAreTipsOneToolLengthAhead) {
  const KMachine machine = table(kB);
  machine.setTHELength(100, 1);
  const Solved s = solve(machine, {0, 0, 0, 0}, UVec3d(10, 20, 30), UVec3d(0, 0, 1));
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{10, 20, 130, 0}, 1e-12));
}

// A gun's length also slides its point, along its own direction.
TEST_F(LinearStage, PointsOfGunsAreTipsToo) {
  KMachine machine = table(kB, "tool=z,0,0,0\nlien=Z\ngun=0,0,1,5,0,0\n");
  machine.setCurrentTool(2);
  machine.setTHELength(100, 2);
  const Solved s = solve(machine, {0, 0, 0, 0}, UVec3d(10, 20, 30), alongB(90));
  EXPECT_EQ(s.code, 0);
  const Tip tip = tipAt(machine, s.v);
  EXPECT_THAT(tip.point, Near(UVec3d(10, 20, 30), 1e-10));
  EXPECT_THAT(tip.dir, Near(alongB(90), 1e-12));
  // B = 90: the point (10 + 100, 20, 30) stands at (-30, 20, 110) before the table turns, the gun's
  // nose at (5, 0, 100) of its zero position.
  EXPECT_THAT(s.v, AllNear(Numbers{-35, 20, 10, 90}, 1e-10));
}

TEST_F(LinearStage, OtherElementsHaveNoLength) {
  KMachine machine = table(kB);
  machine.setTHELength(100, 1);
  machine.getElemByIndex(-101)->setElemType(KMachineElem::KMET_TYPE_GEOM);
  const Solved s =
      solvedBy(&KMachine::getConfig, machine, {0, 0, 0, 0}, UVec3d(10, 20, 30), UVec3d(0, 0, 1));
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{10, 20, 30, 0}, 1e-12));
}

TEST_F(LinearStage, LockedAxesStayAndTwoAreNotSolved) {
  KMachine machine = table(kB);
  machine.getElemByName(L"Z")->setLocked(true);
  const Solved s = solve(machine, {1, 2, 3, 0}, UVec3d(10, 20, 30), alongB(30));
  EXPECT_EQ(s.code, 0);  // Deliberate: nothing was solved, so nothing failed
  EXPECT_THAT(s.v, AllNear(Numbers{1, 2, 3, 30}, 1e-10));
}

TEST_F(LinearStage, AxesWithoutPlaceAreNotFree) {
  KMachine machine = head("axis=X,1,x\naxis=W,7,x\naxis=Y,2,y\naxis=Z,3,z\n" + kB);
  takePlace(machine, L"W", L"Y");
  const Solved s = solve(machine, {0, 0, 0, 0, 0}, UVec3d(10, 20, 30), UVec3d(0, 0, 1));
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{10, 20, 30, 0, 0}, 1e-12));
}

TEST_F(LinearStage, DependentAxesAreNotSolved) {
  const KMachine machine = head("axis=X,1,x\naxis=Y,2,y\naxis=U,7,x\n" + kB);
  const Solved s = solve(machine, {1, 2, 0, 3}, UVec3d(10, 20, 30), alongB(30));
  EXPECT_NE(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{1, 2, 30, 3}, 1e-10));  // X Y B U: the rotary solution
}

struct FourRow {
  const char* name;
  const char* axes;  ///< Root first: triples are counted from the other end.
  bool isSolved;     ///< Whether the code says so.
  Numbers v;         ///< X Y Z B W for the point (10, 20, 30) along z.
};

std::ostream& operator<<(std::ostream& out, const FourRow& row) { return out << row.name; }

#define X "axis=X,1,x\n"
#define Y "axis=Y,2,y\n"
#define Z "axis=Z,3,z\n"

class FourLinearAxes : public InverseTest, public testing::WithParamInterface<FourRow> {};

TEST_P(FourLinearAxes, TakeTheFirstTripleAndTheCodeOfTheLast) {
  const FourRow& row = GetParam();
  const Solved s = solve(head(row.axes + kB), {0, 0, 0, 0, 0}, UVec3d(10, 20, 30), UVec3d(0, 0, 1));
  EXPECT_EQ(s.code == 0, row.isSolved);
  EXPECT_THAT(s.v, AllNear(row.v, 1e-10));
}

INSTANTIATE_TEST_SUITE_P(
    Orders, FourLinearAxes,
    testing::Values(
        // (Z,Y,X) first, (Y,X,W) last: dependent when W is along X or Y
        FourRow{"WAlongZFirst", "axis=W,7,z\n" X Y Z, true, {10, 20, 30, 0, 0}},
        FourRow{"WAlongXFirst", "axis=W,7,x\n" X Y Z, false, {10, 20, 30, 0, 0}},
        FourRow{"WAlongYFirst", "axis=W,7,-y\n" X Y Z, false, {10, 20, 30, 0, 0}},
        // (W,Z,Y) and (W,Z,X) are dependent, (W,Y,X) is taken, (Z,Y,X) gives the code
        FourRow{"WAlongZLast", X Y Z "axis=W,7,z\n", true, {10, 20, 0, 0, 30}},
        // (Z,W,Y) dependent, (Z,W,X) dependent, (Z,Y,X) taken, (W,Y,X) gives the code
        FourRow{"WAlongZBeforeZ", X Y "axis=W,7,z\n" Z, true, {10, 20, 30, 0, 0}},
        // (Y,X,Z) taken, the last (X,Z,W) is solvable, too
        FourRow{"SkewW", "axis=W,7,0,1,1\n" Z X Y, true, {10, 20, 30, 0, 0}},
        // (W,Z,Y) taken: 10 along X by W = 10 sqrt 2 along (1,0,1), the rest by Z; X stays
        FourRow{"SkewWLast", X Y Z "axis=W,7,1,0,1\n", true, {0, 20, 20, 0, 10 * std::sqrt(2.0)}}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(LinearStage, ALockedFourthAxisMakesThePositionCount) {
  KMachine machine = head("axis=W,7,x\n" X Y Z + kB);
  machine.getElemByName(L"W")->setLocked(true);
  const Solved s = solve(machine, {0, 0, 0, 0, 4}, UVec3d(10, 20, 30), UVec3d(0, 0, 1));
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{6, 20, 30, 0, 4}, 1e-10));
}

}  // namespace
}  // namespace korvo::test
