#pragma once

#include <algorithm>
#include <cmath>
#include <cstring>
#include <ostream>

#include <gmock/gmock.h>

#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UVec3d.h"

namespace zgeo {

inline std::ostream& operator<<(std::ostream& out, const UVec3d& v) {
  return out << "(" << v.x << ", " << v.y << ", " << v.z << ")";
}

inline std::ostream& operator<<(std::ostream& out, const UMatrix& m) {
  for (int row = 0; row < 4; ++row) {
    out << (row == 0 ? "[" : "; ");
    for (int column = 0; column < 4; ++column) out << m(row, column) << (column < 3 ? " " : "");
  }
  return out << "]";
}

}  // namespace zgeo

namespace korvo::test {

/// Largest difference of a component; NaN when one is not a number.
inline double difference(const zgeo::UVec3d& a, const zgeo::UVec3d& b) {
  const zgeo::UVec3d d = a - b;
  const double sum = d.x + d.y + d.z;
  return std::isnan(sum) ? sum : std::max({std::abs(d.x), std::abs(d.y), std::abs(d.z)});
}

inline double difference(const zgeo::UMatrix& a, const zgeo::UMatrix& b) {
  double largest = 0.0;
  for (int i = 0; i < 16; ++i) {
    const double d = std::abs(a(i / 4, i % 4) - b(i / 4, i % 4));
    if (!(d <= largest)) largest = d;
    if (std::isnan(d)) return d;
  }
  return largest;
}

template <typename T>
bool isNear(const T& a, const T& b, double tolerance) {
  return difference(a, b) <= tolerance;
}

/// The same sixteen bit patterns.
inline bool isSameBits(const zgeo::UMatrix& a, const zgeo::UMatrix& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

/// Distance of a point from the line through `onLine` along the unit direction `dir`.
inline double distanceToLine(const zgeo::UVec3d& p, const zgeo::UVec3d& onLine,
                             const zgeo::UVec3d& dir) {
  return ((p - onLine) ^ dir).norm();
}

/// A point, direction or matrix within `tolerance` of `expected` in every component.
MATCHER_P2(Near, expected, tolerance, "is within a tolerance of the expected value") {
  const double d = difference(arg, expected);
  *result_listener << "which differs from " << testing::PrintToString(expected) << " by " << d
                   << ", tolerance " << tolerance;
  return d <= tolerance;
}

}  // namespace korvo::test
