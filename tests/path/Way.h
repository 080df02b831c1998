#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

#include "toolkit/model/JointChain.h"
#include "toolkit/solve/Target.h"

namespace korvo::test {

/// How far a tool is from the way between two targets, by geometry of the test's own.
struct Way {
  Way(const Target& a, const Target& b)
      : from(a.tip), to(b.tip), first(a.direction.normalised()), last(b.direction.normalised()) {}

  static double angle(const zgeo::UVec3d& a, const zgeo::UVec3d& b) {
    return std::atan2((a ^ b).norm(), a * b) * 180 / std::numbers::pi;
  }

  double mm(const zgeo::UVec3d& tip) const {
    const zgeo::UVec3d line = to - from;
    const double length = line.norm();
    if (length == 0) return tip.distanceTo(from);
    const double along = std::clamp((tip - from) * line / length, 0.0, length);
    return tip.distanceTo(from + line * (along / length));
  }

  /// Off the arc of the shortest turn: by its latitude over the arc, else from the nearer end.
  double degrees(const zgeo::UVec3d& direction) const {
    const double ends = std::min(angle(direction, first), angle(direction, last));
    const zgeo::UVec3d pole = first ^ last;
    if (pole.norm() < 1e-12) return ends;
    const zgeo::UVec3d n = pole.normalised(), across = n ^ first;
    const double longitude =
        std::atan2(direction * across, direction * first) * 180 / std::numbers::pi;
    if (longitude < 0 || longitude > angle(first, last)) return ends;
    return std::abs(std::asin(std::clamp(direction * n, -1.0, 1.0))) * 180 / std::numbers::pi;
  }

  zgeo::UVec3d from, to, first, last;
};

/// The most that the tool leaves a way while all axes go straight from `a` to `b`, at `samples`
/// points, in shares of the tolerance.
inline double shareLeft(const JointChain& chain, const Way& way, const Values& a, const Values& b,
                        double mm, double degrees, int samples) {
  double most = 0.0;
  for (int i = 0; i <= samples; ++i) {
    Values at{};
    for (std::size_t k = 0; k < at.size(); ++k) at[k] = a[k] + (b[k] - a[k]) * i / samples;
    const ToolPose pose = chain.pose(at);
    most = std::max({most, way.mm(chain.tipOf(pose)) / mm, way.degrees(pose.direction) / degrees});
  }
  return most;
}

}  // namespace korvo::test
