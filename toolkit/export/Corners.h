#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <unordered_map>

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
    const auto [at, isNew] = numbers_.try_emplace(key, static_cast<std::uint32_t>(numbers_.size()));
    return {at->second, isNew};
  }

  std::size_t size() const { return numbers_.size(); }

 private:
  struct Hash {
    std::size_t operator()(const Key& key) const {
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
  };

  std::unordered_map<Key, std::uint32_t, Hash> numbers_;
};

}  // namespace korvo::exporting
