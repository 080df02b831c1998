#include "toolkit/check/Diagnostic.h"

#include <algorithm>

namespace korvo {

std::string toString(const Diagnostic& d) {
  std::string place = d.file;
  if (d.line > 0) place += ":" + std::to_string(d.line);
  if (d.line > 0 && d.column > 0) place += ":" + std::to_string(d.column);
  return place + ": " + toString(d.severity) + ": " + d.text + " [" + d.code + "]";
}

const char* toString(Severity severity) {
  switch (severity) {
    case Severity::note:
      return "note";
    case Severity::warning:
      return "warning";
    default:
      return "error";
  }
}

bool hasError(const std::vector<Diagnostic>& diagnostics) {
  return std::any_of(diagnostics.begin(), diagnostics.end(),
                     [](const Diagnostic& d) { return d.severity == Severity::error; });
}

}  // namespace korvo
