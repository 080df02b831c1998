#include "toolkit/answer/Candidates.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "platform/zgeo/UAlgo.h"
#include "toolkit/answer/FreeAxes.h"

using zgeo::UAlgo;
using zgeo::UVec3d;
using zkin::KMachineElem;

namespace korvo {
namespace {

constexpr double kTurn = 360.0;

// What is solved onto a limit misses it by rounding (mm or degrees; seen: 1e-13).
constexpr double kOnLimit = 1e-9;

// The value, full turns away, that is inside and nearest to `start`; the value itself without such.
double insideValue(const KMachineElem& axis, double value, double start) {
  double turned = value + kTurn * std::round((start - value) / kTurn);
  if (axis.hasMin() && turned < axis.getMin()) {
    turned += kTurn * std::ceil((axis.getMin() - turned) / kTurn);
  }
  if (axis.hasMax() && turned > axis.getMax()) {
    turned -= kTurn * std::ceil((turned - axis.getMax()) / kTurn);
  }
  const bool isInside =
      (!axis.hasMin() || turned >= axis.getMin()) && (!axis.hasMax() || turned <= axis.getMax());
  return isInside ? turned : value;
}

bool isOutside(const KMachineElem& axis, double value) {
  return (axis.hasMin() && value < axis.getMin()) || (axis.hasMax() && value > axis.getMax());
}

double onLimit(const KMachineElem& axis, double value) {
  if (axis.hasMin() && std::abs(value - axis.getMin()) < kOnLimit) return axis.getMin();
  if (axis.hasMax() && std::abs(value - axis.getMax()) < kOnLimit) return axis.getMax();
  return value;
}

// An angle without effect comes as -1000.
double turnOf(double angle) { return angle < -100 ? 0.0 : angle * 180.0 / std::numbers::pi; }

bool isStaying(double angle) { return std::abs(turnOf(angle)) < kOnLimit; }

using Triple = std::array<StandingAxis, 3>;

// In the order in which the library tries them.
std::optional<Triple> independentTriple(const std::vector<StandingAxis>& fromTool, UVec3d way,
                                        UVec3d& xyz) {
  for (auto i = fromTool.begin(); i != fromTool.end(); ++i) {
    for (auto j = i + 1; j != fromTool.end(); ++j) {
      for (auto k = j + 1; k != fromTool.end(); ++k) {
        const int code = UAlgo::_solveXYZ(way, i->direction, j->direction, k->direction, xyz);
        if (code == 0) return Triple{*i, *j, *k};
      }
    }
  }
  return {};
}

std::vector<StandingAxis> linearFromTool(const Machine& machine, const Position& at) {
  auto axes = freeAxes(*machine, at, KMachineElem::KMET_TYPE_ALIN);
  std::reverse(axes.begin(), axes.end());
  return axes;
}

KMachineElem* mutableElem(Machine& machine, const KMachineElem* e) {
  for (int r = 0; r < machine->getElemNumber(); ++r) {
    if (machine->getElemByRank(r) == e) return machine->getElemByRank(r);
  }
  return nullptr;
}

}  // namespace

void bringInside(const Machine& machine, const Position& from, Position& at) {
  for (int i = 0; i < at.size(); ++i) {
    const KMachineElem& axis = *machine->getAxisElem(i + 1);
    if (axis.isLocked() || !isOutside(axis, at[i])) continue;
    at[i] = onLimit(axis, at[i]);
    const bool isRotary = axis.getElemType() == KMachineElem::KMET_TYPE_AROT;
    if (isRotary && isOutside(axis, at[i]))
      at[i] = onLimit(axis, insideValue(axis, at[i], from[i]));
  }
}

std::vector<Position> otherBranches(const Machine& machine, const Position& at) {
  const auto axes = isArmClass(*machine) ? wristAxes(*machine, at)
                                         : freeAxes(*machine, at, KMachineElem::KMET_TYPE_AROT);
  const UVec3d tool = toolDirection(*machine, at);
  std::vector<Position> branches;
  std::vector<zgeo::UVec2d> pairs;
  for (auto a = axes.begin(); a != axes.end(); ++a) {
    for (auto b = a + 1; b != axes.end(); ++b) {
      UAlgo::_solveRot_conical(tool, tool, a->direction, b->direction, pairs);
      for (const zgeo::UVec2d& turns : pairs) {
        if (isStaying(turns.x) && isStaying(turns.y)) continue;
        branches.push_back(at);
        branches.back()[a->place()] += turnOf(turns.x);
        branches.back()[b->place()] += turnOf(turns.y);
      }
    }
  }
  return branches;
}

void lockSpareLinear(Machine& machine, const Position& from) {
  const auto axes = linearFromTool(machine, from);
  UVec3d xyz;
  const auto triple = independentTriple(axes, UVec3d(), xyz);
  if (!triple) return;
  for (const StandingAxis& axis : axes) {
    const bool isUsed = std::any_of(triple->begin(), triple->end(), [&](const StandingAxis& used) {
      return used.element == axis.element;
    });
    if (!isUsed) mutableElem(machine, axis.element)->setLocked(true);
  }
}

void pinLocked(Machine& machine, const Position& from) {
  for (int r = 0; r < machine->getElemNumber(); ++r) {
    KMachineElem* e = machine->getElemByRank(r);
    if (e->getElemType() != KMachineElem::KMET_TYPE_AROT || !e->isLocked()) continue;
    const int place = e->getValueIndex();
    if (place < 0) continue;
    e->setMin(from[place], true);
    e->setMax(from[place], true);
  }
}

Position carried(const Machine& machine, const Target& target, const Position& from) {
  Position at = from;
  UVec3d nose, direction, xyz;
  machine->getTool(from, nose, direction, -1);
  const UVec3d way = target.tip - (nose - direction * machine->getTHELength(-1));
  const auto triple = independentTriple(linearFromTool(machine, from), way, xyz);
  if (!triple) return at;
  at[(*triple)[0].place()] += xyz.x;
  at[(*triple)[1].place()] += xyz.y;
  at[(*triple)[2].place()] += xyz.z;
  return at;
}

}  // namespace korvo
