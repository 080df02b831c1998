// A file that another program replaces, between two reads and in the middle of one: what is read is
// the old file or the new one, whole, or a failure; never half of each.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <tuple>
#include <vector>

#include "tests/alloc/Allocations.h"
#include "tests/faults/FaultyFile.h"
#include "tests/faults/Left.h"
#include "tests/support/TempFile.h"
#include "toolkit/Machine.h"

namespace korvo::test {
namespace {

namespace fs = std::filesystem;

enum class By { another, half, empty, folder, pipe, nothing };
constexpr const char* kNames[] = {"Another", "ItsHalf", "AnEmptyOne",
                                  "AFolder", "APipe",   "Nothing"};

/// A new file, whatever is there now.
void put(const fs::path& file, const std::string& bytes) {
  fs::remove(file);
  std::ofstream(file, std::ios::binary) << bytes;
}

/// Puts something in the place of the file at once, as a program that saves its work does.
void replace(const fs::path& file, const ReaderRow& row, By by) {
  const fs::path next = file.parent_path() / "next";
  const auto write = [&](const std::string& bytes) {
    std::ofstream(next, std::ios::binary) << bytes;
    fs::rename(next, file);
  };
  if (by == By::another) return write(row.otherBytes);
  if (by == By::half) return write(row.bytes.substr(0, row.bytes.size() / 2));
  if (by == By::empty) return write("");
  fs::remove(file);
  if (by == By::folder) fs::create_directory(file);
  if (by == By::pipe && mkfifo(file.c_str(), 0600) != 0) FAIL() << file;
}

Content withoutPairs(Content content) {
  std::erase_if(content, [](const std::string& s) { return s.starts_with("pair "); });
  return content;
}

class ReplacedFile : public testing::TestWithParam<std::tuple<ReaderRow, By>> {
 protected:
  const ReaderRow& row() const { return std::get<0>(GetParam()); }
  By by() const { return std::get<1>(GetParam()); }
  bool isReadable() const { return by() == By::another || by() == By::half || by() == By::empty; }

  struct Answer {
    int code;
    Content content;
    bool operator==(const Answer&) const = default;
  };
  Answer readBy(Reader& reader) const {
    const int code = reader.read();
    return {code, reader.content()};
  }

  /// What an object that has read the old file says of what is there now.
  Answer ofThePresentFile() const {
    const auto reader = row().make(path);
    return readBy(*reader);
  }

  /// Reads while another file comes in this opening, then the old one again.
  void replaceAtOpening(int at, const Answer& old) const {
    const auto reader = row().make(path);
    const Content before = reader->content();
    int replaced = 0;
    Answer now;
    {
      const FaultyFile watched(path, {}, [&](int opening) {
        if (opening != at) return;
        ++replaced;
        replace(path, row(), by());
      });
      now = readBy(*reader);
    }
    EXPECT_EQ(replaced, 1);
    expectOneOfBothOrAFailure(now, before, old);
    fs::remove(path);
    put(path, row().bytes);
    EXPECT_EQ(readBy(*reader), old);
  }

  void expectOneOfBothOrAFailure(const Answer& now, const Content& before,
                                 const Answer& old) const {
    if (now == old) return;
    const bool isDone = now.code == Reader::kDone && isReadable();
    if (isDone && now.content == ofThePresentFile().content) return;
    if (now.code == Reader::kDone) {
      EXPECT_EQ(row().refused, Reader::kDone);  // of a body nothing is told
    }
    EXPECT_TRUE(isLeft(row().leftByRead, now.content, before, old.content))
        << now.code << testing::PrintToString(now.content);
  }

