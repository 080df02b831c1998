#include "toolkit/check/Fixes.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/text/Lines.h"
#include "toolkit/Text.h"
#include "toolkit/check/Characters.h"

namespace korvo {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

// Instead of the bytes of the file from `begin` to `end`, `text`.
struct ByteEdit {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::string text;
};

// The lines as the rules saw them: columns count behind the mark, and up to the longest line.
std::vector<std::string_view> linesOf(std::string_view bytes) {
  if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
  std::vector<std::string_view> lines;
  while (!bytes.empty()) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size());
    lines.push_back(bytes.substr(0, std::min(end, text::kMaxLine)));
    bytes.remove_prefix(std::min(end + 1, bytes.size()));
  }
  return lines;
}

bool isLatin1(std::string_view line) { return checking::utf8OfLine(line) != line; }

// Nothing when a character is none of Latin-1.
std::optional<std::string> latin1Of(const std::string& utf8) {
  std::string bytes;
  for (const wchar_t c : toWide(utf8)) {
    if (c > 0xFF) return std::nullopt;
    bytes += static_cast<char>(c);
  }
  return bytes;
}

std::optional<std::string> textFor(std::string_view line, const std::string& text) {
  constexpr std::string_view kEnds("\n\r\0", 3);
  if (text.find_first_of(kEnds) != std::string::npos) return std::nullopt;
  return isLatin1(line) ? latin1Of(text) : text;
}

std::optional<ByteEdit> editOf(const Fix& fix, std::string_view bytes,
                               const std::vector<std::string_view>& lines) {
  if (fix.line < 1 || static_cast<std::size_t>(fix.line) > lines.size()) return std::nullopt;
  if (fix.column < 1 || fix.length < 0) return std::nullopt;
  const std::string_view line = lines[static_cast<std::size_t>(fix.line) - 1];
  const checking::Stretch gone = checking::inBytes(line, fix.column, fix.length);
  const auto begin = static_cast<std::size_t>(gone.column) - 1;
  const std::size_t end = begin + static_cast<std::size_t>(gone.length);
  std::optional<std::string> text = textFor(line, fix.text);
  if (end > line.size() - line.ends_with('\r') || !text) return std::nullopt;
  const auto start = static_cast<std::size_t>(line.data() - bytes.data());
  return ByteEdit{start + begin, start + end, std::move(*text)};
}

// By the byte where they begin; those that begin at the same one in the order given.
std::multimap<std::size_t, ByteEdit> editsOf(std::string_view bytes,
                                             const std::vector<Diagnostic>& diagnostics) {
  const std::vector<std::string_view> lines = linesOf(bytes);
  std::multimap<std::size_t, ByteEdit> edits;
  for (const Diagnostic& d : diagnostics) {
    std::optional<ByteEdit> edit = d.fix ? editOf(*d.fix, bytes, lines) : std::nullopt;
    if (edit) edits.emplace(edit->begin, std::move(*edit));
  }
  return edits;
}

}  // namespace

std::string applyFixes(const std::string& bytes, const std::vector<Diagnostic>& diagnostics) {
  std::string out;
  std::size_t done = 0;               // bytes that have been dealt with
  std::optional<std::size_t> latest;  // where the edit before begins
  for (const auto& [begin, edit] : editsOf(bytes, diagnostics)) {
    if (begin < done || begin == latest) continue;
    out.append(bytes, done, begin - done).append(edit.text);
    done = edit.end;
    latest = begin;
  }
  return out.append(bytes, done);
}

}  // namespace korvo
