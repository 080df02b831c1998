#pragma once

namespace Ombra {

/// A point (mm) or a direction, in whatever frame the caller says.
struct Vector3D {
  double x = 0.0;
  double y = 0.0;
  double z = 0.0;

  constexpr Vector3D() = default;
  constexpr Vector3D(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}

  constexpr bool operator==(const Vector3D&) const = default;  ///< Exact.

  constexpr Vector3D operator+(const Vector3D& o) const { return {x + o.x, y + o.y, z + o.z}; }
  constexpr Vector3D operator-(const Vector3D& o) const { return {x - o.x, y - o.y, z - o.z}; }
  constexpr Vector3D operator*(double s) const { return {x * s, y * s, z * s}; }

  /// Dot product.
  constexpr double operator*(const Vector3D& o) const { return x * o.x + y * o.y + z * o.z; }

  /// Cross product (binds weaker than `+`: write parentheses).
  constexpr Vector3D operator^(const Vector3D& o) const {
    return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
  }
};

}  // namespace Ombra
