#include "toolkit/answer/Explain.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "toolkit/answer/ArmLayout.h"
#include "toolkit/answer/FreeAxes.h"
#include "toolkit/answer/Words.h"
#include "toolkit/solve/Cone.h"

using zgeo::UVec3d;
using zkin::KMachineElem;

namespace korvo {
namespace {

constexpr double kRadToDeg = 180.0 / std::numbers::pi;

void give(Answer& answer, Reason reason, double by, const std::string& text) {
  answer.reason = reason;
  answer.by = by;
  answer.text = text;
}

// --- the direction

struct Cone {
  Band band;
  const UVec3d* axis;
  std::string names;

  double missing(const UVec3d& direction) const {
    return band.missing(angleBetween(*axis, direction));
  }
};

std::string nameOf(const Machine& machine, const StandingAxis& axis) {
  return machine.axisNames()[axis.place()];
}

// What the axes can do for the direction: one a cone, two a band, several the band of any two.
std::vector<Cone> conesOf(const Machine& machine, const std::vector<StandingAxis>& axes,
                          const UVec3d& tool) {
  std::vector<Cone> cones;
  for (auto a = axes.begin(); a != axes.end(); ++a) {
    for (auto b = a + 1; b != axes.end(); ++b) {
      const Band band =
          bandOf(angleBetween(a->direction, b->direction), angleBetween(b->direction, tool));
      cones.push_back({band, &a->direction, nameOf(machine, *a) + " and " + nameOf(machine, *b)});
    }
  }
  if (axes.size() == 1) {
    const UVec3d& axis = axes.front().direction;
    cones.push_back({coneOf(angleBetween(axis, tool)), &axis, nameOf(machine, axes.front())});
  }
  return cones;
}

// The one that misses the direction by the least.
const Cone& nearestCone(const std::vector<Cone>& cones, const UVec3d& direction) {
  return *std::min_element(cones.begin(), cones.end(), [&](const Cone& a, const Cone& b) {
    return a.missing(direction) < b.missing(direction);
  });
}

void explainDirection(const Machine& machine, const Target& target, const Position& from,
                      Answer& answer) {
  const auto axes = freeAxes(*machine, from, KMachineElem::KMET_TYPE_AROT);
  const std::vector<Cone> cones = conesOf(machine, axes, toolDirection(*machine, from));
  const Cone& nearest = nearestCone(cones, target.direction);
  const double least = nearest.missing(target.direction);
  const double degrees = least * kRadToDeg;
  give(answer, Reason::outsideCone, degrees,
       "the direction lies " + words(degrees) + " degrees beside " +
           (axes.size() == 1 ? "the cone that the tool describes about " : "what is reached by ") +
           nearest.names);
}

// An arm turns its wrist alone: what it left is what the wrist cannot do.
void explainWrist(Answer& answer) {
  const double degrees = answer.residual.directionRad * kRadToDeg;
  give(answer, Reason::outsideCone, degrees,
       "the wrist leaves the tool " + words(degrees) + " degrees from the direction");
}

void explainNoRotary(const Machine& machine, Answer& answer) {
  const double degrees = answer.residual.directionRad * kRadToDeg;
  give(answer, Reason::noRotaryAxis, degrees,
       "no free rotary axis: the tool points along " +
           words(toolDirection(*machine, answer.position)) + ", " + words(degrees) +
           " degrees from the direction");
}

void explainNoSolver(Answer& answer) {
  give(answer, Reason::noSolver, answer.residual.pointMm,
       "no solver for such a machine: it has neither three independent linear axes nor two rotary "
       "axes that turn the tool");
}

// --- the point

void explainLinear(const Machine& machine, Answer& answer) {
  const auto axes = freeAxes(*machine, answer.position, KMachineElem::KMET_TYPE_ALIN);
  give(answer, Reason::linearAxes, answer.residual.pointMm,
       (axes.size() < 3
            ? std::to_string(axes.size()) +
                  (axes.size() == 1 ? " free linear axis does" : " free linear axes do") +
                  " not carry the tool there"
            : std::string("no three free linear axes in independent directions")) +
           ": the point is missed by " + words(answer.residual.pointMm) + " mm");
}

void explainArm(const Machine& machine, const Target& target, Answer& answer) {
  const ArmLayout arm(*machine);
  if (const auto missing = arm.outOfReach(target)) {
    give(answer, Reason::outOfReach, *missing,
         "out of reach: the wrist centre would lie " + words(*missing) +
             " mm beyond what the arm reaches");
    return;
  }
  const std::string missed =
      "missed by the arm solver, by " + words(answer.residual.pointMm) + " mm";
  give(answer, Reason::missed, answer.residual.pointMm, missed);
  answer.conditions = arm.brokenByMachine();
  if (answer.conditions.empty()) answer.conditions = arm.brokenBehind(target);
  if (!answer.conditions.empty()) return;
  give(answer, Reason::startOfArm, answer.residual.pointMm,
       missed +
           ": from this start it turns the first joint to the side from which the arm does not "
           "reach");
}

}  // namespace

void explainMiss(const Machine& machine, const Target& target, const Position& from,
                 Answer& answer) {
  const std::string moved = movedLocks(machine, from, answer.position);
  const bool isArm = isArmClass(*machine);
  const bool isTurned = answer.residual.directionRad <= kReachedRad;
  const bool hasFree = !freeAxes(*machine, from, KMachineElem::KMET_TYPE_AROT).empty();
  const bool hasRotary = isArm ? !wristAxes(*machine, from).empty() : hasFree;
  if (!moved.empty()) {
    give(answer, Reason::lockedAxis, 0.0, "the arm solver moves locked axes: " + moved);
  } else if (hasFree && !hasRotary) {
    explainNoSolver(answer);
  } else if (!isTurned && !hasRotary) {
    explainNoRotary(machine, answer);
  } else if (!isTurned && isArm) {
    explainWrist(answer);
  } else if (!isTurned) {
    explainDirection(machine, target, from, answer);
  } else if (isArm && hasRotary) {
    explainArm(machine, target, answer);
  } else {
    explainLinear(machine, answer);
  }
}

// At the same heading about the first axis, any where the target lies along it.
std::optional<UVec3d> nearestDirection(const Machine& machine, const Target& target,
                                       const Position& from) {
  constexpr double kInside = 1e-7;
  const auto axes = freeAxes(*machine, from, KMachineElem::KMET_TYPE_AROT);
  if (axes.size() < 2) return {};
  const std::vector<Cone> cones = conesOf(machine, axes, toolDirection(*machine, from));
  const Cone& cone = nearestCone(cones, target.direction);
  const UVec3d along = cone.axis->normalised();
  UVec3d across = target.direction.normalised() - along * (target.direction.normalised() * along);
  if (across.norm() < kInside)
    across = along ^ (std::abs(along.x) < 0.5 ? UVec3d(1, 0, 0) : UVec3d(0, 1, 0));
  const double margin = std::min(kInside, (cone.band.high - cone.band.low) / 2);
  const double angle = std::clamp(angleBetween(along, target.direction), cone.band.low + margin,
                                  cone.band.high - margin);
  return along * std::cos(angle) + across.normalised() * std::sin(angle);
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

void explainOutside(const Machine& machine, Answer& answer) {
  answer.outside = outsideOf(answer.margins);
  std::string list;
  for (const AxisOutside& axis : answer.outside) {
    const bool isRotary =
        machine->getAxisElem(axis.place + 1)->getElemType() == KMachineElem::KMET_TYPE_AROT;
    appendWord(list, machine.axisNames()[axis.place] + (axis.by < 0 ? " below by " : " above by ") +
                         words(std::abs(axis.by)) + (isRotary ? " degrees" : " mm"));
  }
  const double by = answer.outside.empty() ? 0.0 : std::abs(answer.outside.front().by);
  give(answer, Reason::outsideLimits, by, "outside the limits: " + list);
}

std::string movedLocks(const Machine& machine, const Position& from, const Position& to) {
  std::string moved;
  for (int i = 0; i < to.size(); ++i) {
    if (machine->getAxisElem(i + 1)->isLocked() && from[i] != to[i]) {
      appendWord(moved, machine.axisNames()[i]);
    }
  }
  return moved;
}

}  // namespace korvo
