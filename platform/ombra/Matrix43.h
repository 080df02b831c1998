#pragma once

#include "platform/ombra/Export.h"
#include "platform/ombra/Vector3D.h"

namespace Ombra {

/// A placement: three axis vectors and a translation. A point (x, y, z) of the placed body stands
/// at x U + y V + z W + T. `A * B` applies B first, then A.
class OMBRA_API Matrix43 {
 public:
  constexpr Matrix43() = default;  ///< The identity.
  constexpr Matrix43(const Vector3D& u, const Vector3D& v, const Vector3D& w, const Vector3D& t)
      : u_(u), v_(v), w_(w), t_(t) {}

  constexpr const Vector3D& GetU() const { return u_; }
  constexpr const Vector3D& GetV() const { return v_; }
  constexpr const Vector3D& GetW() const { return w_; }
  constexpr const Vector3D& GetTrans() const { return t_; }
  constexpr void SetU(const Vector3D& u) { u_ = u; }
  constexpr void SetV(const Vector3D& v) { v_ = v; }
  constexpr void SetW(const Vector3D& w) { w_ = w; }
  constexpr void SetTrans(const Vector3D& t) { t_ = t; }

  constexpr bool operator==(const Matrix43&) const = default;  ///< Exact.

  /// The placed point.
  constexpr Vector3D Apply(const Vector3D& p) const { return ApplyDir(p) + t_; }
  /// The placed direction: without the translation, not normalised.
  constexpr Vector3D ApplyDir(const Vector3D& d) const { return u_ * d.x + v_ * d.y + w_ * d.z; }

  constexpr Matrix43 operator*(const Matrix43& b) const {
    return {ApplyDir(b.u_), ApplyDir(b.v_), ApplyDir(b.w_), Apply(b.t_)};
  }

  /// The placement that takes this one back.
  /// @source  Rows of the inverse of the matrix [U V W] are V x W, W x U and U x V over its
  ///          determinant U . (V x W).
  /// @errors  Axis vectors that span no space give non-finite values.
  Matrix43 Inverse() const;

  /// Turns by `degrees`, right-handed, about the line through `pivot` along `direction`.
  /// @errors  A null or non-finite direction gives the identity.
  static Matrix43 Rotation(const Vector3D& direction, const Vector3D& pivot, double degrees);
  static constexpr Matrix43 Translation(const Vector3D& t) {
    Matrix43 m;
    m.t_ = t;
    return m;
  }

 private:
  Vector3D u_{1, 0, 0};
  Vector3D v_{0, 1, 0};
  Vector3D w_{0, 0, 1};
  Vector3D t_;
};

}  // namespace Ombra
