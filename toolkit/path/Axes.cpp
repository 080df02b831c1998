#include "toolkit/path/Axes.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "toolkit/solve/Core.h"

namespace korvo {
namespace {

/// Axes with fewer turns between their limits have them all.
constexpr double kMostTurns = 100.0;

/// So many combinations of turns have the others together.
constexpr double kManyTurns = 64.0;

constexpr double kDefaultStep = 90.0;  // degrees
constexpr double kFarthest = 1e9;      // degrees from zero, of a start

double startOf(const Joint& joint, const ToolpathOptions& options) {
  const double start = options.start ? (*options.start)[at(joint.place)] : 0.0;
  return joint.isLocked ? start : std::clamp(start, joint.min, joint.max);
}

/// The place of the last rotary axis where it turns the tool about itself: nothing else moves with
/// it, and it stays.
int idleOf(const JointChain& chain) {
  for (auto joint = chain.joints.rbegin(); joint != chain.joints.rend(); ++joint) {
    if (joint->motion == Joint::Motion::slide && joint->place >= 0) return -1;
    if (joint->motion != Joint::Motion::turn || joint->place < 0) continue;
    const zgeo::UVec3d axis = joint->direction.normalised();
    const zgeo::UVec3d arm = (chain.toolPoint - joint->point) ^ axis;
    const bool isOnLine = (axis ^ chain.toolDirection).norm() <= rotations::kOnAxis &&
                          arm.norm() <= 1e-12 * (1.0 + chain.toolPoint.norm());
    return isOnLine ? joint->place : -1;
  }
  return -1;
}

bool isWinding(const Joint& joint, const ToolpathOptions& options) {
  return joint.motion == Joint::Motion::turn && !joint.isLocked &&
         joint.max - joint.min > kFullTurn &&
         options.solver.redundancy[at(joint.place)].rule == Redundancy::Rule::start;
}

bool isLong(const PathAxis& axis) { return axis.max - axis.min > kMostTurns * kFullTurn; }

void wind(double start, PathAxis& axis) {
  axis.isWound = true;
  axis.isEndless = std::isinf(axis.min) && std::isinf(axis.max);
  axis.low = std::clamp(start - kFullTurn / 2, axis.min, axis.max - kFullTurn);
  axis.firstTurn = axis.min;
  axis.lastTurn = axis.max;
}

/// The more such axes the fewer turns about the start has each.
void shorten(const Values& start, std::vector<PathAxis>& axes) {
  const auto isCut = [](const PathAxis& a) { return a.isWound && !a.isEndless && isLong(a); };
  const auto count = static_cast<double>(std::count_if(axes.begin(), axes.end(), isCut));
  if (count == 0) return;
  const double turns = std::max(std::floor(std::pow(kManyTurns, 1 / count) + 1e-9), 2.0);
  for (PathAxis& axis : axes) {
    if (!isCut(axis)) continue;
    axis.firstTurn = std::max(axis.min, start[axis.at()] - turns / 2 * kFullTurn);
    axis.lastTurn = std::min(axis.max, start[axis.at()] + turns / 2 * kFullTurn);
  }
}

PathAxis axisOf(const Joint& joint, const ToolpathOptions& options, int idle) {
  const AxisWish& wish = options.axes[at(joint.place)];
  PathAxis axis;
  axis.place = joint.place;
  axis.isTurn = joint.motion == Joint::Motion::turn;
  axis.min = joint.min;
  axis.max = joint.max;
  axis.weight = wish.weight;
  axis.largestStep = wish.largestStep.value_or(
      axis.isTurn ? kDefaultStep : std::numeric_limits<double>::infinity());
  axis.margin = wish.margin;
  axis.marginCost = wish.marginCost;
  if (joint.place != idle && isWinding(joint, options)) wind(startOf(joint, options), axis);
  return axis;
}

}  // namespace

PathAxes::PathAxes(const JointChain& chain, const ToolpathOptions& options) {
  if (options.start) reference_ = *options.start;
  idle_ = idleOf(chain);
  for (const Joint& joint : chain.joints) {
    if (joint.place < 0) continue;
    axes_.push_back(axisOf(joint, options, idle_));
    reference_[at(joint.place)] = startOf(joint, options);
  }
  start_ = reference_;
  shorten(reference_, axes_);
  reference_ = unwound(reference_);
  const auto rank = [](const PathAxis& a) {
    return a.isWound && !a.isEndless ? 0 : a.isTurn ? 1 : 2;
  };
  std::sort(axes_.begin(), axes_.end(), [&](const PathAxis& a, const PathAxis& b) {
    return std::pair(rank(a), a.place) < std::pair(rank(b), b.place);
  });
  while (limited_ < axes_.size() && rank(axes_[limited_]) == 0) ++limited_;
}

bool PathAxes::isStartFar() const {
  return std::any_of(axes_.begin(), axes_.end(), [this](const PathAxis& axis) {
    return axis.isTurn && std::abs(start_[axis.at()]) > kFarthest;
  });
}

Machine PathAxes::unwound(const Machine& machine) const {
  Machine one = machine;
  for (int i = 0; i < one->getElemNumber(); ++i) {
    zkin::KMachineElem* const e = one->getElemByRank(i);
    for (const PathAxis& axis : axes_) {
      if (!axis.isWound || e->getValueIndex() != axis.place) continue;
      e->setMin(axis.low, true);
      e->setMax(axis.low + kFullTurn, true);
    }
  }
  return one;
}

Values PathAxes::unwound(Values values) const {
  for (const PathAxis& axis : axes_) {
    if (!axis.isWound) continue;
    double& value = values[axis.at()];
    value -= kFullTurn * std::floor((value - axis.low) / kFullTurn);
    // What ends a hair below the last turn begins the first.
    if (value >= axis.low + kFullTurn - 2 * kOnLimit) value = std::max(value - kFullTurn, axis.low);
  }
  return values;
}

double PathAxes::marginCost(const double* row) const {
  double cost = 0.0;
  for (const PathAxis& axis : axes_) {
    const double value = *row++;
    if (axis.margin <= 0.0) continue;
    const double margin = std::min(value - axis.min, axis.max - value);
    cost += std::max(axis.margin - margin, 0.0) * axis.marginCost;
  }
  return cost;
}

void PathAxes::setTurn(std::size_t k, Values& values) const {
  for (std::size_t i = limited_; i-- > 0;) {
    double& value = values[axes_[i].at()];
    const auto [first, count] = turnsOf(axes_[i], value);
    if (count == 0) return;  // a state that is not there
    value = valueAt(axes_[i], value, first, k % count);
    k /= count;
  }
}

std::size_t PathAxes::turnCount(const Values& values) const {
  std::size_t all = 1;
  for (std::size_t i = 0; i < limited_; ++i) all *= turnsOf(axes_[i], values[axes_[i].at()]).count;
  return all;
}

PathAxes::Turns PathAxes::turnsOf(const PathAxis& axis, double value) {
  const double first = std::ceil((axis.firstTurn - kOnLimit - value) / kFullTurn);
  const double last = std::floor((axis.lastTurn + kOnLimit - value) / kFullTurn);
  return {first, last < first ? 0 : static_cast<std::size_t>(last - first) + 1};
}

}  // namespace korvo
