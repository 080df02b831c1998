#include "kinematics/ChainWalk.h"

#include <algorithm>
#include <unordered_map>

using zgeo::UMatrix;

namespace zkin {

ChainWalk::ChainWalk(const std::vector<KMachineElem>& elements, const KMachineElem* e) {
  const KMachineElem** first = std::end(fixed_);
  for (; e && first != fixed_; e = elementOf(elements, e->getPrevIndex())) *--first = e;
  first_ = first;
  size_ = static_cast<std::size_t>(std::end(fixed_) - first);
  if (e) takeLong(elements, e);
}

ChainWalk::ChainWalk(const std::vector<KMachineElem>& elements, const std::vector<int>& ranks)
    : size_(ranks.size()) {
  const KMachineElem** to = fixed_;
  if (size_ > std::size(fixed_)) {
    heap_.resize(size_);
    to = heap_.data();
  }
  first_ = to;
  for (const int rank : ranks) *to++ = &elements[rank];
}

void ChainWalk::takeLong(const std::vector<KMachineElem>& elements, const KMachineElem* e) {
  heap_.assign(std::rbegin(fixed_), std::rend(fixed_));
  for (; e; e = elementOf(elements, e->getPrevIndex())) heap_.push_back(e);
  std::reverse(heap_.begin(), heap_.end());
  first_ = heap_.data();
  size_ = heap_.size();
}

// Deliberate: an inverted element moves in its declared sense what hangs on it; only as the target
// it leaves its own motion out. Tests: KMachineForward.InvertedTargetLeavesOutItsOwnMotion and
// .InvertedAxisTurnsWhatHangsOnItInItsDeclaredSense.
Placement placementOf(const MachineView& machine, const KMachineValueBase& v,
                      const ChainWalk& chain) {
  Placement motion;
  const AxisValues values(machine, v);
  ChainTurns turns(values, chain.end());
  for (const KMachineElem* const* at = chain.begin(); at != chain.end(); ++at) {
    if (at + 1 == chain.end() && (*at)->isInverted()) break;  // moved only by what carries it
    moveByOwn(values, **at, motion, [&] { return turns.at(at); });
  }
  return motion;
}

// Deliberate: elements hooked to one of the chain are stored for the host and get nothing.
// Test: KMachineForward.HookedElementsGetNothingFromUpdateDHm.
void updateRecords(const MachineView& machine, const KMachineValueBase& v, const ChainWalk& chain) {
  const AxisValues values(machine, v);
  for (const KMachineElem* e : chain) {
    if (e->isActive() && e->getElemIndex() > 0) e->setUMVValue(values[*e]);
  }
}

namespace {

// The rank of the first element of each index.
std::unordered_map<int, std::size_t> ranksByIndex(const std::vector<KMachineElem>& elements) {
  std::unordered_map<int, std::size_t> ranks;
  ranks.reserve(elements.size());
  for (std::size_t r = 0; r < elements.size(); ++r) ranks.emplace(elements[r].getElemIndex(), r);
  return ranks;
}

constexpr std::size_t kNoRank = static_cast<std::size_t>(-1);

std::vector<std::size_t> predecessors(const std::vector<KMachineElem>& elements) {
  const auto ranks = ranksByIndex(elements);
  std::vector<std::size_t> result(elements.size(), kNoRank);
  for (std::size_t r = 0; r < elements.size(); ++r) {
    const auto found = ranks.find(elements[r].getPrevIndex());
    if (found != ranks.end()) result[r] = found->second;
  }
  return result;
}

// Ranks in an order in which every predecessor comes before its successors.
std::vector<std::size_t> rootsFirst(const std::vector<std::size_t>& previous) {
  std::vector<std::size_t> order, path;
  std::vector<bool> listed(previous.size(), false);
  for (std::size_t r = 0; r < previous.size(); ++r) {
    for (std::size_t p = r; p != kNoRank && !listed[p]; p = previous[p]) {
      listed[p] = true;
      path.push_back(p);
    }
    order.insert(order.end(), path.rbegin(), path.rend());
    path.clear();
  }
  return order;
}

}  // namespace

void motionsOf(const MachineView& machine, const KMachineValueBase& v, std::vector<UMatrix>& out) {
  const std::vector<KMachineElem>& elements = machine.elements;
  const std::vector<std::size_t> previous = predecessors(elements);
  const AxisValues values(machine, v);
  std::vector<Placement> after(elements.size());
  out.resize(elements.size());
  for (const std::size_t r : rootsFirst(previous)) {
    Placement placed = previous[r] == kNoRank ? Placement() : after[previous[r]];
    if (elements[r].isInverted()) out[r] = placed.matrix();
    moveByOwn(values, elements[r], placed,
              [&] { return korvo::rotations::sinCos(values[elements[r]] * kDegToRad); });
    if (!elements[r].isInverted()) out[r] = placed.matrix();
    after[r] = placed;
  }
}

}  // namespace zkin
