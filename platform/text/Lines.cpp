#include "platform/text/Lines.h"

#include <algorithm>

namespace korvo::text {
namespace {

constexpr std::wstring_view kUtf8Mark = L"\xEF\xBB\xBF";
bool isWhiteSpace(wchar_t c) { return c == L' ' || (c >= L'\t' && c <= L'\r'); }

/// The next byte without the lock that every std::getc takes: a reader's FILE is its thread's.
int nextByte(std::FILE* file) {
#if defined(_WIN32)
  return _getc_nolock(file);
#else
  return getc_unlocked(file);
#endif
}

/// Calls `keep(character, its rank)` for what a line says before its comment.
template <class Keep>
void forEachKept(std::wstring_view line, const Keep& keep) {
  for (std::size_t i = 0; i < line.size() && line[i] != L'#'; ++i)
    if (!isWhiteSpace(line[i])) keep(line[i], i);
}

/// A line drawn of stars or slashes, or a comment of other languages.
bool isDecoration(std::wstring_view cleaned) {
  return cleaned.starts_with(L'*') || cleaned.starts_with(L'/');
}

/// Column of a character of the clean line, or the one behind the line's last.
int columnOf(const CleanLine& line, std::size_t rank) {
  if (rank < line.columns.size()) return line.columns[rank];
  return line.columns.empty() ? 1 : line.columns.back() + 1;
}

/// A stretch of a clean line.
struct Part {
  std::size_t begin = 0;
  std::size_t end = 0;
};

Token tokenOf(const CleanLine& line, Part part) {
  return {line.text.substr(part.begin, part.end - part.begin), columnOf(line, part.begin)};
}

/// The next part between equal signs that is not empty, from `from` on; an empty one at the end.
Part nextSide(std::wstring_view text, std::size_t from) {
  const std::size_t begin = std::min(text.find_first_not_of(L'=', from), text.size());
  return {begin, std::min(text.find(L'=', begin), text.size())};
}

std::vector<Token> operandsOf(const CleanLine& line, Part side) {
  std::vector<Token> operands;
  for (std::size_t begin = side.begin;;) {
    const std::size_t end = std::min(line.text.find(L',', begin), side.end);
    operands.push_back(tokenOf(line, {begin, end}));
    if (end == side.end) return operands;
    begin = end + 1;
  }
}

}  // namespace

bool LineReader::next(std::wstring& line) {
  const std::size_t room = kMaxLine + (started_ ? 0 : kUtf8Mark.size());
  wchar_t taken[kMaxLine + kUtf8Mark.size()];
  std::size_t length = 0;
  int byte = nextByte(file_);
  cut_ = false;
  for (; byte != EOF && byte != '\n'; byte = nextByte(file_)) {
    if (length < room) {
      taken[length++] = static_cast<wchar_t>(byte);
    } else {
      cut_ = true;
    }
  }
  line.assign(taken, length);
  if (!started_ && line.starts_with(kUtf8Mark)) line.erase(0, kUtf8Mark.size());
  started_ = true;
  if (line.size() > kMaxLine) {
    line.resize(kMaxLine);
    cut_ = true;
  }
  if (byte == EOF && (line.empty() || std::ferror(file_) != 0)) return false;
  ++number_;
  return true;
}

CleanLine cleanLine(std::wstring_view line) {
  CleanLine clean;
  forEachKept(line, [&clean](wchar_t c, std::size_t rank) {
    clean.text.push_back(c);
    clean.columns.push_back(static_cast<int>(rank) + 1);
  });
  return isDecoration(clean.text) ? CleanLine{} : clean;
}

void cleanLine(std::wstring_view line, std::wstring& out) {
  std::size_t length = 0;
  out.resize(line.size());
  forEachKept(line, [&](wchar_t c, std::size_t) { out[length++] = c; });
  out.resize(length);
  if (isDecoration(out)) out.clear();
}

Statement statementOf(const CleanLine& line) {
  const Part keyword = nextSide(line.text, 0);
  const Part side = nextSide(line.text, keyword.end);
  Statement statement;
  statement.keyword = tokenOf(line, keyword);
  statement.hasOperandPart = side.begin != side.end;
  if (statement.hasOperandPart) statement.operands = operandsOf(line, side);
  return statement;
}

}  // namespace korvo::text
