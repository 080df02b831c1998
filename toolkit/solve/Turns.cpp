#include <algorithm>
#include <cmath>

#include "toolkit/solve/Core.h"

namespace korvo {
namespace {

constexpr double kTurn = 360.0;
constexpr double kMostTurns = 100.0;

/// Degrees: a value so far out does not say any more where in its turn the joint stands.
constexpr double kFarthest = 1e9;

}  // namespace

std::array<double, 2> listedRange(const Joint& joint, double start) {
  if (joint.max - joint.min <= kMostTurns * kTurn) return {joint.min, joint.max};
  const double near = std::clamp(start, -kFarthest, kFarthest);
  return {std::max(joint.min, near - kTurn), std::min(joint.max, near + kTurn)};
}

int turnCount(double first, double last) {
  const double more = (last - first) / kTurn;
  return more > -0.5 ? static_cast<int>(std::min(more, kMostTurns) + 1.5) : 0;
}

TurnRange turnsOf(const Joint& joint, double degrees, double start, Limits limits) {
  if (limits == Limits::ignored && !joint.isLocked) {
    return {degrees + kTurn * std::round((start - degrees) / kTurn), 1};
  }
  const auto [low, high] = listedRange(joint, start);
  const double first = kTurn * std::ceil((low - slackOf(joint) - degrees) / kTurn);
  const double last = kTurn * std::floor((high + slackOf(joint) - degrees) / kTurn);
  return {degrees + first, turnCount(first, last)};
}

}  // namespace korvo
