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

std::vector<int> lockedPlaces(const JointChain& chain) {
  std::vector<int> places;
  for (const Joint& joint : chain.joints) {
    if (joint.place >= 0 && joint.isLocked) places.push_back(joint.place);
  }
  return places;
}

void unlock(Machine& machine, int place) {
  const int index = std::as_const(*machine).getAxisElem(place + 1)->getElemIndex();
  machine->getElemByIndex(index)->setLocked(false);
}

std::optional<Solution> nearestBy(const Solver& solver, const Target& target, const Values& from) {
  std::vector<Solution> found;
  solver.solve(target, from, found);
  const auto nearest = std::min_element(
      found.begin(), found.end(),
      [&](const Solution& a, const Solution& b) { return isNearer(a.values, b.values, from); });
  if (nearest == found.end()) return {};
  return *nearest;
}

// Axes with both limits that stay at the start: all but the six joints of an arm, and every one of
// more than two rotary axes, of which two are solved at a time.
std::vector<int> heldPlaces(const Machine& machine, const Solver& solver,
                            const SolverOptions& options) {
  const bool isArm = solver.kind() == SolverKind::arm;
  if (!isArm && solver.kind() != SolverKind::moreRotary) return {};
  const Served served = servedBy(machine, solver);
  std::vector<int> places = isArm ? served.redundant : served.turning;
  std::erase_if(places, [&](int place) {
    const auto axis = machine->getAxisElem(place + 1);
    return !axis->hasMin() || !axis->hasMax() ||
           options.redundancy[at(place)].rule != Redundancy::Rule::start;
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
      held_(heldPlaces(machine_, solver_, options_)) {}

Answer WhyNot::explain(const Target& target, const Position& from) {
  const Values start = valuesOf(from);
  if (!isTarget(target)) return noTarget(sentences::kNoTarget, from);
  if (!isFinite(start)) return noTarget(sentences::kNoStart, from);
  if (solver_.kind() == SolverKind::none) return unserved(target, from);
  const std::optional<Candidate> candidate = nearly_.best(target, start);
  std::optional<Answer> nearest;
  if (candidate) nearest = judged(*candidate, from);
  if (nearest && nearest->status == Status::reached) return *nearest;
  if (std::optional<Answer> answer = locked(target, from)) return *answer;
  if (std::optional<Answer> answer = held(target, from)) return *answer;
  if (!nearest && isArmLocked()) return withoutLocks(target, from);
  return nearest ? *nearest : beside(target, from);
}

// --- no question, no solver

Answer WhyNot::noTarget(const Text& text, const Position& from) const {
  Answer answer(from);
  explainNoTarget(text, language_, answer);
  return answer;
}

// Where the machine stands.
Answer WhyNot::standing(const Target& target, const Position& from) const {
  Answer answer(from);
  answer.margins = margins(machine_, from);
  if (solver_.chain().hasTool) answer.residual = solver_.residual(valuesOf(from), target);
  return answer;
}

Answer WhyNot::unserved(const Target& target, const Position& from) const {
  Answer answer = standing(target, from);
  Served served = servedBy(machine_, solver_, options_, language_);
  give(answer, Reason::noSolver, served.apartMm, served.apartMm > 0 ? Unit::mm : Unit::none);
  answer.axes = std::move(served.unsuited);
  answer.text = std::move(served.text);
  return answer;
}

// --- locks

// With the axes at these places free.
Machine WhyNot::unlocked(const std::vector<int>& places) const {
  Machine machine = machine_;
  for (const int place : places) unlock(machine, place);
  return machine;
}

std::optional<Solution> WhyNot::nearestUnlocked(const std::vector<int>& places,
                                                const Target& target, const Values& from) const {
  return nearestBy(Solver(unlocked(places), options_), target, from);
}

std::optional<Answer> WhyNot::locked(const Target& target, const Position& from) const {
  const std::vector<int> places = lockedPlaces(solver_.chain());
  const Values start = valuesOf(from);
  std::optional<Solution> nearest;
  for (const int place : places) {
    const std::optional<Solution> one = nearestUnlocked({place}, target, start);
    if (one && (!nearest || isNearer(one->values, nearest->values, start))) nearest = one;
  }
  if (!nearest && places.size() > 1) nearest = nearestUnlocked(places, target, start);
  if (!nearest) return {};
  return wanting(target, from, *nearest, places, Reason::lockedAxis);
}

bool WhyNot::isArmLocked() const {
  return solver_.kind() == SolverKind::arm && !lockedPlaces(solver_.chain()).empty();
}

// What locked joints leave of an arm comes near nothing: the reason is that of all of them free.
Answer WhyNot::withoutLocks(const Target& target, const Position& from) const {
  const std::vector<int> places = lockedPlaces(solver_.chain());
  Answer answer = WhyNot(unlocked(places), options_, language_).explain(target, from);
  if (answer.status != Status::reached) return answer;
  Solution solution;
  solution.values = valuesOf(answer.position);
  return wanting(target, from, solution, places, Reason::lockedAxis);
}

std::optional<Answer> WhyNot::held(const Target& target, const Position& from) const {
  constexpr int kSamples = 73;  // of a turn every 5 degrees, of a rail of 4 m every 56 mm
  const Values start = valuesOf(from);
  std::optional<Solution> nearest;
  int nearestPlace = -1;
  for (const int place : held_) {
    SolverOptions options = options_;
    options.redundancy[at(place)] = {Redundancy::Rule::sampled, 0.0, kSamples};
    const std::optional<Solution> one = nearestBy(Solver(machine_, options), target, start);
    if (!one || (nearest && !isNearer(one->values, nearest->values, start))) continue;
    nearest = one;
    nearestPlace = place;
  }
  if (!nearest) return {};
  return wanting(target, from, *nearest, {nearestPlace}, Reason::heldAxis);
}

// Of `places` those that the solution has elsewhere are wanted there.
Answer WhyNot::wanting(const Target& target, const Position& from, const Solution& solution,
                       const std::vector<int>& places, Reason reason) const {
  Answer answer = standing(target, from);
  std::vector<Words> names, stands;
  for (const int place : places) {
    const double value = solution.values[at(place)];
    if (value == from[place]) continue;
    answer.wanted.push_back({place, value});
    answer.axes.push_back(place);
    names.emplace_back(machine_.axisNames()[place]);
    stands.push_back(filled(sentences::kAt, {names.back(), amountAt(machine_, place, value)}));
  }
  if (answer.axes.empty()) {  // none has to move: it is the answer
    Answer reached = answerOf(machine_, solver_, solution, from);
    reached.status = Status::reached;
    return reached;
  }
  const int place = answer.axes.front();
  const double by = std::abs(answer.wanted.front().value - from[place]);
  give(answer, reason, by, unitAt(machine_, place));
  const Text& text = reason == Reason::heldAxis ? sentences::kHeld
                     : names.size() == 1        ? sentences::kLocked
                                                : sentences::kAllLocked;
  answer.text =
      filled(text, {allOf(names), allOf(stands), amountAt(machine_, place, by)}, language_);
  return answer;
}

// --- the direction

/// Where the tool points that points as nearly as it can.
struct WhyNot::Pointing {
  std::optional<Cone> cone;  ///< None where nothing turns the tool.
  UVec3d direction;
  double missingRad = 0.0;
};

bool WhyNot::isFreed(const Joint& joint, Joint::Motion motion) const {
  return joint.motion == motion && joint.place >= 0 && !joint.isLocked &&
         options_.redundancy[at(joint.place)].rule == Redundancy::Rule::start;
}

// With what does not turn the tool at `values`.
WhyNot::Pointing WhyNot::pointing(const Target& target, const Values& values) const {
  const JointChain& chain = solver_.chain();
  std::vector<TurningAxis> axes;
  zgeo::UMatrix placed;
  for (const Joint& joint : chain.joints) {
    if (isFreed(joint, Joint::Motion::turn)) {
      axes.push_back({joint.place, joint.direction});
      placed.applyDir(axes.back().direction);
    }
    moveBy(joint, valueOf(joint, values), placed);
  }
  const UVec3d tool = chain.pose(values).direction;
  if (axes.empty()) return {{}, tool, angleBetween(tool, target.direction)};
  const std::vector<Cone> cones = conesOf(axes, tool);
  const Cone& cone = nearestCone(cones, target.direction);
  return {cone, cone.nearest(target.direction), cone.missing(target.direction)};
}

WhyNot::Pointing WhyNot::nearestPointing(const Target& target, const Values& from) const {
  std::optional<Pointing> nearest;
  for (const Values& values : standings(solver_.chain(), options_, from)) {
    Pointing one = pointing(target, values);
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
  if (candidate.missedRad > 0) {
    explainWrist(tool.direction, language_, answer);
  } else if (candidate.missedMm > 0 || (candidate.excess == 0 && !answer.residual.isReached())) {
    explainPoint(solver_.chain().tipOf(tool), answer);
  } else if (candidate.excess > 0) {
    explainOutside(answer);
  } else {
    answer.status = Status::reached;
  }
  return answer;
}

void WhyNot::explainPoint(const UVec3d& tip, Answer& answer) const {
  if (solver_.kind() == SolverKind::arm) return explainReach(tip, language_, answer);
  std::vector<int> free;
  for (const Joint& joint : solver_.chain().joints) {
    if (isFreed(joint, Joint::Motion::slide)) free.push_back(joint.place);
  }
  explainLinear(free, tip, language_, answer);
}

// In value order, as margins are.
void WhyNot::explainOutside(Answer& answer) const {
  answer.status = Status::outsideLimits;
  for (const Joint& joint : solver_.chain().joints) {
    if (joint.place < 0) continue;
    const double by = outsideBy(joint, answer.position[joint.place]);
    if (by != 0.0) answer.outside.push_back({joint.place, by});
  }
  std::sort(answer.outside.begin(), answer.outside.end(),
            [](const AxisOutside& a, const AxisOutside& b) { return a.place < b.place; });
  explainListed(machine_, language_, answer);
}

}  // namespace korvo
