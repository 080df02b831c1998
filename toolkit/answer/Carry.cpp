#include "toolkit/answer/Carry.h"

#include <algorithm>
#include <cmath>

#include "platform/zgeo/UAlgo.h"
#include "toolkit/answer/FreeAxes.h"

using zgeo::UAlgo;
using zgeo::UVec3d;
using zkin::KMachineElem;

namespace korvo {
namespace {

using Axes = std::vector<StandingAxis>;

// Volume of three unit directions: 6 degrees from the plane of the others an axis travels ten times
// what it carries.
constexpr double kNearlyFlat = 0.1;

// Every further axis multiplies the ways; more than three spare ones are not put on their limits.
constexpr std::size_t kMostOnLimits = 6;

Axes linearFromTool(const Machine& machine, const Position& at) {
  Axes axes = freeAxes(*machine, at, KMachineElem::KMET_TYPE_ALIN);
  std::reverse(axes.begin(), axes.end());
  return axes;
}

struct Move {
  const StandingAxis* axis;
  double by;
};
using Moves = std::vector<Move>;

// In the order in which the library tries them.
std::vector<Moves> byThree(const Axes& axes, const UVec3d& way) {
  std::vector<Moves> all;
  UVec3d by;
  for (auto i = axes.begin(); i != axes.end(); ++i) {
    for (auto j = i + 1; j != axes.end(); ++j) {
      for (auto k = j + 1; k != axes.end(); ++k) {
        if (UAlgo::_solveXYZ(way, i->direction, j->direction, k->direction, by) != 0) continue;
        all.push_back({{&*i, by.x}, {&*j, by.y}, {&*k, by.z}});
      }
    }
  }
  return all;
}

// What is left is square to both: the least that two axes can leave.
std::vector<Moves> byTwo(const Axes& axes, const UVec3d& way) {
  std::vector<Moves> all;
  UVec3d by;
  for (auto i = axes.begin(); i != axes.end(); ++i) {
    for (auto j = i + 1; j != axes.end(); ++j) {
      const UVec3d square = i->direction ^ j->direction;
      if (UAlgo::_solveXYZ(way, i->direction, j->direction, square, by) != 0) continue;
      all.push_back({{&*i, by.x}, {&*j, by.y}});
    }
  }
  return all;
}

std::vector<Moves> byOne(const Axes& axes, const UVec3d& way) {
  std::vector<Moves> all;
  for (const StandingAxis& axis : axes) {
    const double square = axis.direction.norm2();
    if (square > 0) all.push_back({{&axis, way * axis.direction / square}});
  }
  return all;
}

std::vector<Moves> movesOf(const Axes& axes, const UVec3d& way) {
  std::vector<Moves> all = byThree(axes, way);
  if (all.empty()) all = byTwo(axes, way);
  return all.empty() ? byOne(axes, way) : all;
}

UVec3d wayTo(const Machine& machine, const Target& target, const Position& at) {
  UVec3d nose, direction;
  machine->getTool(at, nose, direction, -1);
  return target.tip - (nose - direction * machine->getTHELength(-1));
}

// The limit that a value lies beyond; the value itself inside.
double limited(const KMachineElem& axis, double value) {
  if (axis.hasMin() && value < axis.getMin()) return axis.getMin();
  return axis.hasMax() && value > axis.getMax() ? axis.getMax() : value;
}

void carry(const Machine& machine, const Target& target, const Axes& axes, const Position& from,
           std::vector<Position>& ways);

// Every axis that `way` takes outside is put on its limit in turn, and the others carry the rest.
void carryFromLimits(const Machine& machine, const Target& target, const Axes& axes,
                     const Moves& moves, const Position& from, const Position& way,
                     std::vector<Position>& ways) {
  for (const Move& move : moves) {
    const int place = move.axis->place();
    const double limit = limited(*move.axis->element, way[place]);
    if (limit == way[place]) continue;
    Axes others = axes;
    std::erase_if(others, [&](const StandingAxis& a) { return a.element == move.axis->element; });
    Position onLimit = from;
    onLimit[place] = limit;
    carry(machine, target, others, onLimit, ways);
  }
}

void carry(const Machine& machine, const Target& target, const Axes& axes, const Position& from,
           std::vector<Position>& ways) {
  for (const Moves& moves : movesOf(axes, wayTo(machine, target, from))) {
    Position way = from;
    for (const Move& move : moves) way[move.axis->place()] += move.by;
    ways.push_back(way);
    if (axes.size() < 4 || axes.size() > kMostOnLimits) continue;
    carryFromLimits(machine, target, axes, moves, from, way, ways);
  }
}

}  // namespace

std::vector<Position> carriedWays(const Machine& machine, const Target& target,
                                  const Position& from) {
  std::vector<Position> ways;
  carry(machine, target, linearFromTool(machine, from), from, ways);
  return ways;
}

bool hasTurnedSpare(const Machine& machine) {
  int linear = 0;
  bool isTurned = false, hasRotary = false;
  for (const KMachineElem* e : machine->getToolChain(false, -1)) {
    const bool isRotary = e->getElemType() == KMachineElem::KMET_TYPE_AROT;
    hasRotary = hasRotary || (isRotary && linear > 0);
    if (e->getElemType() != KMachineElem::KMET_TYPE_ALIN || e->isLocked()) continue;
    ++linear;
    isTurned = isTurned || hasRotary;
  }
  return isTurned && linear > 3;
}

bool isNearlyDependent(const Machine& machine, const Position& at) {
  const Axes axes = linearFromTool(machine, at);
  const std::vector<Moves> all = byThree(axes, UVec3d());
  if (all.empty()) return false;
  const auto unit = [&](std::size_t i) { return all.front()[i].axis->direction.normalised(); };
  return std::abs((unit(0) ^ unit(1)) * unit(2)) < kNearlyFlat;
}

void lockLinear(Machine& machine) {
  for (int r = 0; r < machine->getElemNumber(); ++r) {
    KMachineElem* e = machine->getElemByRank(r);
    if (e->getElemType() == KMachineElem::KMET_TYPE_ALIN) e->setLocked(true);
  }
}

}  // namespace korvo
