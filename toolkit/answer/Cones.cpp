#include "toolkit/answer/Cones.h"

#include <algorithm>

using zgeo::UVec3d;

namespace korvo {

UVec3d Cone::nearest(const UVec3d& direction, double inside) const {
  return nearestIn(band, axis, direction, tool, inside);
}

std::vector<Cone> conesOf(const std::vector<TurningAxis>& axes, const UVec3d& tool) {
  std::vector<Cone> cones;
  for (auto a = axes.begin(); a != axes.end(); ++a) {
    for (auto b = a + 1; b != axes.end(); ++b) {
      const Band band =
          bandOf(angleBetween(a->direction, b->direction), angleBetween(b->direction, tool));
      cones.push_back({band, a->direction, {a->place, b->place}, tool});
    }
  }
  if (axes.size() == 1) {
    const UVec3d& axis = axes.front().direction;
    cones.push_back({coneOf(angleBetween(axis, tool)), axis, {axes.front().place}, tool});
  }
  return cones;
}

const Cone& nearestCone(const std::vector<Cone>& cones, const UVec3d& direction) {
  return *std::min_element(cones.begin(), cones.end(), [&](const Cone& a, const Cone& b) {
    return a.missing(direction) < b.missing(direction);
  });
}

}  // namespace korvo
