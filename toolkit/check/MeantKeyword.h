#pragma once

#include <optional>
#include <string>

#include "toolkit/check/Document.h"

namespace korvo::checking {

/// What an unknown keyword was meant to be.
struct MeantKeyword {
  std::wstring word;
  bool isCertain = false;  ///< It can have meant nothing else.
};

/// The keyword that the first word of a line was most likely meant to be: one that says the same,
/// or the nearest one that can do something with the operands.
std::optional<MeantKeyword> meantKeyword(const SourceLine& line);

/// Text of a file in lower case and without accents, whether the file is UTF-8 or Latin-1.
std::wstring plain(std::wstring_view text);

}  // namespace korvo::checking
