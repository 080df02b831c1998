#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "tools/Checked.h"

namespace korvo::tools {

/// How findings are written for people.
struct TextStyle {
  Language language = Language::english;
  bool hasColour = false;
};

/// UTF-8 text for a terminal: control characters are spelled out ("\r", "\x1b"), also those from
/// U+0080 to U+009F, which terminals obey too; tabs stay.
std::string spelled(std::string_view utf8);

/// `text` in a colour, given as the numbers of an ANSI escape ("1;31").
std::string painted(const std::string& text, const char* colour, const TextStyle& style);

/// "error", "avertissement".
std::string severityText(Severity severity, Language language);

/// "file:line:column: severity: text [code]", the line with what is meant underlined, and the
/// suggestion.
void printFinding(std::ostream& out, const Diagnostic& diagnostic, const TextStyle& style);

/// "1 error, 2 warnings, 0 notes".
std::string countText(const Counts& counts, Language language);

/// From one text of the same number of lines to another, as a unified difference.
void printDifference(std::ostream& out, const std::string& name, const std::string& before,
                     const std::string& after, const TextStyle& style);

}  // namespace korvo::tools
