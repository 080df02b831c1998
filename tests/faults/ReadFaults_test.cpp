// Reads that fail half-way: at every byte of a file, in each of its openings, the system says that
// it cannot read. Every reader answers with its failure code, keeps what it promises to keep, and
// reads the file whole when it is asked again.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

#include "tests/alloc/Allocations.h"
#include "tests/faults/FaultyFile.h"
#include "tests/faults/Left.h"
#include "tests/faults/Readers.h"
#include "tests/support/Draws.h"
#include "tests/support/TempFile.h"
#include "toolkit/check/Check.h"

namespace korvo::test {
namespace {

class ReadFaults : public testing::TestWithParam<ReaderRow> {
 protected:
  /// What is there after reading without a fault, and how often the file is opened.
  void SetUp() override {
    const auto reader = GetParam().make(path);
    const FaultyFile counted(path, {});
    ASSERT_EQ(reader->read(), Reader::kDone);
    whole = reader->content();
    ASSERT_EQ(whole.empty(), isWithoutContent(GetParam()));
    openings = FaultyFile::openings();
    ASSERT_GT(openings, 0);
  }

  /// Reads once with the fault, then without. Whether the fault showed.
  bool tryFault(const ReadFault& fault) {
    const ReaderRow& row = GetParam();
    const auto reader = row.make(path);
    const Content before = reader->content();
    int code = 0, injected = 0;
    {
      const FaultyFile faulty(path, fault);
      code = reader->read();
      injected = FaultyFile::injected();
    }
    const auto last = row.readFailures.size() - 1;
    const std::size_t opening = std::min(static_cast<std::size_t>(fault.opening) - 1, last);
    EXPECT_EQ(code, injected > 0 ? row.readFailures[opening] : Reader::kDone);
    const Content found = reader->content();
    EXPECT_TRUE(injected > 0 ? isLeft(row.leftByRead, found, before, whole) : found == whole)
        << testing::PrintToString(found);
    EXPECT_EQ(reader->read(), Reader::kDone);
    EXPECT_EQ(reader->content(), whole);
    return injected > 0;
  }

  /// Faults of one kind at each of `places` in each opening; how many of them showed.
  std::size_t tryAll(ReadFault::Kind kind, std::size_t step) {
    const int descriptors = openDescriptors();
    std::size_t shown = 0;
    for (int opening = 1; opening <= openings; ++opening) {
      for (std::size_t at = 0; at <= GetParam().bytes.size() && !HasFailure(); at += step) {
        SCOPED_TRACE(testing::Message() << "byte " << at << " of opening " << opening);
        const std::ptrdiff_t blocks = liveBlocks();
        shown += tryFault({kind, at, opening});
        EXPECT_EQ(liveBlocks(), blocks);
      }
    }
    EXPECT_EQ(openDescriptors(), descriptors);
    RecordProperty("faults", static_cast<int>(shown));
    return shown;
  }

  const TempDir folder;
  const std::filesystem::path path = writeFiles(GetParam(), folder.path());
  Content whole;
  int openings = 0;
};

/// At every byte; at every tenth in another host.
const std::size_t kStep = isOtherHost() ? 10 : 1;

TEST_P(ReadFaults, AtEveryByteAreToldByTheCode) {
  EXPECT_GT(tryAll(ReadFault::fails, kStep), GetParam().bytes.size() / kStep);
}

TEST_P(ReadFaults, ThatPassAreToldAllTheSame) {
  EXPECT_GT(tryAll(ReadFault::stumbles, kStep), GetParam().bytes.size() / kStep);
}

TEST_P(ReadFaults, OfTheOpeningAreToldByTheCode) {
  const int descriptors = openDescriptors();
  for (int opening = 1; opening <= openings; ++opening) {
    const auto reader = GetParam().make(path);
    const Content before = reader->content();
    {
      const FaultyFile faulty(path, {ReadFault::isRefused, 0, opening});
      EXPECT_EQ(reader->read(), GetParam().refused);
      EXPECT_EQ(FaultyFile::injected(), 1);
    }
    // A body that does not open is no body to a machine that is only on the way to it.
    EXPECT_TRUE(GetParam().leftByRead == Left::all ||
                isLeft(GetParam().leftByRead, reader->content(), before, whole));
    EXPECT_EQ(reader->read(), Reader::kDone);
    EXPECT_EQ(reader->content(), whole);
  }
  EXPECT_EQ(openDescriptors(), descriptors);
}

TEST_P(ReadFaults, FewBytesAtATimeChangeNothing) {
  for (const std::uint64_t most : {1, 7, 50}) {
    const auto reader = GetParam().make(path);
    const FaultyFile faulty(path, {ReadFault::trickles, most});
    EXPECT_EQ(reader->read(), Reader::kDone);
    EXPECT_EQ(reader->content(), whole);
    EXPECT_GE(FaultyFile::injected(), static_cast<int>(GetParam().bytes.size() / most));
  }
}

TEST(ReadFaultsOf, ACheckedFileAreAFinding) {
  const TempDir folder;
  const std::filesystem::path path = folder.write("machine.def", "frame\naxis=X,x\npart\ntool\n");
  const FaultyFile faulty(path, {ReadFault::fails, 20});
  const std::vector<Diagnostic> found = check(path).diagnostics;
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].code, "file-unreadable");
  EXPECT_EQ(found[0].text,
            "expected a readable file, found one that the system failed to read to its end");
  const Diagnostic french = check(path, Format::automatic, Language::french).diagnostics.at(0);
  EXPECT_EQ(french.text,
            "fichier lisible attendu, trouvé : un fichier que le système n'a pas pu lire jusqu'au "
            "bout");
}

const auto rowName = [](const auto& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(Readers, ReadFaults, testing::ValuesIn(readersOfFiles()), rowName);

INSTANTIATE_TEST_SUITE_P(OnTheWay, ReadFaults, testing::ValuesIn(readersOfFilesOnTheWay()),
                         rowName);

class LargeReadFaults : public ReadFaults {};

/// Every buffer of these readers, 4 KB to 256 KB large, ends at some of these places.
TEST_P(LargeReadFaults, AtEverySixteenthKilobyteAreToldByTheCode) {
  constexpr std::size_t kStride = 16 << 10;
  EXPECT_GT(tryAll(ReadFault::fails, kStride), GetParam().bytes.size() / kStride);
}

INSTANTIATE_TEST_SUITE_P(Readers, LargeReadFaults, testing::ValuesIn(readersOfLargeFiles()),
                         rowName);

}  // namespace
}  // namespace korvo::test
