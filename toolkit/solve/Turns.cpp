#include <algorithm>
#include <cmath>

#include "toolkit/solve/Core.h"

namespace korvo {
namespace {

constexpr double kTurn = 360.0;
constexpr double kMostTurns = 100.0;

}  // namespace

double onLimit(const Joint& joint, double value) {
  if (value < joint.min && joint.min - value <= kOnLimit) return joint.min;
  if (value > joint.max && value - joint.max <= kOnLimit) return joint.max;
  return value;
}

TurnRange turnsOf(const Joint& joint, double degrees, double start, Limits limits) {
  if (limits == Limits::ignored) {
    return {degrees + kTurn * std::round((start - degrees) / kTurn), 1};
  }
  double low = joint.min;
  double high = joint.max;
  if (!(high - low <= kMostTurns * kTurn)) {
    low = std::max(low, start - kTurn);
    high = std::min(high, start + kTurn);
  }
  const double first = std::ceil((low - kOnLimit - degrees) / kTurn);
  const double last = std::floor((high + kOnLimit - degrees) / kTurn);
  return {degrees + kTurn * first, last < first ? 0 : static_cast<int>(last - first) + 1};
}

}  // namespace korvo
