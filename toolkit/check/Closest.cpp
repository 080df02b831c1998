#include "toolkit/check/Closest.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace korvo::checking {
namespace {

constexpr std::size_t kLongestWord = 64;

wchar_t low(wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c + 32) : c; }

bool isSame(wchar_t a, wchar_t b) { return low(a) == low(b); }

// How far two words are apart at least: one change alters the length by one at most.
int lengthDifference(std::wstring_view a, std::wstring_view b) {
  return std::abs(static_cast<int>(a.size()) - static_cast<int>(b.size()));
}

}  // namespace

// R. A. Wagner and M. J. Fischer, The string-to-string correction problem, Journal of the ACM 21
// (1974), with swapped neighbours as one change: row i holds the distances from the first i letters
// of `a` to all beginnings of `b`.
int editDistance(std::wstring_view a, std::wstring_view b) {
  std::vector<int> before(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) last[j] = static_cast<int>(j);
  for (std::size_t i = 1; i <= a.size(); ++i) {
    row[0] = static_cast<int>(i);
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const int replaced = last[j - 1] + (isSame(a[i - 1], b[j - 1]) ? 0 : 1);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
      const bool isSwap =
          i > 1 && j > 1 && isSame(a[i - 1], b[j - 2]) && isSame(a[i - 2], b[j - 1]);
      if (isSwap) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    std::swap(before, last);
    std::swap(last, row);
  }
  return last[b.size()];
}

std::optional<std::wstring> closest(std::wstring_view word, std::span<const std::wstring> words) {
  if (word.size() > kLongestWord) return std::nullopt;
  int allowed = static_cast<int>(word.size()) / 3;
  std::optional<std::wstring> found;
  for (const std::wstring& candidate : words) {
    if (lengthDifference(word, candidate) > allowed) continue;
    const int distance = editDistance(word, candidate);
    if (distance > allowed) continue;
    found = candidate;
    allowed = distance - 1;
  }
  return found;
}

}  // namespace korvo::checking
