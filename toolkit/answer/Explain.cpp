#include "toolkit/answer/Explain.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "toolkit/answer/ArmLayout.h"
#include "toolkit/answer/FreeAxes.h"
#include "toolkit/answer/Sentences.h"

using zgeo::UVec3d;
using zkin::KMachineElem;

namespace korvo {
namespace {

constexpr double kRadToDeg = 180.0 / std::numbers::pi;

// --- the direction

// What the free rotary axes can do for the direction.
std::vector<Cone> conesOf(const Machine& machine, const Position& from) {
  std::vector<TurningAxis> axes;
  for (const StandingAxis& axis : freeAxes(*machine, from, KMachineElem::KMET_TYPE_AROT)) {
    axes.push_back({axis.place(), axis.direction});
  }
  return korvo::conesOf(axes, toolDirection(*machine, from));
}

void explainNoSolver(Language language, Answer& answer) {
  give(answer, Reason::noSolver, answer.residual.pointMm, Unit::mm);
  answer.text = filled(sentences::kNoSolver, {}, language);
}

// --- the point

void explainArm(const Machine& machine, const Target& target, Language language, Answer& answer) {
  const ArmLayout arm(*machine);
  if (const auto missing = arm.outOfReach(target)) {
    give(answer, Reason::outOfReach, *missing, Unit::mm);
    answer.text = filled(sentences::kOutOfReach, {millimetres(*missing)}, language);
    return;
  }
  const double by = answer.residual.pointMm;
  answer.conditions = arm.brokenByMachine(language);
  if (answer.conditions.empty()) answer.conditions = arm.brokenBehind(target, language);
  const bool isStart = answer.conditions.empty();
  give(answer, isStart ? Reason::startOfArm : Reason::missed, by, Unit::mm);
  answer.text =
      filled(isStart ? sentences::kStartOfArm : sentences::kMissed, {millimetres(by)}, language);
}

std::vector<int> freeLinear(const Machine& machine, const Position& at) {
  std::vector<int> places;
  for (const StandingAxis& axis : freeAxes(*machine, at, KMachineElem::KMET_TYPE_ALIN)) {
    places.push_back(axis.place());
  }
  return places;
}

UVec3d tipAt(const Machine& machine, const Position& at) {
  UVec3d nose, direction;
  machine->getTool(at, nose, direction, -1);
  return nose - direction * machine->getTHELength(-1);
}

std::string namesOf(const Machine& machine, const std::vector<int>& places) {
  std::string names;
  for (const int place : places) appendWord(names, machine.axisNames()[place]);
  return names;
}

void explainLocks(const Machine& machine, Language language, std::vector<int> moved,
                  Answer& answer) {
  give(answer, Reason::lockedAxis, 0.0, Unit::none);
  answer.text = filled(sentences::kMovesLocked, {namesOf(machine, moved)}, language);
  answer.axes = std::move(moved);
}

}  // namespace

void give(Answer& answer, Reason reason, double by, Unit unit) {
  answer.reason = reason;
  answer.by = by;
  answer.unit = unit;
}

void explainNoTarget(const Text& text, Language language, Answer& answer) {
  give(answer, Reason::noDirection, 0.0, Unit::none);
  answer.text = filled(text, {}, language);
}

void explainBeside(const Machine& machine, const Cone& cone, const UVec3d& direction,
                   Language language, Answer& answer) {
  const double by = cone.missing(direction) * kRadToDeg;
  give(answer, Reason::outsideCone, by, Unit::degree);
  std::vector<Words> names;
  names.reserve(cone.places.size());
  for (const int place : cone.places) names.emplace_back(machine.axisNames()[place]);
  answer.text = filled(names.size() == 1 ? sentences::kBesideCone : sentences::kBesideBand,
                       {degrees(by), allOf(names)}, language);
  answer.axes = cone.places;
  answer.nearestDirection = cone.nearest(direction);
}

void explainNoRotary(double missingRad, const UVec3d& tool, Language language, Answer& answer) {
  const double by = missingRad * kRadToDeg;
  give(answer, Reason::noRotaryAxis, by, Unit::degree);
  answer.text = filled(sentences::kNoRotary, {degrees(by)}, language);
  answer.nearestDirection = tool;
}

void explainLinear(const std::vector<int>& free, const UVec3d& tip, Language language,
                   Answer& answer) {
  static constexpr Text kTexts[] = {sentences::kNoLinear, sentences::kOneLinear,
                                    sentences::kFewLinear, sentences::kDependent};
  const double by = answer.residual.pointMm;
  give(answer, Reason::linearAxes, by, Unit::mm);
  answer.text = filled(kTexts[std::min<std::size_t>(free.size(), 3)],
                       {millimetres(by), static_cast<int>(free.size())}, language);
  answer.axes = free;
  answer.nearestTip = tip;
}

// An arm turns its wrist alone: what it left is what the wrist cannot do.
void explainWrist(const UVec3d& tool, Language language, Answer& answer) {
  const double by = answer.residual.directionRad * kRadToDeg;
  give(answer, Reason::outsideCone, by, Unit::degree);
  answer.text = filled(sentences::kWristLeaves, {degrees(by)}, language);
  answer.nearestDirection = tool;
}

void explainRounding(Language language, Answer& answer) {
  const double by = answer.residual.directionRad * kRadToDeg;
  give(answer, Reason::noDirection, by, Unit::degree);
  answer.text = filled(sentences::kFarStart, {degrees(by)}, language);
}

void explainReach(const UVec3d& tip, Language language, Answer& answer) {
  const double by = answer.residual.pointMm;
  give(answer, Reason::outOfReach, by, Unit::mm);
  answer.text = filled(sentences::kOutOfReach, {millimetres(by)}, language);
  answer.nearestTip = tip;
}

void explainMiss(const Machine& machine, const Target& target, const Position& from,
                 Language language, Answer& answer) {
  const std::vector<int> moved = movedLocks(machine, from, answer.position);
  const bool isArm = isArmClass(*machine);
  const bool isTurned = answer.residual.directionRad <= kReachedRad;
  const bool hasFree = !freeAxes(*machine, from, KMachineElem::KMET_TYPE_AROT).empty();
  const bool hasRotary = isArm ? !wristAxes(*machine, from).empty() : hasFree;
  const UVec3d tool = toolDirection(*machine, answer.position);
  if (!moved.empty()) {
    explainLocks(machine, language, moved, answer);
  } else if (hasFree && !hasRotary) {
    explainNoSolver(language, answer);
  } else if (!isTurned && !hasRotary) {
    explainNoRotary(answer.residual.directionRad, tool, language, answer);
  } else if (!isTurned && isArm) {
    explainWrist(tool, language, answer);
  } else if (!isTurned) {
    const std::vector<Cone> cones = conesOf(machine, from);
    explainBeside(machine, nearestCone(cones, target.direction), target.direction, language,
                  answer);
  } else if (isArm && hasRotary) {
    explainArm(machine, target, language, answer);
  } else {
    explainLinear(freeLinear(machine, answer.position), tipAt(machine, answer.position), language,
                  answer);
  }
}

std::optional<UVec3d> nearestDirection(const Machine& machine, const Target& target,
                                       const Position& from) {
  constexpr double kInside = 1e-7;
  const std::vector<Cone> cones = conesOf(machine, from);
  if (cones.empty() || cones.front().places.size() < 2) return {};
  return nearestCone(cones, target.direction).nearest(target.direction, kInside);
}

std::vector<AxisOutside> outsideOf(const std::vector<Margin>& margins) {
  std::vector<AxisOutside> outside;
  for (std::size_t i = 0; i < margins.size(); ++i) {
    const int place = static_cast<int>(i);
    const Margin& m = margins[i];
    if (m.toMin && *m.toMin < 0) {
      outside.push_back({place, *m.toMin});
    } else if (m.toMax && *m.toMax < 0) {
      outside.push_back({place, -*m.toMax});
    }
  }
  return outside;
}

void explainOutside(const Machine& machine, Language language, Answer& answer) {
  answer.outside = outsideOf(answer.margins);
  explainListed(machine, language, answer);
}

void explainListed(const Machine& machine, Language language, Answer& answer) {
  Words list = "";
  answer.axes.clear();
  for (const AxisOutside& axis : answer.outside) {
    const double by = std::abs(axis.by);
    appendWord(list, filled(axis.by < 0 ? sentences::kBelow : sentences::kAbove,
                            {machine.axisNames()[axis.place], amountAt(machine, axis.place, by)}));
    answer.axes.push_back(axis.place);
  }
  const bool isNone = answer.outside.empty();
  give(answer, Reason::outsideLimits, isNone ? 0.0 : std::abs(answer.outside.front().by),
       isNone ? Unit::none : unitAt(machine, answer.outside.front().place));
  answer.text = filled(sentences::kOutside, {list}, language);
}

void explainStaying(const Machine& machine, const Position& from, Language language,
                    Answer& answer) {
  answer.status = Status::notReached;
  answer.wanted = std::move(answer.moved);
  answer.moved.clear();
  std::vector<Words> names, stands;
  for (const AxisWanted& axis : answer.wanted) {
    answer.axes.push_back(axis.place);
    names.emplace_back(machine.axisNames()[axis.place]);
    stands.push_back(
        filled(sentences::kAt, {names.back(), amountAt(machine, axis.place, axis.value)}));
  }
  if (answer.axes.empty()) return;
  const int place = answer.axes.front();
  const double by = std::abs(answer.wanted.front().value - from[place]);
  give(answer, Reason::heldAxis, by, unitAt(machine, place));
  answer.text = filled(sentences::kStays,
                       {allOf(names), allOf(stands), amountAt(machine, place, by)}, language);
}

Unit unitAt(const Machine& machine, int place) {
  const auto type = machine->getAxisElem(place + 1)->getElemType();
  return type == KMachineElem::KMET_TYPE_AROT ? Unit::degree : Unit::mm;
}

Words amountAt(const Machine& machine, int place, double value) {
  return unitAt(machine, place) == Unit::degree ? degrees(value) : millimetres(value);
}

std::vector<int> movedLocks(const Machine& machine, const Position& from, const Position& to) {
  std::vector<int> moved;
  for (int i = 0; i < to.size(); ++i) {
    if (machine->getAxisElem(i + 1)->isLocked() && from[i] != to[i]) moved.push_back(i);
  }
  return moved;
}

}  // namespace korvo
