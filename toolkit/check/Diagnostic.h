#pragma once

#include <string>
#include <vector>

#include "toolkit/Export.h"

namespace korvo {

/// What a finding means for the one who loads the file.
enum class Severity {
  warning,  ///< The file loads, but probably not as meant.
  error,    ///< The file is refused.
};

/// One finding about a definition file, as data.
struct Diagnostic {
  std::string file;  ///< As the caller named it, UTF-8.
  int line = 0;      ///< From 1; 0 when it is about the file as a whole.
  int column = 0;    ///< From 1, in characters of the line as written; 0 when about the whole line.
  std::string code;  ///< Short, stable name of the rule.
  Severity severity = Severity::error;
  std::string text;  ///< What was wanted, and what was found. UTF-8.
};

/// "file:line: text", or "file: text" without a line; a warning's text follows "warning: ".
KORVO_TOOLKIT_API std::string toString(const Diagnostic& diagnostic);

/// "warning" or "error".
KORVO_TOOLKIT_API const char* toString(Severity severity);

/// Whether one of them refuses the file.
KORVO_TOOLKIT_API bool hasError(const std::vector<Diagnostic>& diagnostics);

}  // namespace korvo
