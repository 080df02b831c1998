#pragma once

#include <cmath>
#include <numbers>

/// Angles as the solvers compute with them: a whole number of steps of 1e-12 degrees, held in a
/// double. Sums of such angles are exact, so that what is equal by geometry stays equal.
namespace korvo::rotations::detail {

inline constexpr double kHalfTurn = 180e12;

inline double toSteps(double radians) {
  return std::nearbyint(radians * (kHalfTurn / std::numbers::pi));
}

/// In (-kHalfTurn, kHalfTurn]; `steps` is at most a full turn off.
inline double wrapped(double steps) {
  if (steps > kHalfTurn) return steps - 2 * kHalfTurn;
  return steps <= -kHalfTurn ? steps + 2 * kHalfTurn : steps;
}

/// Half a turn is pi in every bit; adding 0 makes -0 a 0.
inline double toRadians(double steps) { return steps / kHalfTurn * std::numbers::pi + 0.0; }

}  // namespace korvo::rotations::detail
