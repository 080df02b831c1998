// The roots of polynomials of degree two in cosine and sine, where several lie in one place.
#include "platform/rotations/TrigPolynomial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace korvo::rotations::detail {
namespace {

constexpr double kRounding = 1e-15;

/// ((1 - cos(x - a))^2 - e) / 2, which is 3/4 - e/2 - cos(x - a) + cos(2 (x - a)) / 4: four roots
/// about `a` that are one for e = 0, and so are three of its four extremes.
TrigPolynomial flatAt(double a, double e) {
  return {0.75 - e / 2, -std::cos(a), -std::sin(a), std::cos(2 * a) / 4, std::sin(2 * a) / 4};
}

double apart(double a, double b) { return std::abs(std::remainder(a - b, 2 * std::numbers::pi)); }

bool isAmong(double angle, const TrigPolynomial::Roots& roots, double radians) {
  return std::any_of(roots.begin(), roots.end(), [&](const TrigPolynomial::Root& root) {
    return apart(root.angle, angle) <= radians;
  });
}

TEST(TrigPolynomialRoots, OfThreeExtremesInOnePlaceAreFound) {
  for (int i = 0; i < 2000; ++i) {
    const double a = -4 + 0.004 * i;
    for (const double e : {0.0, 1e-20, 1e-16, 1e-13, 1e-10, 1e-7, 1e-4, 1e-2, 0.5}) {
      SCOPED_TRACE(testing::Message() << "about " << a << ", " << e);
      const double y = std::acos(1 - std::sqrt(e));
      // Where the polynomial is below its rounding; beyond that its slope is sqrt(e) sin(y).
      const double radians = e < 1e-14 ? 1e-3 : 4 * kRounding / (std::sqrt(e) * std::sin(y));
      const auto roots = flatAt(a, e).roots(kRounding);
      EXPECT_TRUE(isAmong(a + y, roots, radians));
      EXPECT_TRUE(isAmong(a - y, roots, radians));
      for (const auto& root : roots) {
        EXPECT_LE(std::min(apart(root.angle, a + y), apart(root.angle, a - y)), radians);
      }
      EXPECT_LE(roots.count, 4);
    }
  }
}

/// As many roots as change of sign are found between places that are close.
TEST(TrigPolynomialRoots, NextToThreeExtremesInOnePlaceAreThoseThatAreSeen) {
  for (int i = 0; i < 2000; ++i) {
    TrigPolynomial f = flatAt(0.003 * i, 0.0);
    const double by = std::pow(10.0, -1 - i % 12);
    f.c1 += by * std::sin(1.0 * i);
    f.s1 += by * std::sin(2.0 * i);
    f.c0 -= by * std::abs(std::sin(3.0 * i));
    const auto roots = f.roots(kRounding);
    constexpr int kPlaces = 4000;
    const auto at = [](int k) { return 2 * std::numbers::pi * k / kPlaces; };
    for (int k = 0; k < kPlaces; ++k) {
      const double before = f.at(sinCos(at(k))), after = f.at(sinCos(at(k + 1)));
      if (std::min(std::abs(before), std::abs(after)) < 1e-14) continue;
      if ((before < 0) == (after < 0)) continue;
      const double middle = 0.5 * (at(k) + at(k + 1));
      ASSERT_TRUE(isAmong(middle, roots, 2 * std::numbers::pi / kPlaces)) << i << " at " << middle;
    }
  }
}

}  // namespace
}  // namespace korvo::rotations::detail
