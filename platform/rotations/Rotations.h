#pragma once

#include <array>

/// Closed forms of spatial geometry on plain doubles: no class of any library in the interface, so
/// that every caller can wrap them in its own types. Pure functions; nothing throws or allocates.
namespace korvo::rotations {

/// A point or a direction.
using Vec3 = std::array<double, 3>;

/// Unit axes are parallel when |a x b|^2 is below this (dimensionless, about 0.18 degrees): the
/// point beyond which the foot of a common normal is further than about 300 times the distance of
/// the given points, so parallel is the better description of a real machine.
inline constexpr double kParallelCrossSq = 1e-5;

/// Parallel lines closer than this are one line (mm): the finest offset that a machine maker
/// states is a hundred times larger.
inline constexpr double kCoincidentDistance = 1e-5;

/// Rows of a 3x3 rotation matrix.
using Mat3 = std::array<Vec3, 3>;

/// How two lines lie to each other.
enum class LinePair {
  skew,        ///< One common perpendicular (meeting lines included).
  parallel,    ///< Parallel or anti-parallel, apart.
  coincident,  ///< The same line, in either sense.
  undefined,   ///< A null direction or a value that is not finite.
};

/// The common perpendicular of two lines.
struct CommonNormal {
  LinePair kind = LinePair::undefined;
  Vec3 normal{};  ///< skew: unit(zA x zB); parallel: unit vector from line A to line B.
  Vec3 footA{};   ///< skew: foot on A; parallel: foot of pB on A.
  Vec3 footB{};   ///< skew: foot on B; parallel: foot of pA on B.
};

/// Common perpendicular of line A (point pA, direction zA) and line B (pB, zB).
///
/// @units   Points in mm, directions of any length (normalised here).
/// @source  With u = zA x zB and w = pB - pA the closest points lie at pA + s zA and pB + t zB,
///          s = (w x zB) . u / |u|^2, t = (w x zA) . u / |u|^2: dotting pA + s zA + c u = pB + t zB
///          with the vectors orthogonal to two of its three directions.
/// @errors  skew/parallel by kParallelCrossSq, parallel/coincident by kCoincidentDistance. Feet
///          carry a relative error of about 1e-16 / |u|^2 times |w|, at most 1e-11 |w|.
CommonNormal commonNormal(const Vec3& zA, const Vec3& pA, const Vec3& zB, const Vec3& pB);

}  // namespace korvo::rotations
