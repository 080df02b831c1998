// What can be said of a position by itself: how far it misses, its margins, its singular
// directions.
#include <cmath>

#include "toolkit/answer/Answer.h"
#include "toolkit/answer/FreeAxes.h"
#include "toolkit/solve/Cone.h"

using zgeo::UVec3d;
using zkin::KMachineElem;
using zkin::KMachineValueBase;

namespace korvo {
namespace {

Singularity singularityOf(const StandingAxis& first, const StandingAxis& second,
                          const UVec3d& tool) {
  const Band band =
      bandOf(angleBetween(first.direction, second.direction), angleBetween(second.direction, tool));
  return {first.place(), second.place(), band.toEdge(angleBetween(first.direction, tool))};
}

}  // namespace

Target fromPartZero(const Machine& machine, const Target& target) {
  Target inMachine = target;
  machine->getUNI2MAC().apply(inMachine.tip);
  machine->getUNI2MAC().applyDir(inMachine.direction);
  return inMachine;
}

Residual residual(const Machine& machine, const KMachineValueBase& v, const Target& target) {
  UVec3d nose, direction;
  machine->getTool(v, nose, direction, -1);
  const UVec3d tip = nose - direction * machine->getTHELength(-1);
  return {tip.distanceTo(target.tip), angleBetween(direction, target.direction.normalised())};
}

std::vector<Margin> margins(const Machine& machine, const KMachineValueBase& v) {
  std::vector<Margin> all(static_cast<std::size_t>(v.size()));
  for (int i = 0; i < v.size(); ++i) {
    const KMachineElem* axis = machine->getAxisElem(i + 1);
    if (axis->hasMin()) all[static_cast<std::size_t>(i)].toMin = v[i] - axis->getMin();
    if (axis->hasMax()) all[static_cast<std::size_t>(i)].toMax = axis->getMax() - v[i];
  }
  return all;
}

std::optional<Singularity> singularity(const Machine& machine, const KMachineValueBase& v) {
  const std::vector<StandingAxis> axes = isArmClass(*machine)
                                             ? wristAxes(*machine, v)
                                             : freeAxes(*machine, v, KMachineElem::KMET_TYPE_AROT);
  const UVec3d tool = toolDirection(*machine, v);
  std::optional<Singularity> widest;
  for (auto first = axes.begin(); first != axes.end(); ++first) {
    for (auto second = first + 1; second != axes.end(); ++second) {
      const Singularity pair = singularityOf(*first, *second, tool);
      if (!widest || pair.angleRad > widest->angleRad) widest = pair;
    }
  }
  return widest;
}

double distance(const KMachineValueBase& a, const KMachineValueBase& b) {
  double sum = 0.0;
  for (int i = 0; i < a.size(); ++i) sum += std::abs(a[i] - b[i]);
  return sum;
}

const char* toString(Status status) {
  switch (status) {
    case Status::reached:
      return "reached";
    case Status::outsideLimits:
      return "outside-limits";
    default:
      return "not-reached";
  }
}

const char* toString(Reason reason) {
  static constexpr const char* kNames[] = {"none",         "no-direction",   "no-rotary-axis",
                                           "outside-cone", "outside-limits", "out-of-reach",
                                           "linear-axes",  "locked-axis",    "held-axis",
                                           "start-of-arm", "no-solver",      "missed"};
  return kNames[static_cast<std::size_t>(reason)];
}

}  // namespace korvo
