#include "toolkit/path/Advice.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "toolkit/path/Axes.h"
#include "toolkit/path/NearestFirst.h"
#include "toolkit/path/PartShift.h"

namespace korvo {
namespace {

using Kind = PathAdvice::Kind;
using Targets = std::span<const PathTarget>;
using zgeo::UVec3d;

constexpr double kTenth = 10.0;  // limits are said in tenths of a mm or degree
constexpr double kWide = 1e5;    // mm that a linear axis may go further to show where it would
constexpr double kMostWound =
    3600.0;                          // degrees more than an axis has, for which all turns are tried
constexpr double kDear = 1e3;        // what a mm or degree beyond the old limits costs there
constexpr double kSamePlace = 1e-6;  // mm or degrees
constexpr std::size_t kSamples = 64;        // targets on which much is tried
constexpr int kPlaces = 9;                  // of an axis that is the start's to choose
constexpr std::size_t kMostWanted = 9;      // of those beside them that reasons name
constexpr std::size_t kShortPath = 20'000;  // on which every place is tried in full

std::size_t at(int place) { return static_cast<std::size_t>(place); }

bool isMoving(const Joint& joint) { return joint.place >= 0 && !joint.isLocked; }

bool isFinite(const Joint& joint) { return std::isfinite(joint.min) && std::isfinite(joint.max); }

bool isTurn(const Joint& joint) { return joint.motion == Joint::Motion::turn; }

template <typename T>
std::vector<T> thinned(const std::vector<T>& all, std::size_t most) {
  if (all.size() <= most) return all;
  std::vector<T> some;
  some.reserve(most);
  for (std::size_t i = 0; i < most; ++i) some.push_back(all[i * (all.size() - 1) / (most - 1)]);
  return some;
}

Machine withLimits(const Machine& machine, int place, double min, double max) {
  Machine other = machine;
  for (int i = 0; i < other->getElemNumber(); ++i) {
    zkin::KMachineElem* const e = other->getElemByRank(i);
    if (e->getValueIndex() != place) continue;
    e->setMin(min, std::isfinite(min));
    e->setMax(max, std::isfinite(max));
  }
  return other;
}

/// By full turns so that as little as can be lies outside the limits.
double turnsInto(const Joint& joint, double low, double high) {
  if (!isTurn(joint)) return 0.0;
  const auto outside = [&](double by) {
    return std::max(joint.min - low - by, 0.0) + std::max(high + by - joint.max, 0.0);
  };
  double least = 0.0;
  const double middle = isFinite(joint) ? (joint.min + joint.max) / 2 : 0.0;
  const double nearest = std::round((middle - (low + high) / 2) / kFullTurn);
  for (const double turns : {nearest - 1, nearest, nearest + 1}) {
    if (outside(turns * kFullTurn) < outside(least)) least = turns * kFullTurn;
  }
  return least;
}

/// What leaves less, then what is easier to do.
bool isFirst(const PathAdvice& a, const PathAdvice& b) {
  if (a.after < b.after || b.after < a.after) return a.after < b.after;
  if (a.kind != b.kind) return a.kind < b.kind;
  return a.place != b.place ? a.place < b.place : a.more < b.more;
}

class Advisor {
 public:
  Advisor(const Machine& machine, const ToolpathOptions& options, Targets targets,
          const ToolpathReport& report, const ToolpathWatch& watch)
      : machine_(machine),
        options_(options),
        targets_(targets),
        report_(report),
        watch_(watch),
        chain_(JointChain::of(*machine)),
        before_(fitOf(report)) {
    options_.mostReasons = 0;
  }

  std::vector<PathAdvice> all() {
    if (report_.isStopped()) return {};
    if (report_.breakCount() > 0) {
      movePart();
      moveStart();
      for (const Joint& joint : chain_.joints) moveLimit(joint);
    }
    beginElsewhere();
    std::sort(all_.begin(), all_.end(), isFirst);
    return std::move(all_);
  }

