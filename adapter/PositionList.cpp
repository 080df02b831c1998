#include "adapter/PositionList.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "adapter/NMachine.h"
#include "adapter/tolerances.h"

using Ombra::Kin::MachinePosition;
using Ombra::Kin::Register;

namespace zkin {

namespace {

// Beyond this (mm or degrees) values count as this, so that sums of huge ones lose no digits.
constexpr double kFar = 1e6;

// Sums of equal positions are less than one cell apart, with room for rounding.
std::int64_t cellOf(const MachinePosition& p) {
  double sum = 0.0;
  for (int i = 0; i < p.Size(); ++i) sum += std::clamp(p[Register(i)], -kFar, kFar);
  const double cell = 2 * kPositionEqual * std::max(p.Size(), 1);
  return std::isnan(sum) ? 0 : static_cast<std::int64_t>(std::floor(sum / cell));
}

}  // namespace

PositionList::PositionList(std::vector<MachinePosition*>& list) : list_(list) {
  for (const MachinePosition* p : list) {
    if (p) cells_.emplace(cellOf(*p), p);
  }
}

bool PositionList::holds(const MachinePosition& p, std::int64_t cell) const {
  const auto [first, last] = cells_.equal_range(cell);
  return std::any_of(first, last, [&p](const auto& entry) {
    return NMachine::_equals(p, *entry.second, kPositionEqual);
  });
}

void PositionList::add(const MachinePosition& p) {
  const std::int64_t cell = cellOf(p);
  if (holds(p, cell) || holds(p, cell - 1) || holds(p, cell + 1)) return;
  auto copy = std::make_unique<MachinePosition>(p);
  list_.push_back(copy.get());
  cells_.emplace(cell, copy.release());  // the list's now
}

}  // namespace zkin
