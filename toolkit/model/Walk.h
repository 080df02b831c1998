#pragma once

#include <numbers>

#include "platform/rotations/RotationMatrix.h"
#include "toolkit/model/JointChain.h"

/// The steps of a walk along a chain, inline: solvers take them by the hundred.
namespace korvo {

inline constexpr double kDegToRad = std::numbers::pi / 180.0;
inline constexpr double kRadToDeg = 180.0 / std::numbers::pi;

inline void slideBy(const zgeo::UVec3d& by, zgeo::UMatrix& placed) {
  placed.setOrigin(placed * by);
}

/// `placed` after a turn by `angle` (radians): the library's steps in the library's order.
inline void turnBy(const zgeo::UVec3d& axis, const zgeo::UVec3d& point, double angle,
                   zgeo::UMatrix& placed) {
  const auto [x, y, z] = rotations::rotationMatrix({axis.x, axis.y, axis.z}, angle);
  const auto times = [&point](const rotations::Vec3& row) {
    return row[0] * point.x + row[1] * point.y + row[2] * point.z;
  };
  placed.setOrigin(placed * (point - zgeo::UVec3d(times(x), times(y), times(z))));
  for (int i = 0; i < 3; ++i) {
    const double a = placed(i, 0), b = placed(i, 1), c = placed(i, 2);
    for (int j = 0; j < 3; ++j) placed(i, j) = a * x[j] + b * y[j] + c * z[j];
  }
}

/// `placed`, the placement of what carries the joint, after its motion by `value` (degrees or mm).
inline void moveBy(const Joint& joint, double value, zgeo::UMatrix& placed) {
  switch (joint.motion) {
    case Joint::Motion::turn:
      return turnBy(joint.direction, joint.point, value * kDegToRad, placed);
    case Joint::Motion::slide:
      return slideBy(joint.direction * value, placed);
    default:
      return slideBy(joint.direction * joint.length, placed);
  }
}

inline double valueOf(const Joint& joint, const Values& values) {
  return joint.place < 0 ? 0.0 : values[static_cast<std::size_t>(joint.place)];
}

}  // namespace korvo
