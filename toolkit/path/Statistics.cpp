#include "toolkit/path/Statistics.h"

#include <algorithm>
#include <cmath>

#include "toolkit/model/Walk.h"

namespace korvo {
namespace {

/// A choice that one of both does not have is not changed.
bool differs(std::int8_t a, std::int8_t b) { return a * b < 0; }

bool isOtherSide(const Branch& a, const Branch& b) {
  return differs(a.shoulder, b.shoulder) || differs(a.elbow, b.elbow) || differs(a.wrist, b.wrist);
}

PathBreak::Kind kindOf(const PathAxis& axis, double by, const Branch& a, const Branch& b) {
  const double turns = axis.isTurn ? kFullTurn * std::round(by / kFullTurn) : 0.0;
  if (turns != 0.0 && std::abs(by - turns) <= axis.largestStep) return PathBreak::Kind::unwound;
  return isOtherSide(a, b) ? PathBreak::Kind::sideChanged : PathBreak::Kind::step;
}

}  // namespace

const char* toString(PathBreak::Kind kind) {
  static constexpr const char* kNames[] = {"unwound", "side-changed", "step"};
  return kNames[static_cast<std::size_t>(kind)];
}

PathBreak breakBetween(const PathAxes& axes, const PathPosition& from, const PathPosition& to) {
  PathBreak found;
  found.target = to.target;
  found.before = from.target;
  // An axis is named whatever rounding, far from zero, leaves of what it exceeds.
  double most = -std::numeric_limits<double>::infinity();
  for (const PathAxis& axis : axes.all()) {
    const double by = std::abs(to.values[axis.at()] - from.values[axis.at()]);
    const double over = by - axis.largestStep;
    if (!(over > most)) continue;
    most = over;
    found.place = axis.place;
    found.by = by;
    found.kind = kindOf(axis, by, from.branch, to.branch);
  }
  return found;
}

Statistics::Statistics(const PathAxes& axes, const ToolpathOptions& options, ToolpathReport& report)
    : axes_(axes), options_(options), report_(report) {
  if (!options.start) return;
  last_ = *options.start;
  hasLast_ = true;
}

void Statistics::take(const PathPosition& position) {
  ++report_.positions;
  if (!report_.first) report_.first = position;
  report_.added += position.isAdded() ? 1 : 0;
  for (const PathAxis& axis : axes_.all()) {
    AxisTravel& travel = report_.axes[axis.at()];
    const double value = position.values[axis.at()];
    if (hasLast_) travel.travel += std::abs(value - last_[axis.at()]);
    travel.low = std::min(travel.low, value);
    travel.high = std::max(travel.high, value);
  }
  last_ = position.values;
  hasLast_ = true;
  if (position.margin < report_.margin) {
    report_.margin = position.margin;
    report_.marginPlace = position.marginPlace;
    report_.marginTarget = position.target;
  }
  if (!position.isAdded()) takeSingular(position);
}

void Statistics::takeSingular(const PathPosition& position) {
  const SingularDistance& here = position.singular;
  SingularDistance& least = report_.nearestSingular;
  const double rad = options_.singularDegrees * kDegToRad;
  if (here.directionRad < rad || here.elbowRad < rad || here.shoulderMm < options_.singularMm) {
    ++report_.singularTargets;
  }
  if (std::min(here.directionRad, here.elbowRad) < std::min(least.directionRad, least.elbowRad)) {
    report_.nearestSingularTarget = position.target;
  }
  least.directionRad = std::min(least.directionRad, here.directionRad);
  least.elbowRad = std::min(least.elbowRad, here.elbowRad);
  least.shoulderMm = std::min(least.shoulderMm, here.shoulderMm);
}

void Statistics::takeStep(const PathPosition& from, const PathPosition& to) {
  for (const PathAxis& axis : axes_.all()) {
    AxisTravel& travel = report_.axes[axis.at()];
    const double by = std::abs(to.values[axis.at()] - from.values[axis.at()]);
    if (!(by > travel.largestStep)) continue;
    travel.largestStep = by;
    travel.largestStepTarget = to.target;
  }
}

}  // namespace korvo
