#include "toolkit/path/Apt.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/text/Number.h"

namespace korvo {
namespace {

constexpr double kInch = 25.4;  // mm
constexpr std::size_t kMostWords = 100;
constexpr std::size_t kLongestWord = 24;

bool isBlank(char c) { return c == ' ' || c == '\t'; }

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool isWordLetter(char c) {
  const char u = upper(c);
  return (u >= 'A' && u <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool isLetter(char c) { return isWordLetter(c) && !(c >= '0' && c <= '9'); }

bool isDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

/// "20", "N20": the number of a statement.
bool isNumber(std::string_view word) {
  return isDigits(word) || (word.starts_with('N') && isDigits(word.substr(1)));
}

template <std::size_t N>
bool isAmong(std::string_view word, const std::string_view (&words)[N]) {
  return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

bool isRead(std::string_view word) {
  static constexpr std::string_view kWords[] = {"GOTO", "FEDRAT", "RAPID", "UNITS"};
  return isAmong(word, kWords);
}

/// Behind these stands text for people or for the control.
bool isText(std::string_view word) {
  static constexpr std::string_view kWords[] = {"PARTNO", "PPRINT", "REMARK", "INSERT", "MSG"};
  return isAmong(word, kWords);
}

/// Motions, cycles of motions, and what moves or turns all points or directions behind it.
bool changesPath(std::string_view word) {
  static constexpr std::string_view kWords[] = {
      "ARC",    "ARCMOV", "BSPLIN", "CALL",   "CALSUB", "CIRCLE", "COPY",   "CYCLE",  "FROM",
      "GOBACK", "GOCLER", "GODLTA", "GODOWN", "GOFWD",  "GOHOME", "GOLFT",  "GORGT",  "GOUP",
      "HELIX",  "INDEX",  "MOVARC", "NURBS",  "ORIGIN", "POCKET", "REFSYS", "RETRCT", "ROTABL",
      "ROTATE", "ROTHED", "SPLINE", "THREAD", "TLAXIS", "TRACUT", "TRANS"};
  return isAmong(word, kWords);
}

/// Where GOTO stands in `text` and is no part of a longer word; npos when nowhere.
std::size_t findGoto(std::string_view text) {
  constexpr std::string_view kGoto = "GOTO";
  const auto isSame = [](char a, char b) { return upper(a) == b; };
  for (auto from = text.begin();;) {
    const auto found = std::search(from, text.end(), kGoto.begin(), kGoto.end(), isSame);
    if (found == text.end()) return std::string_view::npos;
    const auto behind = found + static_cast<std::ptrdiff_t>(kGoto.size());
    const bool isAlone = (found == text.begin() || !isLetter(*(found - 1))) &&
                         (behind == text.end() || !isLetter(*behind));
    if (isAlone) return static_cast<std::size_t>(found - text.begin());
    from = behind;
  }
}

/// As people write decimal numbers: no "inf", no "0x1p3", no "1e".
std::size_t scanDecimal(std::string_view text, double& value) {
  const text::Scan scan = text::scanDouble(text, value);
  if (!scan || !std::isfinite(value)) return 0;
  const std::string_view number = text.substr(0, scan.length);
  const char last = number.back();
  const bool isWhole = (last >= '0' && last <= '9') || last == '.';
  return isWhole && number.find_first_not_of("0123456789+-.eE") == std::string_view::npos
             ? scan.length
             : 0;
}

std::string quoted(std::string_view text) {
  constexpr std::size_t kLongest = 40;
  return "'" + std::string(text.substr(0, kLongest)) + (text.size() > kLongest ? "...'" : "'");
}

}  // namespace

/// Goes through a statement.
class AptReader::Cursor {
 public:
  explicit Cursor(std::string_view text) : text_(text) { skipBlanks(); }

  std::size_t at() const { return at_; }
  bool isAtEnd() const { return at_ >= text_.size(); }

  std::string word() {
    std::string word;
    while (!isAtEnd() && isWordLetter(text_[at_])) word += upper(text_[at_++]);
    skipBlanks();
    return word;
  }

  bool take(char c) {
    if (isAtEnd() || text_[at_] != c) return false;
    ++at_;
    skipBlanks();
    return true;
  }

  bool take(double& number) {
    const std::size_t length = scanDecimal(text_.substr(at_), number);
    at_ += length;
    skipBlanks();
    return length != 0;
  }

  /// What stands here, up to the next comma.
  std::string_view here() const {
    const std::string_view rest = text_.substr(at_);
    const std::string_view item = rest.substr(0, rest.find(','));
    const std::size_t last = item.find_last_not_of(" \t");
    return item.substr(0, last == std::string_view::npos ? 0 : last + 1);
  }

 private:
  void skipBlanks() {
    while (!isAtEnd() && isBlank(text_[at_])) ++at_;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

AptReader::AptReader(Take take, Language language) : take_(std::move(take)), language_(language) {}

std::string AptReader::in(const char* english, const char* french) const {
  return language_ == Language::french ? french : english;
}

AptProblem AptReader::problemAt(std::size_t at, const std::string& text) const {
  const auto behind = std::upper_bound(pieces_.begin(), pieces_.end(), at,
                                       [](std::size_t a, const Piece& p) { return a < p.begin; });
  const Piece& piece = *(behind == pieces_.begin() ? behind : behind - 1);
  return {piece.line, piece.column + static_cast<int>(at - piece.begin), text};
}

// --- lines

std::optional<AptProblem> AptReader::line(std::string_view text) {
  ++number_;
  const std::size_t dollar = text.find('$');
  const bool goesOn = dollar != std::string_view::npos && text.substr(dollar, 2) != "$$";
  const std::string_view own = text.substr(0, dollar);
  pieces_.push_back({text_.size(), number_, 1});
  if (text_.size() + own.size() > kMaxStatement) {
    return problemAt(text_.size(), in("expected a statement of up to 65536 characters with its "
                                      "continuations, found a longer one",
                                      "instruction d'au plus 65536 caractères avec ses suites "
                                      "attendue, trouvé : une plus longue"));
  }
  text_ += own;
  if (goesOn) return {};
  Problem problem = statement();
  text_.clear();
  pieces_.clear();
  return problem;
}

std::optional<AptProblem> AptReader::end() {
  if (pieces_.empty()) return {};
  return problemAt(text_.size(), in("expected the rest of the statement behind its $, found the "
                                    "end of the file",
                                    "suite de l'instruction attendue après son $, trouvé : la fin "
                                    "du fichier"));
}

// --- statements

std::optional<AptProblem> AptReader::statement() {
  Cursor cursor(text_);
  if (cursor.isAtEnd()) return {};
  std::string word = cursor.word();
  Cursor behind = cursor;
  const bool isLabelled = behind.take(')') || behind.take('=') || isNumber(word);
  if (isLabelled) {
    const std::string next = behind.word();
    const bool isWord = isNumber(word) && !next.empty() && isLetter(next.front());
    if (isWord || isRead(next) || isText(next) || changesPath(next)) {
      word = next;
      cursor = behind;
    }
  }
  return statementOf(word, cursor);
}

std::optional<AptProblem> AptReader::statementOf(const std::string& word, Cursor& cursor) {
  if (word == "GOTO") return readGoto(cursor);
  if (word == "FEDRAT") return readFeed(cursor);
  if (word == "UNITS") return readUnits(cursor);
  if (word == "RAPID" && cursor.isAtEnd()) {
    isRapid_ = true;
    return {};
  }
  return passOver(word);
}

std::optional<AptProblem> AptReader::passOver(const std::string& word) {
  const std::size_t at = isText(word) ? std::string::npos : findGoto(text_);
  if (at != std::string::npos) {
    return problemAt(at, in("expected GOTO at the start of a statement, or behind a number or a "
                            "label, found ",
                            "GOTO attendu au début d'une instruction, ou derrière un numéro ou "
                            "une étiquette, trouvé : ") +
                             quoted(std::string_view(text_)));
  }
  if (changesPath(word)) {
    ++notFollowed_[word];
  } else {
    skip(word);
  }
  return {};
}

void AptReader::skip(std::string word) {
  word = word.substr(0, kLongestWord);
  if (word.empty()) word = "?";
  if (skipped_.size() >= kMostWords && !skipped_.contains(word)) word = "...";
  ++skipped_[word];
}

std::optional<AptProblem> AptReader::readGoto(Cursor& cursor) {
  constexpr std::size_t kMost = 6;
  const std::string wanted = in("expected GOTO/x,y,z or GOTO/x,y,z,i,j,k, found ",
                                "GOTO/x,y,z ou GOTO/x,y,z,i,j,k attendu, trouvé : ");
  if (!cursor.take('/')) return problemAt(cursor.at(), wanted + quoted(cursor.here()));
  double numbers[kMost] = {};
  std::size_t count = 0;
  do {
    const std::size_t at = cursor.at();
    const std::string_view item = cursor.here();
    double number = 0.0;
    if (!cursor.take(number)) return problemAt(at, wanted + quoted(item));
    if (count < kMost) numbers[count] = count < 3 ? number * unit_ : number;
    if (count < kMost && !std::isfinite(numbers[count]))
      return problemAt(at, wanted + quoted(item));
    ++count;
  } while (cursor.take(','));
  if (!cursor.isAtEnd()) return problemAt(cursor.at(), wanted + quoted(cursor.here()));
  if (count != 3 && count != kMost) {
    return problemAt(cursor.at(), wanted + std::to_string(count) + in(" numbers", " nombres"));
  }
  if (count == kMost && numbers[3] == 0 && numbers[4] == 0 && numbers[5] == 0) {
    return problemAt(0, in("expected a direction, found i,j,k all 0",
                           "direction attendue, trouvé : i,j,k tous nuls"));
  }
  take(numbers, count);
  return {};
}

void AptReader::take(const double* numbers, std::size_t count) {
  if (count > 3) direction_ = {numbers[3], numbers[4], numbers[5]};
  PathTarget target;
  target.target = {{numbers[0], numbers[1], numbers[2]}, direction_};
  target.feed = isRapid_ ? kRapid : feed_;
  isRapid_ = false;
  if (take_) take_(target, pieces_.front().line);
}

/// In mm, of the words that may stand beside a feed; those without a length are in what UNITS says.
std::optional<double> AptReader::feedUnit(const std::string& word) const {
  if (word == "MMPM" || word == "MMPR") return 1.0;
  if (word == "IPM" || word == "IPR") return kInch;
  if (word == "PERMIN" || word == "PERREV") return unit_;
  return {};
}

std::optional<AptProblem> AptReader::readFeed(Cursor& cursor) {
  const std::string wanted =
      in("expected FEDRAT/ with one number from 0 up and its unit MMPM, MMPR, IPM, IPR, PERMIN or "
         "PERREV, or none, found ",
         "FEDRAT/ avec un nombre positif et son unité MMPM, MMPR, IPM, IPR, PERMIN ou PERREV, ou "
         "aucune, attendu, trouvé : ");
  if (!cursor.take('/')) return problemAt(cursor.at(), wanted + quoted(cursor.here()));
  std::optional<double> feed;
  std::optional<double> unit;
  do {
    const std::size_t at = cursor.at();
    const std::string_view item = cursor.here();
    double number = 0.0;
    if (!feed && cursor.take(number)) {
      feed = number;
    } else {
      const std::optional<double> named = feedUnit(cursor.word());
      if (unit || !named) return problemAt(at, wanted + quoted(item));
      unit = named;
    }
  } while (cursor.take(','));
  const double value = feed.value_or(-1.0) * unit.value_or(unit_);
  if (!cursor.isAtEnd() || !(value >= 0) || !std::isfinite(value)) {
    return problemAt(cursor.at(), wanted + quoted(cursor.here()));
  }
  feed_ = value;
  return {};
}

std::optional<AptProblem> AptReader::readUnits(Cursor& cursor) {
  const std::string wanted = in("expected UNITS/MM or UNITS/INCHES, found ",
                                "UNITS/MM ou UNITS/INCHES attendu, trouvé : ");
  const bool hasSlash = cursor.take('/');
  const std::size_t at = cursor.at();
  const std::string_view item = cursor.here();
  const std::string word = cursor.word();
  const bool isMm = word == "MM", isInch = word == "INCHES" || word == "INCH";
  if (!hasSlash || !cursor.isAtEnd() || (!isMm && !isInch)) {
    return problemAt(at, wanted + quoted(item));
  }
  unit_ = isMm ? 1.0 : kInch;
  return {};
}

}  // namespace korvo
