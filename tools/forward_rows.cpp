#include "tools/forward_rows.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <iostream>

#include "tools/Csv.h"
#include "tools/Numbers.h"
#include "tools/Progress.h"
#include "tools/ToolPoint.h"

namespace korvo::tools {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kBatch = 1024;
constexpr std::size_t kOutBlock = 1 << 18;

enum class Status { ok, bad, outOfRange };

const char* statusWord(Status status) {
  return status == Status::ok ? "ok" : status == Status::bad ? "bad" : "out-of-range";
}

struct Row {
  int line = 0;
  Status status = Status::ok;
  double values[12] = {};
  ToolPoint at;
};

bool isFinite(const zgeo::UVec3d& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool isFinite(const ToolPoint& at) {
  return isFinite(at.nose) && isFinite(at.tip) && isFinite(at.direction);
}

// Text collected in large pieces for standard output.
class Output {
 public:
  ~Output() { flush(); }
  std::string& text() { return text_; }
  void flushIfFull() {
    if (text_.size() >= kOutBlock) flush();
  }
  void flush() {
    std::cout.write(text_.data(), static_cast<std::streamsize>(text_.size()));
    text_.clear();
  }

 private:
  std::string text_;
};

void appendInteger(std::string& out, int value) { out += std::to_string(value); }

void appendVector(std::string& out, const zgeo::UVec3d& v, char separator) {
  appendExact(out, v.x);
  out += separator;
  appendExact(out, v.y);
  out += separator;
  appendExact(out, v.z);
}

class RowsAnswer {
 public:
  RowsAnswer(const ForwardOptions& options, const Session& session)
      : options_(options),
        session_(session),
        machine_(*session.machine()),
        position_(session.machine().position()),
        length_(machine_.getTHELength(session.tool())),
        lines_(*options.positions),
        rows_(kBatch) {}

  Exit run();

 private:
  void readHeaderLine();
  bool readBatch();
  void readOne(Row& row, std::string_view line);
  std::optional<std::string> problemOf(Row& row, std::string_view line) const;
  void queryBatch();
  void query(Row& row);
  void printBatch();
  void printCsv(const Row& row);
  void printJson(const Row& row);
  void checkRange(Row& row);
  void report(int line, const std::string& problem);
  void printStats(Clock::time_point start) const;

  const ForwardOptions& options_;
  const Session& session_;
  const zkin::KMachine& machine_;
  Position position_;
  double length_;
  LineBlocks lines_;
  CsvHeader header_;
  std::vector<Row> rows_;
  std::size_t count_ = 0;
  bool stopped_ = false, anyBad_ = false;
  std::uint64_t answered_ = 0;
  Clock::duration queryTime_{};
  Output out_;
  Progress progress_;
};

// --- reading

void RowsAnswer::readHeaderLine() {
  std::string_view line;
  if (!lines_.next(line)) {
    throw Failure(Exit::refused, lines_.name() + ":1: expected a header of axis names, found none");
  }
  header_ = readHeader(lines_, line, session_.machine().axisNames());
  if (options_.common.json) return;
  std::string head = "line,status,nose_x,nose_y,nose_z,tip_x,tip_y,tip_z,i,j,k\n";
  for (char& c : head) c = c == ',' ? header_.separator : c;
  out_.text() += head;
}

void RowsAnswer::report(int line, const std::string& problem) {
  anyBad_ = true;
  stopped_ = options_.strict;
  std::cerr << lines_.name() << ':' << line << ": " << problem << '\n';
}

std::optional<std::string> RowsAnswer::problemOf(Row& row, std::string_view line) const {
  if (lines_.wasCut()) {
    return "expected a line of up to " + std::to_string(LineBlocks::kMaxLine) +
           " bytes, found a longer one";
  }
  std::fill(std::begin(row.values), std::end(row.values), 0.0);
  if (auto problem = readRow(line, header_, row.values)) return problem;
  for (int i = 0; i < position_.size(); ++i) {
    if (row.values[i] != 0.0 && session_.isLocked(i)) {
      return "expected the locked axis " + position_.names()[i] + " to stay at 0, found " +
             exact(row.values[i]);
    }
  }
  return {};
}

void RowsAnswer::readOne(Row& row, std::string_view line) {
  row.line = lines_.number();
  row.status = Status::ok;
  if (const auto problem = problemOf(row, line)) {
    row.status = Status::bad;
    report(row.line, *problem);
  }
}

// An empty line is no row: tables often end with one.
bool RowsAnswer::readBatch() {
  count_ = 0;
  std::string_view line;
  while (count_ < kBatch && !stopped_ && lines_.next(line)) {
    if (line.find_first_not_of(" \t") != std::string_view::npos) readOne(rows_[count_++], line);
  }
  return count_ != 0;
}

// --- answering

void RowsAnswer::query(Row& row) {
  (*position_).set(row.values);
  row.at = toolPoint(machine_, *position_, session_.tool(), length_);
}

void RowsAnswer::queryBatch() {
  const Clock::time_point start = Clock::now();
  for (std::size_t i = 0; i < count_; ++i) {
    if (rows_[i].status == Status::ok) query(rows_[i]);
  }
  queryTime_ += Clock::now() - start;
}

// --- printing

void RowsAnswer::printCsv(const Row& row) {
  const char separator = header_.separator;
  std::string& out = out_.text();
  appendInteger(out, row.line);
  out += separator;
  out += statusWord(row.status);
  if (row.status != Status::ok) {
    out.append(9, separator);
  } else {
    for (const zgeo::UVec3d* v : {&row.at.nose, &row.at.tip, &row.at.direction}) {
      out += separator;
      appendVector(out, *v, separator);
    }
  }
  out += '\n';
}

void RowsAnswer::printJson(const Row& row) {
  std::string& out = out_.text();
  out += R"({"schema":"korvo.forward.row/1","units":{"length":"mm","angle":"degree"},"line":)";
  appendInteger(out, row.line);
  out += R"(,"status":")";
  out += statusWord(row.status);
  out += '"';
  if (row.status == Status::ok) {
    out += R"(,"nose":[)";
    appendVector(out, row.at.nose, ',');
    out += R"(],"tip":[)";
    appendVector(out, row.at.tip, ',');
    out += R"(],"direction":[)";
    appendVector(out, row.at.direction, ',');
    out += ']';
    if (options_.elements) {
      (*position_).set(row.values);
      out += R"(,"elements":)" + elementsJson(machine_, *position_).dump();
    }
  }
  out += "}\n";
}

// Values near the end of the range of doubles can put the tool beyond it.
void RowsAnswer::checkRange(Row& row) {
  if (row.status != Status::ok || isFinite(row.at)) return;
  row.status = Status::outOfRange;
  report(row.line, "expected a tool point within the range of numbers, found none");
}

void RowsAnswer::printBatch() {
  for (std::size_t i = 0; i < count_; ++i) {
    Row& row = rows_[i];
    checkRange(row);
    if (options_.common.json) {
      printJson(row);
    } else {
      printCsv(row);
    }
    answered_ += row.status == Status::ok;
    out_.flushIfFull();
    if (stopped_ && row.status == Status::outOfRange) return;
  }
}

void RowsAnswer::printStats(Clock::time_point start) const {
  const double query = std::chrono::duration<double>(queryTime_).count();
  const double whole = std::chrono::duration<double>(Clock::now() - start).count();
  const double rate = query > 0.0 ? static_cast<double>(answered_) / query : 0.0;
  std::cerr << answered_ << " positions answered; query loop " << rounded(query) << " s, "
            << exact(std::round(rate)) << " positions/s; whole run " << rounded(whole) << " s\n";
}

Exit RowsAnswer::run() {
  const Clock::time_point start = Clock::now();
  readHeaderLine();
  while (readBatch()) {
    queryBatch();
    printBatch();
    progress_.show(lines_.bytesRead(), lines_.fileSize());
  }
  out_.flush();
  if (options_.stats) printStats(start);
  if (stopped_) return Exit::refused;
  return anyBad_ ? Exit::no : Exit::answered;
}

}  // namespace

Exit answerRows(const ForwardOptions& options, const Session& session) {
  std::cerr << "korvo: " << session.settingsText() << '\n';
  return RowsAnswer(options, session).run();
}

}  // namespace korvo::tools
