#include "platform/zgeo/UMatrix.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <cstring>
#include <numbers>
#include <string>
#include <type_traits>

#include "tests/zgeo/Generators.h"

namespace zgeo {
namespace {

using test::difference;

constexpr double kPi = std::numbers::pi;

/// Rows 1 2 3 4 / 5 6 7 8 / 9 10 11 12 / 13 14 15 16.
constexpr UMatrix counted() {
  UMatrix m;
  m.set(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
  return m;
}

// --- What it holds

TEST(UMatrix, IsTheIdentityAtFirst) {
  const UMatrix m;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) EXPECT_EQ(m(i, j), i == j ? 1.0 : 0.0);
  }
}

TEST(UMatrix, StoresSixteenDoublesRowByRow) {
  static_assert(sizeof(UMatrix) == 16 * sizeof(double));
  static_assert(std::is_trivially_copyable_v<UMatrix>);
  const UMatrix m = counted();
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) EXPECT_EQ(m(i, j), 4 * i + j + 1);
  }
  double values[16];
  std::memcpy(values, &m, sizeof values);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(values[i], i + 1);
}

TEST(UMatrix, ElementsCanBeWritten) {
  UMatrix m;
  m(1, 3) = 7;
  EXPECT_EQ(m.getOrigin(), UVec3d(0, 7, 0));
}

TEST(UMatrix, EqualityIsExact) {
  EXPECT_EQ(counted(), counted());
  for (int i = 0; i < 16; ++i) {
    UMatrix m = counted();
    m(i / 4, i % 4) = std::nextafter(m(i / 4, i % 4), 100.0);
    EXPECT_NE(m, counted()) << i;
  }
}

TEST(UMatrix, ZeroIsAllZero) {
  for (int i = 0; i < 16; ++i) EXPECT_EQ(UMatrix::_zero()(i / 4, i % 4), 0.0);
}

TEST(UMatrix, SetIdentityForgetsWhatItHeld) {
  UMatrix m = counted();
  m.setIdentity();
  EXPECT_EQ(m, UMatrix());
}

TEST(UMatrix, TranslationIsTheFourthColumn) {
  UMatrix expected;
  expected.set(1, 0, 0, 7, 0, 1, 0, 8, 0, 0, 1, 9, 0, 0, 0, 1);
  EXPECT_EQ(UMatrix::_translation({7, 8, 9}), expected);
}

TEST(UMatrix, SetOriginReplacesTheTranslationAlone) {
  UMatrix m = counted();
  m.setOrigin({-1, -2, -3});
  UMatrix expected;
  expected.set(1, 2, 3, -1, 5, 6, 7, -2, 9, 10, 11, -3, 13, 14, 15, 16);
  EXPECT_EQ(m, expected);
  EXPECT_EQ(m.getOrigin(), UVec3d(-1, -2, -3));
}

// --- What it does to points and directions

TEST(UMatrix, TransformsAPointByRowsPlusTranslation) {
  constexpr UVec3d p(1, 10, 100);
  static_assert(counted() * p == UVec3d(325, 773, 1221));
  UVec3d inPlace = p;
  counted().apply(inPlace);
  EXPECT_EQ(inPlace, UVec3d(1 + 20 + 300 + 4, 5 + 60 + 700 + 8, 9 + 100 + 1100 + 12));
}

TEST(UMatrix, TransformsADirectionWithoutTranslationAndWithoutNormalising) {
  UVec3d v(1, 10, 100);
  counted().applyDir(v);
  EXPECT_EQ(v, UVec3d(321, 765, 1209));
}

TEST(UMatrix, ProductAppliesTheRightFactorFirst) {
  const UMatrix shift = UMatrix::_translation({10, 0, 0});
  const UMatrix turn = UMatrix::_rotation({0, 0, 1}, kPi / 2);
  // (1,0,0): turned to (0,1,0), then shifted; or shifted to (11,0,0), then turned.
  EXPECT_LT(difference(shift * turn * UVec3d(1, 0, 0), {10, 1, 0}), 1e-14);
  EXPECT_LT(difference(turn * shift * UVec3d(1, 0, 0), {0, 11, 0}), 1e-14);
}

TEST(UMatrix, ProductTakesAllSixteenValues) {
  UMatrix doubled;
  doubled.set(2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2, 0, 0, 0, 0, 2);
  UMatrix square;  // The square of the counted matrix, by hand.
  square.set(90, 100, 110, 120, 202, 228, 254, 280, 314, 356, 398, 440, 426, 484, 542, 600);
  EXPECT_EQ(counted() * counted(), square);
  EXPECT_EQ((counted() * doubled)(3, 3), 32);
  EXPECT_EQ(UMatrix::_zero() * counted(), UMatrix::_zero());
}

// --- Rotations

struct Turn {
  const char* name;
  UVec3d axis;
  UVec3d through;
  double angle;
  UVec3d from;
  UVec3d to;
};

