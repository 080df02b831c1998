#include "platform/ombra/Matrix43.h"

#include <numbers>

#include "platform/rotations/RotationMatrix.h"

namespace Ombra {

Matrix43 Matrix43::Inverse() const {
  const double scale = 1.0 / (u_ * (v_ ^ w_));
  const Vector3D a = (v_ ^ w_) * scale, b = (w_ ^ u_) * scale, c = (u_ ^ v_) * scale;  // rows
  return {{a.x, b.x, c.x}, {a.y, b.y, c.y}, {a.z, b.z, c.z}, {-(a * t_), -(b * t_), -(c * t_)}};
}

Matrix43 Matrix43::Rotation(const Vector3D& direction, const Vector3D& pivot, double degrees) {
  const auto r = korvo::rotations::rotationMatrix({direction.x, direction.y, direction.z},
                                                  degrees * (std::numbers::pi / 180.0));
  const Matrix43 turn({r[0][0], r[1][0], r[2][0]}, {r[0][1], r[1][1], r[2][1]},
                      {r[0][2], r[1][2], r[2][2]}, {});
  return {turn.u_, turn.v_, turn.w_, pivot - turn.ApplyDir(pivot)};
}

}  // namespace Ombra
