#pragma once

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <ostream>

#include "platform/rotations/Solvers.h"
#include "tests/rotations/Vectors.h"

/// Turning of directions in long double, so that the rounding of the tests stays a thousand times
/// below that of the code under test.
namespace korvo::rotations {

inline void PrintTo(const TwoAngles& pair, std::ostream* out) {
  out->precision(17);
  *out << "(" << pair.a1 << ", " << pair.a2 << ")";
}

}  // namespace korvo::rotations

namespace korvo::rotations::test {

constexpr double kPi = std::numbers::pi;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr Vec3 kX{1, 0, 0};
constexpr Vec3 kY{0, 1, 0};
constexpr Vec3 kZ{0, 0, 1};

using Long3 = std::array<long double, 3>;

inline long double dotL(const Long3& a, const Long3& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline Long3 unitL(const Vec3& v) {
  const long double n = std::hypot(static_cast<long double>(v[0]), static_cast<long double>(v[1]),
                                   static_cast<long double>(v[2]));
  return {v[0] / n, v[1] / n, v[2] / n};
}

inline long double distanceL(const Long3& a, const Long3& b) {
  return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

/// `v` split into its parts along and across the unit axis `k`, the second part turned.
inline Long3 turnedL(const Long3& v, const Long3& k, long double angle) {
  const long double along = dotL(v, k);
  const Long3 side = {k[1] * v[2] - k[2] * v[1], k[2] * v[0] - k[0] * v[2],
                      k[0] * v[1] - k[1] * v[0]};
  Long3 result;
  for (int i = 0; i < 3; ++i) {
    result[i] = along * k[i] + std::cos(angle) * (v[i] - along * k[i]) + std::sin(angle) * side[i];
  }
  return result;
}

inline Vec3 rounded(const Long3& v) {
  return {static_cast<double>(v[0]), static_cast<double>(v[1]), static_cast<double>(v[2])};
}

inline Vec3 turned(const Vec3& v, const Vec3& axis, double angle) {
  return rounded(turnedL(unitL(v), unitL(axis), angle));
}

/// Two axes and a direction to turn about them.
struct Joint {
  Vec3 from;
  Vec3 axis1;
  Vec3 axis2;

  TwoAnglesList to(const Vec3& target) const { return twoAxes(from, target, axis1, axis2); }

  /// Where the pair leads; an angle without effect is taken as 0, as a user of the solver does.
  Long3 reached(const TwoAngles& pair) const {
    const long double a1 = pair.a1 == kFreeAngle ? 0.0 : pair.a1;
    const long double a2 = pair.a2 == kFreeAngle ? 0.0 : pair.a2;
    return turnedL(turnedL(unitL(from), unitL(axis2), a2), unitL(axis1), a1);
  }

  double miss(const TwoAngles& pair, const Vec3& target) const {
    return static_cast<double>(distanceL(reached(pair), unitL(target)));
  }
};

/// The shortest way from one angle to the other, full turns aside.
inline double angleBetween(double a, double b) { return std::fabs(std::remainder(a - b, 2 * kPi)); }

/// The axes Z and, in the plane of X and Z, another `w` from it, and a direction of that plane `f`
/// beyond the second axis: the edges of what it reaches are in that plane too.
inline Joint flatJoint(double w, double f) {
  return {{std::sin(w + f), 0, std::cos(w + f)}, kZ, {std::sin(w), 0, std::cos(w)}};
}

/// A direction `t` from Z, turned by `azimuth` about Z.
inline Vec3 offZ(double t, double azimuth) {
  return {std::sin(t) * std::cos(azimuth), std::sin(t) * std::sin(azimuth), std::cos(t)};
}

}  // namespace korvo::rotations::test