std::string nameOf(const testing::TestParamInfo<Turn>& info) { return info.param.name; }

class UMatrixRotation : public testing::TestWithParam<Turn> {};

TEST_P(UMatrixRotation, TurnsRightHandedAboutItsLine) {
  const Turn& t = GetParam();
  EXPECT_LT(difference(UMatrix::_rotation(t.axis, t.through, t.angle) * t.from, t.to), 1e-12);
}

INSTANTIATE_TEST_SUITE_P(
    Worked, UMatrixRotation,
    testing::Values(
        Turn{"AboutZThroughOrigin", {0, 0, 1}, {}, kPi / 2, {1, 0, 5}, {0, 1, 5}},
        Turn{"AboutZThroughPoint", {0, 0, 1}, {10, 20, 99}, kPi / 2, {11, 20, 5}, {10, 21, 5}},
        Turn{"AboutXThroughPoint", {1, 0, 0}, {0, 0, 100}, kPi / 2, {7, 0, 0}, {7, 100, 100}},
        Turn{"HalfTurnMirrorsAtTheLine", {0, 1, 0}, {50, 0, -30}, kPi, {0, 4, 0}, {100, 4, -60}},
        Turn{"AxisIsNormalised", {0, 0, 40}, {10, 20, 0}, kPi / 2, {11, 20, 5}, {10, 21, 5}},
        Turn{"NullAxisMovesNothing", {0, 0, 0}, {10, 20, 0}, kPi / 2, {11, 20, 5}, {11, 20, 5}}),
    nameOf);

TEST(UMatrixRotationEdges, NullAxisGivesTheIdentityExactly) {
  EXPECT_EQ(UMatrix::_rotation({0, 0, 0}, 1.0), UMatrix());
  EXPECT_EQ(UMatrix::_rotation({0, 0, 0}, {1, 2, 3}, 1.0), UMatrix());
}

TEST(UMatrixRotationEdges, NoAngleGivesTheIdentityExactly) {
  EXPECT_EQ(UMatrix::_rotation({0, 0, 1}, {1, 2, 3}, 0.0), UMatrix());
}

// --- Inverse

TEST(UMatrixInverse, OfATranslationAndAQuarterTurn) {
  UMatrix m;  // (x,y,z) -> (-y+1, x+2, z+3), so back: (x,y,z) -> (y-2, -x+1, z-3).
  m.set(0, -1, 0, 1, 1, 0, 0, 2, 0, 0, 1, 3, 0, 0, 0, 1);
  UMatrix back;
  back.set(0, 1, 0, -2, -1, 0, 0, 1, 0, 0, 1, -3, 0, 0, 0, 1);
  EXPECT_EQ(m.inverse(), back);
}

TEST(UMatrixInverse, OfAScaledAndShearedTransform) {
  UMatrix m;  // (x,y,z) -> (2x + 2y + 2, 4y + 4, 8z + 8).
  m.set(2, 2, 0, 2, 0, 4, 0, 4, 0, 0, 8, 8, 0, 0, 0, 1);
  UMatrix back;  // y = (Y-4)/4, x = (X-2)/2 - y, z = (Z-8)/8.
  back.set(0.5, -0.25, 0, 0, 0, 0.25, 0, -1, 0, 0, 0.125, -1, 0, 0, 0, 1);
  EXPECT_EQ(m.inverse(), back);
}

TEST(UMatrixInverse, OfTheIdentityHasNoNegativeZero) {
  const UMatrix back = UMatrix().inverse();
  EXPECT_EQ(back, UMatrix());
  for (int i = 0; i < 16; ++i) EXPECT_FALSE(std::signbit(back(i / 4, i % 4))) << i;
}

TEST(UMatrixInverse, OfASingularBlockIsNotFinite) {
  EXPECT_TRUE(std::isnan(UMatrix::_zero().inverse()(0, 0)));
  UMatrix flat;
  flat.set(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1);
  EXPECT_FALSE(std::isfinite(flat.inverse()(2, 2)));
}

// --- Laws

constexpr double kRoundOff = 1e-12;  // Coordinates of some 1000 mm carry 1e-13.

RC_GTEST_PROP(UMatrixLaws, ProductEqualsTheSumOverRowsAndColumns, ()) {
  const UMatrix a = test::anyMatrix();
  const UMatrix b = test::anyMatrix();
  const UMatrix c = a * b;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      double sum = 0.0;
      for (int k = 0; k < 4; ++k) sum += a(i, k) * b(k, j);
      RC_ASSERT(std::fabs(c(i, j) - sum) < kRoundOff);
    }
  }
}

