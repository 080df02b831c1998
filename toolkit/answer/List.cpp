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
std::uint64_t startsOf(const KMachineElem& axis) {
  constexpr double kTurn = 360.0;
  const double low = axis.hasMin() ? std::max(axis.getMin(), -kTurn) : -kTurn;
  const double high = axis.hasMax() ? std::min(axis.getMax(), kTurn) : kTurn;
  std::vector<double> starts;
  for (const double angle :
       {(low + high) / 2, low, high, -180.0, 180.0, -90.0, 90.0, -270.0, 270.0}) {
    const bool isNew = std::find(starts.begin(), starts.end(), angle) == starts.end();
    if (isNew && low <= angle && angle <= high) starts.push_back(angle);
  }
  return starts.size();
}

// The lists know rotary starts alone: all other axes stand at 0 in them.
void takeOthers(const Machine& machine, const Position& from, Position& at) {
  for (int i = 0; i < at.size(); ++i) {
    const KMachineElem& axis = *machine->getAxisElem(i + 1);
    if (axis.getElemType() != KMachineElem::KMET_TYPE_AROT) at[i] = from[i];
  }
}

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
    if (isRotary && e->getValueIndex() >= 0) count *= startsOf(*e);
  }
  return count;
}

std::uint64_t Solver::list(const Target& target, const Position& from,
                           std::vector<Position>& out) const {
  Machine machine = machine_;
  pinLocked(machine, from);
  lockSpareLinear(machine, from);
  const std::uint64_t seeds = seedCount(machine);
  if (seeds > kMostSeeds) return seeds;
  PositionList angles;
  machine->getPossibleAngles(target.direction, angles.raw(), -1);
  std::vector<Found> found;
  Position start = from, at = from;
  for (const zkin::KMachineValueBase* entry : angles) {
    *start = *entry;
    takeOthers(machine, from, start);
    *at = *start;
    machine->getConfigPlus(start, target.tip, target.direction, at);
    bringInside(machine, start, at);
    const Answer answer = judged(target, from, at);
    if (answer.status == Status::reached) found.push_back({distance(at, from), found.size(), at});
  }
  sortAndMerge(found, from, out);
  return seeds;
}

}  // namespace korvo
