// The checker against the library: what it accepts loads, what it calls endless never does, its
// places lie within the lines, and its fixes mend what they say.
//
// The first byte chooses format (auto, 1, 2), language and what is asked, the rest is the file: "0"
// to "2" are the formats in English, "3" to "5" in French, with everything asked. Of the others
// half only check, in a tenth of the time, and the rest ask one thing each.
#include "toolkit/check/Check.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "fuzz/Ask.h"
#include "tests/support/MemoryFile.h"
#include "toolkit/Machine.h"
#include "toolkit/check/Fixes.h"
#include "toolkit/check/Hover.h"

namespace {

using korvo::Diagnostic;
using korvo::Format;
using korvo::Language;
using korvo::fuzz::require;
using korvo::test::MemoryFile;

enum class Asked { load, end, fixes, editors, everything, nothingMore };

struct Choice {
  Format format;
  Language language;
  Asked asked;

  bool asks(Asked what) const { return asked == what || asked == Asked::everything; }
};

Choice choiceOf(std::uint8_t byte) {
  return {static_cast<Format>(byte % 3), byte / 3 % 2 == 0 ? Language::english : Language::french,
          static_cast<Asked>(std::min((byte / 6 + 6) % 10, 5))};
}

std::vector<Diagnostic> check(const std::string& text, Choice choice) {
  const MemoryFile file(text.data(), text.size());
  return korvo::check(file.path(), choice.format, choice.language).diagnostics;
}

bool isEndless(const std::vector<Diagnostic>& found) {
  return std::any_of(found.begin(), found.end(), [](const Diagnostic& d) { return d.isEndless; });
}

// --- what is accepted, and what is not

void requireLoadsAsChecked(const std::string& text, const std::vector<Diagnostic>& found,
                           Choice choice) {
  const MemoryFile file(text.data(), text.size());
  korvo::Loaded loaded =
      korvo::load(file.path(), choice.format, korvo::Checks::all, choice.language);
  require(static_cast<bool>(loaded) == !korvo::hasError(found));
  require(loaded.reasons.size() == found.size());
  if (loaded) korvo::fuzz::ask(**loaded.machine);
}

void requireEnds(const std::string& text, const std::vector<Diagnostic>& found, Choice choice) {
  const MemoryFile file(text.data(), text.size());
  korvo::Loaded loaded =
      korvo::load(file.path(), choice.format, korvo::Checks::endless, choice.language);
  require(!loaded || !isEndless(found));
  require(loaded || korvo::hasError(found));
  if (loaded) korvo::fuzz::ask(**loaded.machine);
}

// --- places

int charactersOf(const std::string& utf8) {
  return static_cast<int>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

// A place without a column is the whole line, one of length 0 may stand behind the last character.
void requireWithin(const std::string& line, int column, int length) {
  require(column >= 0 && length >= 0);
  if (column == 0) return require(length == 0);
  require(column - 1 + length <= charactersOf(line));
}

void requirePlaces(const std::vector<Diagnostic>& found) {
  for (const Diagnostic& d : found) {
    require(d.line >= 0 && (d.line > 0 || d.column == 0));
    requireWithin(d.source, d.column, d.length);
    if (d.fix && d.fix->line == d.line) requireWithin(d.source, d.fix->column, d.fix->length);
    require(!d.fix || d.fix->column > 0);
  }
}

// --- fixes

bool isSame(const Diagnostic& a, const Diagnostic& b) {
  return std::tie(a.code, a.line, a.column, a.text) == std::tie(b.code, b.line, b.column, b.text);
}

void requireMends(const std::string& text, const Diagnostic& d, Choice choice) {
  const std::string mended = korvo::applyFixes(text, {d});
  if (mended == text) return;  // left out
  const std::vector<Diagnostic> left = check(mended, choice);
  require(
      std::none_of(left.begin(), left.end(), [&](const Diagnostic& l) { return isSame(l, d); }));
}

void requireFixesMend(const std::string& text, const std::vector<Diagnostic>& found,
                      Choice choice) {
  int tries = 3;  // each is one more check
  for (const Diagnostic& d : found) {
    if (d.fix && tries-- > 0) requireMends(text, d, choice);
  }
}

// --- editors

void requireTextsForEditors(const std::string& text, Choice choice) {
  for (const std::size_t offset : {std::size_t{0}, text.size() / 2, text.size(), text.size() + 1}) {
    const auto hover = korvo::hoverAt(text, offset, choice.language);
    require(!hover || (hover->begin < hover->end && hover->end <= text.size()));
    require(!hover || (hover->begin <= offset && offset <= hover->end));
    const auto completions = korvo::completionsAt(text, offset, choice.language);
    require(completions.begin <= std::min(offset, text.size()));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const Choice choice = choiceOf(data[0]);
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::vector<Diagnostic> found = check(text, choice);
  requirePlaces(found);
  if (choice.asks(Asked::load)) requireLoadsAsChecked(text, found, choice);
  if (choice.asks(Asked::end)) requireEnds(text, found, choice);
  if (choice.asks(Asked::fixes)) requireFixesMend(text, found, choice);
  if (choice.asks(Asked::editors)) requireTextsForEditors(text, choice);
  return 0;
}
