#include "tools/forward_rows.h"

#include <chrono>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <sstream>

#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/Progress.h"
#include "tools/ToolPoint.h"
#include "tools/Travel.h"

namespace korvo::tools {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kBatch = 1024;
constexpr std::size_t kOutBlock = 1 << 18;

// Messages about bad rows; more of them would bury what they say.
constexpr int kMostReports = 20;

enum class Status { ok, bad, notFinite };

const char* statusWord(Status status) {
  return status == Status::ok ? "ok" : status == Status::bad ? "bad" : "not-finite";
}

struct Row {
  int line = 0;
  Status status = Status::ok;
  double values[12] = {};
  unsigned outside = 0;  // Travel's bits
  std::string problem;   // why it has no answer
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
  RowsAnswer(const ForwardOptions& options, const Session& session, LineBlocks& table)
      : options_(options),
        session_(session),
        machine_(*session.machine()),
        position_(session.machine().position()),
        length_(machine_.getTHELength(session.tool())),
        lines_(table),
        rows_(kBatch),
        travel_(session.machine()) {}

  Exit run();

 private:
  void readHeaderLine();
  bool readBatch();
  void readOne(Row& row, std::string_view line);
  std::optional<std::string> problemOf(Row& row, std::string_view line) const;
  bool isStopping(const Row& row) const;
  void queryBatch();
  void query(Row& row);
  void printBatch();
  void printCsv(const Row& row);
  void printJson(const Row& row);
  void checkRange(Row& row);
  void report(const Row& row);
  void appendOutside(const Row& row);
  void printStats(Clock::time_point start) const;

  const ForwardOptions& options_;
  const Session& session_;
  const zkin::KMachine& machine_;
  Position position_;
  double length_;
  LineBlocks& lines_;
  CsvHeader header_;
  std::vector<Row> rows_;
  std::size_t count_ = 0;
  bool stopped_ = false;
  int bad_ = 0;
  std::uint64_t answered_ = 0;
  Clock::duration queryTime_{};
  Travel travel_;
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
  std::string head = "line,status,nose_x,nose_y,nose_z,tip_x,tip_y,tip_z,i,j,k,outside_limits\n";
  for (char& c : head) c = c == ',' ? header_.separator : c;
  out_.text() += head;
}

void RowsAnswer::report(const Row& row) {
  if (bad_++ >= kMostReports) return;
  say(lines_.name() + ":" + std::to_string(row.line) + ": " + row.problem);
}

std::optional<std::string> RowsAnswer::problemOf(Row& row, std::string_view line) const {
  if (lines_.wasCut()) {
    return "expected a line of up to " + std::to_string(LineBlocks::kMaxLine) +
           " bytes, found a longer one";
  }
  std::fill(std::begin(row.values), std::end(row.values), 0.0);
  return readRow(line, header_, row.values);
}

void RowsAnswer::readOne(Row& row, std::string_view line) {
  row.line = lines_.number();
  row.status = Status::ok;
  if (auto problem = problemOf(row, line)) {
    row.status = Status::bad;
    row.problem = std::move(*problem);
  }
}

// With --strict nothing behind a bad row is read.
bool RowsAnswer::isStopping(const Row& row) const {
  return options_.strict && row.status != Status::ok;
}

// An empty line is no row: tables often end with one.
bool RowsAnswer::readBatch() {
  count_ = 0;
  std::string_view line;
  while (count_ < kBatch && !stopped_ && lines_.next(line)) {
    if (line.find_first_not_of(" \t") == std::string_view::npos) continue;
    readOne(rows_[count_], line);
    if (isStopping(rows_[count_++])) break;
  }
  return count_ != 0;
}

// --- answering

void RowsAnswer::query(Row& row) {
  (*position_).set(row.values);
  row.at = toolPoint(machine_, *position_, session_.tool(), length_);
  row.outside = travel_.outside(row.values);
}

void RowsAnswer::queryBatch() {
  const Clock::time_point start = Clock::now();
  for (std::size_t i = 0; i < count_; ++i) {
    if (rows_[i].status == Status::ok) query(rows_[i]);
  }
  queryTime_ += Clock::now() - start;
}

// --- printing

// Names with a blank between them, which no name can hold; quoted when a name holds the separator.
void RowsAnswer::appendOutside(const Row& row) {
  if (!row.outside) return;
  std::string names;
  for (const std::string& name : travel_.namesOf(row.outside)) {
    names += (names.empty() ? "" : " ") + name;
  }
  const bool isPlain = names.find_first_of(";\"") == std::string::npos;
  if (isPlain) {
    out_.text() += names;
  } else {
    std::ostringstream quotes;
    quotes << std::quoted(names, '"', '"');
    out_.text() += quotes.str();
  }
}

void RowsAnswer::printCsv(const Row& row) {
  const char separator = header_.separator;
  std::string& out = out_.text();
  appendInteger(out, row.line);
  out += separator;
  out += statusWord(row.status);
  if (row.status != Status::ok) {
    out.append(10, separator);
  } else {
    for (const zgeo::UVec3d* v : {&row.at.nose, &row.at.tip, &row.at.direction}) {
      out += separator;
      appendVector(out, *v, separator);
    }
    out += separator;
    appendOutside(row);
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
    out += R"(],"outsideLimits":)";
    out += row.outside ? nlohmann::json(travel_.namesOf(row.outside)).dump() : "[]";
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
  row.status = Status::notFinite;
  row.problem = "expected a tool point within the range of numbers, found none";
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
    if (row.status != Status::ok) report(row);
    stopped_ = isStopping(row);
    if (stopped_) return;
  }
}

void RowsAnswer::printStats(Clock::time_point start) const {
  const double query = std::chrono::duration<double>(queryTime_).count();
  const double whole = std::chrono::duration<double>(Clock::now() - start).count();
  const double rate = query > 0.0 ? static_cast<double>(answered_) / query : 0.0;
  std::cerr << "korvo: " << session_.settingsText() << '\n'
            << answered_ << " positions answered; query loop " << rounded(query) << " s, "
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
  if (bad_ > kMostReports) {
    say(lines_.name() + ": " + std::to_string(bad_ - kMostReports) + " more bad rows");
  }
  if (options_.stats) printStats(start);
  if (stopped_) return Exit::refused;
  return bad_ ? Exit::no : Exit::answered;
}

}  // namespace

Exit answerRows(const ForwardOptions& options, const Session& session, LineBlocks& table) {
  return RowsAnswer(options, session, table).run();
}

}  // namespace korvo::tools
