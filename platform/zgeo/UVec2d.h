#pragma once

namespace zgeo {

/// A pair of doubles: a point of a plane, or two angles of one rotary solution (radians).
struct UVec2d {
  double x = 0.0;
  double y = 0.0;

  constexpr UVec2d() = default;
  constexpr UVec2d(double x_, double y_) : x(x_), y(y_) {}
  constexpr void set(double x_, double y_) { x = x_, y = y_; }
  constexpr bool operator==(const UVec2d&) const = default;  ///< Exact, component by component.
};

}  // namespace zgeo
