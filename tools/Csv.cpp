#include "tools/Csv.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>

#include "tools/Checked.h"
#include "tools/Failure.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/Stop.h"

namespace korvo::tools {
namespace {

constexpr std::size_t kBlock = 1 << 20;
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";

std::string_view unquoted(std::string_view text) {
  text = trimmed(text);
  const bool isQuoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
  return isQuoted ? trimmed(text.substr(1, text.size() - 2)) : text;
}

[[noreturn]] void failHeader(const LineBlocks& lines, const AxisNames& names,
                             const std::string& found) {
  throw Failure(Exit::refused, lines.name() + ":" + std::to_string(lines.number()) +
                                   ": expected a header of axis names (" + joined(names.all()) +
                                   "), each once, found " + found);
}

std::size_t skipBlanks(std::string_view line, std::size_t at) {
  while (at < line.size() && (line[at] == ' ' || line[at] == '\t')) ++at;
  return at;
}

// What stands where a number should end.
std::string badCell(std::string_view cell, const CsvHeader& header) {
  const std::string_view text = trimmed(cell);
  if (text.empty()) {
    return in(header.language, "expected a number, found nothing", "nombre attendu, trouvé : rien");
  }
  if (header.separator == ';' && text.find(',') != std::string_view::npos) {
    return in(header.language, "expected a number with a decimal point, found a decimal comma in ",
              "nombre à point décimal attendu, trouvé : une virgule décimale dans ") +
           inQuotes(text);
  }
  return in(header.language, "expected a finite decimal number, found ",
            "nombre décimal fini attendu, trouvé : ") +
         inQuotes(text);
}

std::string badCount(std::string_view line, const CsvHeader& header) {
  std::size_t found = 1;
  for (const char c : line) found += c == header.separator;
  const bool isComma = header.separator == ',' && found > header.places.size();
  const std::string wanted = std::to_string(header.places.size());
  const std::string hint =
      in(header.language, " (no decimal commas, please)", " (sans virgule décimale)");
  return in(header.language, "expected " + wanted + " values, found ",
            wanted + " valeurs attendues, trouvé : ") +
         std::to_string(found) + (isComma ? hint : "");
}

}  // namespace

// --- LineBlocks

LineBlocks::LineBlocks(const std::string& path) : name_(path), buffer_(kBlock + kMaxLine) {
  ownsFile_ = path != "-";
  if (!ownsFile_) {
    name_ = "standard input";
    file_ = stdin;
    return;
  }
  std::error_code error;
  const bool isFolder = std::filesystem::is_directory(path, error);
  if (!isFolder) file_ = std::fopen(path.c_str(), "rb");
  if (!file_) {
    const char* found = isFolder ? "a folder" : errno == EACCES ? "no permission" : "none";
    throw Failure(Exit::refused, path + ": expected a readable table, found " + found);
  }
  const auto size = std::filesystem::file_size(path, error);
  size_ = error ? 0 : size;
}

LineBlocks::~LineBlocks() {
  if (ownsFile_ && file_) std::fclose(file_);
}

// Moves the unread rest to the front and reads one block behind it.
bool LineBlocks::fill() {
  std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
  end_ -= begin_;
  begin_ = 0;
  const std::size_t got = std::fread(buffer_.data() + end_, 1, buffer_.size() - end_, file_);
  read_ += got;
  end_ += got;
  const bool isInterrupted = std::ferror(file_) && errno == EINTR;
  if (isInterrupted) std::clearerr(file_);
  atEnd_ = isInterrupted ? Stop::isWanted() : got == 0;
  if (std::ferror(file_))
    throw Failure(Exit::refused,
                  name_ + ": expected a readable table, found an error while reading");
  return !atEnd_;
}

// The place of the line's LF, or of the end of what there is.
std::size_t LineBlocks::findEnd() {
  for (std::size_t from = begin_;;) {
    const void* lf = std::memchr(buffer_.data() + from, '\n', end_ - from);
    if (lf) return static_cast<std::size_t>(static_cast<const char*>(lf) - buffer_.data());
    const std::size_t length = end_ - begin_;
    if (length > kMaxLine || atEnd_ || !fill()) return end_;
    from = begin_ + length;
  }
}

void LineBlocks::skipRest() {
  while (true) {
    const void* lf = std::memchr(buffer_.data() + begin_, '\n', end_ - begin_);
    if (lf) {
      begin_ = static_cast<std::size_t>(static_cast<const char*>(lf) - buffer_.data()) + 1;
      return;
    }
    begin_ = end_;
    if (atEnd_ || !fill()) return;
  }
}

bool LineBlocks::next(std::string_view& line) {
  if (wasCut_) skipRest();
  const std::size_t end = findEnd();
  if (begin_ == end_) return false;
  line = std::string_view(buffer_.data() + begin_, end - begin_);
  wasCut_ = line.size() > kMaxLine;
  if (wasCut_) line = line.substr(0, kMaxLine);
  begin_ = wasCut_ ? begin_ + kMaxLine : std::min(end + 1, end_);
  if (number_++ == 0 && line.starts_with(kUtf8Mark)) line.remove_prefix(kUtf8Mark.size());
  if (line.ends_with('\r')) line.remove_suffix(1);
  return true;
}

// --- headers

namespace {

char separatorOf(std::string_view line) {
  return line.find(';') != std::string_view::npos ? ';' : ',';
}

// Columns of the tables that `inverse` and `path` write, beside the axes.
bool isAnswerColumn(std::string_view name) {
  static constexpr std::string_view kNames[] = {
      "line",   "status",    "point_error", "direction_error", "outside_limits", "reason", "by",
      "branch", "free_axes", "margin",      "margin_axis",     "singular",       "target", "added",
      "break",  "feed"};
  return std::find(std::begin(kNames), std::end(kNames), name) != std::end(kNames);
}

constexpr std::string_view kTargetNames[6][2] = {{"tip_x", "x"}, {"tip_y", "y"}, {"tip_z", "z"},
                                                 {"i", "i"},     {"j", "j"},     {"k", "k"}};

int targetPlace(std::string_view name) {
  for (int place = 0; place < 6; ++place) {
    if (name == kTargetNames[place][0] || name == kTargetNames[place][1]) return place;
  }
  return -1;
}

std::string lowered(std::string_view text) {
  std::string low(text);
  for (char& c : low) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return low;
}

// What is wrong with the columns of targets: a name again, or the first that is missing.
struct TargetColumns {
  const LineBlocks& lines;
  Language language;

