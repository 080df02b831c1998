#pragma once

#include "platform/zgeo/Export.h"
#include "platform/zgeo/UVec3d.h"

namespace zgeo {

/// A 4x4 homogeneous transform of doubles, stored row by row, the translation in the fourth column.
///
/// The kinematics use it for rigid transforms; products and points work for any affine one (last
/// row 0 0 0 1). `A * B` applies B first, then A. Angles are radians. Nothing here throws.
class KORVO_COLLISIONUTILS_API UMatrix {
 public:
  constexpr UMatrix() = default;  ///< The identity.

  /// All sixteen values, row by row.
  constexpr void set(double m00, double m01, double m02, double m03, double m10, double m11,
                     double m12, double m13, double m20, double m21, double m22, double m23,
                     double m30, double m31, double m32, double m33) {
    const double values[16] = {m00, m01, m02, m03, m10, m11, m12, m13,
                               m20, m21, m22, m23, m30, m31, m32, m33};
    for (int i = 0; i < 16; ++i) m_[i] = values[i];
  }

  constexpr void setIdentity() { *this = UMatrix(); }

  /// Row and column from 0 to 3.
  constexpr double operator()(int row, int column) const { return m_[4 * row + column]; }
  constexpr double& operator()(int row, int column) { return m_[4 * row + column]; }

  /// Exact, value by value.
  constexpr bool operator==(const UMatrix&) const = default;

  /// The transform that applies `b` first, then this one. All sixteen values take part.
  constexpr UMatrix operator*(const UMatrix& b) const {
    UMatrix r;
    for (int i = 0; i < 16; i += 4) {
      for (int j = 0; j < 4; ++j) {
        r.m_[i + j] = m_[i] * b.m_[j] + m_[i + 1] * b.m_[4 + j] + m_[i + 2] * b.m_[8 + j] +
                      m_[i + 3] * b.m_[12 + j];
      }
    }
    return r;
  }

  /// The transformed point.
  constexpr UVec3d operator*(const UVec3d& p) const {
    return {m_[0] * p.x + m_[1] * p.y + m_[2] * p.z + m_[3],
            m_[4] * p.x + m_[5] * p.y + m_[6] * p.z + m_[7],
            m_[8] * p.x + m_[9] * p.y + m_[10] * p.z + m_[11]};
  }

  constexpr void apply(UVec3d& point) const { point = *this * point; }  ///< Point, in place.

  /// Direction, in place: rotation only, not normalised.
  constexpr void applyDir(UVec3d& v) const {
    v = {m_[0] * v.x + m_[1] * v.y + m_[2] * v.z, m_[4] * v.x + m_[5] * v.y + m_[6] * v.z,
         m_[8] * v.x + m_[9] * v.y + m_[10] * v.z};
  }

  /// Replaces the translation by `p`, keeping the rotation.
  constexpr void setOrigin(const UVec3d& p) { m_[3] = p.x, m_[7] = p.y, m_[11] = p.z; }
  constexpr UVec3d getOrigin() const { return {m_[3], m_[7], m_[11]}; }

  /// The inverse of an affine transform.
  ///
  /// @source  Adjugate of the 3x3 block over its determinant; translation -A^-1 t. For a rotation
  ///          of determinant 1 to rounding this is the transpose to rounding.
  /// @errors  A singular 3x3 block gives non-finite values.
  UMatrix inverse() const;

  static constexpr UMatrix _translation(const UVec3d& v) {
    UMatrix r;
    r.setOrigin(v);
    return r;
  }

  /// Rotation by `angle` radians about the line through the origin along `axis`, right-handed.
  ///
  /// @source  Rodrigues' formula, R = I + sin(a) K + (1 - cos(a)) K^2.
  /// @errors  The axis is normalised here; a null axis gives the identity.
  static UMatrix _rotation(const UVec3d& axis, double angle);

  /// The same about the line through `point`: points of that line stay where they are.
  static UMatrix _rotation(const UVec3d& axis, const UVec3d& point, double angle);

  static constexpr UMatrix _zero() {  ///< All sixteen values zero.
    UMatrix r;
    for (double& value : r.m_) value = 0.0;
    return r;
  }

 private:
  double m_[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
};

}  // namespace zgeo
