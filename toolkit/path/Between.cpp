#include "toolkit/path/Between.h"

#include <algorithm>
#include <cmath>

#include "toolkit/path/Margins.h"
#include "toolkit/solve/Core.h"

namespace korvo {
namespace {

/// A tool that moves by less than this share of the tolerance stands.
constexpr double kStands = 1e-3;

/// The longest step is searched for to this share of its length.
constexpr double kStepShare = 0.02;

/// A rotary axis that goes so far (degrees) is named before the linear ones, which follow it.
constexpr double kTurns = 0.1;

constexpr int kMostTries = 60;
constexpr int kMostStanding = 4;             // on one way
constexpr std::size_t kMostAdded = 100'000;  // on one way
constexpr std::size_t kBetweenLooks = 1000;  // positions

/// Axes that stand where a rule has them between targets stand where the targets have them.
SolverOptions followingOptions(SolverOptions options) {
  options.toolTurns = 1;
  for (Redundancy& redundancy : options.redundancy) {
    if (redundancy.rule == Redundancy::Rule::sampled) redundancy.rule = Redundancy::Rule::start;
  }
  return options;
}

/// The share of a way on which the tool stands.
double standingShare(const PathTarget& from, const PathTarget& to, const Tolerance& tolerance) {
  const double mm = from.target.tip.distanceTo(to.target.tip);
  const zgeo::UVec3d a = from.target.direction.normalised(), b = to.target.direction.normalised();
  const double degrees = std::atan2((a ^ b).norm(), a * b) * kRadToDeg;
  return std::min(kStands / std::max(mm / tolerance.mm, degrees / tolerance.degrees), 0.5);
}

}  // namespace

struct Between::Task {
  const PathTarget& before;
  const PathTarget& target;
  std::size_t index;
  const PathPosition& from;
  const PathPosition& to;
  Added& out;
  PathWay way;
  Deviation deviation;
  double standing;
  std::vector<Solution> found;

