#pragma once

#include <rapidcheck.h>

#include <algorithm>
#include <cmath>

#include "platform/rotations/Rotations.h"

/// Vector arithmetic for the tests, written apart from the code under test, and its generators.
namespace korvo::rotations {

inline double dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

inline Vec3 cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline Vec3 plus(const Vec3& a, const Vec3& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }

inline Vec3 scaled(const Vec3& v, double s) { return {s * v[0], s * v[1], s * v[2]}; }
inline Vec3 minus(const Vec3& a, const Vec3& b) { return plus(a, scaled(b, -1)); }
inline double length(const Vec3& v) { return std::sqrt(dot(v, v)); }
inline Vec3 unit(const Vec3& v) { return scaled(v, 1 / length(v)); }

inline double largestDifference(const Vec3& a, const Vec3& b) {
  return std::max({std::fabs(a[0] - b[0]), std::fabs(a[1] - b[1]), std::fabs(a[2] - b[2])});
}

}  // namespace korvo::rotations

namespace korvo::rotations::test {

/// Between -size and size in steps of a millionth of it.
inline rc::Gen<double> number(double size) {
  return rc::gen::map(rc::gen::inRange(-1000000, 1000001),
                      [size](int i) { return size * 1e-6 * i; });
}

/// Radians, up to two turns either way; every third one a multiple of a quarter turn.
inline rc::Gen<double> angle() {
  const double quarter = 1.5707963267948966;
  return rc::gen::weightedOneOf<double>(
      {{2, number(8 * quarter)},
       {1, rc::gen::map(rc::gen::inRange(-8, 9), [quarter](int i) { return quarter * i; })}});
}

inline rc::Gen<Vec3> vector(const rc::Gen<double>& component) {
  return rc::gen::container<Vec3>(component);
}

/// A direction of any length but none; half of them on the grid of -1, 0, 1, where axes are
/// parallel, square or diagonal to each other.
inline rc::Gen<Vec3> direction() {
  const auto grid = rc::gen::map(rc::gen::inRange(-1, 2), [](int i) { return double(i); });
  return rc::gen::suchThat(rc::gen::oneOf(vector(grid), vector(number(2.0))),
                           [](const Vec3& v) { return dot(v, v) > 1e-6; });
}

/// A point within a machine's reach (mm); half of them on a coarse grid, so that lines meet.
inline rc::Gen<Vec3> point() {
  const auto grid = rc::gen::map(rc::gen::inRange(-2, 3), [](int i) { return 100.0 * i; });
  return rc::gen::oneOf(vector(grid), vector(number(1000.0)));
}

}  // namespace korvo::rotations::test
