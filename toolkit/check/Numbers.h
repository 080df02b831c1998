#pragma once

#include <string_view>
#include <vector>

#include "toolkit/check/Document.h"
#include "toolkit/check/Operands.h"

namespace korvo::checking {

/// An operand of which a reader gets a number.
struct Numeric {
  int operand;
  bool isInteger;
  Role role;  ///< `rest` on lines that declare no element.
};

/// The numbers of a line that mean something: not the integers that a rotary axis skips.
std::vector<Numeric> numbersOf(const SourceLine& line, int version);

/// How many characters of `text` the reader uses for a number; all of an integer that is written as
/// "5.0".
std::size_t usedOf(std::wstring_view text, bool isInteger);

/// "1 250.5" and "-12 000": blanks as people write them into large numbers.
bool isGroupedNumber(std::string_view written);

/// Other blanks between two digits, or in front of a sign: most often a comma is missing there.
bool isTornNumber(std::string_view written);

}  // namespace korvo::checking
