#include "toolkit/answer/AxisTravel.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "toolkit/answer/Cones.h"
#include "toolkit/answer/Values.h"

using zgeo::UVec3d;

namespace korvo {
namespace {

constexpr double kTurn = 360.0;
constexpr double kDegreesApart = 5.0;
constexpr int kPlaces = 72;
constexpr double kEdge = 1e-11;  // mm or degrees

std::size_t at(int i) { return static_cast<std::size_t>(i); }

Solver lockedSolver(const Machine& machine, SolverOptions options, int place) {
  options.redundancy[at(place)] = {};
  return Solver(withLocked(machine, {place}), options);
}

const Joint& jointAt(const JointChain& chain, int place) {
  return *std::find_if(chain.joints.begin(), chain.joints.end(),
                       [place](const Joint& joint) { return joint.place == place; });
}

/// How far (mm) a linear axis may have to go for a target: no tip is farther from where it stands
/// than the ways from each rotary axis to the next, there and back.
double farthest(const JointChain& chain, const Target& target, const Values& from) {
  double ways = 0.0;
  const UVec3d* last = nullptr;
  const auto add = [&](const UVec3d& point) {
    if (last) ways += point.distanceTo(*last);
    last = &point;
  };
  for (const Joint& joint : chain.joints) {
    if (joint.motion == Joint::Motion::turn) add(joint.point);
  }
  add(chain.toolPoint);
  return chain.tipOf(chain.pose(from)).distanceTo(target.tip) + 2 * (ways + chain.toolLength);
}

}  // namespace

/// The axis at one place.
struct AxisTravel::Tried {
  double place = 0.0;
  std::optional<Solution> reached;
  std::optional<Candidate> miss;
  double missedRad = 0.0;  // where there is no candidate

  bool isBetterThan(const Tried& other) const {
    if (reached || other.reached) return reached && !other.reached;
    const auto key = [](const Tried& t) {
      constexpr double kNone = std::numeric_limits<double>::infinity();
      return t.miss ? std::tuple(t.miss->missedRad, t.miss->missedMm, t.miss->excess)
                    : std::tuple(t.missedRad, kNone, kNone);
    };
    return key(*this) < key(other);
  }
};

class AxisTravel::Search {
 public:
  Search(const AxisTravel& travel, const Target& target, const Values& from)
      : travel_(travel), target_(target), from_(from) {
    const Joint& joint = travel.joint_;
    const double start = std::clamp(from[at(joint.place)], joint.min, joint.max);
    const bool isTurn = joint.motion == Joint::Motion::turn;
    const bool isEndless = !std::isfinite(joint.max - joint.min);
    const double most = isTurn      ? kTurn
                        : isEndless ? farthest(travel.solver_.chain(), target, from)
                                    : joint.max - joint.min;
    low_ = std::max(joint.min, start - most);
    high_ = std::min(joint.max, start + most);
    apart_ = isTurn ? kDegreesApart : (high_ - low_) / kPlaces;
    if (std::isfinite(apart_)) tried_ = {tryAt(start)};
  }

  Found run() {
    if (tried_.empty()) return {};
    goOutward();
    best_ = tried_[middle_];
    for (const Tried& one : tried_) take(one);
    for (std::size_t i = 0; i < tried_.size(); ++i) {
      if (isLow(i)) take(lowest(i));
    }
    if (best_.reached) backToStart();
    return {best_.reached, travel_.joint_.place, best_.miss};
  }

 private:
  double start() const { return tried_[middle_].place; }
  double distance(const Tried& one) const { return std::abs(one.place - start()); }

  Tried tryAt(double place) {
    Values values = from_;
    values[at(travel_.joint_.place)] = place;
    Tried tried{place, nearestBy(travel_.solver_, target_, values), {}, 0.0};
    if (tried.reached) return tried;
    tried.miss = nearestBranch(travel_.solver_, target_, values);
    if (!tried.miss) tried.missedRad = missedRad(values);
    return tried;
  }

  /// Of what turns the tool with the axis there.
  double missedRad(const Values& values) const {
    return pointingOf(travel_.solver_.chain(), values, target_.direction).missingRad;
  }

  /// Both ways, until one reaches or both are at the end.
  void goOutward() {
    while (true) {
      const bool isAtEnd = tried_.back().place >= high_, isAtFront = tried_.front().place <= low_;
      if (isAtEnd && isAtFront) return;
      if (!isAtEnd) tried_.push_back(tryAt(std::min(high_, tried_.back().place + apart_)));
      if (!isAtFront) {
        tried_.insert(tried_.begin(), tryAt(std::max(low_, tried_.front().place - apart_)));
        ++middle_;
      }
      if (tried_.back().reached || tried_.front().reached) return;
    }
  }

  /// Whether it misses by less than its neighbours, and so something between may reach.
  bool isLow(std::size_t i) const {
    if (tried_[i].reached) return false;
    const bool isBelow = i == 0 || tried_[i].isBetterThan(tried_[i - 1]);  // not all along a level
    return isBelow && (i + 1 == tried_.size() || !tried_[i + 1].isBetterThan(tried_[i]));
  }

  Tried lowest(std::size_t i) {
    constexpr double kLeast = 1e-10;
    Tried best = tried_[i];
    for (double step = apart_ / 2; step > kLeast && !best.reached; step /= 2) {
      const double middle = best.place;
      for (const double place : {middle + step, middle - step}) {
        if (place < low_ || place > high_ || best.reached) continue;
        const Tried one = tryAt(place);
        if (one.isBetterThan(best)) best = one;
      }
    }
    return best;
  }

  void take(const Tried& one) {
    const bool isNearer =
        one.reached && best_.reached ? distance(one) < distance(best_) : one.isBetterThan(best_);
    if (isNearer) best_ = one;
  }

  /// To the edge of what reaches: the place before it, on the way from the start, does not.
  void backToStart() {
    double outside = start();
    for (const Tried& one : tried_) {
      const bool isBetween = !one.reached && (one.place - start()) * (best_.place - start()) > 0 &&
                             distance(one) < distance(best_);
      if (isBetween && distance(one) > std::abs(outside - start())) outside = one.place;
    }
    while (std::abs(best_.place - outside) > kEdge) {
      const double middle = outside + (best_.place - outside) / 2;
      if (middle == outside || middle == best_.place) return;
      const Tried one = tryAt(middle);
      if (one.reached) {
        best_ = one;
      } else {
        outside = middle;
      }
    }
  }

  const AxisTravel& travel_;
  const Target& target_;
  const Values& from_;
  double low_ = 0.0, high_ = 0.0, apart_ = 0.0;
  std::vector<Tried> tried_;  ///< Ascending.
  std::size_t middle_ = 0;    ///< The start's.
  Tried best_;
};

AxisTravel::AxisTravel(const Machine& machine, const SolverOptions& options, int place)
    : solver_(lockedSolver(machine, options, place)), joint_(jointAt(solver_.chain(), place)) {}

AxisTravel::Found AxisTravel::explore(const Target& target, const Values& from) const {
  return Search(*this, target, from).run();
}

bool AxisTravel::reaches(const Target& target, const Values& from) const {
  return nearestBy(solver_, target, from).has_value();
}

}  // namespace korvo
