#pragma once

#include "platform/zgeo/Export.h"
#include "platform/zgeo/UVec3d.h"

namespace zgeo {

/// The geometric solvers that the kinematics call. Pure functions, no state, no trace.
class KORVO_COLLISIONUTILS_API UAlgo {
 public:
  /// Common perpendicular of line A (through `pA` along `zA`) and line B (through `pB` along `zB`).
  ///
  /// @units   Points in mm; directions of any length, normalised here.
  /// @param[out] normal  Unit direction of the common perpendicular.
  /// @param[out] footA   Its foot on line A.
  /// @param[out] footB   Its foot on line B.
  /// @return  0   one common perpendicular: normal = unit(zA x zB), meeting lines too; feet on it.
  ///          -1  distinct parallel lines: normal = unit vector from line A to line B,
  ///              footA = foot of pB on A, footB = foot of pA on B.
  ///          -2  coincident lines: outputs untouched.
  ///          -3  a null direction or a value that is not finite: outputs untouched.
  /// @errors  Parallel when |zA x zB|^2 < 1e-5 of the unit directions (about 0.18 degrees);
  ///          coincident when, in addition, the distance is below 1e-5 mm.
  /// @source  Closest points of two lines; derivation in platform/rotations.
  static int _commonOrtho(const UVec3d& zA, const UVec3d& pA, const UVec3d& zB, const UVec3d& pB,
                          UVec3d& normal, UVec3d& footA, UVec3d& footB);
};

}  // namespace zgeo
