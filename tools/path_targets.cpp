// Toolpaths from CSV tables and from APT/CL text.
#include <algorithm>
#include <cmath>

#include "toolkit/Text.h"
#include "toolkit/path/Apt.h"
#include "tools/Checked.h"
#include "tools/Failure.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/Stop.h"
#include "tools/inverse.h"
#include "tools/path.h"

namespace korvo::tools {
namespace {

[[noreturn]] void fail(const LineBlocks& lines, const std::string& problem) {
  throw Failure(Exit::refused,
                lines.name() + ":" + std::to_string(std::max(lines.number(), 1)) + ": " + problem);
}

bool isEmpty(std::string_view line) { return trimmed(line).empty(); }

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool isWord(std::string_view text, std::string_view word) {
  const auto isSame = [](char a, char b) { return lowered(a) == lowered(b); };
  return std::equal(text.begin(), text.end(), word.begin(), word.end(), isSame);
}

std::string_view withoutQuotes(std::string_view text) {
  text = trimmed(text);
  const bool isQuoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
  return isQuoted ? trimmed(text.substr(1, text.size() - 2)) : text;
}

// A header names its columns between separators; statements have a slash, a $, or stand alone. GOTO
// is no column, whatever is wrong behind it.
bool looksLikeApt(std::string_view line) {
  if (line.find_first_of("/$") != std::string_view::npos) return true;
  const std::string_view word = line.substr(line.find_first_not_of(" \t"));
  if (isWord(word.substr(0, 4), "goto") && word.find_first_of(" \t") == 4) return true;
  return line.find_first_of(",;") == std::string_view::npos;
}

class TargetReader {
 public:
  TargetReader(const PathOptions& options, const Session& session, LineBlocks& lines)
      : lines_(lines), session_(session), language_(languageOf(options.language)) {
    input_.name = shownText(lines.name());
    input_.isApt = options.input == "apt";
    isTold_ = options.input != "auto";
  }

  PathInput read() {
    std::string_view line;
    while (nextLine(line) && isEmpty(line)) {
    }
    const std::string first(line);
    if (!isTold_) input_.isApt = isEmpty(line) || looksLikeApt(line);
    const int number = lines_.number();
    if (input_.isApt) {
      readApt(line);
    } else {
      readTable(line);
    }
    if (input_.targets.empty()) failEmpty(first, number);
    return std::move(input_);
  }

 private:
  // What is no table is taken for APT; without a target it may be neither.
  [[noreturn]] void failEmpty(const std::string& first, int number) const {
    const std::string wanted =
        in(language_, "expected targets, found none", "cibles attendues, trouvé : aucune");
    const bool isGuessed = input_.isApt && !isTold_ && !isEmpty(first);
    if (!isGuessed) throw Failure(Exit::refused, input_.name + ": " + wanted);
    throw Failure(Exit::refused,
                  input_.name + ":" + std::to_string(number) + ": " + wanted +
                      in(language_,
                         ": neither a table with tip_x, tip_y, tip_z (or x, y, z), i, j, k between "
                         ", or ; nor APT with GOTO/x,y,z; it begins with ",
                         " : ni tableau avec tip_x, tip_y, tip_z (ou x, y, z), i, j, k entre , ou "
                         "; ni APT avec GOTO/x,y,z ; début : ") +
                      inQuotes(first));
  }

  bool nextLine(std::string_view& line) {
    line = {};
    const bool isThere = lines_.next(line);
    if (Stop::isWanted()) {
      throw Failure(Exit::stopped,
                    input_.name + ": " +
                        in(language_, "stopped while it was read", "arrêté pendant la lecture"));
    }
    if (!isThere) return false;
    if (!lines_.wasCut()) return true;
    const std::string most = std::to_string(LineBlocks::kMaxLine);
    fail(lines_, in(language_, "expected a line of up to " + most + " bytes, found a longer one",
                    "ligne d'au plus " + most + " octets attendue, trouvé : une plus longue"));
  }

  void add(PathTarget target, int line) {
    double direction[] = {target.target.direction.x, target.target.direction.y,
                          target.target.direction.z};
    if (!scaleDirection(direction)) {
      fail(lines_, in(language_, "expected a direction, found i,j,k all 0",
                      "direction attendue, trouvé : i,j,k tous nuls"));
    }
    target.target.direction = {direction[0], direction[1], direction[2]};
    target.target = fromPartZero(session_.machine(), target.target);
    input_.targets.push_back(target);
    input_.lines.push_back(static_cast<std::uint32_t>(line));
  }

  // --- APT

  void readApt(std::string_view line) {
    AptReader reader([this](const PathTarget& target, int at) { add(target, at); }, language_);
    for (int number = 1; number < lines_.number(); ++number) reader.line("");
    for (bool isThere = lines_.number() > 0; isThere; isThere = nextLine(line)) {
      if (const auto problem = reader.line(line)) failApt(*problem);
    }
    if (const auto problem = reader.end()) failApt(*problem);
    input_.skipped = reader.skipped();
    input_.notFollowed = reader.notFollowed();
  }

  [[noreturn]] void failApt(const AptProblem& p) const {
    throw Failure(Exit::refused, input_.name + ":" + std::to_string(p.line) + ":" +
                                     std::to_string(p.column) + ": " + p.text);
  }

  // --- tables

  void readTable(std::string_view line) {
    if (lines_.number() == 0) {
      fail(lines_, in(language_, "expected a header of column names, found none",
                      "en-tête de noms de colonnes attendu, trouvé : rien"));
    }
    const CsvHeader header = readTargetHeader(lines_, line, language_);
    input_.separator = header.separator;
    findFeed(line, header);
    while (nextLine(line)) {
      if (!isEmpty(line)) readOne(line, header);
    }
  }

  void findFeed(std::string_view line, const CsvHeader& header) {
    const std::vector<std::string> cells = split(line, header.separator);
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (header.places[i] < 0 && isWord(withoutQuotes(cells[i]), "feed")) feed_ = i;
    }
  }

  void readOne(std::string_view line, const CsvHeader& header) {
    double v[6] = {};
    if (const auto problem = readRow(line, header, v)) fail(lines_, *problem);
    PathTarget target;
    target.target = {{v[0], v[1], v[2]}, {v[3], v[4], v[5]}};
    if (feed_) target.feed = feedOf(withoutQuotes(split(line, header.separator)[*feed_]));
    add(target, lines_.number());
  }

  double feedOf(std::string_view text) const {
    if (text.empty()) return 0.0;
    if (isWord(text, "rapid")) return kRapid;
    const std::optional<double> feed = numberOf(text);
    if (feed && *feed >= 0) return *feed;
    fail(lines_, in(language_, "expected a feed from 0 up, 'rapid' or nothing, found ",
                    "avance positive, 'rapid' ou rien attendu, trouvé : ") +
                     inQuotes(text));
  }

  LineBlocks& lines_;
  const Session& session_;
  Language language_;
  PathInput input_;
  bool isTold_ = false;
  std::optional<std::size_t> feed_;  // its column
};

}  // namespace

PathInput readTargets(const PathOptions& options, const Session& session, LineBlocks& lines) {
  return TargetReader(options, session, lines).read();
}

}  // namespace korvo::tools
