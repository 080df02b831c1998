#include <algorithm>
#include <cmath>

#include "toolkit/solve/Core.h"

namespace korvo {
namespace {

constexpr double kTurn = 360.0;
constexpr double kMostTurns = 100.0;

}  // namespace

std::array<double, 2> listedRange(const Joint& joint, double start) {
  if (joint.max - joint.min <= kMostTurns * kTurn) return {joint.min, joint.max};
  return {std::max(joint.min, start - kTurn), std::min(joint.max, start + kTurn)};
}

TurnRange turnsOf(const Joint& joint, double degrees, double start, Limits limits) {
  if (limits == Limits::ignored && !joint.isLocked) {
    return {degrees + kTurn * std::round((start - degrees) / kTurn), 1};
  }
  const auto [low, high] = listedRange(joint, start);
  const double first = std::ceil((low - slackOf(joint) - degrees) / kTurn);
  const double last = std::floor((high + slackOf(joint) - degrees) / kTurn);
  return {degrees + kTurn * first, last < first ? 0 : static_cast<int>(last - first) + 1};
}

}  // namespace korvo
