#include "kinematics/inverse/SolutionList.h"

#include <algorithm>
#include <cmath>

#include "kinematics/tolerances.h"

namespace zkin {

namespace {

// Square roots of 1 and of primes: positions that differ by quarter turns, as those of many starts
// do, have different sums.
constexpr double kWeights[kMaxAxes] = {1.0,      1.414214, 1.732051, 2.236068, 2.645751, 3.316625,
                                       3.605551, 4.123106, 4.358899, 4.795832, 5.385165, 5.567764};

// The sums of equal positions differ by less: the weights' sum (below 41) times the tolerance.
constexpr double kSumsEqual = 41 * kValueEqual;

// So wide that most sums are well inside their cell and only that one is looked at.
constexpr double kCell = 100 * kSumsEqual;

// Beyond this (mm or degrees) values count as this, so that sums of huge ones lose no digits.
constexpr double kFar = 1e6;

// Room for what two endless axes give at most.
constexpr std::size_t kFirstSlots = 128;

double sumOf(const KMachineValueBase& v) {
  const double* const values = v.get();
  const int size = std::min(v.size(), kMaxAxes);
  double sum = 0.0;
  for (int i = 0; i < size; ++i) sum += kWeights[i] * std::clamp(values[i], -kFar, kFar);
  return sum;
}

std::int64_t cellOf(double sum) {
  return std::isnan(sum) ? 0 : static_cast<std::int64_t>(std::floor(sum / kCell));
}

// Cells of neighbours differ in their last bits, slots are told by those too.
std::size_t slotOf(std::int64_t cell, std::size_t slots) {
  const std::uint64_t mixed = static_cast<std::uint64_t>(cell) * 0x9E3779B97F4A7C15u;
  return static_cast<std::size_t>(mixed >> 32) & (slots - 1);
}

bool areEqual(const KMachineValueBase& a, const KMachineValueBase& b) {
  const int size = a.size();
  if (size != b.size()) return false;
  const double* const p = a.get();
  const double* const q = b.get();
  return std::equal(p, p + size, q,
                    [](double x, double y) { return std::fabs(x - y) < kValueEqual; });
}

}  // namespace

SolutionList::SolutionList(const std::vector<KMachineValueBase*>& list) : slots_(kFirstSlots) {
  for (const KMachineValueBase* v : list) {
    if (v) add(*v);
  }
}

void SolutionList::add(const KMachineValueBase& v) {
  if (2 * (count_ + 1) > slots_.size()) grow(2 * slots_.size());
  put(v);
  ++count_;
}

void SolutionList::put(const KMachineValueBase& v) {
  std::size_t i = slotOf(cellOf(sumOf(v)), slots_.size());
  while (slots_[i]) i = (i + 1) & (slots_.size() - 1);
  slots_[i] = &v;
}

void SolutionList::grow(std::size_t slots) {
  std::vector<const KMachineValueBase*> old(slots);
  old.swap(slots_);
  for (const KMachineValueBase* v : old) {
    if (v) put(*v);
  }
}

bool SolutionList::holdsAt(std::int64_t cell, const KMachineValueBase& v) const {
  for (std::size_t i = slotOf(cell, slots_.size()); slots_[i]; i = (i + 1) & (slots_.size() - 1)) {
    if (areEqual(*slots_[i], v)) return true;
  }
  return false;
}

bool SolutionList::holds(const KMachineValueBase& v) const {
  const double sum = sumOf(v);
  const std::int64_t low = cellOf(sum - kSumsEqual), high = cellOf(sum + kSumsEqual);
  return holdsAt(low, v) || (high != low && holdsAt(high, v));
}

}  // namespace zkin
