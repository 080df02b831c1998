#pragma once

#include <vector>

#include "platform/zgeo/Export.h"
#include "platform/zgeo/UVec2d.h"
#include "platform/zgeo/UVec3d.h"

namespace zgeo {

/// The geometric solvers that the kinematics call. Pure functions, no state, no trace.
///
/// Mind the codes: the two conical solvers return non-zero when solved, the others zero.
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

  /// The turn about `axis` that brings the direction `from` as near to the direction `to` as the
  /// cone of `from` about `axis` allows.
  ///
  /// @units   Radians in (-pi, pi]; directions of any length, normalised here.
  /// @param[out] angle  Untouched when there is no solution.
  /// @return  Non-zero when solved, also when `to` is off the cone; 0 when a direction is null or
  ///          not finite, or when `from` or `to` lies on the axis (within 1e-13 rad) and the two
  ///          are not equal. Equal directions are solved by the angle 0.
  /// @source  platform/rotations, `oneAxis`: derivation and error bound.
  static int _solveRot_conical(const UVec3d& from, const UVec3d& to, const UVec3d& axis,
                               double& angle);

  /// All pairs of turns, first by sols[i].y about `axis2`, then by sols[i].x about `axis1`, that
  /// together carry the direction `from` onto the direction `to`.
  ///
  /// @frames  axis1 is nearer the root of the chain; axis2 as it stands before
  ///          axis1 turns.
  /// @units   Radians in (-pi, pi]; directions of any length, normalised here.
  /// @param[out] sols  Emptied first (its storage is kept, so a warm list costs no allocation),
  ///              then one or two pairs: the one with the smaller |x| + |y| first; when these agree
  ///              within 1e-9, the larger y first, that is of mirror images the one with y >= 0.
  ///              Pairs closer than 1e-7 rad are one.
  ///              An angle without effect is -1000: y when `from` lies on axis2, x when `to` lies
  ///              on axis1 (one pair then). Parallel axes give (angle, -1000), and (-1000, -1000)
  ///              when both directions lie on them.
  /// @return  Non-zero when solved; 0, with an empty list, when a direction is null or not finite,
  ///          or when `to` misses the directions that can be reached by more than 1e-9 rad.
  /// @source  platform/rotations, `twoAxes`: derivation, error bound (below 1e-12 rad).
  static int _solveRot_conical(const UVec3d& from, const UVec3d& to, const UVec3d& axis1,
                               const UVec3d& axis2, std::vector<UVec2d>& sols);

  /// Solves xyz.x * a1 + xyz.y * a2 + xyz.z * a3 = d.
  ///
  /// @units   d in mm; directions of any length; displacements in lengths of their direction.
  /// @param[out] xyz  Null when there is no solution. May be `d` itself.
  /// @return  0 when solved; -1 when the directions are linearly dependent (volume at most 1e-10 of
  ///          the product of their lengths) or a value is not finite.
  /// @source  platform/rotations, `threeDirections`.
  static int _solveXYZ(const UVec3d& d, const UVec3d& a1, const UVec3d& a2, const UVec3d& a3,
                       UVec3d& xyz);
};

}  // namespace zgeo
