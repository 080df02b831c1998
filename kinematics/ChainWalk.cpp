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

namespace {

void slide(UMatrix& placed, const UVec3d& by) { placed.setOrigin(placed.getOrigin() + by); }

// The same as `_rotation(axis, point, angle) * placed` of rigid transforms, without the products
// with their last rows.
void turn(UMatrix& placed, const UMatrix& rotation, const UVec3d& point) {
  for (int j = 0; j < 3; ++j) {
    UVec3d column(placed(0, j), placed(1, j), placed(2, j));
    rotation.applyDir(column);
    placed(0, j) = column.x, placed(1, j) = column.y, placed(2, j) = column.z;
  }
  placed.setOrigin(point + rotation * (placed.getOrigin() - point));
}

}  // namespace

void moveByOwn(const MachineView& machine, const KMachineValueBase& v, const KMachineElem& e,
               UMatrix& placed) {
  UVec3d dir = e.getElemAxis();
  placed.applyDir(dir);
  switch (e.getElemType()) {
    case KMachineElem::KMET_TYPE_AROT:
      return turn(placed, UMatrix::_rotation(dir, axisValue(machine, v, e) * kDegToRad),
                  placed * e.getElemPivot());
    case KMachineElem::KMET_TYPE_ALIN:
      return slide(placed, dir * axisValue(machine, v, e));
    case KMachineElem::KMET_TYPE_DGUN:
      return slide(placed, dir * e.getTHELength());
    default:
      return;
  }
}

UMatrix motionOf(const MachineView& machine, const KMachineValueBase& v, const KMachineElem* e) {
  UMatrix motion;
  if (!e) return motion;
  for (const KMachineElem* c : ChainWalk(machine.elements, e)) {
    if (c == e && e->isInverted()) break;  // moved only by what carries it
    moveByOwn(machine, v, *c, motion);
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
    if (previous[r] != kNoRank) after[r] = after[previous[r]];
    out[r] = after[r];
    moveByOwn(machine, v, elements[r], after[r]);
    if (!elements[r].isInverted()) out[r] = after[r];
  }
}

}  // namespace zkin
