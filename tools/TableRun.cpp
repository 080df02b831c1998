#include "tools/TableRun.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tools/Checked.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"

namespace korvo::tools {
namespace {

constexpr std::size_t kOutBlock = 1 << 18;

// Messages about bad rows; more of them would bury what they say.
constexpr int kMostReports = 20;

constexpr std::chrono::milliseconds kPause(100);  // between what is seen of the rows

}  // namespace

TableRun::TableRun(const Session& session, LineBlocks& lines, const TableOptions& options)
    : session_(session),
      lines_(lines),
      options_(options),
      slots_(kBatch),
      flushed_(Clock::now()),
      isSeen_(isTerminal(Stream::output)) {}

// --- reading

void TableRun::readTop() {
  std::string_view line;
  if (!lines_.next(line)) {
    throw Failure(Exit::refused, lines_.name() + ":1: " +
                                     in(language(), "expected a header of column names, found none",
                                        "en-tête de noms de colonnes attendu, trouvé : rien"));
  }
  header_ = readHeaderLine(line);
  std::string head = "line,status" + columns() + "\n";
  columnCount_ = static_cast<std::size_t>(std::count(head.begin(), head.end(), ',')) - 1;
  if (options_.json) return;
  std::replace(head.begin(), head.end(), ',', header_.separator);
  out_ += head;
}

void TableRun::readOne(std::size_t row, std::string_view line) {
  Slot& slot = slots_[row];
  slot.line = lines_.number();
  slot.problem.clear();
  if (lines_.wasCut()) {
    const std::string most = std::to_string(LineBlocks::kMaxLine);
    slot.problem = in(language(), "expected a line of up to " + most + " bytes, found a longer one",
                      "ligne d'au plus " + most + " octets attendue, trouvé : une plus longue");
  } else if (auto problem = read(row, line)) {
    slot.problem = std::move(*problem);
  }
}

// An empty line is no row: tables often end with one. With --strict nothing behind a bad row is
// read.
bool TableRun::readBatch() {
  count_ = 0;
  std::string_view line;
  while (count_ < batch_ && !stopped_ && lines_.next(line)) {
    if (line.find_first_not_of(" \t") == std::string_view::npos) continue;
    readOne(count_, line);
    if (!slots_[count_++].problem.empty() && options_.strict) break;
  }
  return count_ != 0;
}

// --- answering

void TableRun::queryBatch() {
  const Clock::time_point start = Clock::now();
  for (std::size_t i = 0; i < count_; ++i) {
    if (slots_[i].problem.empty()) query(i);
  }
  const Clock::duration spent = Clock::now() - start;
  queryTime_ += spent;
  fitBatch(spent);
}

void TableRun::fitBatch(Clock::duration spent) {
  if (spent < kPause / 4) {
    batch_ = std::min(2 * batch_, kBatch);
  } else if (spent > kPause) {
    batch_ = std::max<std::size_t>(batch_ / 2, 1);
  }
}

// --- printing

void TableRun::report(int line, const std::string& problem) {
  if (bad_++ < kMostReports) sayOf(":" + std::to_string(line) + ": " + problem);
}

// Behind the rows that are answered already, and not on the line of the bar.
void TableRun::sayOf(const std::string& problem) {
  flush();
  progress_.wipe();
  say(lines_.name() + problem);
}

void TableRun::print(std::size_t row, const Verdict& verdict) {
  do {
    printLine(row, verdict);
  } while (slots_[row].problem.empty() && moveOn(row));
}

void TableRun::printLine(std::size_t row, const Verdict& verdict) {
  const Slot& slot = slots_[row];
  const std::string line = std::to_string(slot.line);
  const bool isRead = slot.problem.empty();
  if (options_.json) {
    out_ += std::string(R"({"schema":")") + rowSchema() +
            R"(","units":{"length":"mm","angle":"degree"},"line":)" + line + R"(,"status":")" +
            verdict.status + '"';
    if (isRead) printJson(row, verdict, out_);
    out_ += '}';
  } else {
    out_ += line + header_.separator + verdict.status;
    if (isRead) {
      printCsv(row, verdict, out_);
    } else {
      out_.append(columnCount_, header_.separator);
    }
  }
  out_ += '\n';
}

void TableRun::printBatch() {
  for (std::size_t i = 0; i < count_ && !stopped_; ++i) {
    const std::string& problem = slots_[i].problem;
    const Verdict result = problem.empty() ? verdict(i) : Verdict{"bad", problem};
    print(i, result);
    if (out_.size() >= kOutBlock) flush();
    ++rows_;
    answered_ += result.isAnswered();
    if (result.isAnswered()) continue;
    report(slots_[i].line, result.problem);
    stopped_ = options_.strict;
  }
}

void TableRun::flush() {
  std::cout.write(out_.data(), static_cast<std::streamsize>(out_.size()));
  out_.clear();
}

void TableRun::flushInTime() {
  if (Clock::now() - flushed_ < kPause) return;
  flush();
  std::cout.flush();
  flushed_ = Clock::now();
}

void TableRun::showProgress() {
  if (!isSeen_) progress_.show(lines_.bytesTaken(), lines_.fileSize());
}

void TableRun::printStats(Clock::time_point start) const {
  const double query = std::chrono::duration<double>(queryTime_).count();
  const double whole = std::chrono::duration<double>(Clock::now() - start).count();
  const double rate = query > 0.0 ? static_cast<double>(answered_) / query : 0.0;
  const Language l = language();
  const std::string answered = std::to_string(answered_), rows = std::to_string(rows_);
  std::cerr << "korvo: " << session_.settingsText(language()) << '\n'
            << in(l, answered + " of " + rows + " " + rowWord() + " answered; query loop ",
                  rowWord() + " avec réponse : " + answered + " sur " + rows + " ; calcul ")
            << rounded(query) << " s, " << exact(std::round(rate)) << ' ' << rowWord()
            << in(l, "/s; whole run ", "/s ; en tout ") << rounded(whole) << " s\n";
}

Exit TableRun::run() {
  const Clock::time_point start = Clock::now();
  readTop();
  while (readBatch()) {
    queryBatch();
    printBatch();
    flushInTime();
    showProgress();
  }
  flush();
  progress_.wipe();
  if (bad_ > kMostReports) {
    const std::string more = std::to_string(bad_ - kMostReports);
    sayOf(in(language(), ": " + more + " more rows without an answer",
             " : encore " + more + " lignes sans réponse"));
  }
  if (const std::string note = lastNote(); !note.empty()) sayOf(": " + note);
  if (options_.stats) printStats(start);
  if (stopped_) return Exit::refused;
  return bad_ ? Exit::no : Exit::answered;
}

// --- cells

void appendCells(std::string& out, const zgeo::UVec3d& v, char separator) {
  for (const double value : {v.x, v.y, v.z}) {
    out += separator;
    appendExact(out, value);
  }
}

void appendNames(std::string& out, const std::vector<std::string>& names, char separator) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : " ") + name;
  const bool isPlain =
      list.find(separator) == std::string::npos && list.find('"') == std::string::npos;
  if (isPlain) {
    out += list;
  } else {
    std::ostringstream quotes;
    quotes << std::quoted(list, '"', '"');
    out += quotes.str();
  }
}

void appendJson(std::string& out, const zgeo::UVec3d& v) {
  out += '[';
  appendExact(out, v.x);
  out += ',';
  appendExact(out, v.y);
  out += ',';
  appendExact(out, v.z);
  out += ']';
}

}  // namespace korvo::tools
