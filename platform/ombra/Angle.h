#pragma once

namespace Ombra {

/// An angle, in radians.
struct Angle {
  double radians = 0.0;

  constexpr Angle() = default;
  constexpr explicit Angle(double radians_) : radians(radians_) {}
  constexpr bool operator==(const Angle&) const = default;  ///< Exact.
};

}  // namespace Ombra
