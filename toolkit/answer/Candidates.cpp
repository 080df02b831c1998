#include "toolkit/answer/Candidates.h"

#include <algorithm>
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

namespace {

// Where a joint carries a point by a turn of one radian.
UVec3d motionOf(const Machine& machine, const StandingAxis& joint, const UVec3d& point,
                const Position& at) {
  UVec3d direction, onLine;
  machine->getElemAxis(at, joint.element->getElemIndex(), direction, onLine);
  return direction.normalised() ^ (point - onLine);
}

void turnWrist(const Machine& machine, const UVec3d& direction, Position& at) {
  const auto axes = wristAxes(*machine, at);
  std::vector<zgeo::UVec2d> pairs;
  UAlgo::_solveRot_conical(toolDirection(*machine, at), direction, axes[0].direction,
                           axes[1].direction, pairs);
  const auto cost = [](const zgeo::UVec2d& turns) {
    return std::abs(turnOf(turns.x)) + std::abs(turnOf(turns.y));
  };
  const auto least = std::min_element(
      pairs.begin(), pairs.end(), [&](const auto& a, const auto& b) { return cost(a) < cost(b); });
  if (least == pairs.end()) return;
  at[axes[0].place()] += turnOf(least->x);
  at[axes[1].place()] += turnOf(least->y);
}

}  // namespace

void polishArm(const Machine& machine, const UVec3d& centre, const UVec3d& way,
               const UVec3d& direction, Position& at) {
  const auto joints = jointsOf(*machine, at);
  if (joints.size() < 3) return;
  UVec3d turns;
  const auto motion = [&](int i) {
    return motionOf(machine, joints[static_cast<std::size_t>(i)], centre, at);
  };
  if (UAlgo::_solveXYZ(way, motion(0), motion(1), motion(2), turns) != 0) return;
  at[joints[0].place()] += turns.x * 180.0 / std::numbers::pi;
  at[joints[1].place()] += turns.y * 180.0 / std::numbers::pi;
  at[joints[2].place()] += turns.z * 180.0 / std::numbers::pi;
  turnWrist(machine, direction, at);
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

}  // namespace korvo
