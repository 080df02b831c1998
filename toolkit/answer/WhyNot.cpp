#include "toolkit/answer/WhyNot.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "toolkit/answer/Explain.h"
#include "toolkit/answer/Sentences.h"
#include "toolkit/answer/Served.h"
#include "toolkit/answer/Values.h"
#include "toolkit/model/Walk.h"

using zgeo::UVec3d;

namespace korvo {
namespace {

std::size_t at(int place) { return static_cast<std::size_t>(place); }

bool isLocked(const Machine& machine, int place) {
  return machine->getAxisElem(place + 1)->isLocked();
}

// Axes that stay at the start and need not: all but the six joints of an arm, and every one of more
// than two rotary axes, of which two are solved at a time.
std::vector<int> sparePlaces(const Machine& machine, const Solver& solver,
                             const SolverOptions& options) {
  const bool isArm = solver.kind() == SolverKind::arm;
  if (!isArm && solver.kind() != SolverKind::moreRotary) return {};
  const Served served = servedBy(machine, solver);
  std::vector<int> places = isArm ? served.redundant : served.turning;
  std::erase_if(places, [&](int place) {
    return options.redundancy[at(place)].rule != Redundancy::Rule::start;
  });
  return places;
}

}  // namespace

WhyNot::WhyNot(const Machine& machine, const SolverOptions& options, Language language)
    : machine_(machine),
      options_(options),
      language_(language),
      solver_(machine_, options_),
      nearly_(machine_, options_, solver_),
      spare_(sparePlaces(machine_, solver_, options_)) {
  for (const Joint& joint : solver_.chain().joints) {
    if (joint.place < 0 || !joint.isLocked) continue;
    (isLocked(machine_, joint.place) ? locked_ : placed_).push_back(joint.place);
  }
}

Answer WhyNot::explain(const Target& target, const Position& from) {
  const Values start = valuesOf(from);
  if (!isTarget(target)) return noTarget(sentences::kNoTarget, from);
  if (!isFinite(start)) return noTarget(sentences::kNoStart, from);
  if (solver_.kind() == SolverKind::none) return unserved(target, from);
  std::optional<Candidate> candidate = nearly_.best(target, start);
  if (!candidate || !candidate->isReached()) {
    const AxisTravel::Found travelled = this->travelled(spare_, target, start);
    if (travelled.reached) return movedTo(travelled, from);
    const bool isNearer = travelled.miss && (!candidate || isBetter(*travelled.miss, *candidate));
    if (isNearer) candidate = travelled.miss;
  }
  Answer answer = candidate      ? judged(*candidate, from)
                  : isArmBound() ? withoutLocks(target, from)
                                 : beside(target, from);
  if (answer.status == Status::reached) return answer;
  takeOutside(answer);
  explainHeld(target, from, answer);
  explainLocked(target, from, answer);
  return answer;
}

// --- no question, no solver

Answer WhyNot::noTarget(const Text& text, const Position& from) const {
  Answer answer(from);
  explainNoTarget(text, language_, answer);
  return answer;
}

// Where the machine stands, what is held where it is held.
Answer WhyNot::standing(const Target& target, const Position& from) const {
  Answer answer(from);
  setValues(heldStart(from), answer.position);
  answer.margins = margins(machine_, answer.position);
  if (solver_.chain().hasTool) {
    answer.residual = solver_.residual(valuesOf(answer.position), target);
  }
  return answer;
}

Values WhyNot::heldStart(const Position& from) const {
  Values start = valuesOf(from);
  for (const int place : placed_) {
    const Redundancy& rule = options_.redundancy[at(place)];
    if (rule.rule == Redundancy::Rule::value) start[at(place)] = rule.value;
  }
  return start;
}

Answer WhyNot::unserved(const Target& target, const Position& from) const {
  Answer answer = standing(target, from);
  Served served = servedBy(machine_, solver_, options_, language_);
  give(answer, Reason::noSolver, served.apartMm, served.apartMm > 0 ? Unit::mm : Unit::none);
  answer.axes = std::move(served.unsuited);
  answer.text = std::move(served.text);
  return answer;
}

// --- axes that need not stay

// With one of these axes elsewhere, as near to the start as reaches; of several the position
// nearest to the start.
AxisTravel::Found WhyNot::travelled(const Places& places, const Target& target,
                                    const Values& from) {
  AxisTravel::Found best;
  for (const int place : places) {
    auto known = travels_.find(place);
    if (known == travels_.end()) {
      known = travels_.emplace(place, AxisTravel(machine_, options_, place)).first;
    }
    const AxisTravel::Found one = known->second.explore(target, from);
    const bool isReached =
        one.reached && (!best.reached || isNearer(one.reached->values, best.reached->values, from));
    if (isReached) {
      best.reached = one.reached;
      best.place = place;
    }
    if (one.miss && (!best.miss || isBetter(*one.miss, *best.miss))) best.miss = one.miss;
  }
  return best;
}

Answer WhyNot::movedTo(const AxisTravel::Found& found, const Position& from) const {
  Answer answer = answerOf(machine_, solver_, *found.reached, from);
  answer.status = Status::reached;
  answer.moved = {{found.place, answer.position[found.place]}};
  return answer;
}

// --- locks, and axes that are held

// The solution with this axis, locked or held, as near to where it stands as reaches, the others as
// in `machine` and `options`, where it is free.
std::optional<Solution> WhyNot::nearestFor(int place, const Machine& machine,
                                           const SolverOptions& options, const Target& target,
                                           const Values& from) {
  const Solver free(machine, options);
  if (free.kind() == SolverKind::none) return {};
  const AxisTravel travel(machine, options, place);
  const std::optional<Solution> found = nearestBy(free, target, from);
  if (found) {  // of one place or of many
    Values inward = from;
    double& value = inward[at(place)];
    value += (found->values[at(place)] - value) * (1 - 1e-6);
    if (value == from[at(place)] || !travel.reaches(target, inward)) return found;
  }
  const Places spare = sparePlaces(machine, free, options);
  const bool isSpare = std::find(spare.begin(), spare.end(), place) != spare.end();
  if (!found && !isSpare) return {};
  const std::optional<Solution> nearest = travel.explore(target, from).reached;
  return nearest ? nearest : found;
}

void WhyNot::explainLocked(const Target& target, const Position& from, Answer& answer) {
  const Values start = valuesOf(from);
  std::optional<Solution> nearest;
  for (const int place : locked_) {
    const std::optional<Solution> one =
        nearestFor(place, withLocked(machine_, {place}, false), options_, target, start);
    if (one && (!nearest || isNearer(one->values, nearest->values, start))) nearest = one;
  }
  if (!nearest && locked_.size() > 1) {
    nearest = nearestBy(Solver(withLocked(machine_, locked_, false), options_), target, start);
  }
  if (nearest) want(*nearest, start, locked_, Reason::lockedAxis, answer);
}

void WhyNot::explainHeld(const Target& target, const Position& from, Answer& answer) {
  const Values start = heldStart(from);
  std::optional<Solution> nearest;
  for (const int place : placed_) {
    SolverOptions options = options_;
    const bool isHeld = options.redundancy[at(place)].rule == Redundancy::Rule::value;
    const bool isOutside =
        std::any_of(answer.outside.begin(), answer.outside.end(),
                    [place](const AxisOutside& axis) { return axis.place == place; });
    if (!isHeld || isOutside) continue;  // outside by its own value is what is wrong
    options.redundancy[at(place)] = {};
    const std::optional<Solution> one = nearestFor(place, machine_, options, target, start);
    if (one && (!nearest || isNearer(one->values, nearest->values, start))) nearest = one;
  }
  if (nearest) want(*nearest, start, placed_, Reason::heldAxis, answer);
}

bool WhyNot::isArmBound() const {
  return solver_.kind() == SolverKind::arm && !(locked_.empty() && placed_.empty());
}

// What locked and held joints leave of an arm comes near nothing: the reason is that of all of them
// free.
Answer WhyNot::withoutLocks(const Target& target, const Position& from) const {
  Answer free = WhyNot(withLocked(machine_, locked_, false), {}, language_).explain(target, from);
  if (free.status != Status::reached) return free;
  Solution solution;
  solution.values = valuesOf(free.position);
  Answer answer = standing(target, from);
  const bool isLocked = !locked_.empty();
  want(solution, heldStart(from), isLocked ? locked_ : placed_,
       isLocked ? Reason::lockedAxis : Reason::heldAxis, answer, free.moved);
  return answer;
}

// Of `places` those that the solution has elsewhere are wanted there, and what had to move for it.
void WhyNot::want(const Solution& solution, const Values& from, const Places& places, Reason reason,
                  Answer& answer, const std::vector<AxisWanted>& moved) const {
  std::vector<Words> names, stands;
  answer.axes.clear();
  answer.wanted.clear();
  for (const int place : places) {
    const double value = solution.values[at(place)];
    if (value == from[at(place)]) continue;
    answer.wanted.push_back({place, value});
    answer.axes.push_back(place);
    names.emplace_back(machine_.axisNames()[place]);
    stands.push_back(filled(sentences::kAt, {names.back(), amountAt(machine_, place, value)}));
  }
  if (answer.axes.empty()) return;
  for (const AxisWanted& axis : moved) {
    answer.wanted.push_back(axis);
    stands.push_back(filled(sentences::kAt, {machine_.axisNames()[axis.place],
                                             amountAt(machine_, axis.place, axis.value)}));
  }
  const int place = answer.axes.front();
  const double by = std::abs(answer.wanted.front().value - from[at(place)]);
  answer.status = Status::notReached;
  answer.nearestTip.reset();
  answer.nearestDirection.reset();
  give(answer, reason, by, unitAt(machine_, place));
  const Text& text = reason == Reason::heldAxis ? sentences::kHeld
                     : names.size() == 1        ? sentences::kLocked
                                                : sentences::kAllLocked;
  answer.text =
      filled(text, {allOf(names), allOf(stands), amountAt(machine_, place, by)}, language_);
}

// --- the direction

Pointing WhyNot::nearestPointing(const Target& target, const Values& from) const {
  std::optional<Pointing> nearest;
  for (const Values& values : standings(solver_.chain(), options_, placed_, from)) {
    Pointing one = pointingOf(solver_.chain(), values, target.direction);
    if (!nearest || one.missingRad < nearest->missingRad) nearest = std::move(one);
  }
  return *nearest;
}

// The position is one that points along the nearest direction, inside the limits if there is one.
Answer WhyNot::beside(const Target& target, const Position& from) {
  const Values start = valuesOf(from);
  const Pointing nearest = nearestPointing(target, start);
  const std::optional<Candidate> candidate = nearly_.best({target.tip, nearest.direction}, start);
  Answer answer = candidate ? judged(*candidate, from) : standing(target, from);
  answer.status = Status::notReached;
  answer.residual = solver_.residual(valuesOf(answer.position), target);
  if (nearest.cone) {
    explainBeside(machine_, *nearest.cone, target.direction, language_, answer);
  } else {
    explainNoRotary(nearest.missingRad, nearest.direction, language_, answer);
  }
  return answer;
}

// --- the point and the limits

Answer WhyNot::judged(const Candidate& candidate, const Position& from) const {
  Answer answer = answerOf(machine_, solver_, candidate.solution, from);
  const ToolPose tool = solver_.chain().pose(candidate.solution.values);
  if (candidate.missedRad > 0 && solver_.kind() != SolverKind::arm) {
    explainRounding(language_, answer);
  } else if (candidate.missedRad > 0) {
    explainWrist(tool.direction, language_, answer);
  } else if (candidate.missedMm > 0 || (candidate.excess == 0 && !answer.residual.isReached())) {
    explainPoint(solver_.chain().tipOf(tool), answer);
  } else if (candidate.excess > 0) {
    answer.status = Status::outsideLimits;
    takeOutside(answer);
    explainListed(machine_, language_, answer);
  } else {
    answer.status = Status::reached;
  }
  return answer;
}

void WhyNot::explainPoint(const UVec3d& tip, Answer& answer) const {
  if (solver_.kind() == SolverKind::arm) return explainReach(tip, language_, answer);
  std::vector<int> free;
  for (const Joint& joint : solver_.chain().joints) {
    const bool isSlide = joint.motion == Joint::Motion::slide && joint.place >= 0;
    if (isSlide && !joint.isLocked) free.push_back(joint.place);
  }
  explainLinear(free, tip, language_, answer);
}

// In value order, as margins are.
void WhyNot::takeOutside(Answer& answer) const {
  answer.outside.clear();
  for (const Joint& joint : solver_.chain().joints) {
    if (joint.place < 0) continue;
    const double by = outsideBy(joint, answer.position[joint.place]);
    if (by != 0.0) answer.outside.push_back({joint.place, by});
  }
  std::sort(answer.outside.begin(), answer.outside.end(),
            [](const AxisOutside& a, const AxisOutside& b) { return a.place < b.place; });
}

}  // namespace korvo
