#include "toolkit/check/Diagnostic.h"

#include <algorithm>

namespace korvo {

std::string toString(const Diagnostic& diagnostic) {
  const std::string line = diagnostic.line > 0 ? ":" + std::to_string(diagnostic.line) : "";
  const char* mark = diagnostic.severity == Severity::warning ? ": warning: " : ": ";
  return diagnostic.file + line + mark + diagnostic.text;
}

const char* toString(Severity severity) {
  return severity == Severity::error ? "error" : "warning";
}

bool hasError(const std::vector<Diagnostic>& diagnostics) {
  return std::any_of(diagnostics.begin(), diagnostics.end(),
                     [](const Diagnostic& d) { return d.severity == Severity::error; });
}

}  // namespace korvo
