#include "tools/Checked.h"

namespace korvo::tools {

Counts countsOf(const std::vector<Diagnostic>& diagnostics) {
  Counts counts;
  for (const Diagnostic& d : diagnostics) {
    counts.errors += d.severity == Severity::error;
    counts.warnings += d.severity == Severity::warning;
    counts.notes += d.severity == Severity::note;
    counts.fixes += d.fix.has_value();
  }
  return counts;
}

Counts countsOf(const std::vector<CheckedFile>& files) {
  Counts all;
  for (const CheckedFile& file : files) {
    const Counts counts = countsOf(file.result.diagnostics);
    all.errors += counts.errors;
    all.warnings += counts.warnings;
    all.notes += counts.notes;
    all.fixes += counts.fixes;
  }
  return all;
}

const char* tagOf(Language language) { return language == Language::french ? "fr" : "en"; }

}  // namespace korvo::tools
