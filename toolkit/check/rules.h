#pragma once

#include <span>
#include <string>
#include <vector>

#include "toolkit/check/Diagnostic.h"
#include "toolkit/check/Document.h"
#include "toolkit/check/Links.h"

namespace korvo::checking {

/// What the rules look at.
struct Source {
  const Document& document;      ///< The lines of the file.
  const LinkedElements& linked;  ///< The elements that they declare.
};

/// Where a rule is broken and what is there instead of what the rule wants.
struct Finding {
  int line = 0;
  int column = 0;
  std::string found;
};

/// A rule: adding one means adding its function and its row to the table in rules.cpp.
struct Rule {
  const char* code;
  Severity severity;
  const char* wanted;  ///< What the rule wants, as the first half of a message.
  std::vector<Finding> (*find)(const Source& source);
};

/// All rules, in the order in which their findings are given.
std::span<const Rule> rules();

}  // namespace korvo::checking
