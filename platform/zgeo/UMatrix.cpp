#include "platform/zgeo/UMatrix.h"

#include "platform/rotations/RotationMatrix.h"

namespace zgeo {

UMatrix UMatrix::inverse() const {
  const UVec3d c0(m_[0], m_[4], m_[8]);
  const UVec3d c1(m_[1], m_[5], m_[9]);
  const UVec3d c2(m_[2], m_[6], m_[10]);
  // The rows of the inverse are the cross products of the columns over the determinant.
  const double det = c0 * (c1 ^ c2);
  const UVec3d rows[] = {(c1 ^ c2) / det, (c2 ^ c0) / det, (c0 ^ c1) / det};
  UMatrix r;
  for (int i = 0; i < 3; ++i) {
    r(i, 0) = rows[i].x, r(i, 1) = rows[i].y, r(i, 2) = rows[i].z;
    r(i, 3) = 0.0 - rows[i] * getOrigin();  // not -(...): no negative zeros in dumps
  }
  return r;
}

UMatrix UMatrix::_rotation(const UVec3d& axis, double angle) {
  const auto rows = korvo::rotations::rotationMatrix({axis.x, axis.y, axis.z}, angle);
  UMatrix r;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) r(i, j) = rows[i][j];
  }
  return r;
}

UMatrix UMatrix::_rotation(const UVec3d& axis, const UVec3d& point, double angle) {
  UMatrix r = _rotation(axis, angle);
  r.setOrigin(point - r * point);
  return r;
}

}  // namespace zgeo
