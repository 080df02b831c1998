#pragma once

#include <string>
#include <string_view>

namespace korvo::checking {

/// A stretch of a line: columns from 1, 0 for the whole line.
struct Stretch {
  int column = 0;
  int length = 0;
};

/// The bytes of a line as UTF-8: as they are when they are UTF-8, else as Latin-1, the other way
/// in which definition files are written.
std::string utf8OfLine(std::string_view raw);

/// Bytes of a line to characters of it.
Stretch inCharacters(std::string_view raw, int column, int length);

/// And back.
Stretch inBytes(std::string_view raw, int column, int length);

}  // namespace korvo::checking
