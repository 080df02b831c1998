#include "kinematics/inverse/SolutionList.h"

#include <algorithm>
#include <cmath>

#include "kinematics/tolerances.h"

namespace zkin {

namespace {

// Twice what the sums of equal positions can differ by.
constexpr double kCell = 2 * kMaxAxes * kValueEqual;

// Beyond this (mm or degrees) values count as this, so that sums of huge ones lose no digits.
constexpr double kFar = 1e6;

std::int64_t cellOf(const KMachineValueBase& v) {
  double sum = 0.0;
  for (int i = 0; i < v.size(); ++i) sum += std::clamp(v[i], -kFar, kFar);
  return std::isnan(sum) ? 0 : static_cast<std::int64_t>(std::floor(sum / kCell));
}

bool areEqual(const KMachineValueBase& a, const KMachineValueBase& b) {
  if (a.size() != b.size()) return false;
  const double* const p = a.get();
  const double* const q = b.get();
  return std::equal(p, p + a.size(), q,
                    [](double x, double y) { return std::fabs(x - y) < kValueEqual; });
}

}  // namespace

SolutionList::SolutionList(const std::vector<KMachineValueBase*>& list) {
  for (const KMachineValueBase* v : list) {
    if (v) add(*v);
  }
}

void SolutionList::add(const KMachineValueBase& v) { cells_.emplace(cellOf(v), &v); }

bool SolutionList::holdsAt(std::int64_t cell, const KMachineValueBase& v) const {
  const auto [first, last] = cells_.equal_range(cell);
  return std::any_of(first, last, [&v](const auto& entry) { return areEqual(*entry.second, v); });
}

bool SolutionList::holds(const KMachineValueBase& v) const {
  const std::int64_t cell = cellOf(v);
  return holdsAt(cell, v) || holdsAt(cell - 1, v) || holdsAt(cell + 1, v);
}

}  // namespace zkin
