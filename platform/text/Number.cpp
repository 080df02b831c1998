#include "platform/text/Number.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <system_error>

namespace korvo::text {
namespace {

// One product of exact factors is correctly rounded only where it is rounded once.
static_assert(FLT_EVAL_METHOD == 0, "double arithmetic must be in double precision");

/// The part of a text that is not read yet. Whatever belongs to no number (the end, a NUL, any
/// character above 127) reads as NUL, so that a narrow and a wide text scan alike.
template <class Char>
class Cursor {
 public:
  explicit Cursor(std::basic_string_view<Char> text)
      : begin_(text.data()), at_(begin_), end_(begin_ + text.size()) {}

  char peek() const {
    return at_ != end_ && *at_ > 0 && *at_ < 128 ? static_cast<char>(*at_) : '\0';
  }
  void advance() { ++at_; }
  Scan used() const { return {static_cast<std::size_t>(at_ - begin_)}; }

  bool take(char c) {
    if (peek() != c) return false;
    advance();
    return true;
  }
  /// Takes a letter in either case; `lower` is a lower case letter.
  bool takeLetter(char lower) {
    if ((peek() | 0x20) != lower) return false;
    advance();
    return true;
  }
  bool takeWord(std::string_view lower) {
    return std::ranges::all_of(lower, [this](char c) { return takeLetter(c); });
  }
  void skipSpace() {
    while (peek() == ' ' || (peek() >= '\t' && peek() <= '\r')) advance();
  }
  /// Takes a sign; true when it is a minus.
  bool takeSign() {
    if (take('-')) return true;
    take('+');
    return false;
  }

