#include "tools/TableRun.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "tools/Messages.h"
#include "tools/Numbers.h"

namespace korvo::tools {
namespace {

constexpr std::size_t kOutBlock = 1 << 18;

// Messages about bad rows; more of them would bury what they say.
constexpr int kMostReports = 20;

}  // namespace

TableRun::TableRun(const Session& session, LineBlocks& lines, const TableOptions& options)
    : session_(session), lines_(lines), options_(options), slots_(kBatch) {}

// --- reading

void TableRun::readTop() {
  std::string_view line;
  if (!lines_.next(line)) {
    throw Failure(Exit::refused,
                  lines_.name() + ":1: expected a header of column names, found none");
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
    slot.problem = "expected a line of up to " + std::to_string(LineBlocks::kMaxLine) +
                   " bytes, found a longer one";
  } else if (auto problem = read(row, line)) {
    slot.problem = std::move(*problem);
  }
}

// An empty line is no row: tables often end with one. With --strict nothing behind a bad row is
// read.
bool TableRun::readBatch() {
  count_ = 0;
  std::string_view line;
  while (count_ < kBatch && !stopped_ && lines_.next(line)) {
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
  queryTime_ += Clock::now() - start;
}

// --- printing

void TableRun::report(int line, const std::string& problem) {
  if (bad_++ >= kMostReports) return;
  flush();
  say(lines_.name() + ":" + std::to_string(line) + ": " + problem);
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

void TableRun::printStats(Clock::time_point start) const {
  const double query = std::chrono::duration<double>(queryTime_).count();
  const double whole = std::chrono::duration<double>(Clock::now() - start).count();
  const double rate = query > 0.0 ? static_cast<double>(answered_) / query : 0.0;
  std::cerr << "korvo: " << session_.settingsText() << '\n'
            << answered_ << ' ' << rowWord() << " answered; query loop " << rounded(query) << " s, "
            << exact(std::round(rate)) << ' ' << rowWord() << "/s; whole run " << rounded(whole)
            << " s\n";
}

Exit TableRun::run() {
  const Clock::time_point start = Clock::now();
  readTop();
  while (readBatch()) {
    queryBatch();
    printBatch();
    progress_.show(lines_.bytesRead(), lines_.fileSize());
  }
  flush();
  if (bad_ > kMostReports) {
    say(lines_.name() + ": " + std::to_string(bad_ - kMostReports) + " more bad rows");
  }
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
