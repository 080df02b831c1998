#pragma once

#include <algorithm>
#include <cmath>

#include "platform/rotations/Rotations.h"

/// Arithmetic of Vec3 for the sources of this folder; its users have vectors of their own.
namespace korvo::rotations::detail {

inline Vec3 operator+(const Vec3& a, const Vec3& b) {
  return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
inline Vec3 operator-(const Vec3& a, const Vec3& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
inline Vec3 operator*(double s, const Vec3& v) { return {s * v[0], s * v[1], s * v[2]}; }
inline Vec3 operator/(const Vec3& v, double s) { return {v[0] / s, v[1] / s, v[2] / s}; }

inline double dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline double length(const Vec3& v) { return std::sqrt(dot(v, v)); }

inline Vec3 cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

inline bool isFinite(const Vec3& v) {
  return std::isfinite(v[0]) && std::isfinite(v[1]) && std::isfinite(v[2]);
}

/// Divides by the largest component; that component, or 0 (`v` untouched) when there is no
/// direction.
inline double takeScale(Vec3& v) {
  const double largest = std::max({std::fabs(v[0]), std::fabs(v[1]), std::fabs(v[2])});
  if (!isFinite(v) || largest == 0.0) return 0.0;
  v = v / largest;
  return largest;
}

/// Sets `v` to length 1; false when it has no direction. Where squares may over- or underflow, the
/// largest component is divided out first.
inline bool normalise(Vec3& v) {
  double square = dot(v, v);
  if (!(square > 1e-280 && square < 1e280)) {
    if (takeScale(v) == 0.0) return false;
    square = dot(v, v);
  }
  v = v / std::sqrt(square);
  return true;
}

}  // namespace korvo::rotations::detail
