#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "kinematics/KMachineElem.h"
#include "kinematics/KMachineValue.h"
#include "kinematics/Placement.h"
#include "kinematics/tolerances.h"
#include "platform/rotations/SinCos.h"
#include "platform/zgeo/UMatrix.h"

namespace zkin {

/// What a walk needs of a machine: its elements, and for axis number k at place k - 1 the place of
/// that axis in a position.
struct MachineView {
  const std::vector<KMachineElem>& elements;
  const std::vector<int>& axisValueIndex;
};

/// The first element in rank order with that index, or null.
inline const KMachineElem* elementOf(const std::vector<KMachineElem>& elements, int index) {
  for (const KMachineElem& e : elements) {
    if (e.getElemIndex() == index) return &e;
  }
  return nullptr;
}

/// The chain of an element, root first, without allocating up to kChainFixed elements.
///
/// Built by following previous-element indices from the element; the first element in rank order
/// carries an index. A cycle of links never ends: that is the interface's.
class ChainWalk {
 public:
  ChainWalk(const std::vector<KMachineElem>& elements, const KMachineElem* e);
  /// A chain whose ranks are known, root first.
  ChainWalk(const std::vector<KMachineElem>& elements, const std::vector<int>& ranks);
  ChainWalk(const ChainWalk&) = delete;
  ChainWalk& operator=(const ChainWalk&) = delete;

  const KMachineElem* const* begin() const { return first_; }
  const KMachineElem* const* end() const { return first_ + size_; }
  std::size_t size() const { return size_; }
  /// The element itself; null when there is none.
  const KMachineElem* last() const { return size_ == 0 ? nullptr : first_[size_ - 1]; }

 private:
  void takeLong(const std::vector<KMachineElem>& elements, const KMachineElem* e);

  const KMachineElem* fixed_[kChainFixed];  // filled from its end, so the root comes first
  std::vector<const KMachineElem*> heap_;   // the whole chain once it outgrows fixed_
  const KMachineElem* const* first_ = nullptr;
  std::size_t size_ = 0;
};

/// The values of the axes at a position.
class AxisValues {
 public:
  AxisValues(const MachineView& machine, const KMachineValueBase& v)
      : places_(machine.axisValueIndex.data()),
        count_(machine.axisValueIndex.size()),
        values_(v.get()),
        last_(v.size() - 1) {}

  // Deliberate: an axis of the frame's index, or beyond the numbers, stays (test:
  // KMachineForward.AxisWithoutAPlaceInThePositionStays); one in a gap of the numbers reads the
  // first value (KMachineForward.AxisAddedInAGapOfTheNumbersMovesByTheFirstValue).
  double operator[](const KMachineElem& axis) const {
    const std::size_t k = static_cast<std::size_t>(axis.getElemIndex()) - 1;
    return k < count_ ? values_[std::clamp(places_[k], 0, last_)] : 0.0;
  }

 private:
  const int* places_;
  std::size_t count_;
  const double* values_;
  int last_;
};

/// What the rotary axes of a chain turn by, asked for in the order of the chain and computed two
/// at once: bit by bit the sines and cosines of each alone.
class ChainTurns {
 public:
  ChainTurns(const AxisValues& values, const KMachineElem* const* end)
      : values_(values), end_(end) {}

  korvo::rotations::SinCos at(const KMachineElem* const* axis) {
    using namespace korvo::rotations;
    if (std::exchange(hasNext_, false)) return next_;
    const KMachineElem* const* other = std::find_if(axis + 1, end_, turns);
    const double angle = angleOf(*axis), further = other == end_ ? kMostSinCos : angleOf(*other);
    if (!(std::fabs(angle) < kMostSinCos && std::fabs(further) < kMostSinCos)) {
      return sinCos(angle);
    }
    const auto [sine, cosine, versine] = sinCosWithin(Pair{angle, further});
    next_ = {sine[1], cosine[1], versine[1]};
    hasNext_ = true;
    return {sine[0], cosine[0], versine[0]};
  }

 private:
  static bool turns(const KMachineElem* e) {
    return e->getElemType() == KMachineElem::KMET_TYPE_AROT;
  }
  double angleOf(const KMachineElem* axis) const { return values_[*axis] * kDegToRad; }

  const AxisValues& values_;
  const KMachineElem* const* end_;
  korvo::rotations::SinCos next_{};
  bool hasNext_ = false;
};

/// Moves `placed`, the placement of what carries the element, on by the element's own motion about
/// or along its axis line as `placed` has moved it: it turns by what `turn()` gives, slides by its
/// value (mm) or, a gun, by its length. Other elements move nothing.
template <typename Turn>
void moveByOwn(const AxisValues& values, const KMachineElem& e, Placement& placed, Turn turn) {
  switch (e.getElemType()) {
    case KMachineElem::KMET_TYPE_AROT:
      return placed.turn(e.getElemAxis(), e.getElemPivot(), turn());
    case KMachineElem::KMET_TYPE_ALIN:
      return placed.slide(e.getElemAxis() * values[e]);
    case KMachineElem::KMET_TYPE_DGUN:
      return placed.slide(e.getElemAxis() * e.getTHELength());
    default:
      return;
  }
}

/// Calls `visit(element, motion)` for every element of a chain, root first, with its motion: bit by
/// bit what `motionOf` gives for it.
template <typename Visit>
void walkMotions(const MachineView& machine, const KMachineValueBase& v, const ChainWalk& chain,
                 Visit visit) {
  const AxisValues values(machine, v);
  ChainTurns turns(values, chain.end());
  Placement placed;
  for (const KMachineElem* const* at = chain.begin(); at != chain.end(); ++at) {
    const KMachineElem& e = **at;
    if (e.isInverted()) visit(e, placed);  // moved only by what carries it
    moveByOwn(values, e, placed, [&] { return turns.at(at); });
    if (!e.isInverted()) visit(e, placed);
  }
}

/// Where the last element of a chain is moved: by all motions before it and, unless it is inverted,
/// by its own. As it was for an empty chain.
Placement placementOf(const MachineView& machine, const KMachineValueBase& v,
                      const ChainWalk& chain);

inline zgeo::UMatrix motionOf(const MachineView& machine, const KMachineValueBase& v,
                              const ChainWalk& chain) {
  return placementOf(machine, v, chain).matrix();
}

/// Writes the position into the current Denavit-Hartenberg values of a chain's axes.
void updateRecords(const MachineView& machine, const KMachineValueBase& v, const ChainWalk& chain);

/// Motion matrices of all elements in rank order, in one pass: each element's placement is computed
/// once, from its predecessor's, by the same steps as `motionOf`.
void motionsOf(const MachineView& machine, const KMachineValueBase& v,
               std::vector<zgeo::UMatrix>& out);

}  // namespace zkin
