#pragma once

#include <optional>
#include <vector>

#include "platform/zgeo/UVec3d.h"
#include "toolkit/model/JointChain.h"
#include "toolkit/solve/Cone.h"

namespace korvo {

/// A rotary axis that may turn the tool, as it stands.
struct TurningAxis {
  int place = -1;
  zgeo::UVec3d direction;
};

/// The directions that axes can turn a tool to.
struct Cone {
  Band band;                ///< Angles from `axis`.
  zgeo::UVec3d axis;        ///< The one nearer the part.
  std::vector<int> places;  ///< Of the axis, or of both.
  zgeo::UVec3d tool;        ///< As the tool stands.

  /// What is missing to a direction that is not reached (radians); 0 to others.
  double missing(const zgeo::UVec3d& direction) const {
    return band.missing(angleBetween(axis, direction));
  }

  /// The nearest of the directions to another one, `inside` (radians) from the edges: at the same
  /// heading about the axis, at the tool's where that direction lies along it. Of length 1.
  zgeo::UVec3d nearest(const zgeo::UVec3d& direction, double inside = 0.0) const;
};

/// What axes can do for the direction of a tool, the one nearest the part first: one a cone, two a
/// band, several the band of any two while the others stand.
std::vector<Cone> conesOf(const std::vector<TurningAxis>& axes, const zgeo::UVec3d& tool);

/// The one that misses the direction by the least. Ask only where there is one.
const Cone& nearestCone(const std::vector<Cone>& cones, const zgeo::UVec3d& direction);

/// Where a tool points that points as nearly to a direction as it can.
struct Pointing {
  std::optional<Cone> cone;  ///< None where nothing turns the tool.
  zgeo::UVec3d direction;
  double missingRad = 0.0;
};

/// By the rotary axes that are not locked, the others at `values`.
Pointing pointingOf(const JointChain& chain, const Values& values, const zgeo::UVec3d& direction);

}  // namespace korvo
