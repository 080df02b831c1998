#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

/// Everything that reads a file or its text, behind one face, so that each fault is tried on all.
namespace korvo::test {

/// What was read, one text for each thing that may be there or not.
using Content = std::vector<std::string>;

class Reader {
 public:
  static constexpr int kDone = 0;
  static constexpr int kNoMemory = 77;  ///< What std::bad_alloc and being told of it count as.

  Reader() = default;
  virtual ~Reader() = default;
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  /// Reads its file once; the code that the reader's interface answers with. Takes no memory but
  /// what the reader takes.
  virtual int read() = 0;
  virtual Content content() const = 0;
};

/// What is there after a failure.
constexpr int kBodyTriangles = 3;  ///< Of the body whose file is faulty.

enum class Left {
  asBefore,  ///< What was there before the read.
  nothing,
  beginning,  ///< The first things of the whole, the last of them perhaps without its end.
  others,     ///< The whole, or all of it but the body whose file is faulty.
  some,       ///< Any things of the whole.
  all,        ///< The whole.
  usable,     ///< Whatever it is, it can be asked and read anew.
};

struct ReaderRow {
  std::string name;
  std::string file{};        ///< The one that is faulty.
  std::string bytes{};       ///< Of it.
  std::string otherBytes{};  ///< Of one that takes its place and is as good.
  std::function<std::unique_ptr<Reader>(const std::filesystem::path& file)> make;
  int refused = -1;                   ///< The code where the file does not open.
  std::vector<int> readFailures{-1};  ///< The code of a failing read, by opening; the last stays.
  Left leftByRead = Left::nothing;
  std::vector<int> memoryFailures{-1};  ///< The codes where memory was short.
  Left leftByMemory = Left::nothing;
  int ofAnEmptyFile = -1;
  std::string machine{};  ///< The definition beside a body's file; one with every keyword if empty.
};

inline std::ostream& operator<<(std::ostream& out, const ReaderRow& row) { return out << row.name; }

std::vector<ReaderRow> readersOfFiles();  ///< With small files.
std::vector<ReaderRow>
readersOfFilesOnTheWay();  ///< Of a file that the reader looks at beside its own.
std::vector<ReaderRow> readersOfLargeFiles();  ///< Of several buffers.
std::vector<ReaderRow> readersOfCutFiles();    ///< That end at any byte.
std::vector<ReaderRow> readersOfTexts();  ///< That open no file: their bytes come from the caller.

/// Writes the row's file, and those beside it that it names.
std::filesystem::path writeFiles(const ReaderRow& row, const std::filesystem::path& folder);

}  // namespace korvo::test
