#pragma once

#include <cmath>

#include "platform/rotations/SinCos.h"
#include "platform/rotations/Vec3.h"

namespace korvo::rotations {

/// Rotation by `angle` radians about the direction `axis`, right-handed.
///
/// @source  Rodrigues: R = cos(a) I + sin(a) [u]x + (1 - cos(a)) u u^T.
/// @errors  `axis` of any length, normalised here; a null or non-finite axis gives the identity.
/// @cost    Inline: the walk along a chain is made of it.
inline Mat3 rotationMatrix(const Vec3& axis, double angle) {
  Vec3 u = axis;
  const bool isUnit = std::fabs(detail::dot(u, u) - 1.0) <= 4e-16;  // to rounding
  if (!isUnit && !detail::normalise(u)) return {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  const auto [s, c, versine] = sinCos(angle);
  const double vx = versine * u[0], vy = versine * u[1], vz = versine * u[2];
  return {{{c + vx * u[0], vx * u[1] - s * u[2], vx * u[2] + s * u[1]},
           {vy * u[0] + s * u[2], c + vy * u[1], vy * u[2] - s * u[0]},
           {vz * u[0] - s * u[1], vz * u[1] + s * u[0], c + vz * u[2]}}};
}

}  // namespace korvo::rotations