  [[noreturn]] void fail(const std::string& found) const {
    throw Failure(Exit::refused,
                  lines.name() + ":" + std::to_string(lines.number()) + ": " +
                      in(language,
                         "expected a header with tip_x, tip_y, tip_z (or x, y, z), i, j, k, each "
                         "once, found ",
                         "en-tête attendu avec tip_x, tip_y, tip_z (ou x, y, z), i, j, k, chacun "
                         "une fois, trouvé : ") +
                      found);
  }
  [[noreturn]] void failAgain(std::string_view name) const {
    fail(inQuotes(name) + in(language, " again", " à nouveau"));
  }
  [[noreturn]] void failMissing(int place) const {
    fail(in(language, "no ", "pas de ") + std::string(kTargetNames[place][0]));
  }
};

}  // namespace

CsvHeader readHeader(const LineBlocks& lines, std::string_view line, const AxisNames& names) {
  CsvHeader header;
  header.separator = separatorOf(line);
  std::set<int> seen;
  for (const std::string& cell : split(line, header.separator)) {
    const std::string_view name = unquoted(cell);
    const int place = names.find(name);
    if (place < 0 && !isAnswerColumn(name)) {
      failHeader(lines, names, inQuotes(name) + (numberOf(name) ? " (is there no header?)" : ""));
    }
    if (place >= 0 && !seen.insert(place).second) {
      failHeader(lines, names, inQuotes(name) + " again");
    }
    header.places.push_back(place);
  }
  if (seen.empty()) failHeader(lines, names, "none of them");
  return header;
}

// First the names as they are: beside them a table may have X, Y, Z of the axes.
CsvHeader readTargetHeader(const LineBlocks& lines, std::string_view line, Language language) {
  CsvHeader header;
  header.separator = separatorOf(line);
  header.language = language;
  const TargetColumns columns{lines, language};
  const std::vector<std::string> cells = split(line, header.separator);
  std::set<int> seen;
  for (const std::string& cell : cells) {
    const std::string_view name = unquoted(cell);
    const int place = targetPlace(name);
    if (place >= 0 && !seen.insert(place).second) columns.failAgain(name);
    header.places.push_back(place);
  }
  const std::set<int> exact = seen;
  for (std::size_t i = 0; i < cells.size(); ++i) {
    const std::string_view name = unquoted(cells[i]);
    const int place = targetPlace(lowered(name));
    if (place < 0 || exact.count(place)) continue;
    if (!seen.insert(place).second) columns.failAgain(name);
    header.places[i] = place;
  }
  for (int place = 0; place < 6; ++place) {
    if (seen.count(place) == 0) columns.failMissing(place);
  }
  return header;
}

// --- rows

namespace {

// The end of the cell that begins at `at`: a separator between double quotes is none.
std::size_t endOfCell(std::string_view line, std::size_t at, char separator) {
  bool isQuoted = false;
  for (; at < line.size() && (isQuoted || line[at] != separator); ++at) {
    if (line[at] == '"') isQuoted = !isQuoted;
  }
  return at;
}

// Reads the cell that begins at `at`, which then is its end; what was wrong with it otherwise.
std::optional<std::string> readCell(std::string_view line, std::size_t& at, const CsvHeader& header,
                                    double& value) {
  const char separator = header.separator;
  const std::size_t begin = at;
  const std::size_t length = scanNumber(line.substr(at), value);
  at = skipBlanks(line, at + length);
  if (length && (at >= line.size() || line[at] == separator)) return {};
  at = std::min(line.find(separator, begin), line.size());
  const std::string_view cell = line.substr(begin, at - begin);
  const std::optional<double> number = numberOf(unquoted(cell));
  if (!number) return badCell(cell, header);
  value = *number;
  return {};
}

}  // namespace

std::optional<std::string> readRow(std::string_view line, const CsvHeader& header, double* values) {
  std::size_t at = 0;
  const std::size_t columns = header.places.size();
  for (std::size_t column = 0; column < columns; ++column) {
    const int place = header.places[column];
    double value = 0.0;
    if (place < 0) {
      at = endOfCell(line, at, header.separator);
    } else if (auto problem = readCell(line, at, header, value)) {
      return problem;
    } else {
      values[place] = value;
    }
    const bool endsHere = at >= line.size();
    if (endsHere != (column + 1 == columns)) return badCount(line, header);
    ++at;
  }
  return {};
}

}  // namespace korvo::tools
