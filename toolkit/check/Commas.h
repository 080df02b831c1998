#pragma once

#include <optional>
#include <string>
#include <vector>

#include "toolkit/check/Document.h"

namespace korvo::checking {

/// What a number is for, where too many of them may be due to decimal commas.
enum class Slot {
  number,     ///< Any.
  integer,    ///< Without decimals.
  direction,  ///< One of three in a row, of length 1.
  limit,      ///< An end of a travel: the first of two is below the other.
};

/// Numbers of which some were split at their decimal commas.
struct SplitNumbers {
  int first = 0;        ///< Operand.
  int count = 0;        ///< How many of them; two when one number alone was split.
  std::wstring mended;  ///< The same with decimal points; empty when several readings are likely.
};

/// Whether `count` operands from `first` on are more than `slots` because of decimal commas: all
/// are integers, and joined in pairs they fill the slots with numbers that suit them.
std::optional<SplitNumbers> splitNumbers(const SourceLine& line, int first, int count,
                                         const std::vector<Slot>& slots);

/// Whether `text` has nothing but digits, and at least one.
bool isDigits(std::wstring_view text);

}  // namespace korvo::checking
