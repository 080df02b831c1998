#pragma once

#include <numbers>

namespace zkin {

/// Values of external machines (mm or degrees) that differ by less are equal, and a value passes
/// its range by this: what the external library's own rounding of ranges and angles leaves.
inline constexpr double kPositionEqual = 1e-4;

/// The nearest solution is brought this near (degrees) to the start: less than a full turn by what
/// counts as equal, so that an angle a turn away becomes the start's. Deliberate: not half a turn
/// (test: WholeTurns.BringNearTheStartWithinAFullTurn).
inline constexpr double kNearStart = 359.9999;

/// Largest changes (degrees) that differ by less are the same, and the earlier position stays: far
/// above the rounding of the way to radians and back, which differs between mirror images.
inline constexpr double kSameChange = 1e-9;

inline constexpr double kFullTurn = 360.0;

/// Turns to be compared one by one at the end of a fold: less than two are left, and one may be
/// lost to rounding.
inline constexpr int kLastTurns = 3;

inline constexpr double kPi = 3.141592653589793;
static_assert(kPi == std::numbers::pi);

/// From left to right: a multiplication by the quotient rounds differently.
constexpr double degreesOf(double radians) { return radians * 180.0 / kPi; }

}  // namespace zkin
