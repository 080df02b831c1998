#include "toolkit/check/Commas.h"

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cmath>
#include <utility>

#include "platform/text/Number.h"
#include "toolkit/check/Operands.h"

namespace korvo::checking {
namespace {

// A part has nine numbers; the ways to join some of more than these would take too long to try.
constexpr std::size_t kMostSlots = 9;

// Wider than what rounding to three decimals does to a direction of length 1.
constexpr double kUnitLength = 1e-3;

bool isInteger(std::wstring_view text) {
  if (text.starts_with(L'+') || text.starts_with(L'-')) text.remove_prefix(1);
  return isDigits(text);
}

// "000" and "05" are written by nobody but behind a decimal comma.
bool isOnlyFraction(std::wstring_view text) {
  return text.size() > 1 && text[0] == L'0' && isDigits(text);
}

double valueOf(std::wstring_view text) {
  double value = 0.0;
  text::scanDouble(text, value);
  return value;
}

bool isColourPart(std::wstring_view text) {
  return isDigits(text) && !isOnlyFraction(text) && valueOf(text) <= 255.0;
}

// One way to join numbers in pairs: `mask` has a bit for every slot that takes two operands.
struct Reading {
  unsigned mask = 0;
  std::array<double, kMostSlots> values{};
  int trailingZeros = 0;    ///< Fractions that end in one: most people leave them out.
  bool isPlainZero = true;  ///< Every fraction is a single 0.
};

// An operand, looked at once.
struct Piece {
  explicit Piece(std::wstring_view text)
      : value(valueOf(text)),
        sign(text.starts_with(L'-') ? -1.0 : 1.0),
        share(std::pow(10.0, -static_cast<double>(text.size()))),
        isFraction(isDigits(text)),
        isFractionOnly(isOnlyFraction(text)),
        isZero(text == L"0"),
        hasTrailingZero(text.ends_with(L'0')) {}

  double value, sign;
  double share;  ///< Of its last digit behind a comma.
  bool isFraction, isFractionOnly, isZero, hasTrailingZero;
};

class Joiner {
 public:
  Joiner(const SourceLine& line, int first, int count, const std::vector<Slot>& slots)
      : slots_(slots) {
    for (int i = first; i < first + count; ++i) pieces_.emplace_back(operandOf(line, i));
  }

  std::optional<Reading> read(unsigned mask) const {
    Reading reading;
    reading.mask = mask;
    std::size_t at = 0;
    for (std::size_t i = 0; i < slots_.size(); ++i) {
      if (pieces_[at].isFractionOnly) return std::nullopt;
      reading.values[i] = pieces_[at].value;
      const bool isPair = (mask >> i & 1U) != 0;
      if (isPair && !join(reading, at, i)) return std::nullopt;
      at += isPair ? 2 : 1;
    }
    if (!areDirections(reading) || !areLimits(reading)) return std::nullopt;
    return reading;
  }

 private:
  bool join(Reading& reading, std::size_t at, std::size_t slot) const {
    const Piece& fraction = pieces_[at + 1];
    if (slots_[slot] == Slot::integer || !fraction.isFraction) return false;
    reading.values[slot] += pieces_[at].sign * fraction.value * fraction.share;
    reading.trailingZeros += fraction.hasTrailingZero ? 1 : 0;
    reading.isPlainZero = reading.isPlainZero && fraction.isZero;
    return true;
  }

  // Diagonals such as 0,1,1 are written so on purpose.
  static bool isDirection(const double* v) {
    const auto isPlain = [](double c) { return c == 0.0 || std::abs(c) == 1.0; };
    const double length = std::hypot(v[0], v[1], v[2]);
    return std::abs(length - 1.0) <= kUnitLength ||
           (length > 0.0 && std::all_of(v, v + 3, isPlain));
  }

  bool areDirections(const Reading& reading) const {
    for (std::size_t i = 0; i + 2 < slots_.size(); ++i) {
      if (slots_[i] != Slot::direction) continue;
      if (!isDirection(&reading.values[i])) return false;
      i += 2;
    }
    return true;
  }

  bool areLimits(const Reading& reading) const {
    if (slots_.size() != 2 || slots_[0] != Slot::limit) return true;
    return reading.values[0] < reading.values[1];
  }

  std::vector<Piece> pieces_;
  const std::vector<Slot>& slots_;
};

// All ways to join as many pairs as there are numbers too many.
std::vector<Reading> readingsOf(const SourceLine& line, int first, int surplus,
                                const std::vector<Slot>& slots) {
  std::vector<Reading> readings;
  const int count = static_cast<int>(slots.size()) + surplus;
  const Joiner joiner(line, first, count, slots);
  for (unsigned mask = 1; mask < 1U << slots.size(); ++mask) {
    if (std::popcount(mask) != surplus) continue;
    if (std::optional<Reading> reading = joiner.read(mask)) readings.push_back(*reading);
  }
  return readings;
}

// Those with the fewest trailing zeros.
std::vector<Reading> likeliest(std::vector<Reading> readings) {
  int fewest = INT_MAX;
  for (const Reading& reading : readings) fewest = std::min(fewest, reading.trailingZeros);
  std::erase_if(readings, [&](const Reading& r) { return r.trailingZeros > fewest; });
  return readings;
}

bool areAll(const SourceLine& line, int first, int count, bool (*is)(std::wstring_view)) {
  for (int i = first; i < first + count; ++i) {
    if (!is(operandOf(line, i))) return false;
  }
  return true;
}

// A zero too many is no decimal, and three numbers at the end may be a colour without its file.
bool isOtherwiseExplained(const SourceLine& line, int end, int surplus,
                          const std::vector<Reading>& readings) {
  const bool isPlain =
      std::all_of(readings.begin(), readings.end(), [](const Reading& r) { return r.isPlainZero; });
  const bool isColour = surplus == 3 && areAll(line, end - 3, 3, isColourPart);
  return isPlain || (isColour && readings[0].trailingZeros > 0);
}

// The numbers with decimal points, and no others when one alone was split.
SplitNumbers splitAs(const SourceLine& line, const Reading& reading, int first, int count) {
  const bool isOne = std::popcount(reading.mask) == 1;
  SplitNumbers split{first, count, L""};
  int at = first;
  for (unsigned mask = reading.mask; at < first + count; mask >>= 1U) {
    const bool isPair = (mask & 1U) != 0;
    std::wstring number(operandOf(line, at));
    if (isPair) number.append(L".").append(operandOf(line, at + 1));
    if (isOne && isPair) return {at, 2, number};
    split.mended += (split.mended.empty() ? L"" : L",") + number;
    at += isPair ? 2 : 1;
  }
  return split;
}

}  // namespace

bool isDigits(std::wstring_view text) {
  return !text.empty() &&
         std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
}

std::optional<SplitNumbers> splitNumbers(const SourceLine& line, int first, int count,
                                         const std::vector<Slot>& slots) {
  const int surplus = count - static_cast<int>(slots.size());
  if (surplus < 1 || surplus > std::ssize(slots) || slots.size() > kMostSlots) return {};
  if (!areAll(line, first, count, isInteger)) return {};
  const std::vector<Reading> readings = likeliest(readingsOf(line, first, surplus, slots));
  if (readings.empty()) return {};
  if (slots[0] != Slot::limit && isOtherwiseExplained(line, first + count, surplus, readings)) {
    return {};
  }
  if (readings.size() > 1) return SplitNumbers{first, count, L""};
  return splitAs(line, readings[0], first, count);
}

}  // namespace korvo::checking
