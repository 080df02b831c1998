#pragma once

#include <cmath>

#include "platform/zgeo/Export.h"

namespace zgeo {

/// A point (mm) or a direction (any length): three doubles, in whatever frame the caller says.
/// Arithmetic never throws and lets infinities and NaN through.
struct KORVO_COLLISIONUTILS_API UVec3d {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  constexpr UVec3d() = default;
  constexpr UVec3d(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}
  constexpr void set(double x_, double y_, double z_) { x = x_, y = y_, z = z_; }

  /// Exact, component by component: no tolerance.
  constexpr bool operator==(const UVec3d&) const = default;

  constexpr UVec3d operator+(const UVec3d& o) const { return {x + o.x, y + o.y, z + o.z}; }
  constexpr UVec3d operator-(const UVec3d& o) const { return {x - o.x, y - o.y, z - o.z}; }
  constexpr UVec3d operator-() const { return {-x, -y, -z}; }
  constexpr UVec3d& operator+=(const UVec3d& o) { return *this = *this + o; }
  constexpr UVec3d& operator-=(const UVec3d& o) { return *this = *this - o; }

  /// Scaled by `s`.
  constexpr UVec3d operator*(double s) const { return {x * s, y * s, z * s}; }
  constexpr UVec3d operator/(double s) const { return {x / s, y / s, z / s}; }

  /// Dot product.
  constexpr double operator*(const UVec3d& o) const { return x * o.x + y * o.y + z * o.z; }

  /// Cross product (binds weaker than `+` and `==`: write parentheses).
  constexpr UVec3d operator^(const UVec3d& o) const {
    return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
  }

  constexpr double norm2() const { return *this * *this; }  ///< Squared length.
  double norm() const { return std::sqrt(norm2()); }        ///< Length.

  constexpr double distance2To(const UVec3d& o) const { return (o - *this).norm2(); }
  double distanceTo(const UVec3d& o) const { return (o - *this).norm(); }

  /// Scales to length 1 in place; a null vector stays null.
  void normalise() { *this = normalised(); }

  /// The vector of length 1 in the same direction.
  ///
  /// @errors  A null vector gives the null vector. Lengths whose square under- or overflows are
  ///          scaled by the largest component first, so they normalise too.
  UVec3d normalised() const {
    const double n2 = norm2();
    if (n2 > 1e-280 && n2 < 1e280) return *this / std::sqrt(n2);
    return normalisedExtreme();
  }

  /// Appends `label` and "(%.3lf, %.3lf, %.3lf)" to the open trace line.
  ///
  /// @param keep  True leaves the line open for the next text, false ends it.
  void dump(const wchar_t* label, bool keep) const;

 private:
  UVec3d normalisedExtreme() const;
};

constexpr UVec3d operator*(double s, const UVec3d& v) { return v * s; }

}  // namespace zgeo
