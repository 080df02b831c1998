// All positions of a target.
#include <algorithm>
#include <tuple>

#include "toolkit/answer/Answer.h"
#include "toolkit/answer/Candidates.h"
#include "toolkit/answer/Explain.h"
#include "toolkit/answer/FreeAxes.h"

using zkin::KMachineElem;

namespace korvo {
namespace {

// The library starts every rotary axis of the chain, the locked ones too, from these places of its
// range within one turn either way.
std::vector<double> startsOf(const KMachineElem& axis) {
  constexpr double kTurn = 360.0;
  const double low = axis.hasMin() ? std::max(axis.getMin(), -kTurn) : -kTurn;
  const double high = axis.hasMax() ? std::min(axis.getMax(), kTurn) : kTurn;
  std::vector<double> starts;
  for (const double angle :
       {(low + high) / 2, low, high, -180.0, 180.0, -90.0, 90.0, -270.0, 270.0}) {
    const bool isNew = std::find(starts.begin(), starts.end(), angle) == starts.end();
    if (isNew && low <= angle && angle <= high) starts.push_back(angle);
  }
  return starts;
}

// The lists know rotary starts alone: all other axes stand at 0 in them.
void takeOthers(const Machine& machine, const Position& from, Position& at) {
  for (int i = 0; i < at.size(); ++i) {
    const KMachineElem& axis = *machine->getAxisElem(i + 1);
    if (axis.getElemType() != KMachineElem::KMET_TYPE_AROT) at[i] = from[i];
  }
}

// --- arms: the lists of the library turn them to the machine's origin first, where most of them
// do not reach

// `from`, with the first three joints at every combination of their starts: the solver takes the
// side of the base and the elbow that lie nearer.
std::vector<Position> startsOfArm(const Machine& machine, const Position& from) {
  std::vector<Position> starts{from};
  int joints = 0;
  for (const KMachineElem* e : machine->getToolChain(false, -1)) {
    const int place = e->getValueIndex();
    if (e->getElemType() != KMachineElem::KMET_TYPE_AROT || place < 0 || ++joints > 3) continue;
    std::vector<Position> turned;
    for (const Position& start : starts) {
      for (const double angle : startsOf(*e)) {
        turned.push_back(start);
        turned.back()[place] = angle;
      }
    }
    starts = std::move(turned);
  }
  return starts;
}

// The same place of every joint that turns the tool, with all its full turns inside the limits. The
// last joint turns about the tool and stays where it is.
std::vector<Position> turnsOf(const Machine& machine, const Position& from, const Position& at) {
  constexpr double kTurn = 360.0;
  std::vector<Position> all{at};
  for (int i = 0; i < at.size(); ++i) {
    const KMachineElem& axis = *machine->getAxisElem(i + 1);
    if (axis.getElemType() != KMachineElem::KMET_TYPE_AROT || at[i] == from[i]) continue;
    const double low = axis.hasMin() ? axis.getMin() : -kTurn;
    const double high = axis.hasMax() ? axis.getMax() : kTurn;
    for (std::size_t k = 0, count = all.size(); k < count; ++k) {
      for (const double turn : {-2 * kTurn, -kTurn, kTurn, 2 * kTurn}) {
        if (at[i] + turn < low || at[i] + turn > high) continue;
        all.push_back(all[k]);
        all.back()[i] += turn;
      }
    }
  }
  return all;
}

// --- distances

struct Found {
  double distance;
  std::size_t order;  // in which it was found: decides between equally near ones
  Position position;
};

// Nearest first, each once: equal positions are equally far to within their tolerance, so they
// stand close together.
void sortAndMerge(std::vector<Found>& found, const Position& from, std::vector<Position>& out) {
  const double near = 2e-5 * from.size();
  std::sort(found.begin(), found.end(), [](const Found& a, const Found& b) {
    return std::tie(a.distance, a.order) < std::tie(b.distance, b.order);
  });
  std::vector<double> distances;
  for (Found& f : found) {
    bool isKnown = false;
    for (std::size_t i = out.size(); i > 0 && f.distance - distances[i - 1] <= near; --i) {
      isKnown = isKnown || out[i - 1] == f.position;
    }
    if (isKnown) continue;
    distances.push_back(f.distance);
    out.push_back(std::move(f.position));
  }
}

}  // namespace

std::uint64_t seedCount(const Machine& machine) {
  std::uint64_t count = 1;
  for (const KMachineElem* e : machine->getToolChain(false, -1)) {
    const bool isRotary = e->getElemType() == KMachineElem::KMET_TYPE_AROT;
    if (isRotary && e->getValueIndex() >= 0) count *= startsOf(*e).size();
  }
  return count;
}

std::vector<Position> Solver::armCandidates(const Target& target, const Position& from) const {
  std::vector<Position> arms;
  Position at = from;
  for (const Position& start : startsOfArm(machine_, from)) {
    *at = *start;
    machine_->getConfigPlus(start, target.tip, target.direction, at);
    bringInside(machine_, start, at);
    const bool isKnown = std::find(arms.begin(), arms.end(), at) != arms.end();
    if (!isKnown && korvo::residual(machine_, at, target).isReached()) arms.push_back(at);
  }
  std::vector<Position> all;
  for (const Position& arm : arms) {
    std::vector<Position> branches = otherBranches(machine_, arm);
    branches.push_back(arm);
    for (Position& branch : branches) {
      bringInside(machine_, from, branch);
      for (Position& turned : turnsOf(machine_, from, branch)) all.push_back(std::move(turned));
    }
  }
  return all;
}

std::vector<Position> Solver::candidates(const Machine& machine, const Target& target,
                                         const Position& from) const {
  PositionList angles;
  machine->getPossibleAngles(target.direction, angles.raw(), -1);
  std::vector<Position> all;
  Position start = from;
  for (const zkin::KMachineValueBase* entry : angles) {
    *start = *entry;
    takeOthers(machine, from, start);
    all.push_back(start);
    machine->getConfigPlus(start, target.tip, target.direction, all.back());
    bringInside(machine, start, all.back());
  }
  return all;
}

std::uint64_t Solver::list(const Target& target, const Position& from,
                           std::vector<Position>& out) const {
  Machine machine = machine_;
  pinLocked(machine, from);
  lockSpareLinear(machine, from);
  const std::uint64_t seeds = seedCount(machine);
  if (!isArm_ && seeds > kMostSeeds) return seeds;
  std::vector<Found> found;
  for (Position& at : isArm_ ? armCandidates(target, from) : candidates(machine, target, from)) {
    const Answer answer = judged(target, from, at);
    if (answer.status != Status::reached) continue;
    found.push_back({distance(at, from), found.size(), std::move(at)});
  }
  sortAndMerge(found, from, out);
  return seeds;
}

}  // namespace korvo
