#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/TempFile.h"
#include "toolkit/check/Check.h"

/// Tables of what one rule finds in a few lines.
namespace korvo::test {

inline std::vector<Diagnostic> findingsOf(const std::string& text, const std::string& code,
                                          Format format) {
  const TempDir folder;
  const CheckResult result = check(folder.write("m.def", text), format);
  std::vector<Diagnostic> found;
  std::copy_if(result.diagnostics.begin(), result.diagnostics.end(), std::back_inserter(found),
               [&](const Diagnostic& d) { return d.code == code; });
  return found;
}

/// "line:column+length text", and " | suggestion" when there is one.
inline std::string said(const Diagnostic& d, bool withSuggestion) {
  const std::string place = std::to_string(d.line) + ":" + std::to_string(d.column) + "+" +
                            std::to_string(d.length) + " " + d.text;
  return withSuggestion && !d.suggestion.empty() ? place + " | " + d.suggestion : place;
}

/// One table row: what the rule `code` says about `text`, in order; nothing when `said` is empty.
struct FindingRow {
  const char* label;
  const char* code;
  const char* text;
  std::vector<std::string> expected;
  Format format = Format::version1;
};

inline std::vector<std::string> saidOf(const FindingRow& row, bool withSuggestion = false) {
  std::vector<std::string> lines;
  for (const Diagnostic& d : findingsOf(row.text, row.code, row.format)) {
    lines.push_back(said(d, withSuggestion));
  }
  return lines;
}

inline std::string labelOf(const testing::TestParamInfo<FindingRow>& row) {
  return row.param.label;
}

/// `text` with the fix of the first finding of `code` made; as it is when there is none.
inline std::string mended(const std::string& text, const std::string& code, Format format) {
  const std::vector<Diagnostic> found = findingsOf(text, code, format);
  if (found.empty() || !found[0].fix) return text;
  std::size_t at = 0;
  for (int line = 1; line < found[0].fix->line; ++line) at = text.find('\n', at) + 1;
  std::string changed = text;
  const auto column = static_cast<std::size_t>(found[0].fix->column - 1);
  return changed.replace(at + column, static_cast<std::size_t>(found[0].fix->length),
                         found[0].fix->text);
}

}  // namespace korvo::test