RC_GTEST_PROP(UMatrixLaws, ProductTransformsAsItsFactorsInTurn, ()) {
  const UMatrix a = test::anyRigid();
  const UMatrix b = test::anyRigid();
  const UVec3d p = test::anyVector(1000);
  RC_ASSERT(difference((a * b) * p, a * (b * p)) < 4 * kRoundOff);
  UVec3d direct = p;
  UVec3d inTurn = p;
  (a * b).applyDir(direct);
  b.applyDir(inTurn);
  a.applyDir(inTurn);
  RC_ASSERT(difference(direct, inTurn) < 4 * kRoundOff);
}

RC_GTEST_PROP(UMatrixLaws, DirectionsMoveAsDifferencesOfPoints, ()) {
  const UMatrix m = test::anyRigid();
  const UVec3d p = test::anyVector(1000);
  UVec3d v = test::anyVector(10);
  const UVec3d moved = m * (p + v) - m * p;
  m.applyDir(v);
  RC_ASSERT(difference(moved, v) < 4 * kRoundOff);
}

RC_GTEST_PROP(UMatrixLaws, RotationIsRigidAndKeepsHandedness, ()) {
  const UMatrix r = UMatrix::_rotation(test::anyDirection(), test::anyVector(1000), *test::angle());
  const UVec3d c[3] = {
      {r(0, 0), r(1, 0), r(2, 0)}, {r(0, 1), r(1, 1), r(2, 1)}, {r(0, 2), r(1, 2), r(2, 2)}};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) RC_ASSERT(std::fabs(c[i] * c[j] - (i == j)) < 2e-15);
    RC_ASSERT(r(3, i) == 0.0);
  }
  RC_ASSERT(std::fabs(c[0] * (c[1] ^ c[2]) - 1.0) < 2e-15);
  RC_ASSERT(r(3, 3) == 1.0);
}

RC_GTEST_PROP(UMatrixLaws, RotationLeavesEveryPointOfItsLine, ()) {
  const UVec3d axis = test::anyDirection();
  const UVec3d point = test::anyVector(1000);
  const UVec3d onLine = point + axis * *test::number(100);
  RC_ASSERT(difference(UMatrix::_rotation(axis, point, *test::angle()) * onLine, onLine) <
            4 * kRoundOff);
}

RC_GTEST_PROP(UMatrixLaws, RotationTurnsTheArmFromTheLineByTheAngle, ()) {
  const UVec3d axis = test::anyDirection();
  const UVec3d point = test::anyVector(1000);
  const UVec3d arm = axis ^ test::anyDirection();
  RC_PRE(arm.norm2() > 1e-4);
  const double angle = *test::angle();
  const UVec3d turned = UMatrix::_rotation(axis, point, angle) * (point + arm) - point;
  const double cosine = turned * arm / arm.norm2();
  const double sine = (arm ^ turned) * axis.normalised() / arm.norm2();
  RC_ASSERT(std::fabs(cosine - std::cos(angle)) < 1e-9);
  RC_ASSERT(std::fabs(sine - std::sin(angle)) < 1e-9);
}

RC_GTEST_PROP(UMatrixLaws, RotationAboutAPointIsShiftTurnAndShiftBack, ()) {
  const UVec3d axis = test::anyDirection();
  const UVec3d point = test::anyVector(1000);
  const double angle = *test::angle();
  const UMatrix steps = UMatrix::_translation(point) * UMatrix::_rotation(axis, angle) *
                        UMatrix::_translation(-point);
  RC_ASSERT(difference(UMatrix::_rotation(axis, point, angle), steps) < 2 * kRoundOff);
}

RC_GTEST_PROP(UMatrixLaws, InverseUndoesARigidTransformOnBothSides, ()) {
  const UMatrix m = test::anyRigid();
  RC_ASSERT(difference(m * m.inverse(), UMatrix()) < 4 * kRoundOff);
  RC_ASSERT(difference(m.inverse() * m, UMatrix()) < 4 * kRoundOff);
}

RC_GTEST_PROP(UMatrixLaws, InverseOfARotationIsItsTranspose, ()) {
  const UMatrix r = UMatrix::_rotation(test::anyDirection(), *test::angle());
  const UMatrix back = r.inverse();
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) RC_ASSERT(std::fabs(back(i, j) - r(j, i)) < 2e-15);
  }
}

RC_GTEST_PROP(UMatrixLaws, InverseUndoesAnyAffineTransform, ()) {
  UMatrix m = test::anyMatrix();
  m(3, 0) = m(3, 1) = m(3, 2) = 0.0;
  m(3, 3) = 1.0;
  const UVec3d rows[3] = {
      {m(0, 0), m(0, 1), m(0, 2)}, {m(1, 0), m(1, 1), m(1, 2)}, {m(2, 0), m(2, 1), m(2, 2)}};
  RC_PRE(std::fabs(rows[0] * (rows[1] ^ rows[2])) > 1.0);
  RC_ASSERT(difference(m * m.inverse(), UMatrix()) < 1e-9);
  RC_ASSERT(m.inverse()(3, 0) == 0.0 && m.inverse()(3, 3) == 1.0);
}

}  // namespace
}  // namespace zgeo
