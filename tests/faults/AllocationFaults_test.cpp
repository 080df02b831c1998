// Memory that runs out at each single allocation of a reader: it answers with its failure code,
// leaks nothing, and reads the file whole once there is memory again.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <new>
#include <vector>

#include "tests/adapter/External.h"
#include "tests/alloc/Allocations.h"
#include "tests/faults/FaultyFile.h"
#include "tests/faults/Left.h"
#include "tests/support/TempFile.h"

namespace korvo::test {
namespace {

/// No input here takes more, so that every allocation can be made to fail.
constexpr std::size_t kMostAllocations = 2'000;

class AllocationFaults : public testing::TestWithParam<ReaderRow> {
 protected:
  /// Reads twice: what is made once for the process is made now.
  void SetUp() override {
    const auto reader = GetParam().make(path);
    reader->read();
    allocations = allocationsOf([&] { ASSERT_EQ(reader->read(), Reader::kDone); });
    whole = reader->content();
    ASSERT_FALSE(HasFailure());
  }

  /// Whether the allocation that shall fail was reached.
  bool tryFault(std::size_t n) {
    const ReaderRow& row = GetParam();
    const auto reader = row.make(path);
    const Content before = reader->content();
    int code = 0;
    bool hasFailed = false;
    {
      const FailingAllocation failing(n);
      EXPECT_NO_THROW(code = reader->read());
      hasFailed = FailingAllocation::hasFailed();
    }
    const Content found = reader->content();
    if (code == Reader::kDone && found == whole) {
      survived += hasFailed;
    } else {
      EXPECT_TRUE(hasFailed);
      EXPECT_EQ(std::ranges::count(row.memoryFailures, code), 1) << code;
      EXPECT_TRUE(isLeft(row.leftByMemory, found, before, whole)) << testing::PrintToString(found);
    }
    EXPECT_EQ(reader->read(), Reader::kDone);
    EXPECT_EQ(reader->content(), whole);
    return hasFailed;
  }

  const TempDir folder;
  const std::filesystem::path path = writeFiles(GetParam(), folder.path());
  Content whole;
  std::size_t allocations = 0;
  std::size_t survived = 0;  ///< Shortages that the reader got over.
};

TEST_P(AllocationFaults, AtEveryAllocationAreToldAndLeakNothing) {
  ASSERT_GT(allocations, 0u);
  ASSERT_LE(allocations, kMostAllocations);
  const int descriptors = openDescriptors();
  std::size_t n = 1;
  for (bool wasReached = true; wasReached && n <= kMostAllocations && !HasFailure(); ++n) {
    SCOPED_TRACE(testing::Message() << "allocation " << n);
    const std::ptrdiff_t before = liveBlocks();
    wasReached = tryFault(n);
    EXPECT_EQ(liveBlocks(), before);
  }
  const std::size_t faults = n - 2;         // the last one was not reached
  EXPECT_GE(faults, allocations * 9 / 10);  // names of temporary files differ in length
  EXPECT_LT(survived, faults);
  EXPECT_EQ(openDescriptors(), descriptors);
  RecordProperty("allocations", static_cast<int>(allocations));
  RecordProperty("faults", static_cast<int>(faults));
  RecordProperty("survived", static_cast<int>(survived));
}

/// A constructor that throws leaves nothing that `reset(true)` could free.
TEST(AllocationFaultsOf, AnAdapterInTheMakingLeakNothing) {
  const Machine machine = headHead();
  const Adapter original(machine);
  for (int withAdapter = 0; withAdapter < 2; ++withAdapter) {
    const std::ptrdiff_t before = liveBlocks();
    const int failures = failEach(
        [&] {
          try {
            const auto made = withAdapter ? Adapter(original) : Adapter(machine);
          } catch (const std::bad_alloc&) {
          }
        },
        [] {});
    EXPECT_GT(failures, 20);
    EXPECT_EQ(liveBlocks(), before);
  }
}

const auto rowName = [](const auto& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(Files, AllocationFaults, testing::ValuesIn(readersOfFiles()), rowName);
INSTANTIATE_TEST_SUITE_P(Texts, AllocationFaults, testing::ValuesIn(readersOfTexts()), rowName);

}  // namespace
}  // namespace korvo::test
