#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kinematics/KMachineValue.h"

namespace zkin {

/// A host's list of positions, as an index that tells whether an equal one is there: same
/// dimension, every value within the tolerance of `KMachineValueBase::operator==`.
///
/// Equal positions differ little in a weighted sum of their values, so only entries whose sums fall
/// into the same or the neighbouring cell are compared: lists of many thousand entries stay quick.
class SolutionList {
 public:
  explicit SolutionList(const std::vector<KMachineValueBase*>& list);

  bool holds(const KMachineValueBase& v) const;

  /// Takes note of a position that stays alive as long as this index.
  void add(const KMachineValueBase& v);

 private:
  bool holdsAt(std::int64_t cell, const KMachineValueBase& v) const;
  void put(const KMachineValueBase& v);
  void grow(std::size_t slots);

  // Open addressing: an entry stands in the first empty slot from that of its cell on. The number
  // of slots is a power of two, at most half of them are taken.
  std::vector<const KMachineValueBase*> slots_;
  std::size_t count_ = 0;
};

}  // namespace zkin
