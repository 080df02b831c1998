// Sine, cosine and versine against the C library's functions of long doubles.
#include "platform/rotations/SinCos.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>

namespace korvo::rotations {
namespace {

struct Errors {
  long double sinCos = 0, versine = 0;
};

Errors largestErrors(double range) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> angles(-range, range);
  Errors largest;
  for (int i = 0; i < 200000; ++i) {
    const double angle = angles(random);
    const SinCos got = sinCos(angle);
    const long double s = std::sin(static_cast<long double>(angle));
    const long double c = std::cos(static_cast<long double>(angle));
    largest.sinCos = std::max({largest.sinCos, std::fabs(got.sin - s), std::fabs(got.cos - c)});
    largest.versine = std::max(largest.versine, std::fabs(got.versine - (1 - c)));
  }
  return largest;
}

class SinCosInARange : public testing::TestWithParam<double> {};

TEST_P(SinCosInARange, KeepsItsBounds) {
  const Errors largest = largestErrors(GetParam());
  EXPECT_LT(largest.sinCos, 2e-16L);
  EXPECT_LT(largest.versine, 3e-16L);
}

INSTANTIATE_TEST_SUITE_P(Angles, SinCosInARange,
                         testing::Values(0.7, 7.0, 700.0, 99999.0, 100001.0, 1e15),
                         [](const auto& row) { return "Case" + std::to_string(row.index); });

// Quarter turns as near as a double comes to them, both sides of every change of quadrant.
TEST(SinCosOfQuarterTurns, AreThoseOfTheCLibrary) {
  for (int eighth = -80; eighth <= 80; ++eighth) {
    const double at = eighth * 0.7853981633974483;
    for (const double angle : {at, std::nextafter(at, -1e3), std::nextafter(at, 1e3)}) {
      const SinCos got = sinCos(angle);
      EXPECT_NEAR(got.sin, std::sin(angle), 2.3e-16) << angle;
      EXPECT_NEAR(got.cos, std::cos(angle), 2.3e-16) << angle;
      EXPECT_NEAR(got.versine, 1 - std::cos(angle), 3e-16) << angle;
    }
  }
}

TEST(SinCosOfSmallAngles, KeepAllDigits) {
  for (const double angle : {1e-300, 1e-20, 1e-9, 1e-4, -1e-9, -1e-4}) {
    const SinCos got = sinCos(angle);
    EXPECT_DOUBLE_EQ(got.sin, std::sin(angle)) << angle;
    const double half = std::sin(angle / 2);
    EXPECT_DOUBLE_EQ(got.versine, 2 * half * half) << angle;  // 1 - cos a = 2 sin^2(a/2)
  }
  const SinCos zero = sinCos(0.0);
  EXPECT_EQ(zero.sin, 0.0);
  EXPECT_EQ(zero.cos, 1.0);
  EXPECT_EQ(zero.versine, 0.0);
}

TEST(SinCosOfWhatIsNoAngle, IsNoNumber) {
  for (const double angle : {std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(), std::nan("")}) {
    const SinCos got = sinCos(angle);
    EXPECT_TRUE(std::isnan(got.sin) && std::isnan(got.cos) && std::isnan(got.versine)) << angle;
  }
}

}  // namespace
}  // namespace korvo::rotations
