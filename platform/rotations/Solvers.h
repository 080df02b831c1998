#pragma once

#include <array>
#include <optional>

#include "platform/rotations/Rotations.h"

/// Solvers: which turns carry one direction onto another, which displacements add up to a vector.
///
/// The turns come on a grid of 1e-12 degrees (1.7e-14 rad), in (-pi, pi], never as -0, and are
/// added up on it. So half a turn is always +pi and no turn is 0, whatever rounding says; the turns
/// to mirror images are equal in every bit, and so are turns that geometry makes equal in other
/// ways, unless they stand within rounding of the middle between two steps, as no decimal angle
/// does.
namespace korvo::rotations {

/// Stands for an angle that has no effect. No angle in radians comes near it.
inline constexpr double kFreeAngle = -1000.0;

/// A direction within this of an axis (rad) lies on it, and two axes so close are parallel: some
/// hundred roundings, so that directions which a machine carried around still count, and a tenth
/// of the residual that is promised.
inline constexpr double kOnAxis = 1e-13;

/// A direction that misses the reachable ones by no more than this (rad) is taken for the nearest
/// of them: 1e-6 mm at the end of a tool of a metre, and what nine printed decimals cost.
inline constexpr double kReach = 1e-9;

/// Two solutions whose angles differ by less (rad) are one: near the edge of the reachable
/// directions the two branches differ by the square root of the distance to the edge, so this is
/// what rounding makes of an edge.
inline constexpr double kSameSolution = 1e-7;

/// Sums of angles within this (rad) of each other are equally near.
inline constexpr double kSameCost = 1e-9;

/// Directions whose volume is no larger than this share of the product of their lengths span no
/// space: the displacements would be ten thousand million times what they add up to.
inline constexpr double kDependent = 1e-10;

/// The turn about `axis` that brings `from` as near to `to` as its cone about the axis allows.
///
/// @units   Radians in (-pi, pi]. Directions of any length.
/// @source  Nearest on the cone is the direction in the half plane of axis and target, so the
///          angle is the one from axis x from to axis x to.
/// @errors  None when a direction is null or not finite, or when exactly one of `from` and `to` or
///          opposite ones lie on the axis (kOnAxis): every angle is as good then. Equal directions
///          on the axis give 0. When `to` lies on the cone the turned `from` misses it by at most
///          1e-14 rad, else by the angle between `to` and the cone.
std::optional<double> oneAxis(const Vec3& from, const Vec3& to, const Vec3& axis);

/// Turns about two axes: first a2 about axis2, then a1 about axis1.
struct TwoAngles {
  double a1 = 0.0;
  double a2 = 0.0;

  bool operator==(const TwoAngles&) const = default;
};

/// None, one or two solutions, the one with the smaller angles first.
struct TwoAnglesList {
  int count = 0;
  std::array<TwoAngles, 2> solutions{};

  const TwoAngles* begin() const { return solutions.data(); }
  const TwoAngles* end() const { return solutions.data() + count; }
};

/// All pairs with R(axis1, a1) * R(axis2, a2) * from = to.
///
/// @frames  All four directions in one frame; axis1 is the one nearer the root of the chain, and
///          axis2 is given as it stands before axis1 turns.
/// @units   Radians in (-pi, pi]. Directions of any length.
/// @shape   Smaller |a1| + |a2| first; when these agree within kSameCost, the larger a2 first (of
///          mirror images the one with a2 >= 0). Two pairs that differ by less than kSameSolution
///          in both angles, full turns aside, are one, the one between them.
///          kFreeAngle stands in one pair alone: as a2 when `from` lies on axis2, as a1 when `to`
///          lies on axis1. Parallel axes give (angle, kFreeAngle), all of the turn with the first.
///          Both are free when the axes are parallel and both directions lie on them.
/// @source  Let u be `from` after the first turn: as far from axis2 as `from` is (angle f) and as
///          far from axis1 as `to` is (angle t). With the angle w between the axes that makes a
///          triangle on the sphere with sides t, f, w, whose corner angles follow from the sines of
///          s = (t + f + w)/2, s - t, s - f, s - w (Todhunter, Spherical Trigonometry, 1886,
///          art. 45); it lies on either side of the plane of the axes. Murray, Li, Sastry, A
///          Mathematical Introduction to Robotic Manipulation, 1994, ch. 3, treats the same task as
///          Paden-Kahan subproblem 2. The corner angles are used here because they keep their
///          meaning where a formula for u itself divides by the squared sine of w or takes the root
///          of a difference: the four sines are sums of products of half-angle sines, each within
///          1e-15, and moving the sides by that much moves `from` and `to` by as much and no more.
/// @errors  None when a direction is null or not finite, or when `to` misses the reachable
///          directions by more than kReach. The turned `from` misses `to` by at most 4e-13 rad (by
///          4e-14 away from the singular directions, where kOnAxis adds to it), plus the miss of an
///          unreachable target. An angle itself is no surer than rounding over the sine of the
///          direction's angle to the axis, and at the edge of the reach than its square root.
/// @cost    Four arc tangents, fourteen square roots; no allocation, no iteration.
TwoAnglesList twoAxes(const Vec3& from, const Vec3& to, const Vec3& axis1, const Vec3& axis2);

/// The displacements x, y, z with x*a1 + y*a2 + z*a3 = d.
///
/// @units   d in mm; directions of any length; the displacements in lengths of their direction (mm
///          for unit directions).
/// @source  Cramer's rule with triple products, then once more for what is missing.
/// @errors  None when |a1 . (a2 x a3)| <= kDependent |a1||a2||a3|, when a value is not finite or a
///          displacement would not be. The sum misses d by about 1e-15 of its longest term.
std::optional<Vec3> threeDirections(const Vec3& d, const Vec3& a1, const Vec3& a2, const Vec3& a3);

}  // namespace korvo::rotations