 private:
  /// Nothing once it was stopped.
  std::optional<ToolpathReport> run(const Machine& machine, const ToolpathOptions& options,
                                    Targets targets, const PathSink& sink = {}) {
    if (isStopped_) return {};
    ToolpathReport report = Toolpath(machine, options).run(targets, sink, watch_);
    isStopped_ = report.isStopped();
    if (isStopped_) return {};
    return report;
  }

  bool look() {
    isStopped_ = isStopped_ || (watch_ && !watch_({0, 0, targets_.size()}));
    return !isStopped_;
  }

  /// Whether a run with a change leaves less; then it is kept.
  bool isKept(PathAdvice advice, const Machine& machine, const ToolpathOptions& options,
              Targets targets) {
    const auto report = run(machine, options, targets);
    if (!report) return false;
    advice.before = before_;
    advice.after = fitOf(*report);
    const bool isLess = advice.after.breaks + advice.after.unreached < report_.breakCount();
    if (isLess) all_.push_back(advice);
    return isLess;
  }

  bool isBetter(const ToolpathReport& report) const {
    return report.breakCount() < report_.breakCount();
  }

  // --- the part

  void movePart() {
    if (report_.unreached.empty()) return;
    std::optional<PartShift> shift = PartShift::of(chain_);
    if (!shift) return searchPart();
    Machine wide = machine_;
    constexpr double kNone = std::numeric_limits<double>::infinity();
    for (const int place : shift->places()) wide = withLimits(wide, place, -kNone, kNone);
    ToolpathOptions plain = options_;
    plain.tolerance.reset();
    const auto report = run(wide, plain, targets_, [&shift](const PathPosition& position) {
      shift->take(position.values);
    });
    if (!report || !isBetter(*report)) return;
    if (const auto by = shift->shortest()) tryShift(*by);
  }

  bool tryShift(const UVec3d& by) {
    std::vector<PathTarget> moved(targets_.begin(), targets_.end());
    for (PathTarget& target : moved) target.target.tip += by;
    PathAdvice advice;
    advice.kind = Kind::part;
    advice.shift = by;
    return isKept(advice, machine_, options_, moved);
  }

  /// The shortest shifts that reach all samples, until one does what it shall.
  void searchPart() {
    constexpr double kShifts[] = {25, 50, 100, 200, 400, 800};
    const Solver solver(machine_, options_.solver);
    const std::vector<Target> targets = samples();
    int tries = 3;
    for (const double by : kShifts) {
      for (const UVec3d& along : {UVec3d(1, 0, 0), UVec3d(-1, 0, 0), UVec3d(0, 1, 0),
                                  UVec3d(0, -1, 0), UVec3d(0, 0, 1), UVec3d(0, 0, -1)}) {
        if (!look() || tries == 0) return;
        if (reached(solver, targets, startOrZero(), along * by) < targets.size()) continue;
        --tries;
        if (tryShift(along * by)) return;
      }
    }
  }

  Values startOrZero() const { return options_.start.value_or(Values{}); }

  /// Some of all targets, and some of those without a position.
  std::vector<Target> samples() const {
    std::vector<std::size_t> all(targets_.size());
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
    std::vector<Target> some;
    for (const std::size_t i : thinned(all, kSamples)) some.push_back(targets_[i].target);
    for (const std::size_t i : thinned(report_.unreached, kSamples)) {
      some.push_back(targets_[i].target);
    }
    return some;
  }

  static std::size_t reached(const Solver& solver, const std::vector<Target>& targets,
                             const Values& from, const UVec3d& shift) {
    std::vector<Solution> found;
    std::size_t count = 0;
    for (Target target : targets) {
      target.tip += shift;
      solver.solve(target, from, found);
      count += found.empty() ? 0 : 1;
    }
    return count;
  }

  // --- the start

  void moveStart() {
    for (const Joint& joint : startJoints()) {
      std::vector<double> places = placesOf(joint);
      if (report_.unreached.empty()) {
        if (targets_.size() > kShortPath) return;
      } else {
        const std::vector<double> wanted = wantedPlaces(joint);
        places.insert(places.end(), wanted.begin(), wanted.end());
        if (!places.empty()) places = {bestPlace(joint, places)};
      }
      for (const double value : places) {
        if (tryStart(joint, value)) break;
      }
    }
  }

