#include "toolkit/answer/Cones.h"

#include <algorithm>
#include <cmath>

using zgeo::UVec3d;

namespace korvo {

UVec3d Cone::nearest(const UVec3d& direction, double inside) const {
  constexpr double kAlong = 1e-7;
  const UVec3d along = axis.normalised();
  const UVec3d unit = direction.normalised();
  UVec3d across = unit - along * (unit * along);
  if (across.norm() < kAlong) {
    across = along ^ (std::abs(along.x) < 0.5 ? UVec3d(1, 0, 0) : UVec3d(0, 1, 0));
  }
  const double margin = std::min(inside, (band.high - band.low) / 2);
  const double angle = std::clamp(angleBetween(along, unit), band.low + margin, band.high - margin);
  return along * std::cos(angle) + across.normalised() * std::sin(angle);
}

std::vector<Cone> conesOf(const std::vector<TurningAxis>& axes, const UVec3d& tool) {
  std::vector<Cone> cones;
  for (auto a = axes.begin(); a != axes.end(); ++a) {
    for (auto b = a + 1; b != axes.end(); ++b) {
      const Band band =
          bandOf(angleBetween(a->direction, b->direction), angleBetween(b->direction, tool));
      cones.push_back({band, a->direction, {a->place, b->place}});
    }
  }
  if (axes.size() == 1) {
    const UVec3d& axis = axes.front().direction;
    cones.push_back({coneOf(angleBetween(axis, tool)), axis, {axes.front().place}});
  }
  return cones;
}

const Cone& nearestCone(const std::vector<Cone>& cones, const UVec3d& direction) {
  return *std::min_element(cones.begin(), cones.end(), [&](const Cone& a, const Cone& b) {
    return a.missing(direction) < b.missing(direction);
  });
}

}  // namespace korvo
