#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "platform/text/Keywords.h"
#include "platform/text/Lines.h"

namespace korvo::checking {

/// A stretch of a line as written, in bytes; what has no place is about the whole file.
struct Place {
  int line = 0;    ///< From 1.
  int column = 0;  ///< From 1; 0: the whole line.
  int length = 0;  ///< Bytes from there on.
};

/// One line of a definition file that says something.
struct SourceLine {
  int number = 0;            ///< From 1.
  std::string raw;           ///< The bytes as written, at most text::kMaxLine.
  bool wasCut = false;       ///< The line was longer.
  std::wstring text;         ///< Cleaned: no white space, no comment. Never empty.
  std::vector<int> columns;  ///< columns[i] is the column of text[i] in the raw line.
  text::Keyword keyword = text::Keyword::none;
  text::Statement statement;  ///< Keyword and operands with their columns.

  /// From the first to the last character of a token of the statement.
  Place placeOf(const text::Token& token) const;

  /// Of operand `i`; behind the last character for one that is not there.
  Place placeOf(int operand) const;

  /// From the first of some operands to the last one.
  Place placeOf(int first, int count) const;
};

/// A definition file as the rules see it: the lines that say something, in file order.
struct Document {
  std::vector<SourceLine> lines;
  int lineCount = 0;        ///< Blank lines and comments included.
  int nulLine = 0;          ///< First line with a NUL; 0: none. A NUL ends no line.
  bool isUtf16 = false;     ///< The file begins with the mark of UTF-16.
  int carriageReturns = 0;  ///< CRs that do not stand at the end of a line.
};

/// Reads all lines of `file`, which stays the caller's.
Document readDocument(std::FILE* file);

}  // namespace korvo::checking