  /// Those that a target leaves where the start has them.
  std::vector<Joint> startJoints() const {
    const SolverKind kind = Solver(machine_, options_.solver).kind();
    const auto free = [](const Joint& joint) { return isMoving(joint); };
    const auto isFreeTurn = [](const Joint& j) { return isMoving(j) && isTurn(j); };
    const auto isFreeSlide = [](const Joint& j) { return isMoving(j) && !isTurn(j); };
    const std::vector<Joint>& joints = chain_.joints;
    auto more = std::count_if(joints.begin(), joints.end(), free) - 6;
    const bool hasSlides = std::count_if(joints.begin(), joints.end(), isFreeSlide) > 3;
    std::vector<Joint> some;
    for (const Joint& joint : joints) {
      if (joint.place < 0) continue;
      bool isStarts = joint.isLocked || isHeld(joint);
      if (kind == SolverKind::arm) {
        isStarts |= isMoving(joint) && more-- > 0;
      } else {
        isStarts |= (hasSlides && isFreeSlide(joint)) ||
                    (kind == SolverKind::moreRotary && isFreeTurn(joint));
      }
      if (isStarts) some.push_back(joint);
    }
    return some;
  }

  bool isHeld(const Joint& joint) const {
    return options_.solver.redundancy[at(joint.place)].rule == Redundancy::Rule::value;
  }

  double placeNow(const Joint& joint) const {
    return isHeld(joint) ? options_.solver.redundancy[at(joint.place)].value
                         : startOrZero()[at(joint.place)];
  }

  /// Nearest first, without the one where it is.
  std::vector<double> placesOf(const Joint& joint) const {
    const double now = placeNow(joint);
    std::vector<double> places;
    for (int i = 0; isFinite(joint) && i < kPlaces; ++i) {
      const double value = joint.min + (joint.max - joint.min) * i / (kPlaces - 1);
      if (std::abs(value - now) > kSamePlace) places.push_back(value);
    }
    std::sort(places.begin(), places.end(), [now](double a, double b) {
      const double wayToA = std::abs(a - now), wayToB = std::abs(b - now);
      return wayToA != wayToB ? wayToA < wayToB : a < b;
    });
    return places;
  }

  /// Where targets without a position would be reached.
  std::vector<double> wantedPlaces(const Joint& joint) const {
    std::vector<double> places;
    for (const auto& [target, answer] : report_.reasons) {
      if (places.size() == kMostWanted) break;
      if (answer.wanted.size() != 1 || answer.wanted[0].place != joint.place) continue;
      if (std::abs(answer.wanted[0].value - placeNow(joint)) <= kSamePlace) continue;
      places.push_back(answer.wanted[0].value);
    }
    return places;
  }

  void setStart(const Joint& joint, double value, ToolpathOptions& options) const {
    if (isHeld(joint)) {
      options.solver.redundancy[at(joint.place)].value = value;
    } else {
      options.start = startOrZero();
      (*options.start)[at(joint.place)] = value;
    }
  }

  /// From where most samples are reached; of equal ones the first.
  double bestPlace(const Joint& joint, const std::vector<double>& places) {
    const std::vector<Target> targets = samples();
    double best = placeNow(joint);
    std::size_t most = 0;
    for (const double value : places) {
      if (!look()) break;
      ToolpathOptions options = options_;
      setStart(joint, value, options);
      const Solver solver(machine_, options.solver);
      const std::size_t count =
          reached(solver, targets, options.start.value_or(Values{}), UVec3d());
      if (count <= most) continue;
      most = count;
      best = value;
    }
    return best;
  }

  bool tryStart(const Joint& joint, double value) {
    if (!look()) return true;
    ToolpathOptions options = options_;
    setStart(joint, value, options);
    PathAdvice advice;
    advice.kind = Kind::start;
    advice.place = joint.place;
    advice.value = value;
    return isKept(advice, machine_, options, targets_);
  }

  // --- limits

