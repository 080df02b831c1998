#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>

/// Two doubles side by side, computed with at once: every operation gives each of them what it
/// would give it alone. Solvers take the branches of a solution two by two.
namespace korvo::rotations {

using Pair = double __attribute__((vector_size(16)));
using PairMask = std::int64_t __attribute__((vector_size(16)));  ///< All bits or none.

inline Pair both(double v) { return Pair{v, v}; }

namespace detail {

using PairBits = std::uint64_t __attribute__((vector_size(16)));

template <typename Real>
using BitsOf = std::conditional_t<std::is_same_v<Real, Pair>, PairBits, std::uint64_t>;

/// By bits: a choice by the sign of a mask is slow where lanes of 64 bits cannot be compared.
inline Pair select(PairMask mask, Pair a, Pair b) {
  return reinterpret_cast<Pair>((mask & reinterpret_cast<PairMask>(a)) |
                                (~mask & reinterpret_cast<PairMask>(b)));
}

inline Pair sqrt(Pair v) { return Pair{std::sqrt(v[0]), std::sqrt(v[1])}; }

inline Pair abs(Pair v) {
  return reinterpret_cast<Pair>(reinterpret_cast<PairMask>(v) & std::int64_t{0x7fffffffffffffff});
}

inline Pair least(Pair a, Pair b) { return a < b ? a : b; }
inline Pair greatest(Pair a, Pair b) { return a > b ? a : b; }

/// To the nearest integer; below 2^51.
inline Pair rounded(Pair v) {
  constexpr double kToInteger = 0x1.8p52;  // its last bit is 1: adding it rounds to an integer
  return (v + kToInteger) - kToInteger;
}

inline Pair floor(Pair v) {
  const Pair n = rounded(v);
  return n - select(n > v, both(1.0), both(0.0));
}

inline Pair ceil(Pair v) {
  const Pair n = rounded(v);
  return n + select(n < v, both(1.0), both(0.0));
}

}  // namespace detail
}  // namespace korvo::rotations
