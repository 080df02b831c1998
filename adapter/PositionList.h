#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "platform/ombra/MachinePosition.h"

namespace zkin {

/// A host's list of positions that takes each position once (`kPositionEqual`).
///
/// Sums of equal positions differ little, so only entries whose sums fall into the same or a
/// neighbouring cell are compared: lists of many thousand entries stay quick.
class PositionList {
 public:
  /// @owner  The list stays the caller's and must outlive this object; null entries are left out.
  explicit PositionList(std::vector<Ombra::Kin::MachinePosition*>& list);

  /// Appends a copy unless an equal entry is there.
  void add(const Ombra::Kin::MachinePosition& p);

 private:
  bool holds(const Ombra::Kin::MachinePosition& p, std::int64_t cell) const;

  std::vector<Ombra::Kin::MachinePosition*>& list_;
  std::unordered_multimap<std::int64_t, const Ombra::Kin::MachinePosition*> cells_;
};

}  // namespace zkin
