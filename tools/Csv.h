#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/Language.h"
#include "toolkit/Position.h"

namespace korvo::tools {

/// Reads a text file line by line in large blocks; memory is bounded whatever the file.
class LineBlocks {
 public:
  /// Longest line in bytes; a longer one is given without its rest, and `wasCut` is true.
  static constexpr std::size_t kMaxLine = 1 << 16;

  /// Opens the file at `path`, "-" for standard input. Throws Failure (refused).
  explicit LineBlocks(const std::string& path);
  ~LineBlocks();
  LineBlocks(const LineBlocks&) = delete;
  LineBlocks& operator=(const LineBlocks&) = delete;

  /// The next line without its end (LF or CR LF), valid until the next call; false at the end, or
  /// where a signal ended the wait for more. A UTF-8 mark at the start of the file is skipped.
  bool next(std::string_view& line);

  int number() const { return number_; }   ///< Of the line given last, from 1.
  bool wasCut() const { return wasCut_; }  ///< Whether that line was too long.
  std::uint64_t bytesTaken() const { return read_ - (end_ - begin_); }  ///< For progress.
  std::uint64_t fileSize() const { return size_; }                      ///< 0 when not known.
  const std::string& name() const { return name_; }                     ///< For messages.

 private:
  bool fill();
  std::size_t findEnd();
  void skipRest();

  std::string name_;
  std::FILE* file_ = nullptr;
  bool ownsFile_ = false;
  std::vector<char> buffer_;
  std::size_t begin_ = 0, end_ = 0;
  std::uint64_t read_ = 0, size_ = 0;
  int number_ = 0;
  bool wasCut_ = false, atEnd_ = false;
};

/// The header of a table: which column is which value, and what separates columns.
struct CsvHeader {
  char separator = ',';
  Language language = Language::english;  ///< Of what is said of a bad row.
  std::vector<int> places;  ///< places[column] is the value's place in a row; -1: passed over.
};

/// Reads the header line of a table of positions. The other columns that tables of `inverse` and
/// `path` have are passed over. Throws Failure (refused) for an unknown or repeated axis name.
CsvHeader readHeader(const LineBlocks& lines, std::string_view line, const AxisNames& names);

/// Reads the header line of a table of targets: tip_x, tip_y, tip_z (or x, y, z), i, j, k are the
/// places 0 to 5, in any case where no column has that name as it is; other columns are passed
/// over. Throws Failure (refused) when one is missing.
CsvHeader readTargetHeader(const LineBlocks& lines, std::string_view line,
                           Language language = Language::english);

/// Reads one row into `values` (indexed by place). A value may stand between double quotes.
/// @return  What was wanted and found when the row is bad; nothing when it is good.
std::optional<std::string> readRow(std::string_view line, const CsvHeader& header, double* values);

}  // namespace korvo::tools
