#include "kinematics/ChainWalk.h"

#include <algorithm>
#include <unordered_map>

#include "platform/rotations/RotationMatrix.h"

using zgeo::UMatrix;
using zgeo::UVec3d;

namespace zkin {

ChainWalk::ChainWalk(const std::vector<KMachineElem>& elements, const KMachineElem* e) {
  for (; e; e = elementOf(elements, e->getPrevIndex())) addBefore(e);
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

// Deliberate: an axis of the frame's index, or beyond the numbers, stays (test:
// KMachineForward.AxisWithoutAPlaceInThePositionStays); one in a gap of the numbers reads the first
// value (KMachineForward.AxisAddedInAGapOfTheNumbersMovesByTheFirstValue).
double axisValue(const MachineView& machine, const KMachineValueBase& v, const KMachineElem& axis) {
  const std::size_t k = static_cast<std::size_t>(axis.getElemIndex()) - 1;
  if (axis.getElemIndex() < 1 || k >= machine.axisValueIndex.size()) return 0.0;
  return v[machine.axisValueIndex[k]];
}

namespace {

// `placed` after a slide: what it carries starts from another point.
void slide(UMatrix& placed, const UVec3d& by) { placed.setOrigin(placed * by); }

// `placed * _rotation(axis, point, angle)`, inline and without the products with the last rows:
// the rotation stays in registers.
void turn(UMatrix& placed, const UVec3d& axis, const UVec3d& point, double angle) {
  const auto [x, y, z] = korvo::rotations::rotationMatrix({axis.x, axis.y, axis.z}, angle);
  const auto times = [&point](const korvo::rotations::Vec3& row) {
    return row[0] * point.x + row[1] * point.y + row[2] * point.z;
  };
  placed.setOrigin(placed * (point - UVec3d(times(x), times(y), times(z))));
  for (int i = 0; i < 3; ++i) {
    const double a = placed(i, 0), b = placed(i, 1), c = placed(i, 2);
    for (int j = 0; j < 3; ++j) placed(i, j) = a * x[j] + b * y[j] + c * z[j];
  }
}

}  // namespace

void moveByOwn(const MachineView& machine, const KMachineValueBase& v, const KMachineElem& e,
               UMatrix& placed) {
  switch (e.getElemType()) {
    case KMachineElem::KMET_TYPE_AROT:
      return turn(placed, e.getElemAxis(), e.getElemPivot(), axisValue(machine, v, e) * kDegToRad);
    case KMachineElem::KMET_TYPE_ALIN:
      return slide(placed, e.getElemAxis() * axisValue(machine, v, e));
    case KMachineElem::KMET_TYPE_DGUN:
      return slide(placed, e.getElemAxis() * e.getTHELength());
    default:
      return;
  }
}

// Deliberate: an inverted element moves in its declared sense what hangs on it; only as the target
// it leaves its own motion out. Tests: KMachineForward.InvertedTargetLeavesOutItsOwnMotion and
// .InvertedAxisTurnsWhatHangsOnItInItsDeclaredSense.
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
