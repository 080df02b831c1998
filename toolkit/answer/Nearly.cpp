#include "toolkit/answer/Nearly.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <tuple>
#include <utility>

#include "toolkit/answer/Values.h"

namespace korvo {
namespace {

constexpr double kTurn = 360.0;

// What lies outside by less (mm or degrees) does so by rounding, and is put on its limit: it moves
// a tool that is a metre away by less than 1e-7 mm.
constexpr double kOnLimit = 1e-9;

double& valueAt(Values& values, int place) { return values[static_cast<std::size_t>(place)]; }
double valueAt(const Values& values, int place) { return values[static_cast<std::size_t>(place)]; }

bool isFreeAxis(const Joint& joint) { return joint.place >= 0 && !joint.isLocked; }

bool isBetter(const std::optional<Candidate>& a, const Candidate& b) {
  return a && isBetter(*a, b);
}

std::size_t at(int i) { return static_cast<std::size_t>(i); }

// The turn with the least excess: of those inside the nearest, else the last before the limits or
// the first behind them.
double leastOutside(const Joint& joint, double value) {
  const double by = outsideBy(joint, value);
  if (by == 0.0) return value;
  const double inward = by < 0 ? kTurn : -kTurn;
  const double beyond = value + inward * std::ceil(std::abs(by) / kTurn);
  const double before = beyond - inward;
  return std::abs(outsideBy(joint, beyond)) < std::abs(outsideBy(joint, before)) ? beyond : before;
}

// A tip may be missed by rounding alone: far from the machine that is more than counts as reached.
bool isCarried(const Solution& solution, const Target& target) {
  return solution.residual.pointMm <= kReachedMm + 1e-12 * target.tip.norm();
}

Candidate candidateOf(const Solver& solver, const Target& target, Solution solution) {
  Candidate candidate;
  for (const Joint& joint : solver.chain().joints) {
    if (joint.place < 0) continue;
    double& value = valueAt(solution.values, joint.place);
    const bool mayTurn = joint.motion == Joint::Motion::turn && isFreeAxis(joint);
    if (mayTurn) value = leastOutside(joint, value);
    const double by = outsideBy(joint, value);
    if (isFreeAxis(joint) && std::abs(by) <= kOnLimit) value -= by;
    candidate.excess += std::abs(outsideBy(joint, value));
  }
  solution.residual = solver.residual(solution.values, target);
  const double missedRad = solution.residual.directionRad;
  if (missedRad > kReachedRad) candidate.missedRad = missedRad;
  if (!isCarried(solution, target)) candidate.missedMm = solution.residual.pointMm;
  candidate.solution = solution;
  return candidate;
}

// The start with every free axis inside its limits.
Values broughtInside(const JointChain& chain, Values from) {
  for (const Joint& joint : chain.joints) {
    if (!isFreeAxis(joint)) continue;
    double& value = valueAt(from, joint.place);
    if (joint.motion == Joint::Motion::turn) value = leastOutside(joint, value);
    value -= outsideBy(joint, value);
  }
  return from;
}

bool isSampled(const Joint& joint, const Redundancy& rule) {
  return rule.rule == Redundancy::Rule::sampled && rule.samples >= 2 &&
         joint.motion == Joint::Motion::turn && std::isfinite(joint.max - joint.min);
}

const Joint& jointAt(const JointChain& chain, int place) {
  return *std::find_if(chain.joints.begin(), chain.joints.end(),
                       [place](const Joint& joint) { return joint.place == place; });
}

}  // namespace

bool isBetter(const Candidate& a, const Candidate& b) {
  return std::tie(a.missedRad, a.missedMm, a.excess) < std::tie(b.missedRad, b.missedMm, b.excess);
}

std::vector<Values> standings(const JointChain& chain, const SolverOptions& options,
                              const std::vector<int>& placed, const Values& from) {
  std::vector<Values> all{broughtInside(chain, from)};
  for (const int place : placed) {
    const Joint& joint = jointAt(chain, place);
    const Redundancy& rule = options.redundancy[at(place)];
    if (rule.rule == Redundancy::Rule::value) {
      for (Values& values : all) valueAt(values, place) = rule.value;
    }
    if (!isSampled(joint, rule)) continue;
    std::vector<Values> sampled;
    for (const Values& values : all) {
      for (int sample = 0; sample < rule.samples; ++sample) {
        sampled.push_back(values);
        valueAt(sampled.back(), place) =
            joint.min + (joint.max - joint.min) * sample / (rule.samples - 1);
      }
    }
    all = std::move(sampled);
  }
  return all;
}

double outsideBy(const Joint& joint, double value) {
  return value < joint.min ? value - joint.min : value > joint.max ? value - joint.max : 0.0;
}

Nearly::Nearly(const Machine& machine, const SolverOptions& options, const Solver& solver)
    : machine_(machine), options_(options), solver_(solver) {
  for (const Joint& joint : solver.chain().joints) {
    if (isFreeAxis(joint) && joint.motion == Joint::Motion::slide) slides_.push_back(&joint);
  }
}

const Solver& Nearly::lockedAt(const std::vector<int>& places) {
  const auto known = locked_.find(places);
  if (known != locked_.end()) return known->second;
  return locked_.emplace(places, Solver(withLocked(machine_, places), options_)).first->second;
}

std::optional<Candidate> nearestBranch(const Solver& solver, const Target& target,
                                       const Values& from) {
  std::optional<Candidate> best;
  std::vector<Solution> approaches;
  solver.approach(target, from, approaches);
  for (const Solution& approach : approaches) {
    const Candidate candidate = candidateOf(solver, target, approach);
    if (!best || isBetter(candidate, *best)) best = candidate;
  }
  return best;
}

void Nearly::tryBranches(const Solver& solver, const Target& target, const Values& from, Best& best,
                         std::vector<Solution>* families) {
  solver.approach(target, from, approaches_);
  for (const Solution& approach : approaches_) {
    const Candidate candidate = candidateOf(solver, target, approach);
    if (!best || isBetter(candidate, *best)) best = candidate;
    if (families && approach.isFamily()) families->push_back(approach);
  }
}

// The excess changes evenly with every one of more than three linear axes: where it is least as
// many are at their limits as there are more than three.
void Nearly::tryAtLimits(const Target& target, const Values& from, std::vector<int> locked,
                         std::size_t next, Best& best) {
  if (locked.size() + 3 == slides_.size()) {
    return tryAll(locked, target, from, best);
  }
  for (; next < slides_.size(); ++next) {
    const Joint& slide = *slides_[next];
    for (const double limit : {slide.min, slide.max}) {
      if (!std::isfinite(limit)) continue;
      Values start = from;
      valueAt(start, slide.place) = limit;
      locked.push_back(slide.place);
      tryAtLimits(target, start, locked, next + 1, best);
      locked.pop_back();
    }
  }
}

// The free axis is locked and put about a turn in steps of a few degrees, then halved about every
// place that is better than its neighbours: what bounds the excess comes back a few times a turn at
// most. Another free axis is put about in the same way at each of these places.
void Nearly::tryFamily(std::vector<int> locked, const Target& target, const Values& from,
                       const Solution& family, Best& best) {
  constexpr int kSteps = 72;
  constexpr double kStep = kTurn / kSteps;
  const int place = family.freePlaces[0];
  locked.push_back(place);
  const Solver& solver = lockedAt(locked);
  const Joint& joint = jointAt(solver.chain(), place);
  Values start = from;
  const auto tryAt = [&](double degrees, Best& nearest) {
    const double value = leastOutside(joint, degrees);
    if (outsideBy(joint, value) != 0.0) return;
    valueAt(start, place) = value;
    std::vector<Solution> others;
    tryBranches(solver, target, start, nearest, family.freePlaces[1] >= 0 ? &others : nullptr);
    for (Solution& other : others) {
      other.freePlaces[1] = -1;
      tryFamily(locked, target, start, other, nearest);
    }
  };
  std::array<Best, kSteps> around;
  for (int k = 0; k < kSteps; ++k) tryAt(valueAt(from, place) + kStep * k, around[at(k)]);
  for (int k = 0; k < kSteps; ++k) {
    Best nearest = around[at(k)];
    if (!nearest || isBetter(around[at((k + 1) % kSteps)], *nearest)) continue;
    const Best& before = around[at((k + kSteps - 1) % kSteps)];
    const bool isLow = !before || isBetter(*nearest, *before);  // not so all along a level
    for (double step = kStep / 2; isLow && step > 1e-13; step /= 2) {
      const double middle = valueAt(nearest->solution.values, place);
      tryAt(middle + step, nearest);
      tryAt(middle - step, nearest);
    }
    if (best && !isBetter(*nearest, *best)) continue;
    best = nearest;
    best->solution.freePlaces = family.freePlaces;
  }
}

// The families of an arm turn the tool about itself: what carries it stays.
void Nearly::tryAll(const std::vector<int>& locked, const Target& target, const Values& from,
                    Best& best) {
  const Solver& solver = locked.empty() ? solver_ : lockedAt(locked);
  const bool isArm = solver.kind() == SolverKind::arm;
  std::vector<Solution> families;
  tryBranches(solver, target, from, best, isArm ? nullptr : &families);
  for (const Solution& family : families) tryFamily(locked, target, from, family, best);
}

std::optional<Candidate> Nearly::best(const Target& target, const Values& from) {
  const Values start = broughtInside(solver_.chain(), from);
  Best best;
  tryAll({}, target, start, best);
  const bool isArm = solver_.kind() == SolverKind::arm;
  if (!isArm && slides_.size() > 3) tryAtLimits(target, start, {}, 0, best);
  return best;
}

}  // namespace korvo
