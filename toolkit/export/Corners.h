#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <vector>

namespace korvo::exporting {

/// Numbers corners by their values: equal ones share a number.
template <class Number, std::size_t N>
class Corners {
 public:
  using Key = std::array<Number, N>;
  struct Place {
    std::uint32_t index;
    bool isNew;
  };

  /// The number of a corner, from 0 in the order of first use. -0 is 0.
  Place add(Key key) {
    for (Number& x : key) x += Number{0};
    if (2 * keys_.size() >= slots_.size()) grow();
    std::uint32_t& slot = find(key);
    const bool isNew = slot == kFree;
    if (isNew) {
      slot = static_cast<std::uint32_t>(keys_.size());
      keys_.push_back(key);
    }
    return {slot, isNew};
  }

  const std::vector<Key>& keys() const { return keys_; }  ///< In the order of their numbers.

 private:
  static constexpr std::uint32_t kFree = 0xffffffff;

  static std::size_t hash(const Key& key) {
    std::uint64_t h = 0;
    for (const Number x : key) h = mixed(h ^ std::bit_cast<std::uint64_t>(double{x}));
    return static_cast<std::size_t>(h);
  }

  // The finalizer of MurmurHash3 (Appleby, public domain): every bit of h reaches every other.
  static std::uint64_t mixed(std::uint64_t h) {
    h = (h ^ (h >> 33)) * 0xff51afd7ed558ccdULL;
    h = (h ^ (h >> 33)) * 0xc4ceb9fe1a85ec53ULL;
    return h ^ (h >> 33);
  }

  // Where the number of that corner stands, or would: the next free slot from its own on. As many
  // slots as a power of two, at most half of them taken.
  std::uint32_t& find(const Key& key) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t i = hash(key) & mask;
    while (slots_[i] != kFree && keys_[slots_[i]] != key) i = (i + 1) & mask;
    return slots_[i];
  }

  void grow() {
    slots_.assign(std::max<std::size_t>(64, 2 * slots_.size()), kFree);
    for (std::uint32_t i = 0; i < keys_.size(); ++i) find(keys_[i]) = i;
  }

  std::vector<Key> keys_;
  std::vector<std::uint32_t> slots_;
};

}  // namespace korvo::exporting
