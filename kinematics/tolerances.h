#pragma once

#include <numbers>

namespace zkin {

/// Two machine positions are equal on an axis when they differ by less than this (mm or degrees):
/// finer than any control's smallest step.
inline constexpr double kValueEqual = 1e-5;

/// Unit directions are parallel when |a x b|^2 is below this (dimensionless, about 0.18 degrees).
inline constexpr double kParallelCrossSq = 1e-5;

/// A Denavit-Hartenberg X axis is unset while its squared length is at most this (it is 0 or 1).
inline constexpr double kUnsetXAxisSq = 1e-5;

/// Axes of a ball joint meet when their Denavit-Hartenberg offsets are below this (mm).
inline constexpr double kBallJointOffset = 1e-5;

/// What the two-axis solver gives for an angle without effect, and how near a given angle has to be
/// to mean that (radians; no solved angle comes near).
inline constexpr double kFreeAngle = -1000.0;
inline constexpr double kFreeAngleTolerance = 1e-5;

/// Joints 2 and 3 of an arm are square to the first and parallel to each other when the cosine and
/// the sine of their twists are below this.
inline constexpr double kArmShape = 1e-5;

/// Lengths below this (mm) leave the first joint of an arm without a second branch, or without any.
inline constexpr double kArmLength = 1e-5;

/// Angles further than this (radians) from where they should be are brought near in one step.
inline constexpr double kWrapLoop = 100.0;

/// Seeds and solutions of rotary axes are looked for within one turn either way (degrees).
inline constexpr double kSeedTurn = 360.0;

/// A tool tip is on its way when the square of its distance is at most this (mm^2).
inline constexpr double kTipErrorSq = 1e-10;

inline constexpr double kDegToRad = 0.017453292519943295;
inline constexpr double kRadToDeg = 57.29577951308232;
static_assert(kDegToRad == std::numbers::pi / 180.0);
static_assert(kRadToDeg == 180.0 / std::numbers::pi);

inline constexpr double kPi = 3.141592653589793;
inline constexpr double kHalfPi = 1.5707963267948966;
static_assert(kPi == std::numbers::pi);

/// Most axes that a machine position can hold.
inline constexpr int kMaxAxes = 12;

/// Chains up to this length are walked without allocating: five times the longest real one.
inline constexpr int kChainFixed = 64;

}  // namespace zkin
