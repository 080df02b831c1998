#include "kinematics/ChainWalk.h"

#include <algorithm>
#include <unordered_map>

#include "kinematics/KMachine.h"

using zgeo::UMatrix;
using zgeo::UVec3d;

namespace zkin {

ChainWalk::ChainWalk(const std::vector<KMachineElem>& elements, const KMachineElem* e) {
  for (; e; e = KMachine::_getElemByIndex(elements, e->getPrevIndex())) addBefore(e);
  if (heap_.empty()) {
    first_ = fixed_ + (kChainFixed - size_);
  } else {
    std::reverse(heap_.begin(), heap_.end());
    first_ = heap_.data();
  }
}

void ChainWalk::addBefore(const KMachineElem* e) {
  if (size_ == kChainFixed) heap_.assign(std::rbegin(fixed_), std::rend(fixed_));
  if (size_ >= kChainFixed) {
    heap_.push_back(e);
  } else {
    fixed_[kChainFixed - 1 - size_] = e;
  }
  ++size_;
}

double axisValue(const MachineView& machine, const KMachineValueBase& v, const KMachineElem& axis) {
  const std::size_t k = static_cast<std::size_t>(axis.getElemIndex()) - 1;
  if (axis.getElemIndex() < 1 || k >= machine.axisValueIndex.size()) return 0.0;
  return v[machine.axisValueIndex[k]];
}

UMatrix afterOwnMotion(const MachineView& machine, const KMachineValueBase& v,
                       const KMachineElem& e, const UMatrix& placed) {
  UVec3d dir = e.getElemAxis();
  switch (e.getElemType()) {
    case KMachineElem::KMET_TYPE_AROT: {
      placed.applyDir(dir);
      const UVec3d point = placed * e.getElemPivot();
      return UMatrix::_rotation(dir, point, axisValue(machine, v, e) * kDegToRad) * placed;
    }
    case KMachineElem::KMET_TYPE_ALIN:
      placed.applyDir(dir);
      return UMatrix::_translation(dir * axisValue(machine, v, e)) * placed;
    case KMachineElem::KMET_TYPE_DGUN:
      placed.applyDir(dir);
      return UMatrix::_translation(dir * e.getTHELength()) * placed;
    default:
      return placed;
  }
}

UMatrix motionOf(const MachineView& machine, const KMachineValueBase& v, const KMachineElem* e) {
  UMatrix motion;
  if (!e) return motion;
  for (const KMachineElem* c : ChainWalk(machine.elements, e)) {
    if (c == e && e->isInverted()) break;  // moved only by what carries it
    motion = afterOwnMotion(machine, v, *c, motion);
  }
  return motion;
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
  std::vector<UMatrix> after(elements.size());
  out.assign(elements.size(), UMatrix());
  for (const std::size_t r : rootsFirst(previous)) {
    const UMatrix before = previous[r] == kNoRank ? UMatrix() : after[previous[r]];
    after[r] = afterOwnMotion(machine, v, elements[r], before);
    out[r] = elements[r].isInverted() ? before : after[r];
  }
}

}  // namespace zkin
