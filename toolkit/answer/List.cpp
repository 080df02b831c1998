// All positions of a target.
#include <algorithm>
#include <tuple>

#include "toolkit/answer/Answer.h"
#include "toolkit/answer/Candidates.h"
#include "toolkit/answer/Carry.h"
#include "toolkit/answer/Explain.h"
#include "toolkit/answer/FreeAxes.h"
#include "toolkit/answer/Turns.h"

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

namespace {

// All full turns of positions, each once; as they are where these would be too many.
std::vector<Position> withTurns(const Machine& machine, bool isArm, const Position& from,
                                std::vector<Position> found) {
  const std::vector<int> places = turningPlaces(machine, isArm);
  Met met;
  std::vector<Position> apart;
  for (Position& at : found) {
    bringInside(machine, from, at);
    apart.push_back(at);
    unwind(machine, places, from, apart.back());
    if (!met.isNew(apart.back())) apart.pop_back();
  }
  const double most = static_cast<double>(apart.size()) * mostTurns(machine, places, from);
  if (most > static_cast<double>(kMostSeeds)) return found;
  std::vector<Position> all;
  for (const Position& at : apart) {
    for (Position& turned : turnsOf(machine, places, from, at)) all.push_back(std::move(turned));
  }
  return all;
}

}  // namespace

std::vector<Position> LibrarySolver::armCandidates(const Target& target, const Position& from) {
  std::vector<Position> arms;
  for (const Position& start : startsOfArm(machine_, from)) {
    solve(target, start, solved_);
    bringInside(machine_, start, solved_);
    const bool isKnown = std::find(arms.begin(), arms.end(), solved_) != arms.end();
    if (!isKnown && korvo::residual(machine_, solved_, target).isReached()) arms.push_back(solved_);
  }
  std::vector<Position> all;
  for (const Position& arm : arms) {
    all.push_back(arm);
    for (Position& branch : otherBranches(machine_, arm)) all.push_back(std::move(branch));
  }
  return withTurns(machine_, isArm_, from, std::move(all));
}

// Directions first: the library's lists go by the code of the last three linear axes, solved or
// not.
std::vector<Position> LibrarySolver::candidates(Machine machine, const Target& target,
                                                const Position& from) const {
  lockLinear(machine);
  PositionList angles;
  machine->getPossibleAngles(target.direction, angles.raw(), -1);
  std::vector<Position> turned;
  Position start = from;
  for (const zkin::KMachineValueBase* entry : angles) {
    *start = *entry;
    takeOthers(machine, from, start);
    turned.push_back(start);
    machine->getConfigPlus(start, target.tip, target.direction, turned.back());
    bringInside(machine, start, turned.back());
  }
  turned = withTurns(machine, isArm_, from, std::move(turned));
  for (Position& at : turned) at = carriedOn(target, from, judged(target, from, at)).position;
  return turned;
}

std::uint64_t LibrarySolver::list(const Target& target, const Position& from,
                                  std::vector<Position>& out) {
  Machine machine = machine_;
  pinLocked(machine, from);
  const std::uint64_t seeds = seedCount(machine);
  if (!isArm_ && seeds > kMostSeeds) return seeds;
  std::vector<Found> found;
  const auto take = [&](const Answer& answer) {
    if (answer.status != Status::reached) return;
    found.push_back({distance(answer.position, from), found.size(), answer.position});
  };
  take(best(target, from));
  for (Position& at : isArm_ ? armCandidates(target, from) : candidates(machine, target, from)) {
    take(judged(target, from, std::move(at)));
  }
  sortAndMerge(found, from, out);
  return seeds;
}

}  // namespace korvo
