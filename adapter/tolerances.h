#pragma once

#include <numbers>

namespace zkin {

/// Values of external machines (mm or degrees) that differ by less are equal, and a value passes
/// its range by this: what the external library's own rounding of ranges and angles leaves.
inline constexpr double kPositionEqual = 1e-4;

/// The nearest solution is brought this near (degrees) to the start: less than a full turn by what
/// counts as equal, so that an angle a turn away becomes the start's.
inline constexpr double kNearStart = 359.9999;

inline constexpr double kFullTurn = 360.0;

inline constexpr double kDegreesOfRadian = 180.0 / 3.141592653589793;
static_assert(kDegreesOfRadian == 180.0 / std::numbers::pi);

}  // namespace zkin
