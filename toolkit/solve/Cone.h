#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/zgeo/UVec3d.h"

namespace korvo {

/// The angle between two directions of any length, exact near 0 and near a half turn.
inline double angleBetween(const zgeo::UVec3d& a, const zgeo::UVec3d& b) {
  return std::atan2((a ^ b).norm(), a * b);
}

/// The angles (radians) from a rotary axis at which a tool can point.
struct Band {
  double low = 0.0;
  double high = 0.0;

  /// What is missing to an angle outside the band; 0 inside.
  double missing(double angle) const { return std::max({low - angle, angle - high, 0.0}); }

  /// Of an angle inside, how far the nearer edge is; 0 outside.
  double toEdge(double angle) const { return std::max(std::min(angle - low, high - angle), 0.0); }
};

/// A tool at `angle` from the axis describes a cone.
inline Band coneOf(double angle) { return {angle, angle}; }

/// A tool at the angle `tool` from a second axis, itself at `axes` from the first: the triangle of
/// the three directions on the sphere closes for angles from the difference of its other two sides
/// to their sum, which is counted back beyond a half turn.
inline Band bandOf(double axes, double tool) {
  const double sum = axes + tool;
  return {std::abs(axes - tool), std::min(sum, 2 * std::numbers::pi - sum)};
}

/// The direction nearest to `direction` whose angle from `axis` is in the band, `inside` (radians)
/// from its edges: at the same heading about the axis, at that of `other` where it lies along the
/// axis. Of length 1.
inline zgeo::UVec3d nearestIn(const Band& band, const zgeo::UVec3d& axis,
                              const zgeo::UVec3d& direction, const zgeo::UVec3d& other,
                              double inside = 0.0) {
  constexpr double kAlong = 1e-7;
  const zgeo::UVec3d along = axis.normalised();
  const zgeo::UVec3d unit = direction.normalised();
  zgeo::UVec3d across = unit - along * (unit * along);
  if (across.norm() < kAlong) across = other - along * (other * along);
  if (across.norm() < kAlong) {
    across = along ^ (std::abs(along.x) < 0.5 ? zgeo::UVec3d(1, 0, 0) : zgeo::UVec3d(0, 1, 0));
  }
  const double margin = std::min(inside, (band.high - band.low) / 2);
  const double angle = std::clamp(angleBetween(along, unit), band.low + margin, band.high - margin);
  return along * std::cos(angle) + across.normalised() * std::sin(angle);
}

}  // namespace korvo
