#include "tools/CheckFix.h"

#include <utility>

#include "toolkit/Text.h"
#include "toolkit/check/Fixes.h"
#include "tools/ReplaceFile.h"

namespace korvo::tools {

CheckResult fixFile(std::ostream& out, const std::filesystem::path& path, CheckResult result,
                    Format format, const TextStyle& style) {
  // A fix may uncover another, and of two that overlap one waits; more rounds than that would mean
  // two rules that undo each other.
  constexpr int kRounds = 10;
  if (countsOf(result.diagnostics).fixes == 0) return result;
  const std::string before = readBytes(path);
  result = checkText(before, path, format, style.language);  // it may be another file by now
  std::string after = before;
  for (int round = 0; round < kRounds; ++round) {
    std::string mended = applyFixes(after, result.diagnostics);
    if (mended == after) break;
    after = std::move(mended);
    result = checkText(after, path, format, style.language);
  }
  if (after == before) return result;
  replaceFile(path, after);
  printDifference(out, shownText(path.string()), before, after, style);
  return result;
}

}  // namespace korvo::tools
