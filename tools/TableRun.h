#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/zgeo/UVec3d.h"
#include "tools/Csv.h"
#include "tools/Failure.h"
#include "tools/Progress.h"
#include "tools/Session.h"

namespace korvo::tools {

/// How a table is answered.
struct TableOptions {
  bool json = false;    ///< JSON Lines instead of CSV.
  bool strict = false;  ///< Stop at the first row without an answer.
  bool stats = false;
  Language language = Language::english;
};

/// Answers a table: one output row per input row (or for each of its answers), in their order,
/// batch by batch, so that memory stays flat; a batch is as long as what a tenth of a second
/// answers, so that slow rows are seen as they come. What a row holds and what is asked of it is
/// the derived class's, which keeps its rows by their place in the batch.
class TableRun {
 public:
  TableRun(const Session& session, LineBlocks& lines, const TableOptions& options);
  virtual ~TableRun() = default;
  TableRun(const TableRun&) = delete;
  TableRun& operator=(const TableRun&) = delete;

  /// @return  `no` when some rows had no answer, `refused` when --strict stopped at one.
  Exit run();

 protected:
  static constexpr std::size_t kBatch = 1024;

  /// Whether a row has its answer; if not, the word for its status column and a message.
  struct Verdict {
    const char* status = "ok";
    std::string problem;
    bool isAnswered() const { return problem.empty(); }
  };

  virtual CsvHeader readHeaderLine(std::string_view line) = 0;
  virtual std::string columns() const = 0;  ///< Those after line and status, "," before each.
  virtual const char* rowSchema() const = 0;
  virtual std::string rowWord() const = 0;             ///< "positions", for --stats.
  virtual std::string lastNote() const { return ""; }  ///< Said of the whole table at its end.

  /// Reads a row; what was wanted and found when it is bad.
  virtual std::optional<std::string> read(std::size_t row, std::string_view line) = 0;
  virtual void query(std::size_t row) = 0;
  virtual Verdict verdict(std::size_t row) = 0;

  /// Moves on to the next answer of a row that has several; false behind the last.
  virtual bool moveOn(std::size_t /*row*/) { return false; }

  /// What follows the status of a row that could be read.
  virtual void printCsv(std::size_t row, const Verdict& verdict, std::string& out) = 0;
  virtual void printJson(std::size_t row, const Verdict& verdict, std::string& out) = 0;

  const Session& session() const { return session_; }
  Language language() const { return options_.language; }
  const LineBlocks& lines() const { return lines_; }
  const CsvHeader& header() const { return header_; }

 private:
  using Clock = std::chrono::steady_clock;

  struct Slot {
    int line = 0;
    std::string problem;  // why it could not be read
  };

  void readTop();
  bool readBatch();
  void readOne(std::size_t row, std::string_view line);
  void queryBatch();
  void fitBatch(Clock::duration spent);
  void printBatch();
  void print(std::size_t row, const Verdict& verdict);
  void printLine(std::size_t row, const Verdict& verdict);
  void report(int line, const std::string& problem);
  void sayOf(const std::string& problem);
  void flush();
  void flushInTime();
  void showProgress();
  void printStats(Clock::time_point start) const;

  const Session& session_;
  LineBlocks& lines_;
  TableOptions options_;
  CsvHeader header_;
  std::size_t columnCount_ = 0;
  std::vector<Slot> slots_;
  std::size_t count_ = 0;
  std::size_t batch_ = 1;  // rows of the next one
  bool stopped_ = false;
  int bad_ = 0;
  std::uint64_t rows_ = 0, answered_ = 0;
  Clock::duration queryTime_{};
  Clock::time_point flushed_;
  std::string out_;
  Progress progress_;
  bool isSeen_;  // the rows themselves are on a terminal
};

/// ",1,2,3" with the separator of the table.
void appendCells(std::string& out, const zgeo::UVec3d& v, char separator);

/// Names with a blank between them, which no name can hold; quoted when one holds the separator.
void appendNames(std::string& out, const std::vector<std::string>& names, char separator);

/// "[1,2,3]".
void appendJson(std::string& out, const zgeo::UVec3d& v);

}  // namespace korvo::tools
