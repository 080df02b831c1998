#pragma once

#include <bit>
#include <cfloat>
#include <cstddef>
#include <cstdint>
#include <cstring>

/// The short way through numbers for readers of millions of them: it takes the plain ones at once
/// and leaves all others to `scanDouble`, which would give the same value.
namespace korvo::text {
namespace plain {

static_assert(std::endian::native == std::endian::little, "the first character is the lowest byte");
static_assert(FLT_EVAL_METHOD == 0, "double arithmetic must be in double precision");

inline constexpr double kPowerOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
inline constexpr std::uint64_t kIntegerPowerOfTen[] = {1,     10,     100,     1000,
                                                       10000, 100000, 1000000, 10000000};

/// The value of eight digits, each in its byte, the first in the lowest: pairs, then fours, then
/// all eight are summed by two multiplications (Lemire, Number parsing at a gigabyte per second,
/// Software: Practice and Experience 51, 2021).
constexpr std::uint64_t valueOfEight(std::uint64_t digits) {
  constexpr std::uint64_t kPair = 0x000000FF000000FF;
  digits = digits * 10 + (digits >> 8);
  return ((digits & kPair) * (100 + (std::uint64_t{1000000} << 32)) +
          (digits >> 16 & kPair) * (1 + (std::uint64_t{10000} << 32))) >>
         32;
}

/// Appends the digits from `at` to `head`, whose overflow is the caller's to notice. Null when they
/// come nearer than eight characters to `end`.
inline const char* takeDigits(const char* at, const char* end, std::uint64_t& head) {
  constexpr std::uint64_t kZeros = 0x3030303030303030, kToTop = 0x7676767676767676,
                          kTop = 0x8080808080808080;
  for (; end - at >= 8; at += 8) {
    std::uint64_t eight;
    std::memcpy(&eight, at, sizeof eight);
    eight ^= kZeros;  // digits become 0 to 9
    const std::uint64_t others = ((eight + kToTop) | eight) & kTop;
    if (others != 0) {
      const int count = std::countr_zero(others) / 8;
      eight = eight << (56 - 8 * count) << 8;  // zeros in front
      head = head * kIntegerPowerOfTen[count] + valueOfEight(eight);
      return at + count;
    }
    head = head * 100000000 + valueOfEight(eight);
  }
  return nullptr;
}

/// Takes "e", a sign and one to three digits, or nothing at all; null for other exponents.
inline const char* takeExponent(const char* at, int& exponent) {
  if ((*at | 0x20) != 'e') return at;
  ++at;
  const bool negative = *at == '-';
  at += negative || *at == '+';
  const char* const begin = at;
  int value = 0;
  for (; at - begin < 3 && *at >= '0' && *at <= '9'; ++at) value = value * 10 + (*at - '0');
  exponent += negative ? -value : value;
  return at == begin ? nullptr : at;
}

}  // namespace plain

/// How far behind a plain number the text must go on, whatever stands there.
inline constexpr std::ptrdiff_t kReadAhead = 8;

/// Takes a number that `scanDouble` takes too, with the same value: digits with or without a minus,
/// a point and an exponent, up to 2^53 and a power of ten from -22 to 22, which a product or
/// quotient rounds right (Clinger, How to read floating point numbers accurately, 1990).
///
/// @return  Its end; null when `text` does not begin with such a number, or hardly goes on behind
///          it: ask `scanDouble` then. What follows a number is the caller's to check: "0x1p3" is
///          a plain 0 with "x1p3" behind it, and "1e2" may be the beginning of a longer one.
inline const char* takePlainDecimal(const char* text, const char* end, double& value) {
  constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << DBL_MANT_DIG;
  if (end - text < kReadAhead) return nullptr;
  const bool negative = *text == '-';
  std::uint64_t head = 0;
  const char* const begin = text + negative;
  const char* at = plain::takeDigits(begin, end, head);
  if (at == nullptr) return nullptr;
  std::ptrdiff_t digits = at - begin;
  int exponent = 0;
  if (*at == '.') {
    const char* const point = at++;
    at = plain::takeDigits(at, end, head);
    if (at == nullptr) return nullptr;
    exponent = static_cast<int>(point + 1 - at);
    digits -= exponent;
  }
  if (digits == 0 || digits > 19 || head > kExactIntegers || end - at < kReadAhead) return nullptr;
  at = plain::takeExponent(at, exponent);
  if (at == nullptr || exponent < -22 || exponent > 22) return nullptr;
  const double integer = static_cast<double>(head);
  const double magnitude = exponent < 0 ? integer / plain::kPowerOfTen[-exponent]
                                        : integer * plain::kPowerOfTen[exponent];
  // A branch here would go wrong every other time.
  value = std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) | std::uint64_t{negative}
                                                                              << 63);
  return at;
}

}  // namespace korvo::text
