#pragma once

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

/// From the bytes of a machine definition file to clean lines and tokens that know their columns.
namespace korvo::text {

/// Longest line of a definition file, in characters; the rest of a longer line is ignored.
inline constexpr std::size_t kMaxLine = 1203;

/// Reads a file line by line, one byte one character (Latin-1), lines ended by LF.
///
/// The three bytes of a UTF-8 mark at the start of the file are skipped. A line longer than
/// kMaxLine is cut there. Memory is bounded by kMaxLine whatever the file. A read error ends the
/// file in front of the line that it broke: half of one may mean something else, or be one that
/// is read for ever. The caller asks `std::ferror`, for the lines before look like a whole file.
/// The FILE stays the caller's.
class LineReader {
 public:
  explicit LineReader(std::FILE* file) : file_(file) {}

  /// The next line without its LF; false at the end of the file. A last line without LF counts; an
  /// empty text after the last LF does not.
  bool next(std::wstring& line);

  /// Number of the line that `next` gave last, from 1.
  int lineNumber() const { return number_; }

  /// Whether the line that `next` gave last was longer than kMaxLine.
  bool wasCut() const { return cut_; }

 private:
  std::FILE* file_;
  int number_ = 0;
  bool started_ = false;
  bool cut_ = false;
};

/// A character of a cleaned line with its column (from 1) in the line as written.
struct CleanLine {
  std::wstring text;         ///< No white space, no comment; empty when the line says nothing.
  std::vector<int> columns;  ///< columns[i] is the column of text[i]; same length as text.
};

/// Cleans one line of a definition file: every blank, tab, CR, LF, VT and FF is removed, the text
/// is cut at the first '#', and a line that then begins with '*' or '/' says nothing.
CleanLine cleanLine(std::wstring_view line);

/// The same without columns, for readers that need none. Reuses `out`'s storage.
void cleanLine(std::wstring_view line, std::wstring& out);

/// A piece of a cleaned line: where it starts and its text.
struct Token {
  std::wstring text;
  int column = 0;  ///< From 1, in the line as written; for an empty token, of what follows it.
};

/// What a cleaned line says: keyword "=" operands separated by ",".
struct Statement {
  Token keyword;
  std::vector<Token> operands;  ///< Empty ones included; none when there is no operand part.
  bool hasOperandPart = false;
};

/// Splits a clean line as the file reader does: at "=" dropping empty parts, the second part at
/// "," keeping empty ones; parts after the second are ignored.
Statement statementOf(const CleanLine& line);

}  // namespace korvo::text
