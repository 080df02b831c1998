#include "platform/zgeo/UVec3d.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

#include "platform/zgeo/UTri.h"
#include "platform/zgeo/UVec2d.h"
#include "tests/support/TraceCapture.h"
#include "tests/zgeo/Generators.h"

namespace zgeo {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

constexpr UVec3d kX(1, 0, 0);
constexpr UVec3d kY(0, 1, 0);
constexpr UVec3d kZ(0, 0, 1);

// --- The other small value types

TEST(UVec2d, IsTwoDoublesZeroAtFirst) {
  static_assert(sizeof(UVec2d) == 2 * sizeof(double));
  static_assert(std::is_trivially_copyable_v<UVec2d>);
  UVec2d v;
  EXPECT_EQ(v, UVec2d(0, 0));
  v.set(3, -4);
  EXPECT_EQ(v.x, 3);
  EXPECT_EQ(v.y, -4);
}

TEST(UVec2d, EqualityIsExact) {
  EXPECT_EQ(UVec2d(1, 2), UVec2d(1, 2));
  EXPECT_NE(UVec2d(1, 2), UVec2d(std::nextafter(1.0, 2.0), 2));
  EXPECT_NE(UVec2d(1, 2), UVec2d(1, std::nextafter(2.0, 3.0)));
}

TEST(UTri, HoldsItsThreePointsInOrder) {
  static_assert(sizeof(UTri) == 9 * sizeof(double));
  const UTri t(kX, kY, kZ);
  EXPECT_EQ(t.p[0], kX);
  EXPECT_EQ(t.p[1], kY);
  EXPECT_EQ(t.p[2], kZ);
}

TEST(UTri, EqualityIsExactAndMindsTheOrder) {
  EXPECT_EQ(UTri(), UTri({}, {}, {}));
  EXPECT_EQ(UTri(kX, kY, kZ), UTri(kX, kY, kZ));
  EXPECT_NE(UTri(kX, kY, kZ), UTri(kY, kZ, kX));
  EXPECT_NE(UTri(kX, kY, kZ), UTri(kX, kY, UVec3d(0, 1e-300, 1)));
}

// --- Vectors: arithmetic worked by hand

TEST(UVec3d, IsThreeDoublesZeroAtFirst) {
  static_assert(sizeof(UVec3d) == 3 * sizeof(double));
  static_assert(std::is_trivially_copyable_v<UVec3d>);
  UVec3d v;
  EXPECT_EQ(v, UVec3d(0, 0, 0));
  v.set(1, -2, 3);
  EXPECT_EQ(v.x, 1);
  EXPECT_EQ(v.y, -2);
  EXPECT_EQ(v.z, 3);
}

TEST(UVec3d, EqualityIsExact) {
  EXPECT_EQ(UVec3d(0.0, 1, 2), UVec3d(-0.0, 1, 2));
  EXPECT_NE(UVec3d(1, 2, 3), UVec3d(1, 2, std::nextafter(3.0, 4.0)));
  EXPECT_NE(UVec3d(1, 2, 3), UVec3d(1, std::nextafter(2.0, 3.0), 3));
  EXPECT_NE(UVec3d(1, 2, 3), UVec3d(std::nextafter(1.0, 2.0), 2, 3));
  EXPECT_FALSE(UVec3d(kNaN, 0, 0) == UVec3d(kNaN, 0, 0));
}

TEST(UVec3d, AddsSubtractsAndNegates) {
  constexpr UVec3d a(1, 2, 3);
  constexpr UVec3d b(10, -20, 30);
  static_assert(a + b == UVec3d(11, -18, 33));
  static_assert(a - b == UVec3d(-9, 22, -27));
  static_assert(-a == UVec3d(-1, -2, -3));
  UVec3d c = a;
  EXPECT_EQ(c += b, UVec3d(11, -18, 33));
  EXPECT_EQ(c -= b, a);
  EXPECT_EQ(c, a);
}

TEST(UVec3d, ScalesFromBothSidesAndDivides) {
  constexpr UVec3d a(1, -2, 3);
  static_assert(a * 2.0 == UVec3d(2, -4, 6));
  static_assert(2.0 * a == UVec3d(2, -4, 6));
  static_assert(a / 2.0 == UVec3d(0.5, -1, 1.5));
  EXPECT_EQ(a * 0.0, UVec3d());
}

TEST(UVec3d, StarOfTwoVectorsIsTheDotProduct) {
  static_assert(UVec3d(1, 2, 3) * UVec3d(4, -5, 6) == 12.0);
  EXPECT_EQ(kX * kY, 0.0);
}

TEST(UVec3d, CaretIsTheRightHandedCrossProduct) {
  static_assert((kX ^ kY) == kZ);
  static_assert((kY ^ kZ) == kX);
  static_assert((kZ ^ kX) == kY);
  static_assert((UVec3d(1, 2, 3) ^ UVec3d(4, 5, 6)) == UVec3d(-3, 6, -3));
  EXPECT_EQ(kY ^ kX, -kZ);
}

TEST(UVec3d, MeasuresLengthsAndDistances) {
  const UVec3d v(2, -3, 6);
  EXPECT_EQ(v.norm2(), 49);
  EXPECT_EQ(v.norm(), 7);
  EXPECT_EQ(UVec3d(1, 1, 1).distance2To({3, -2, 7}), 49);
  EXPECT_EQ(UVec3d(1, 1, 1).distanceTo({3, -2, 7}), 7);
}

// --- Normalising

struct Direction {
  const char* name;
  UVec3d given;
  UVec3d unit;
};

std::string nameOf(const testing::TestParamInfo<Direction>& info) { return info.param.name; }

class UVec3dNormalised : public testing::TestWithParam<Direction> {};

TEST_P(UVec3dNormalised, HasLengthOneOrStaysNull) {
  UVec3d inPlace = GetParam().given;
  inPlace.normalise();
  EXPECT_LT(test::difference(inPlace, GetParam().unit), 3e-16);
  EXPECT_EQ(GetParam().given.normalised(), inPlace);
}

constexpr double kDenormal = 5e-324;

INSTANTIATE_TEST_SUITE_P(
    Lengths, UVec3dNormalised,
    testing::Values(
        Direction{"Null", {0, 0, 0}, {0, 0, 0}}, Direction{"Unit", {0, -1, 0}, {0, -1, 0}},
        Direction{"Ordinary", {2, -3, 6}, {2.0 / 7, -3.0 / 7, 6.0 / 7}},
        Direction{"SquareUnderflows", {2e-200, -3e-200, 6e-200}, {2.0 / 7, -3.0 / 7, 6.0 / 7}},
        Direction{"SquareOverflows", {2e200, -3e200, 6e200}, {2.0 / 7, -3.0 / 7, 6.0 / 7}},
        Direction{"SquareIsDenormal", {3e-155, 0, 4e-155}, {0.6, 0, 0.8}},
        Direction{"LengthOverflows", {1.5e308, 1.5e308, 0}, {std::sqrt(0.5), std::sqrt(0.5), 0}},
        Direction{"SmallestNumber", {0, 0, -kDenormal}, {0, 0, -1}},
        Direction{
            "SmallestDiagonal", {kDenormal, kDenormal, 0}, {std::sqrt(0.5), std::sqrt(0.5), 0}}),
    nameOf);

TEST(UVec3dNotFinite, IsNeverTakenForAUnitVector) {
  for (const double bad : {kNaN, kInf, -kInf}) {
    for (const UVec3d& v : {UVec3d(bad, 0, 0), UVec3d(0, bad, 1), UVec3d(1, 2, bad)}) {
      EXPECT_FALSE(std::isfinite(v.normalised().norm()));
    }
  }
}

RC_GTEST_PROP(UVec3dLaws, NormalisedHasLengthOneAndTheSameDirectionAtEveryScale, ()) {
  const UVec3d v = test::anyDirection();
  const double scale = std::pow(10.0, *rc::gen::inRange(-300, 301));
  const UVec3d unit = (v * scale).normalised();
  RC_ASSERT(std::fabs(unit.norm() - 1.0) < 4e-16);
  RC_ASSERT(unit * v > 0);
  RC_ASSERT((unit ^ v).norm() < 1e-15 * v.norm());
}

RC_GTEST_PROP(UVec3dLaws, CrossProductIsSquareToBothAndAsLongAsTheAreaSays, ()) {
  const UVec3d a = test::anyVector(10);
  const UVec3d b = test::anyVector(10);
  const UVec3d c = a ^ b;
  RC_ASSERT(std::fabs(c * a) < 1e-11);
  RC_ASSERT(std::fabs(c * b) < 1e-11);
  RC_ASSERT(std::fabs(c.norm2() + (a * b) * (a * b) - a.norm2() * b.norm2()) < 1e-9);
}

// --- Dump

class UVec3dDump : public korvo::test::TracedTest {};

TEST_F(UVec3dDump, WritesLabelAndThreeDecimals) {
  UVec3d(1, -2.5, 0.0004).dump(L" point", false);
  EXPECT_TRUE(trace.claim(L" point(1.000, -2.500, 0.000)"));
}

TEST_F(UVec3dDump, LeavesTheLineOpenWhenAskedTo) {
  UVec3d(1, 2, 3).dump(L"a", true);
  EXPECT_TRUE(trace.lines().empty());
  UVec3d(4, 5, 6).dump(L" b", false);
  EXPECT_TRUE(trace.claim(L"a(1.000, 2.000, 3.000) b(4.000, 5.000, 6.000)"));
}

TEST_F(UVec3dDump, LabelIsTextNotAFormat) {
  UVec3d(1, 2, 3).dump(L"100%d %s ", false);
  EXPECT_TRUE(trace.claim(L"100%d %s (1.000, 2.000, 3.000)"));
}

TEST_F(UVec3dDump, WithoutLabelWritesTheNumbersAlone) {
  UVec3d(1, 2, 3).dump(nullptr, false);
  EXPECT_TRUE(trace.claim(L"(1.000, 2.000, 3.000)"));
}

TEST_F(UVec3dDump, WritesNumbersOfThreeHundredDigits) {
  UVec3d(0x1p1000, 0, -0x1p1000).dump(L"", false);
  const std::wstring digits =
      L"107150860718626732094842504906000181056140481170553360744375038837035105112493612249319837"
      L"881569585812759467291755314682518714528569231404359845775746985748039345677748242309854210"
      L"746050623711418779541821530464749835819412673987675591655439460770629145711964776865421676"
      L"60429831652624386837205668069376";
  EXPECT_TRUE(trace.claim(L"(" + digits + L".000, 0.000, -" + digits + L".000)"));
}

}  // namespace
}  // namespace zgeo