 private:
  const Char* begin_;
  const Char* at_;
  const Char* end_;
};

/// Value of a digit of that base, or -1.
template <int kBase>
int digitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const int letter = (c | 0x20) - 'a';
  return kBase == 16 && letter >= 0 && letter < 6 ? letter + 10 : -1;
}

/// The digits of a number: head * base^scale, and a little more when `isCut`.
struct Digits {
  std::uint64_t head = 0;  ///< The leading significant digits, as many as always fit.
  int count = 0;           ///< How many digits `head` has.
  std::int64_t scale = 0;  ///< Place of its last digit.
  bool isCut = false;      ///< A digit other than zero follows those in `head`.
  bool hasDigit = false;   ///< A digit was there at all.
  bool hasPoint = false;   ///< The decimal point was passed.
};

template <int kBase>
void append(Digits& digits, int digit) {
  constexpr int kFits = kBase == 10 ? std::numeric_limits<std::uint64_t>::digits10 : 16;
  digits.hasDigit = true;
  if (digits.count < kFits) {
    digits.head = digits.head * kBase + static_cast<std::uint64_t>(digit);
    digits.count += digits.head != 0;
    digits.scale -= digits.hasPoint;
  } else {
    digits.isCut |= digit != 0;
    digits.scale += !digits.hasPoint;
  }
}

/// Takes digits with at most one point among them.
template <int kBase, class Char>
Digits takeDigits(Cursor<Char>& in) {
  Digits digits;
  for (;; in.advance()) {
    const char c = in.peek();
    const int digit = digitOf<kBase>(c);
    if (digit >= 0) {
      append<kBase>(digits, digit);
    } else if (c == '.' && !digits.hasPoint) {
      digits.hasPoint = true;
    } else {
      return digits;
    }
  }
}

/// Takes "e", a sign and digits. What is missing after the "e" counts as zero, and the "e" is used
/// all the same: scanf cannot give two characters back.
template <class Char>
std::int64_t takeExponent(Cursor<Char>& in, char letter) {
  constexpr std::int64_t kEnough = std::int64_t{1} << 58;  // more than any text is long
  if (!in.takeLetter(letter)) return 0;
  const bool negative = in.takeSign();
  std::int64_t value = 0;
  for (int digit; (digit = digitOf<10>(in.peek())) >= 0; in.advance())
    if (value < kEnough) value = value * 10 + digit;
  return negative ? -value : value;
}

/// Room for every digit that can decide a rounding: a number halfway between two doubles has at
/// most 767 of them (that between the two smallest normal ones), then comes one for all the rest.
constexpr int kDecisiveDigits = 800;
using NumberText = std::array<char, kDecisiveDigits + 32>;

/// Correctly rounded value of the digits up to `end` in `text`, times base^exponent of the format.
/// There is room for the exponent behind `end`. `exponentOfHead` says how large the number is.
double rounded(NumberText& text, char* end, std::int64_t exponent, std::chars_format format,
               std::int64_t exponentOfHead) {
  constexpr std::int64_t kFarOut = 99999;  // beyond the doubles for any digits in the buffer
  *end++ = format == std::chars_format::hex ? 'p' : 'e';
  end = std::to_chars(end, text.data() + text.size(), std::clamp(exponent, -kFarOut, kFarOut)).ptr;
  double value = 0;
  if (std::from_chars(text.data(), end, value, format).ec == std::errc{}) return value;
  return exponentOfHead > 0 ? std::numeric_limits<double>::infinity() : 0.0;
}

double rounded(std::uint64_t head, std::int64_t exponent, std::chars_format format) {
  NumberText text;
  const int base = format == std::chars_format::hex ? 16 : 10;
  char* end = std::to_chars(text.data(), text.data() + text.size(), head, base).ptr;
  return rounded(text, end, exponent, format, exponent);
}

/// The value of digits too many for `Digits::head`: reads them again, from `in` on.
template <class Char>
double longDecimal(Cursor<Char> in, std::int64_t exponent) {
  NumberText text;
  char* const begin = text.data();
  char* end = begin;
  bool isCut = false;
  bool hasPoint = false;
  for (;; in.advance()) {
    const char c = in.peek();
    if (c == '.' && !hasPoint) {
      hasPoint = true;
      continue;
    }
    if (c < '0' || c > '9') break;
    const bool isLeadingZero = c == '0' && end == begin;
    const bool fits = end - begin < kDecisiveDigits;
    if (fits && !isLeadingZero) *end++ = c;
    isCut |= !fits && c != '0';
    exponent += fits ? -hasPoint : !hasPoint;
  }
  const std::int64_t magnitude = (end - begin) + exponent;
  if (isCut) {
    *end++ = '1';
    --exponent;
  }
  return rounded(text, end, exponent, std::chars_format::scientific, magnitude);
}

constexpr double kPowerOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// Value of decimal digits whose exact number starts at `start`.
///
/// An integer up to 2^53 and a power of ten up to 10^22 are both doubles, so their product or
/// quotient is rounded once and thus right (Clinger, How to read floating point numbers accurately,
/// 1990). Nearly all numbers people write are of that kind.
template <class Char>
double decimalValue(const Digits& digits, std::int64_t exponent, const Cursor<Char>& start) {
  constexpr std::uint64_t kExactIntegers = std::uint64_t{1} << DBL_MANT_DIG;
  if (digits.isCut) return longDecimal(start, exponent);
  const std::int64_t power = digits.scale + exponent;
  if (digits.head == 0) return 0.0;
  if (digits.head <= kExactIntegers && power >= -22 && power <= 22) {
    const double integer = static_cast<double>(digits.head);
    return power < 0 ? integer / kPowerOfTen[-power] : integer * kPowerOfTen[power];
  }
  return rounded(digits.head, power, std::chars_format::scientific);
}

/// The lowest bit of 16 hexadecimal digits is far below a double's: it stands for all that was cut.
double hexValue(const Digits& digits, std::int64_t exponent) {
  const std::uint64_t head = digits.head | static_cast<std::uint64_t>(digits.isCut);
  return head == 0 ? 0.0 : rounded(head, 4 * digits.scale + exponent, std::chars_format::hex);
}

/// Reads what follows the "0x"; false when nothing does. A lone point is enough: "0x." is 0.
template <class Char>
bool takeHex(Cursor<Char>& in, double& value) {
  const Digits digits = takeDigits<16>(in);
  if (!digits.hasDigit && !digits.hasPoint) return false;
  const std::int64_t exponent = digits.hasDigit ? takeExponent(in, 'p') : 0;
  value = hexValue(digits, exponent);
  return true;
}

template <class Char>
bool takeDecimal(Cursor<Char>& in, double& value) {
  const Cursor<Char> start = in;
  const Digits digits = takeDigits<10>(in);
  if (!digits.hasDigit) return false;
  value = decimalValue(digits, takeExponent(in, 'e'), start);
  return true;
}

/// Reads "inf" or "infinity". Nothing between them: after "infi" scanf cannot go back to "inf".
template <class Char>
bool takeInfinity(Cursor<Char>& in, double& value) {
  value = std::numeric_limits<double>::infinity();
  return in.takeWord("inf") && ((in.peek() | 0x20) != 'i' || in.takeWord("inity"));
}

/// Reads "nan"; what stands in parentheses behind it is left.
template <class Char>
bool takeNan(Cursor<Char>& in, double& value) {
  value = std::numeric_limits<double>::quiet_NaN();
  return in.takeWord("nan");
}

template <class Char>
bool takeMagnitude(Cursor<Char>& in, double& value) {
  switch (in.peek()) {
    case 'i':
    case 'I':
      return takeInfinity(in, value);
    case 'n':
    case 'N':
      return takeNan(in, value);
    case '0': {
      Cursor<Char> hex = in;
      hex.advance();
      if (!hex.takeLetter('x')) return takeDecimal(in, value);
      in = hex;
      return takeHex(in, value);
    }
    default:
      return takeDecimal(in, value);
  }
}

template <class Char>
Scan scanReal(std::basic_string_view<Char> text, double& value) {
  Cursor<Char> in(text);
  in.skipSpace();
  const bool negative = in.takeSign();
  double magnitude = 0;
  if (!takeMagnitude(in, magnitude)) return {};
  value = negative ? -magnitude : magnitude;
  return in.used();
}

/// Takes decimal digits; what is larger than `limit` gives `limit`.
template <class Char>
std::uint64_t takeSaturated(Cursor<Char>& in, std::uint64_t limit) {
  std::uint64_t value = 0;
  for (int digit; (digit = digitOf<10>(in.peek())) >= 0; in.advance()) {
    const auto next = static_cast<std::uint64_t>(digit);
    value = value > (limit - next) / 10 ? limit : value * 10 + next;
  }
  return value;
}

template <class Char>
Scan scanInteger(std::basic_string_view<Char> text, long long& value) {
  constexpr std::uint64_t kMax = std::numeric_limits<std::int64_t>::max();
  Cursor<Char> in(text);
  in.skipSpace();
  const bool negative = in.takeSign();
  if (digitOf<10>(in.peek()) < 0) return {};
  const std::uint64_t magnitude = takeSaturated(in, negative ? kMax + 1 : kMax);
  value = static_cast<long long>(negative ? 0 - magnitude : magnitude);
  return in.used();
}

/// As scanf stores a "%d": the low 32 bits of the 64-bit number.
template <class Char>
Scan scanInt32(std::basic_string_view<Char> text, int& value) {
  long long wide = 0;
  const Scan scan = scanInteger(text, wide);
  if (scan) value = static_cast<int>(static_cast<std::uint32_t>(wide));
  return scan;
}

}  // namespace

Scan scanDouble(std::string_view text, double& value) { return scanReal(text, value); }
Scan scanDouble(std::wstring_view text, double& value) { return scanReal(text, value); }

Scan scanInt(std::string_view text, int& value) { return scanInt32(text, value); }
Scan scanInt(std::wstring_view text, int& value) { return scanInt32(text, value); }

Scan scanLong(std::string_view text, long long& value) { return scanInteger(text, value); }

}  // namespace korvo::text