  const TempDir folder;
  const fs::path path = writeFiles(row(), folder.path());
};

TEST_P(ReplacedFile, BetweenTwoReadsGivesTheNewOneOrAFailure) {
  const auto reader = row().make(path);
  const Answer old = readBy(*reader);
  ASSERT_EQ(old.code, Reader::kDone);
  replace(path, row(), by());
  const Answer now = readBy(*reader);
  if (isReadable()) {
    EXPECT_EQ(now.code, ofThePresentFile().code);
    EXPECT_TRUE(now.content != old.content || isWithoutContent(row()));
    // Pairs of the load before stay.
    EXPECT_TRUE(now.code != Reader::kDone ||
                withoutPairs(now.content) == withoutPairs(ofThePresentFile().content));
  } else {
    EXPECT_EQ(now.code, row().refused);
    EXPECT_TRUE(isLeft(row().leftByRead, now.content, old.content, old.content));
  }
  EXPECT_TRUE(by() != By::empty || now.code == row().ofAnEmptyFile) << now.code;
  EXPECT_TRUE(by() != By::another || now.code == Reader::kDone) << now.code;
  put(path, row().bytes);
  EXPECT_EQ(readBy(*reader), old);
}

TEST_P(ReplacedFile, InTheMiddleOfAReadGivesOneOfBothOrAFailure) {
  const auto counting = row().make(path);
  int openings = 0;
  {
    const FaultyFile counted(path, {});
    ASSERT_EQ(counting->read(), Reader::kDone);
    openings = FaultyFile::openings();
  }
  const Answer old = readBy(*counting);
  for (int at = 1; at <= openings; ++at) {
    SCOPED_TRACE(at);
    put(path, row().bytes);
    const std::ptrdiff_t blocks = liveBlocks();
    replaceAtOpening(at, old);
    EXPECT_EQ(liveBlocks(), blocks);
    fs::remove(path);
  }
}

std::string nameOf(const testing::TestParamInfo<std::tuple<ReaderRow, By>>& row) {
  const auto& [reader, by] = row.param;
  return reader.name + "By" + kNames[static_cast<std::size_t>(by)];
}

INSTANTIATE_TEST_SUITE_P(Readers, ReplacedFile,
                         testing::Combine(testing::ValuesIn(readersOfFiles()),
                                          testing::Values(By::another, By::half, By::empty,
                                                          By::folder, By::pipe, By::nothing)),
                         nameOf);

/// The check reads the file, and then the library does: a machine of lines that nobody checked
/// would be given.
TEST(ReplacedFileOf, AToolkitLoadIsRefused) {
  const TempDir folder;
  const std::string lines = "frame\naxis=X,x\npart\ntool\n";
  const fs::path path = folder.write("machine.def", lines);
  ASSERT_TRUE(load(path));
  const fs::path unchecked = folder.write("next.def", lines + "axsi=Y,y\n");
  ASSERT_FALSE(load(unchecked));
  const FaultyFile watched(path, {}, [&](int opening) {
    if (opening == 1) fs::rename(unchecked, path);
  });
  const Loaded loaded = load(path);
  EXPECT_FALSE(loaded.machine);
  ASSERT_EQ(loaded.reasons.size(), 1u);
  EXPECT_EQ(loaded.reasons[0].code, "file-unreadable");
  EXPECT_EQ(loaded.reasons[0].text,
            "expected a readable file, found one that changed while it was read");
}

// --- a file that is cut while it is open: its size was asked before

class CutFile : public testing::TestWithParam<ReaderRow> {};

/// Text has no size to go by: it is what is there. A binary STL is as many whole triangles.
TEST_P(CutFile, GivesWhatAFileThatEndsThereGivesOrTheBeginning) {
  const ReaderRow& row = GetParam();
  const TempDir folder;
  const fs::path path = writeFiles(row, folder.path());
  const auto wholeReader = row.make(path);
  ASSERT_EQ(wholeReader->read(), Reader::kDone);
  const Content whole = wholeReader->content();
  int shown = 0;
  for (std::size_t at = 0; at < row.bytes.size() && !HasFailure(); ++at) {
    SCOPED_TRACE(at);
    const auto reader = row.make(path);
    int code = 0;
    {
      const FaultyFile cut(path, {ReadFault::ends, at});
      code = reader->read();
      shown += FaultyFile::injected() > 0;
    }
    const Content found = reader->content();
    EXPECT_EQ(reader->read(), Reader::kDone);
    EXPECT_EQ(withoutPairs(reader->content()), withoutPairs(whole));
    if (row.leftByRead == Left::others || row.name == "StlBinary") {
      EXPECT_TRUE(
          isLeft(row.leftByRead == Left::others ? Left::some : Left::beginning, found, {}, whole));
      continue;
    }
    put(path, row.bytes.substr(0, at));
    const auto ended = row.make(path);
    EXPECT_EQ(code, ended->read());
    EXPECT_EQ(found, ended->content());
    put(path, row.bytes);
  }
  EXPECT_EQ(shown, static_cast<int>(row.bytes.size()));
}

const auto rowName = [](const auto& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(Readers, CutFile, testing::ValuesIn(readersOfCutFiles()), rowName);

}  // namespace
}  // namespace korvo::test
