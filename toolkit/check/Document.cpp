#include "toolkit/check/Document.h"

#include <algorithm>
#include <utility>

namespace korvo::checking {
namespace {

std::string bytesOf(const std::wstring& line) {
  std::string bytes;
  bytes.reserve(line.size());
  for (const wchar_t c : line) bytes += static_cast<char>(c);
  return bytes;
}

// A cut may go through a character of UTF-8: what is left of it would make the line Latin-1.
std::string wholeCharacters(std::string bytes) {
  const auto isFollowing = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
  const auto last = std::find_if_not(bytes.rbegin(), bytes.rend(), isFollowing);
  if (last == bytes.rend()) return bytes;
  const auto lead = static_cast<unsigned char>(*last);
  const std::ptrdiff_t wanted = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
  const std::ptrdiff_t there = last - bytes.rbegin() + 1;
  if (there < wanted) bytes.erase(bytes.size() - static_cast<std::size_t>(there));
  return bytes;
}

void note(Document& document, const std::wstring& line, int number) {
  document.lineCount = number;
  if (!document.nulLine && line.find(L'\0') != std::wstring::npos) document.nulLine = number;
  if (number == 1) {
    document.isUtf16 = line.starts_with(L"\xFF\xFE") || line.starts_with(L"\xFE\xFF");
  }
  const auto inside = line.end() - (line.ends_with(L'\r') ? 1 : 0);
  document.carriageReturns += static_cast<int>(std::count(line.begin(), inside, L'\r'));
}

}  // namespace

Document readDocument(std::FILE* file) {
  Document document;
  text::LineReader lines(file);
  std::wstring line;
  while (lines.next(line)) {
    note(document, line, lines.lineNumber());
    std::string raw = bytesOf(line);
    if (lines.wasCut()) raw = wholeCharacters(std::move(raw));
    line.resize(raw.size());
    text::CleanLine clean = text::cleanLine(line);
    if (clean.text.empty()) continue;
    text::Statement statement = text::statementOf(clean);
    const text::Keyword keyword = text::keywordOf(statement.keyword.text);
    document.lines.push_back({lines.lineNumber(), std::move(raw), lines.wasCut(),
                              std::move(clean.text), std::move(clean.columns), keyword,
                              std::move(statement)});
  }
  return document;
}

Place SourceLine::placeOf(const text::Token& token) const {
  const auto first = std::lower_bound(columns.begin(), columns.end(), token.column);
  const auto last = first + static_cast<std::ptrdiff_t>(token.text.size()) - 1;
  const bool isThere = first != columns.end() && !token.text.empty() && last < columns.end();
  return {number, token.column, isThere ? *last - *first + 1 : 0};
}

Place SourceLine::placeOf(int operand) const {
  const auto i = static_cast<std::size_t>(operand);
  if (operand >= 0 && i < statement.operands.size()) return placeOf(statement.operands[i]);
  return {number, columns.empty() ? 1 : columns.back() + 1, 0};
}

Place SourceLine::placeOf(int first, int count) const {
  const Place begin = placeOf(first), end = placeOf(first + std::max(count, 1) - 1);
  return {number, begin.column, end.column + end.length - begin.column};
}

}  // namespace korvo::checking
