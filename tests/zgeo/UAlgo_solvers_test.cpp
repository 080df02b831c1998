#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "platform/zgeo/UAlgo.h"
#include "platform/zgeo/UMatrix.h"
#include "tests/zgeo/Generators.h"

namespace zgeo {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kUntouched = -777.0;
const UVec3d kX(1, 0, 0);
const UVec3d kY(0, 1, 0);
const UVec3d kZ(0, 0, 1);

// --- One axis: non-zero is success

TEST(SolveRotConicalOneAxis, GivesTheAngleAndNonZero) {
  double angle = kUntouched;
  EXPECT_NE(UAlgo::_solveRot_conical(kX, kY, kZ, angle), 0);
  EXPECT_NEAR(angle, kPi / 2, 1e-14);
}

TEST(SolveRotConicalOneAxis, TargetOffTheConeGivesTheNearestAngleAndNonZero) {
  double angle = kUntouched;
  EXPECT_NE(UAlgo::_solveRot_conical({1, 0, 1}, {0, -2, 0}, kZ, angle), 0);
  EXPECT_NEAR(angle, -kPi / 2, 1e-14);
}

TEST(SolveRotConicalOneAxis, EqualDirectionsOnTheAxisAreNoTurn) {
  double angle = kUntouched;
  EXPECT_NE(UAlgo::_solveRot_conical(kZ, {0, 0, 3}, kZ, angle), 0);
  EXPECT_EQ(angle, 0.0);
}

TEST(SolveRotConicalOneAxis, NoSolutionGivesZeroAndLeavesTheAngle) {
  double angle = kUntouched;
  EXPECT_EQ(UAlgo::_solveRot_conical(kZ, kX, kZ, angle), 0);
  EXPECT_EQ(UAlgo::_solveRot_conical(kX, kZ, kZ, angle), 0);
  EXPECT_EQ(UAlgo::_solveRot_conical({}, kX, kZ, angle), 0);
  EXPECT_EQ(UAlgo::_solveRot_conical(kX, kY, {0, 0, kNaN}, angle), 0);
  EXPECT_EQ(angle, kUntouched);
}

// --- Two axes: non-zero is success

TEST(SolveRotConicalTwoAxes, GivesAllPairsInOrderAndNonZero) {
  std::vector<UVec2d> sols;
  EXPECT_NE(UAlgo::_solveRot_conical(kZ, {0, -1, 1}, kZ, kX, sols), 0);
  ASSERT_EQ(sols.size(), 2u);
  EXPECT_NEAR(sols[0].x, 0, 1e-14);
  EXPECT_NEAR(sols[0].y, kPi / 4, 1e-14);
  EXPECT_NEAR(sols[1].x, kPi, 1e-14);
  EXPECT_NEAR(sols[1].y, -kPi / 4, 1e-14);
}

TEST(SolveRotConicalTwoAxes, AngleWithoutEffectIsMinusThousand) {
  std::vector<UVec2d> sols;
  EXPECT_NE(UAlgo::_solveRot_conical(kZ, {1, 0, 1}, kY, kZ, sols), 0);
  ASSERT_EQ(sols.size(), 1u);
  EXPECT_NEAR(sols[0].x, kPi / 4, 1e-14);
  EXPECT_EQ(sols[0].y, -1000.0);
  EXPECT_NE(UAlgo::_solveRot_conical(kZ, kZ, kZ, kX, sols), 0);
  ASSERT_EQ(sols.size(), 1u);
  EXPECT_EQ(sols[0], UVec2d(-1000.0, 0));
}

TEST(SolveRotConicalTwoAxes, FormerPairsAreDropped) {
  std::vector<UVec2d> sols = {{1, 2}, {3, 4}, {5, 6}};
  EXPECT_NE(UAlgo::_solveRot_conical(kZ, {0, -1, 1}, kZ, kX, sols), 0);
  EXPECT_EQ(sols.size(), 2u);
}

TEST(SolveRotConicalTwoAxes, NoSolutionGivesZeroAndAnEmptyList) {
  const UVec3d unreachable(0, 0, -1);
  for (const auto& [from, to, axis1] :
       {std::array{kZ, unreachable, kZ}, {UVec3d(), kX, kZ}, {kZ, UVec3d(0, kNaN, 0), kZ}}) {
    std::vector<UVec2d> sols = {{1, 2}};
    EXPECT_EQ(UAlgo::_solveRot_conical(from, to, axis1, {0, 1, 1}, sols), 0);
    EXPECT_TRUE(sols.empty());
  }
}

TEST(SolveRotConicalTwoAxes, WarmListKeepsItsStorage) {
  std::vector<UVec2d> sols;
  sols.reserve(2);
  const UVec2d* storage = sols.data();
  for (const UVec3d& to : {UVec3d(1, 2, 3), kZ, UVec3d(3, -2, 1), UVec3d(), kX}) {
    UAlgo::_solveRot_conical(kZ, to, kZ, kX, sols);
    EXPECT_EQ(sols.data(), storage);
  }
}

RC_GTEST_PROP(SolveRotConicalTwoAxes, BothTurnsTogetherReachTheTarget, ()) {
  const UVec3d from = test::anyDirection();
  const UVec3d axis1 = test::anyDirection();
  const UVec3d axis2 = test::anyDirection();
  UVec3d to = from;
  UMatrix::_rotation(axis2, *test::angle()).applyDir(to);
  UMatrix::_rotation(axis1, *test::angle()).applyDir(to);
  std::vector<UVec2d> sols;
  RC_ASSERT(UAlgo::_solveRot_conical(from, to, axis1, axis2, sols) != 0);
  RC_ASSERT(!sols.empty());
  for (const UVec2d& pair : sols) {
    UVec3d reached = from;
    UMatrix::_rotation(axis2, pair.y == -1000.0 ? 0.0 : pair.y).applyDir(reached);
    UMatrix::_rotation(axis1, pair.x == -1000.0 ? 0.0 : pair.x).applyDir(reached);
    RC_ASSERT(test::difference(reached.normalised(), to.normalised()) < 1e-12);
  }
}

// --- Three directions: zero is success

TEST(SolveXYZ, GivesTheDisplacementsAndZero) {
  UVec3d xyz;
  EXPECT_EQ(UAlgo::_solveXYZ({10, 20, 30}, kX, {0, 1, 1}, kZ, xyz), 0);
  EXPECT_LT(test::difference(xyz, {10, 20, 10}), 1e-13);
}

TEST(SolveXYZ, DependentDirectionsGiveNonZeroAndNoDisplacement) {
  UVec3d xyz(7, 77, 777);
  EXPECT_NE(UAlgo::_solveXYZ({1, 2, 3}, kX, {-2, 0, 0}, kZ, xyz), 0);
  EXPECT_EQ(xyz, UVec3d());
}

TEST(SolveXYZ, ValuesThatAreNotFiniteGiveNonZeroAndNoDisplacement) {
  UVec3d xyz(7, 77, 777);
  EXPECT_NE(UAlgo::_solveXYZ({1, kNaN, 3}, kX, kY, kZ, xyz), 0);
  EXPECT_EQ(xyz, UVec3d());
}

TEST(SolveXYZ, ResultMayBeTheSum) {
  UVec3d d(1, 2, 3);
  EXPECT_EQ(UAlgo::_solveXYZ(d, kZ, kX, kY, d), 0);
  EXPECT_EQ(d, UVec3d(3, 1, 2));
}

}  // namespace
}  // namespace zgeo
