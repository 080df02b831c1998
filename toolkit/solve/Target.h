#pragma once

#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UVec3d.h"

namespace korvo {

/// A tool tip may miss its target by this (mm) and counts as there: a thousandth of the finest step
/// of any control, and a thousand times what rounding leaves on a machine of ten metres.
inline constexpr double kReachedMm = 1e-6;

/// A tool direction may miss its target by this (radians): 1e-5 mm at the end of a tool of a metre,
/// and ten times what the solvers let a direction lie off the reachable ones.
inline constexpr double kReachedRad = 1e-8;

/// Where the tip of the current tool shall be and which way the tool shall point.
struct Target {
  zgeo::UVec3d tip;        ///< mm
  zgeo::UVec3d direction;  ///< From tip to spindle, any length.
};

/// Where the tip shall be and how the tool shall be turned, about its own direction too.
struct FrameTarget {
  /// Rotation: that of `KMachine::getMatrix_H2T`, which is the identity at the zero position.
  /// Origin: the tool tip, mm.
  zgeo::UMatrix frame;
};

/// How far a position misses a target, computed forward from the position alone.
struct Residual {
  double pointMm = 0.0;
  double directionRad = 0.0;  ///< Of a frame the angle of the turn that is missing.

  bool isReached() const { return pointMm <= kReachedMm && directionRad <= kReachedRad; }
};

}  // namespace korvo
