// Zeros of sums of waves up to four-fold, several of them in one place, too.

#include "toolkit/solve/WaveZeros.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace korvo::test {
namespace {

constexpr double kTurn = 360.0;

/// Degrees: a zero that is so far from seven in one place is not lost in rounding.
constexpr double kApart = 15.0;

/// The product of cos(x - middle) - cos(aside): each is zero at its middle plus and minus aside.
struct Product {
  std::array<double, 4> middles, asides;  ///< Degrees.

  double operator()(double radians) const {
    double product = 1.0;
    for (std::size_t i = 0; i < 4; ++i) {
      const double middle = middles[i] * kDegToRad, aside = asides[i] * kDegToRad;
      // As a product of sines, which is exact about a zero.
      product *=
          2 * std::sin((aside + radians - middle) / 2) * std::sin((aside - radians + middle) / 2);
    }
    return product;
  }

  std::vector<double> zeros() const {
    std::vector<double> all;
    for (std::size_t i = 0; i < 4; ++i) {
      all.push_back(middles[i] - asides[i]);
      all.push_back(middles[i] + asides[i]);
    }
    return all;
  }
};

double apart(double a, double b) { return std::abs(std::remainder(a - b, kTurn)); }

double nearest(const std::vector<double>& places, double to) {
  double least = kTurn;
  for (const double place : places) least = std::min(least, apart(place, to));
  return least;
}

template <typename Function>
std::vector<double> zerosOf(Function function) {
  std::vector<double> places;
  WaveZeros(function).addTo(places);
  return places;
}

TEST(WaveZeros, OfOneWaveAreItsTwo) {
  const std::vector<double> places = zerosOf([](double x) { return std::cos(x) - 0.5; });
  ASSERT_EQ(places.size(), 2u);
  EXPECT_NEAR(places[0], 60, 1e-12);
  EXPECT_NEAR(places[1], 300, 1e-12);
}

TEST(WaveZeros, WhereTheCircleIsCutAreNotLost) {
  for (const double sign : {1.0, -1.0}) {
    const std::vector<double> places = zerosOf([sign](double x) { return sign * std::sin(x); });
    EXPECT_EQ(places.size(), 2u);
    EXPECT_LE(nearest(places, 0), 1e-12);
    EXPECT_LE(nearest(places, 180), 1e-12);
  }
}

TEST(WaveZeros, OfWhatOnlyTouchesZeroIsWhereItDoes) {
  const std::vector<double> places = zerosOf([](double x) { return 1 - std::cos(x - 1.0); });
  ASSERT_EQ(places.size(), 1u);
  EXPECT_NEAR(places[0], kRadToDeg, 1e-9);
}

TEST(WaveZeros, SeveralInOnePlaceAreThatPlace) {
  for (const double middle : {0.0, 77.7, 180.0, 271.3}) {
    const std::vector<double> eight = zerosOf(Product{{middle, middle, middle, middle}, {}});
    EXPECT_LE(eight.size(), 8u);
    EXPECT_LE(nearest(eight, middle), 1e-9);
    const std::vector<double> six = zerosOf(Product{{middle, middle, middle, middle + 90}, {}});
    EXPECT_LE(six.size(), 16u);
    EXPECT_LE(nearest(six, middle), 1e-9);
    EXPECT_LE(nearest(six, middle + 90), 1e-9);
  }
}

TEST(WaveZeros, OfNothingAndOfAConstantAreNone) {
  EXPECT_TRUE(zerosOf([](double) { return 0.0; }).empty());
  EXPECT_TRUE(zerosOf([](double) { return -3.0; }).empty());
  EXPECT_TRUE(zerosOf([](double) { return std::nan(""); }).empty());
}

double anyAngle() {
  return *rc::gen::oneOf(
      rc::gen::element(0.0, 90.0, 180.0, 45.0, 1e-3, 1e-6, 1e-9),
      rc::gen::map(rc::gen::inRange(0, 3'600'000), [](int i) { return i * 1e-4; }));
}

RC_GTEST_PROP(WaveZeros, ThatAreApartAreAllFoundAndFewArePlaces, ()) {
  Product f;
  for (double& middle : f.middles) middle = anyAngle();
  for (double& aside : f.asides) aside = anyAngle();
  const std::vector<double> places = zerosOf(f);
  RC_ASSERT(places.size() <= 16u);
  const std::vector<double> zeros = f.zeros();
  for (std::size_t i = 0; i < zeros.size(); ++i) {
    double others = kTurn;
    for (std::size_t j = 0; j < zeros.size(); ++j) {
      if (j != i) others = std::min(others, apart(zeros[j], zeros[i]));
    }
    RC_CLASSIFY(others > kApart, "apart");
    if (others > kApart) RC_ASSERT(nearest(places, zeros[i]) <= 1e-6);
  }
}

}  // namespace
}  // namespace korvo::test
