#pragma once

#include <cstdint>
#include <unordered_set>
#include <utility>
#include <vector>

namespace zkin {

using IndexPairs = std::vector<std::pair<int, int>>;

/// Collision pairs as `KMachine::addElemCollCheck` keeps them, (smaller, larger), each once and
/// never (a, a), in the order in which they were added first.
///
/// @cost  One hash look-up per addition, so that files may name thousands of tools at once.
class CollisionPairs {
 public:
  explicit CollisionPairs(IndexPairs present);

  void add(int a, int b);
  IndexPairs take() { return std::move(pairs_); }

 private:
  IndexPairs pairs_;
  std::unordered_set<std::uint64_t> known_;  // the pairs, both indices in one number
};

}  // namespace zkin
