#pragma once

#include <cmath>

#include "platform/zgeo/Export.h"

namespace zgeo {

/// A pair of doubles: a point of a plane, or two angles of one rotary solution (radians).
/// Arithmetic never throws and lets infinities and NaN through.
struct KORVO_COLLISIONUTILS_API UVec2d {
  double x = 0.0;
  double y = 0.0;

  constexpr UVec2d() = default;
  constexpr UVec2d(double x_, double y_) : x(x_), y(y_) {}
  constexpr void set(double x_, double y_) { x = x_, y = y_; }
  constexpr bool operator==(const UVec2d&) const = default;  ///< Exact, component by component.

  constexpr UVec2d operator+(const UVec2d& o) const { return {x + o.x, y + o.y}; }
  constexpr UVec2d operator-(const UVec2d& o) const { return {x - o.x, y - o.y}; }
  constexpr UVec2d operator*(double s) const { return {x * s, y * s}; }

  /// Dot product.
  constexpr double operator*(const UVec2d& o) const { return x * o.x + y * o.y; }

  /// Cross product: the third component of the vectors' product in space.
  constexpr double operator^(const UVec2d& o) const { return x * o.y - y * o.x; }

  constexpr double norm2() const { return *this * *this; }  ///< Squared length.
  double norm() const { return std::hypot(x, y); }          ///< Length.

  constexpr double distance2To(const UVec2d& o) const { return (o - *this).norm2(); }
  double distanceTo(const UVec2d& o) const { return (o - *this).norm(); }

  /// The vector of length 1 in the same direction; a null vector stays null.
  UVec2d normalised() const {
    const double length = norm();
    return length > 0 ? UVec2d(x / length, y / length) : *this;
  }
  void normalise() { *this = normalised(); }

  /// Appends `label` and "(%.3lf, %.3lf)" to the open trace line.
  ///
  /// @param keep  True leaves the line open for the next text, false ends it.
  void dump(const wchar_t* label, bool keep) const;
};

}  // namespace zgeo