  /// Limits of linear axes alone make targets unreached.
  void moveLimit(const Joint& joint) {
    if (!isMoving(joint) || isHeld(joint)) return;
    if (std::isinf(joint.min) && std::isinf(joint.max)) return;
    if (!isTurn(joint) && report_.unreached.empty()) return;
    const double endless = std::numeric_limits<double>::infinity();
    const auto first = wider(joint, isTurn(joint) ? endless : kWide);
    if (!first) return;
    // Without limits all turns and sides are as good; with them so wide the nearer ones are better.
    const bool isTried =
        isTurn(joint) && first->more < kMostWound && tryLimit(joint, wider(joint, first->more));
    if (!isTried) tryLimit(joint, first);
  }

  /// What the axis would use of limits that are so much wider, the old ones exceeded as little as
  /// can be. Nothing where that does not help.
  std::optional<PathAdvice> wider(const Joint& joint, double by) {
    ToolpathOptions options = options_;
    options.tolerance.reset();
    if (std::isfinite(by)) {
      options.axes[at(joint.place)].margin = by;
      options.axes[at(joint.place)].marginCost = kDear;
    }
    const Machine wide = withLimits(machine_, joint.place, joint.min - by, joint.max + by);
    const auto report = run(wide, options, targets_);
    if (!report || !isBetter(*report)) return {};
    PathAdvice advice = limitAdvice(joint, report->axes[at(joint.place)]);
    if (advice.more <= 0) return {};
    return advice;
  }

  bool tryLimit(const Joint& joint, const std::optional<PathAdvice>& advice) {
    if (!advice) return false;
    const Machine changed = withLimits(machine_, joint.place, advice->min.value_or(joint.min),
                                       advice->max.value_or(joint.max));
    return isKept(*advice, changed, options_, targets_);
  }

  static PathAdvice limitAdvice(const Joint& joint, const AxisTravel& travel) {
    const double by = turnsInto(joint, travel.low, travel.high);
    const double low = std::floor((travel.low + by) * kTenth + kSamePlace) / kTenth;
    const double high = std::ceil((travel.high + by) * kTenth - kSamePlace) / kTenth;
    PathAdvice advice;
    advice.kind = Kind::limit;
    advice.place = joint.place;
    if (travel.low + by < joint.min - kSamePlace) {
      advice.min = low;
      advice.more += joint.min - low;
    }
    if (travel.high + by > joint.max + kSamePlace) {
      advice.max = high;
      advice.more += high - joint.max;
    }
    return advice;
  }

  // --- the side to begin with

  void beginElsewhere() {
    if (!report_.first || !look()) return;
    Values nearest{};
    nearestFirst(machine_, options_, targets_.first(1),
                 [&nearest](const PathPosition& p) { nearest = p.values; });
    const Values& begin = report_.first->values;
    bool isElsewhere = false;
    for (std::size_t i = 0; i < begin.size(); ++i) {
      isElsewhere |= std::abs(begin[i] - nearest[i]) > kSamePlace;
    }
    if (report_.first->target != 0 || !isElsewhere) return;
    const ToolpathReport other = nearestFirst(machine_, options_, targets_, {}, watch_);
    if (other.isStopped() || other.breakCount() <= report_.breakCount()) return;
    PathAdvice advice;
    advice.kind = Kind::side;
    advice.begin = begin;
    advice.before = fitOf(other);
    advice.after = before_;
    all_.push_back(advice);
  }

  const Machine& machine_;
  ToolpathOptions options_;
  Targets targets_;
  const ToolpathReport& report_;
  const ToolpathWatch& watch_;
  JointChain chain_;
  PathFit before_;
  std::vector<PathAdvice> all_;
  bool isStopped_ = false;
};

}  // namespace

PathFit fitOf(const ToolpathReport& report) {
  return {report.breaks.size(), report.unreached.size(), report.standing.size()};
}

const char* toString(PathAdvice::Kind kind) {
  static constexpr const char* kNames[] = {"part", "start", "side", "limit"};
  return kNames[static_cast<std::size_t>(kind)];
}

std::vector<PathAdvice> advise(const Machine& machine, const ToolpathOptions& options,
                               std::span<const PathTarget> targets, const ToolpathReport& report,
                               const ToolpathWatch& watch) {
  return Advisor(machine, options, targets, report, watch).all();
}

}  // namespace korvo
