#pragma once

#include <array>
#include <cmath>
#include <vector>

#include "toolkit/solve/Core.h"

namespace korvo {

/// a + b cos x + c sin x.
struct Wave {
  double a = 0.0;
  double b = 0.0;
  double c = 0.0;

  /// From its values at 0, 90 and 180 degrees.
  static Wave through(double at0, double at90, double at180) {
    const double a = (at0 + at180) / 2;
    return {a, (at0 - at180) / 2, at90 - a};
  }

  Wave operator-(const Wave& o) const { return {a - o.a, b - o.b, c - o.c}; }
  Wave operator*(double s) const { return {a * s, b * s, c * s}; }

  double height() const { return std::hypot(b, c); }

  /// Where it is zero, in degrees, or comes nearest to it: on either side of its top.
  std::array<double, 2> lows() const {
    const double r = height();
    const double middle = std::atan2(c, b) * kRadToDeg;
    const double aside = std::atan2(std::sqrt(std::max((r - a) * (r + a), 0.0)), -a) * kRadToDeg;
    return {middle - aside, middle + aside};
  }

  /// Where it is zero, in degrees; where it only comes near zero that place, too.
  void addZeros(std::vector<double>& out) const {
    if (!(height() > 0) || std::abs(a) > height() * (1 + 1e-12)) return;
    for (const double degrees : lows()) out.push_back(degrees);
  }
};

/// A circle that lies in what the linear joints reach to this (mm) leaves its angle free.
inline constexpr double kFreeMm = 1e-7;

/// Roots nearer than this (degrees) are one.
inline constexpr double kOneRoot = 1e-5;

/// A root may be a hair outside what it bounds (degrees).
inline constexpr double kHair = 1e-9;

/// Places of a joint (degrees) in the order in which they are tried: the one nearest to its start
/// first, and of those that are one but for rounding only one.
void sortPlaces(double start, std::vector<double>& places);

/// The linear joints carry a tool by the ways of a body whose faces lie in the planes of two of
/// them, those across it at a limit each: zero where the way, while the free joint turns with the
/// others as `values` have them, lies on a face, or where the body is flat. Linear joints in fewer
/// than three directions are made three by some that stand still: mostly the same ones, wherever
/// the others stand.
std::vector<Wave> facesOf(const Query& query, const Freedom& freedom, const Values& values);

/// Where the second of two rotary joints about parallel lines along the tool has to stand so that
/// the first can turn the tip to the target, if the linear joints all move along one direction;
/// where it cannot, the nearest to that.
SolvedAngles solvedSecond(const Query& query, int first, int second, Values values);

/// Where the second of two rotary joints, both free to stand anywhere, has to be tried, the nearest
/// to its start first: its own start, and the ends of what it leaves to the first one.
std::vector<double> placesOfSecond(const Query& query, int first, int second, const Values& values);

}  // namespace korvo
