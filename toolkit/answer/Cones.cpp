#include "toolkit/answer/Cones.h"

#include <algorithm>

#include "toolkit/model/Walk.h"

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

Pointing pointingOf(const JointChain& chain, const Values& values, const UVec3d& direction) {
  std::vector<TurningAxis> axes;
  zgeo::UMatrix placed;
  for (const Joint& joint : chain.joints) {
    if (joint.motion == Joint::Motion::turn && joint.place >= 0 && !joint.isLocked) {
      axes.push_back({joint.place, joint.direction});
      placed.applyDir(axes.back().direction);
    }
    moveBy(joint, valueOf(joint, values), placed);
  }
  const UVec3d tool = chain.pose(values).direction;
  if (axes.empty()) return {{}, tool, angleBetween(tool, direction)};
  const std::vector<Cone> cones = conesOf(axes, tool);
  const Cone& cone = nearestCone(cones, direction);
  return {cone, cone.nearest(direction), cone.missing(direction)};
}

}  // namespace korvo
