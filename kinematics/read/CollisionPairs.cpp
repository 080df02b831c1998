#include "kinematics/read/CollisionPairs.h"

#include <algorithm>

namespace zkin {
namespace {

std::uint64_t keyOf(const std::pair<int, int>& pair) {
  return static_cast<std::uint64_t>(static_cast<std::uint32_t>(pair.first)) << 32 |
         static_cast<std::uint32_t>(pair.second);
}

}  // namespace

CollisionPairs::CollisionPairs(IndexPairs present) : pairs_(std::move(present)) {
  for (const auto& pair : pairs_) known_.insert(keyOf(pair));
}

void CollisionPairs::add(int a, int b) {
  if (a == b) return;
  const std::pair<int, int> pair = std::minmax(a, b);
  if (known_.insert(keyOf(pair)).second) pairs_.push_back(pair);
}

}  // namespace zkin
