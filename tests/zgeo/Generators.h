#pragma once

#include <rapidcheck.h>

#include <algorithm>
#include <cmath>

#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UVec3d.h"

/// What the tests of the value types share: how far apart two of them are, and generators.
namespace zgeo::test {

inline double difference(const UVec3d& a, const UVec3d& b) {
  return std::max({std::fabs(a.x - b.x), std::fabs(a.y - b.y), std::fabs(a.z - b.z)});
}

inline double difference(const UMatrix& a, const UMatrix& b) {
  double largest = 0.0;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) largest = std::max(largest, std::fabs(a(i, j) - b(i, j)));
  }
  return largest;
}

/// Between -size and size in steps of a millionth of it.
inline rc::Gen<double> number(double size) {
  return rc::gen::map(rc::gen::inRange(-1000000, 1000001),
                      [size](int i) { return size * 1e-6 * i; });
}

/// Radians, up to two turns either way.
inline rc::Gen<double> angle() { return number(4 * 3.141592653589793); }

/// Not a generator of generators: draws its three numbers at once, inside a property.
inline UVec3d anyVector(double size) { return {*number(size), *number(size), *number(size)}; }

/// A direction of any length but none; half of them on the grid of -1, 0, 1.
inline UVec3d anyDirection() {
  const auto grid = rc::gen::map(rc::gen::inRange(-1, 2), [](int i) { return double(i); });
  const auto component = *rc::gen::arbitrary<bool>() ? grid : number(2.0);
  const UVec3d v(*component, *component, *component);
  RC_PRE(v.norm2() > 1e-6);
  return v;
}

/// A rigid transform: a turn and a shift within a machine's reach (mm).
inline UMatrix anyRigid() {
  return UMatrix::_translation(anyVector(1000)) * UMatrix::_rotation(anyDirection(), *angle());
}

/// Sixteen numbers of no special kind.
inline UMatrix anyMatrix() {
  UMatrix m;
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) m(i, j) = *number(10);
  }
  return m;
}

}  // namespace zgeo::test
