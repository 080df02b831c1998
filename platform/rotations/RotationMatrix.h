#pragma once

#include <cmath>

#include "platform/rotations/SinCos.h"
#include "platform/rotations/Vec3.h"

namespace korvo::rotations {

/// Rows of the rotation about the direction `u` of length 1 by the angle of which `turn` is made.
template <typename Real>
inline std::array<std::array<Real, 3>, 3> aboutUnit(const std::array<Real, 3>& u,
                                                    const SinCosOf<Real>& turn) {
  const auto [s, c, versine] = turn;
  const Real vx = versine * u[0], vy = versine * u[1], vz = versine * u[2];
  return {{{c + vx * u[0], vx * u[1] - s * u[2], vx * u[2] + s * u[1]},
           {vy * u[0] + s * u[2], c + vy * u[1], vy * u[2] - s * u[0]},
           {vz * u[0] - s * u[1], vz * u[1] + s * u[0], c + vz * u[2]}}};
}

/// Sets `axis` to length 1, where it is not that to rounding; false when it has no direction.
inline bool makeUnit(Vec3& axis) {
  return std::fabs(detail::dot(axis, axis) - 1.0) <= 4e-16 || detail::normalise(axis);
}

/// Rotation about the direction `axis`, right-handed, by the angle of which `turn` is made.
///
/// @source  Rodrigues: R = cos(a) I + sin(a) [u]x + (1 - cos(a)) u u^T.
/// @errors  `axis` of any length, normalised here; a null or non-finite axis gives the identity.
/// @cost    Inline: the walk along a chain is made of it.
inline Mat3 rotationMatrix(const Vec3& axis, const SinCos& turn) {
  Vec3 u = axis;
  if (!makeUnit(u)) return {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  return aboutUnit(u, turn);
}

/// The same by `angle` radians.
inline Mat3 rotationMatrix(const Vec3& axis, double angle) {
  return rotationMatrix(axis, sinCos(angle));
}

}  // namespace korvo::rotations
