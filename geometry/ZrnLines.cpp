#include "geometry/ZrnLines.h"

#include <algorithm>

namespace zkin::zrn {
namespace {

constexpr std::string_view kSpace = " \t\n\v\f\r";

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

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

template <class Value>
bool takeAny(const char*& at, Value& value) {
  std::string_view rest = at;
  const bool isTaken = takeField(rest, value);
  at = rest.data();
  return isTaken;
}

}  // namespace

// The stream is its reader's alone, so where the C library has a way without a lock, it is taken.
bool Line::read(std::FILE* stream) {
#ifdef __GLIBC__
  return fgets_unlocked(text_, kSize, stream) != nullptr;
#else
  return std::fgets(text_, kSize, stream) != nullptr;
#endif
}

bool Line::take(const char*& at, long long& value) const { return takeAny(at, value); }

// Nearly all numbers are plain ones between white space. The NUL behind the line ends a number too,
// so what an earlier line left behind it is never part of one.
bool Line::take(const char*& at, double& value) const {
  const char* begin = at;
  while (isSpace(*begin)) ++begin;
  double plain = 0;
  const char* const end = korvo::text::takePlainDecimal(begin, text_ + sizeof text_, plain);
  if (end == nullptr || (*end != '\0' && !isSpace(*end))) return takeAny(at, value);
  at = end;
  value = plain;
  return true;
}

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
