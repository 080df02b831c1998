#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "platform/text/Keywords.h"
#include "platform/text/Lines.h"

namespace korvo::checking {

/// One line of a definition file that says something: a line with a known keyword.
struct SourceLine {
  int number = 0;     ///< From 1.
  std::wstring text;  ///< Cleaned: no white space, no comment.
  text::Keyword keyword = text::Keyword::none;
  text::Statement statement;  ///< Keyword and operands with their columns.
};

/// A definition file as the rules see it: its meaningful lines in file order.
using Document = std::vector<SourceLine>;

/// Reads all lines of `file`, which stays the caller's.
Document readDocument(std::FILE* file);

}  // namespace korvo::checking
