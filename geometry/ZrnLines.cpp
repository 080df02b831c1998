#include "geometry/ZrnLines.h"

#include <algorithm>

namespace zkin::zrn {
namespace {

constexpr std::string_view kSpace = " \t\n\v\f\r";

/// The first word of a text, as "%s" takes it; empty when there is none.
std::string_view wordOf(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(kSpace), text.size()));
  return text.substr(0, text.find_first_of(kSpace));
}

/// Deliberate: the name starts where the word's text occurs first in the line, which may be inside
/// an earlier field: "2 4 1 0.125 1" is named "1 0.125 1". Test:
/// ZrnHeaderName/ZrnHeader.GivesItsFields/StartsWhereItsTextOccursFirst.
std::string_view nameIn(std::string_view line, std::string_view rest) {
  const std::string_view word = wordOf(rest);
  return word.empty() ? word : line.substr(line.find(word));
}

}  // namespace

std::optional<Header> headerOf(std::string_view line) {
  Header header;
  std::string_view rest = line;
  const bool isHeader =
      takeField(rest, header.a) && takeField(rest, header.b) && takeField(rest, header.code);
  if (!isHeader) return std::nullopt;
  if (takeField(rest, header.value)) header.name = nameIn(line, rest);
  return header;
}

bool isHeader(std::string_view line) {
  long long a = 0;
  long long b = 0;
  long long code = 0;
  return scanFields(line, a, b, code);
}

}  // namespace zkin::zrn
