#pragma once

#include <optional>
#include <string>
#include <vector>

#include "toolkit/Export.h"

namespace korvo {

/// What a finding means for the one who loads the file.
enum class Severity {
  note,     ///< Nothing is wrong; worth knowing.
  warning,  ///< The file loads, but probably not as meant.
  error,    ///< The file is refused.
};

/// A change of one line that mends a finding and leaves what else the file says as it is.
struct Fix {
  int line = 0;      ///< From 1.
  int column = 0;    ///< From 1, in characters of the line as written.
  int length = 0;    ///< How many characters go; 0: only insert.
  std::string text;  ///< What comes instead. UTF-8.
};

/// One finding about a definition file, as data.
struct Diagnostic {
  std::string file;  ///< As the caller named it, UTF-8.
  int line = 0;      ///< From 1; 0 when it is about the file as a whole.
  int column = 0;    ///< From 1, in characters of the line as written; 0 when about the whole line.
  std::string code;  ///< Short, stable name of the rule.
  Severity severity = Severity::error;
  std::string text;          ///< What was wanted, and what was found. UTF-8.
  int length = 0;            ///< Characters from the column on; 0 when about the whole line.
  std::string suggestion{};  ///< How to mend it, as a sentence; may be empty.
  std::string source{};      ///< The line as written, as UTF-8; empty without a line.
  std::optional<Fix> fix{};  ///< Set when a change is known that cannot do harm.
  bool isEndless = false;    ///< Loading the file would never end, or fill the memory.
};

/// "file:line:column: severity: text [code]"; without a column or a line these are left out.
KORVO_TOOLKIT_API std::string toString(const Diagnostic& diagnostic);

/// "note", "warning" or "error".
KORVO_TOOLKIT_API const char* toString(Severity severity);

/// Whether one of them refuses the file.
KORVO_TOOLKIT_API bool hasError(const std::vector<Diagnostic>& diagnostics);

}  // namespace korvo
