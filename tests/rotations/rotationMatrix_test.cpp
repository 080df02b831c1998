#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "platform/rotations/RotationMatrix.h"
#include "tests/rotations/Vectors.h"

namespace korvo::rotations {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr Mat3 kIdentity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

Vec3 times(const Mat3& m, const Vec3& v) { return {dot(m[0], v), dot(m[1], v), dot(m[2], v)}; }

Mat3 transposed(const Mat3& m) {
  return {{{m[0][0], m[1][0], m[2][0]}, {m[0][1], m[1][1], m[2][1]}, {m[0][2], m[1][2], m[2][2]}}};
}

Mat3 times(const Mat3& a, const Mat3& b) {
  const Mat3 columns = transposed(b);
  return transposed({times(a, columns[0]), times(a, columns[1]), times(a, columns[2])});
}

double determinant(const Mat3& m) { return dot(m[0], cross(m[1], m[2])); }

double matrixDifference(const Mat3& a, const Mat3& b) {
  double largest = 0.0;
  for (int i = 0; i < 3; ++i) largest = std::max(largest, largestDifference(a[i], b[i]));
  return largest;
}

/// The rotation as what it is by definition, the limit of many small turns: exp(angle [u]x), by its
/// power series over 1/1024 of the angle and ten squarings.
Mat3 exponential(const Vec3& unitAxis, double angle) {
  const Vec3 w = scaled(unitAxis, angle / 1024);
  const Mat3 k = {{{0, -w[2], w[1]}, {w[2], 0, -w[0]}, {-w[1], w[0], 0}}};
  Mat3 sum = kIdentity;
  Mat3 term = kIdentity;
  for (int n = 1; n <= 12; ++n) {
    term = times(term, k);
    for (Vec3& row : term) row = scaled(row, 1.0 / n);
    for (int i = 0; i < 3; ++i) sum[i] = plus(sum[i], term[i]);
  }
  for (int i = 0; i < 10; ++i) sum = times(sum, sum);
  return sum;
}

// --- Worked by hand

struct Turn {
  const char* name;
  Vec3 axis;
  double angle;
  Vec3 from;
  Vec3 to;
};

std::string nameOf(const testing::TestParamInfo<Turn>& info) { return info.param.name; }

class RotationMatrix : public testing::TestWithParam<Turn> {};

TEST_P(RotationMatrix, CarriesThePointWhereTheDrawingSays) {
  const Turn& turn = GetParam();
  EXPECT_LT(largestDifference(times(rotationMatrix(turn.axis, turn.angle), turn.from), turn.to),
            1e-15);
}

const double kThird = 2 * kPi / 3;
const double kHalfRoot3 = std::sqrt(3.0) / 2;

INSTANTIATE_TEST_SUITE_P(
    Worked, RotationMatrix,
    testing::Values(
        Turn{"QuarterAboutZTakesXToY", {0, 0, 1}, kPi / 2, {1, 0, 0}, {0, 1, 0}},
        Turn{"QuarterAboutXTakesYToZ", {1, 0, 0}, kPi / 2, {0, 1, 0}, {0, 0, 1}},
        Turn{"QuarterAboutYTakesZToX", {0, 1, 0}, kPi / 2, {0, 0, 1}, {1, 0, 0}},
        Turn{"MinusQuarterAboutZTakesYToX", {0, 0, 1}, -kPi / 2, {0, 1, 0}, {1, 0, 0}},
        Turn{"QuarterAboutMinusZTakesYToX", {0, 0, -1}, kPi / 2, {0, 1, 0}, {1, 0, 0}},
        Turn{"HalfAboutZNegatesXAndY", {0, 0, 1}, kPi, {1, 2, 3}, {-1, -2, 3}},
        Turn{"SixthAboutZ", {0, 0, 1}, kPi / 3, {1, 0, 0}, {0.5, kHalfRoot3, 0}},
        Turn{"ThirdAboutTheDiagonalCyclesTheAxes", {1, 1, 1}, kThird, {1, 2, 3}, {3, 1, 2}},
        Turn{"LengthOfTheAxisDoesNotMatter", {0, 0, 250}, kPi / 2, {1, 0, 0}, {0, 1, 0}},
        Turn{"HugeAxis", {0, 0, 1e300}, kPi / 2, {1, 0, 0}, {0, 1, 0}},
        Turn{"TinyAxis", {0, 5e-324, 0}, kPi / 2, {0, 0, 1}, {1, 0, 0}},
        Turn{"HugeDiagonal", {1e308, 1e308, 1e308}, kThird, {1, 2, 3}, {3, 1, 2}},
        Turn{"NoAngle", {1, 2, 3}, 0.0, {4, 5, 6}, {4, 5, 6}}),
    nameOf);

TEST(RotationMatrixDigits, SmallAnglesKeepTheirSecondOrderTerm) {
  // About (1,1,0)/sqrt(2) the element (0,1) is (1 - cos a)/2, by the series a^2/4 - a^4/48: 2.5e-19
  // at a = 1e-9, where 1 - cos(a) taken literally is 0.
  EXPECT_NEAR(rotationMatrix({1, 1, 0}, 1e-9)[0][1] / 2.5e-19, 1.0, 1e-14);
}

struct BadAxis {
  const char* name;
  Vec3 axis;
};

std::string badAxisName(const testing::TestParamInfo<BadAxis>& info) { return info.param.name; }

class AxisWithoutDirection : public testing::TestWithParam<BadAxis> {};

TEST_P(AxisWithoutDirection, GivesTheIdentity) {
  EXPECT_EQ(rotationMatrix(GetParam().axis, 1.0), kIdentity);
}

INSTANTIATE_TEST_SUITE_P(
    RotationMatrix, AxisWithoutDirection,
    testing::Values(BadAxis{"Null", {0, 0, 0}}, BadAxis{"NaNInX", {kNaN, 0, 1}},
                    BadAxis{"NaNInY", {0, kNaN, 1}}, BadAxis{"NaNInZ", {1, 0, kNaN}},
                    BadAxis{"Infinite", {0, kInf, 0}}, BadAxis{"MinusInfinite", {0, 1, -kInf}}),
    badAxisName);

// --- Laws

constexpr double kRoundOff = 2e-15;

RC_GTEST_PROP(RotationMatrixLaws, RowsAreOrthonormalAndKeepHandedness, ()) {
  const Mat3 r = rotationMatrix(*test::direction(), *test::angle());
  RC_ASSERT(matrixDifference(times(r, transposed(r)), kIdentity) < kRoundOff);
  RC_ASSERT(std::fabs(determinant(r) - 1.0) < kRoundOff);
}

RC_GTEST_PROP(RotationMatrixLaws, AxisStaysWhereItIs, ()) {
  const Vec3 u = unit(*test::direction());
  RC_ASSERT(largestDifference(times(rotationMatrix(u, *test::angle()), u), u) < kRoundOff);
}

RC_GTEST_PROP(RotationMatrixLaws, TurnsSquareVectorsByTheAngleRightHanded, ()) {
  const Vec3 u = unit(*test::direction());
  const Vec3 helper = std::fabs(u[0]) < 0.5 ? Vec3{1, 0, 0} : Vec3{0, 1, 0};
  const Vec3 from = unit(cross(u, helper));
  const double angle = *test::angle();
  const Vec3 to = times(rotationMatrix(u, angle), from);
  RC_ASSERT(std::fabs(dot(from, to) - std::cos(angle)) < kRoundOff);
  RC_ASSERT(std::fabs(dot(cross(from, to), u) - std::sin(angle)) < kRoundOff);
}

RC_GTEST_PROP(RotationMatrixLaws, TurnsAboutOneAxisAdd, ()) {
  const Vec3 axis = *test::direction();
  const double a = *test::angle();
  const double b = *test::angle();
  const Mat3 inTurn = times(rotationMatrix(axis, a), rotationMatrix(axis, b));
  RC_ASSERT(matrixDifference(inTurn, rotationMatrix(axis, a + b)) < 4e-15);
}

RC_GTEST_PROP(RotationMatrixLaws, TurningBackIsTheTranspose, ()) {
  const Vec3 axis = *test::direction();
  const double a = *test::angle();
  RC_ASSERT(matrixDifference(rotationMatrix(axis, -a), transposed(rotationMatrix(axis, a))) <
            1e-15);
}

RC_GTEST_PROP(RotationMatrixLaws, ReversedAxisTurnsTheOtherWay, ()) {
  const Vec3 axis = *test::direction();
  const double a = *test::angle();
  RC_ASSERT(matrixDifference(rotationMatrix(scaled(axis, -1), a), rotationMatrix(axis, -a)) <
            1e-15);
}

RC_GTEST_PROP(RotationMatrixLaws, EqualsTheExponentialOfItsGenerator, ()) {
  const Vec3 axis = *test::direction();
  const double a = *test::angle();
  // Ten squarings double the rounding of the series ten times: 1024 * 1e-16.
  RC_ASSERT(matrixDifference(rotationMatrix(axis, a), exponential(unit(axis), a)) < 1e-12);
}

}  // namespace
}  // namespace korvo::rotations
