#include "tools/CheckText.h"

#include <algorithm>
#include <vector>

#include "toolkit/Text.h"
#include "tools/Messages.h"

namespace korvo::tools {
namespace {

constexpr const char* kBold = "1";
constexpr const char* kRed = "31";
constexpr const char* kGreen = "32";
constexpr const char* kCyan = "36";
constexpr const char* kIndent = "  ";

// --- characters of a line

bool continues(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

std::vector<std::string> charactersOf(std::string_view utf8) {
  std::vector<std::string> characters;
  for (const char c : utf8) {
    if (characters.empty() || !continues(c)) characters.emplace_back();
    characters.back() += c;
  }
  return characters;
}

std::string spelledCharacter(const std::string& character) {
  if (character == "\t") return character;
  const bool isC1 = character.size() == 2 && character[0] == '\xC2' &&
                    static_cast<unsigned char>(character[1]) < 0xA0;
  if (!isC1) return printable(character);
  constexpr const char* kHex = "0123456789abcdef";
  return {'\\', 'x', kHex[(character[1] >> 4) & 0xF], kHex[character[1] & 0xF]};
}

std::string withoutReturn(const std::string& line) {
  return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
}

// --- the line under a line

// As wide as the character is shown; a tab stays one, so that what follows stands below its like.
std::string underlineOf(const std::string& character, char mark) {
  if (character == "\t") return character;
  return std::string(charactersOf(spelledCharacter(character)).size(), mark);
}

struct Span {
  std::size_t begin = 0;
  std::size_t end = 0;
};

// A finding about a whole line means what the line says: no blanks around it, no comment.
Span saidIn(const std::vector<std::string>& line) {
  const auto isBlank = [](const std::string& c) { return c == " " || c == "\t"; };
  Span said{0, static_cast<std::size_t>(std::find(line.begin(), line.end(), "#") - line.begin())};
  while (said.begin < said.end && isBlank(line[said.begin])) ++said.begin;
  while (said.begin < said.end && isBlank(line[said.end - 1])) --said.end;
  return said;
}

Span spanOf(const Diagnostic& d, const std::vector<std::string>& line) {
  if (d.column < 1) return saidIn(line);
  const auto begin = static_cast<std::size_t>(d.column - 1);
  return {begin, begin + static_cast<std::size_t>(std::max(d.length, 1))};
}

std::string caretLine(const Diagnostic& d, const std::vector<std::string>& line) {
  const Span span = spanOf(d, line);
  std::string caret, marks;
  for (std::size_t i = 0; i < span.end; ++i) {
    const std::string character = i < line.size() ? line[i] : " ";
    (i < span.begin ? caret : marks) += underlineOf(character, i < span.begin ? ' ' : '~');
  }
  if (!marks.empty()) marks[0] = '^';
  return caret + marks;
}

void printLine(std::ostream& out, const Diagnostic& d, const TextStyle& style) {
  const std::string line = withoutReturn(d.source);
  if (line.empty()) return;
  out << kIndent << spelled(line) << '\n'
      << kIndent << painted(caretLine(d, charactersOf(line)), "1;32", style) << '\n';
}

const char* colourOf(Severity severity) {
  if (severity == Severity::error) return "1;31";
  return severity == Severity::warning ? "1;35" : "1;36";
}

std::string placeText(const Diagnostic& d) {
  std::string place = d.file;
  if (d.line > 0) place += ":" + std::to_string(d.line);
  if (d.line > 0 && d.column > 0) place += ":" + std::to_string(d.column);
  return place + ":";
}

// --- differences

// As UTF-8, without the mark of it and without line ends.
std::vector<std::string> linesOf(const std::string& bytes) {
  std::vector<std::string> lines;
  for (std::size_t at = bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0; at < bytes.size();) {
    const std::size_t end = std::min(bytes.find('\n', at), bytes.size());
    lines.push_back(toUtf8(toWide(withoutReturn(bytes.substr(at, end - at)))));
    at = end + 1;
  }
  return lines;
}

// Changed lines with what stands around them; those that would touch are one.
std::vector<Span> hunksOf(const std::vector<std::string>& before,
                          const std::vector<std::string>& after) {
  constexpr std::size_t kContext = 3;
  std::vector<Span> hunks;
  for (std::size_t i = 0; i < before.size(); ++i) {
    if (before[i] == after[i]) continue;
    const std::size_t begin = i - std::min(i, kContext);
    const std::size_t end = std::min(i + kContext + 1, before.size());
    if (hunks.empty() || hunks.back().end < begin) hunks.push_back({begin, end});
    hunks.back().end = end;
  }
  return hunks;
}

void printHunk(std::ostream& out, const Span& hunk, const std::vector<std::string>& before,
               const std::vector<std::string>& after, const TextStyle& style) {
  const std::string place =
      std::to_string(hunk.begin + 1) + "," + std::to_string(hunk.end - hunk.begin);
  out << painted("@@ -" + place + " +" + place + " @@", kCyan, style) << '\n';
  for (std::size_t i = hunk.begin; i < hunk.end;) {
    std::size_t end = i;
    while (end < hunk.end && before[end] != after[end]) ++end;
    for (std::size_t k = i; k < end; ++k)
      out << painted("-" + spelled(before[k]), kRed, style) << '\n';
    for (std::size_t k = i; k < end; ++k)
      out << painted("+" + spelled(after[k]), kGreen, style) << '\n';
    if (end < hunk.end) out << ' ' << spelled(before[end++]) << '\n';
    i = end;
  }
}

// --- counts

// In French, 0 and 1 are singular.
std::string counted(int n, Language language, const char* one, const char* many) {
  const bool isOne = language == Language::french ? n < 2 : n == 1;
  return std::to_string(n) + " " + (isOne ? one : many);
}

}  // namespace

std::string spelled(std::string_view utf8) {
  std::string out;
  for (const std::string& character : charactersOf(utf8)) out += spelledCharacter(character);
  return out;
}

std::string painted(const std::string& text, const char* colour, const TextStyle& style) {
  return style.hasColour ? "\x1b[" + std::string(colour) + "m" + text + "\x1b[0m" : text;
}

std::string severityText(Severity severity, Language language) {
  if (language == Language::english) return toString(severity);
  if (severity == Severity::error) return "erreur";
  return severity == Severity::warning ? "avertissement" : "note";
}

void printFinding(std::ostream& out, const Diagnostic& d, const TextStyle& style) {
  out << painted(spelled(placeText(d)), kBold, style) << ' '
      << painted(severityText(d.severity, style.language) + ":", colourOf(d.severity), style) << ' '
      << spelled(d.text) << " [" << d.code << "]\n";
  printLine(out, d, style);
  if (!d.suggestion.empty()) out << kIndent << spelled(d.suggestion) << '\n';
}

std::string countText(const Counts& counts, Language language) {
  if (language == Language::french) {
    return counted(counts.errors, language, "erreur", "erreurs") + ", " +
           counted(counts.warnings, language, "avertissement", "avertissements") + ", " +
           counted(counts.notes, language, "note", "notes");
  }
  return counted(counts.errors, language, "error", "errors") + ", " +
         counted(counts.warnings, language, "warning", "warnings") + ", " +
         counted(counts.notes, language, "note", "notes");
}

void printDifference(std::ostream& out, const std::string& name, const std::string& before,
                     const std::string& after, const TextStyle& style) {
  const std::vector<std::string> old = linesOf(before), mended = linesOf(after);
  out << painted("--- " + spelled(name), kBold, style) << '\n'
      << painted("+++ " + spelled(name), kBold, style) << '\n';
  for (const Span& hunk : hunksOf(old, mended)) printHunk(out, hunk, old, mended, style);
}

}  // namespace korvo::tools