  Values line(double share) const {
    Values values = from.values;
    for (std::size_t i = 0; i < values.size(); ++i) {
      values[i] += (to.values[i] - from.values[i]) * share;
    }
    return values;
  }
};

struct Between::Step {
  double length = 0.0;  ///< 0: there is none.
  PathPosition end;
};

Between::Between(const Machine& machine, const ToolpathOptions& options, const PathAxes& axes)
    : tolerance_(*options.tolerance),
      axes_(axes),
      solver_(axes.unwound(machine), followingOptions(options.solver)) {}

bool Between::add(const PathTarget& before, const PathTarget& target, std::size_t index,
                  const PathPosition& from, const PathPosition& to, const GoesOn& goesOn,
                  Added& out) const {
  const PathWay way(before.target, target.target);
  Task task{before,
            target,
            index,
            from,
            to,
            out,
            way,
            {solver_.chain(), way, tolerance_},
            standingShare(before, target, tolerance_),
            {}};
  return fill(task, goesOn);
}

bool Between::fill(Task& task, const GoesOn& goesOn) const {
  Values at = task.from.values;
  const std::size_t first = task.out.positions.size(), standing = task.out.standing.size();
  for (double begin = 0.0; begin < 1.0;) {
    const Deviation::Verdict whole = task.deviation.judge(at, task.to.values);
    if (whole.isKept) return true;
    const bool isEndless = task.out.positions.size() - first >= kMostAdded;
    const Step step =
        isEndless || !task.way.hasShortestTurn() ? Step{} : longest(task, at, begin, whole.share);
    if (step.length > 0) {
      at = step.end.values;
      begin = step.end.way;
      task.out.positions.push_back(step.end);
      const bool isLook = task.out.positions.size() % kBetweenLooks == 0;
      if (isLook && !goesOn()) return false;
      continue;
    }
    // Where no turn is the shortest there is no way to be on again before its end.
    const bool isLast = isEndless || !task.way.hasShortestTurn() ||
                        task.out.standing.size() - standing + 1 >= kMostStanding;
    stand(task, isLast, at, begin);
  }
  return true;
}

/// The whole rest of the way is known to be too long, and by how much.
Between::Step Between::longest(Task& task, const Values& from, double begin, double share) const {
  Step best;
  double tooLong = 1.0 - begin, keptShare = 0.0;
  for (int i = 0; i < kMostTries && tooLong > task.standing; ++i) {
    if (best.length > 0 && tooLong - best.length < kStepShare * tooLong) break;
    // A step's miss grows with its square.
    double length = best.length > 0 ? best.length / std::sqrt(std::max(keptShare, 1e-3)) * 0.995
                                    : tooLong * std::sqrt(0.95 / std::clamp(share, 1.2, 400.0));
    const double low = best.length + kStepShare / 2 * (tooLong - best.length);
    if (!(length > low && length < tooLong)) length = (best.length + tooLong) / 2;
    const auto end = at(task, begin + length);
    const auto verdict = end ? task.deviation.judge(from, end->values) : Deviation::Verdict{};
    if (verdict.isKept) {
      best = {length, *end};
      keptShare = verdict.share;
    } else {
      tooLong = length;
      share = end ? verdict.share : 4.0;
    }
  }
  return best;
}

/// No step is short enough: the axes turn while the tool stands, and the way goes on behind.
void Between::stand(Task& task, bool isLast, Values& at, double& begin) const {
  const double behind = begin + 2 * task.standing;
  const auto next = behind < 1.0 && !isLast ? this->at(task, behind) : std::nullopt;
  PathPosition end = next.value_or(task.to);
  PathStanding standing{task.index, begin, next ? behind : 1.0, -1, 0.0};
  for (const PathAxis& axis : axes_.all()) {
    const double by = std::abs(end.values[axis.at()] - at[axis.at()]);
    if (!axis.isTurn && standing.by >= kTurns) break;  // linear axes come last
    if (!(by > standing.by)) continue;
    standing.place = axis.place;
    standing.by = by;
  }
  // Where no axis moves nothing is waited for: the tolerance is below rounding.
  if (standing.place >= 0) task.out.standing.push_back(standing);
  begin = next ? end.way : 1.0;
  at = end.values;
  if (!next) return;
  end.isAfterBreak = true;
  task.out.positions.push_back(end);
}

/// The position on the way that is nearest to the straight line of the axes. Where both ends are on
/// one side it is on that, too: beside a pole the other one may be nearer for a while.
std::optional<PathPosition> Between::at(Task& task, double way) const {
  const Values line = task.line(way);
  solver_.solve(task.way.at(way), axes_.unwound(line), task.found);
  const Solution* best = nullptr;
  Values values{};
  double least = 0.0;
  bool isBestOnSide = false;
  for (const Solution& solution : task.found) {
    const bool isOnSide = task.from.branch == task.to.branch && solution.branch == task.to.branch;
    const Values here = turned(solution.values, line);
    double by = 0.0;
    for (const PathAxis& axis : axes_.all()) by += std::abs(here[axis.at()] - line[axis.at()]);
    if (best && (isBestOnSide != isOnSide ? isBestOnSide : by >= least)) continue;
    best = &solution;
    values = here;
    least = by;
    isBestOnSide = isOnSide;
  }
  if (!best) return std::nullopt;
  PathPosition position;
  position.target = task.index;
  position.way = way;
  position.values = values;
  position.branch = best->branch;
  position.singular = best->singular;
  position.feed = task.target.feed;
  takeMargin(axes_, position);
  return position;
}

/// With the wound axes at the turn inside their limits that is nearest to the line.
Values Between::turned(const Values& values, const Values& line) const {
  Values out = values;
  for (const PathAxis& axis : axes_.all()) {
    if (!axis.isWound) continue;
    double& value = out[axis.at()];
    value += kFullTurn * std::round((line[axis.at()] - value) / kFullTurn);
    while (value > axis.max + kOnLimit) value -= kFullTurn;
    while (value < axis.min - kOnLimit) value += kFullTurn;
    value = std::clamp(value, axis.min, axis.max);
  }
  return out;
}

}  // namespace korvo
