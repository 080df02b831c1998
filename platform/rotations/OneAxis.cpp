#include "platform/rotations/Solvers.h"

#include <cmath>
#include <optional>

#include "platform/rotations/Angles.h"
#include "platform/rotations/Vec3.h"

namespace korvo::rotations {

using namespace detail;

std::optional<double> oneAxis(const Vec3& from, const Vec3& to, const Vec3& axis) {
  Vec3 f = from;
  Vec3 t = to;
  Vec3 k = axis;
  if (!normalise(f) || !normalise(t) || !normalise(k)) return {};
  // Both square to the axis. Rounding turns a short one further, but its tip no further aside.
  const Vec3 p = cross(k, f);
  const Vec3 q = cross(k, t);
  if (length(p) <= kOnAxis || length(q) <= kOnAxis) {
    return length(t - f) <= kOnAxis ? std::optional(0.0) : std::nullopt;
  }
  return toRadians(wrapped(toSteps(std::atan2(dot(k, cross(p, q)), dot(p, q)))));
}

}  // namespace korvo::rotations
