#pragma once

#include <cstddef>

/// The allocations of this test program and of the libraries that it uses, of each thread.
namespace korvo::test {

/// How many there were. Of a failed one, too.
std::size_t allocationCount();

/// Blocks that this thread made, less those that it freed.
std::ptrdiff_t liveBlocks();

/// Bytes of these blocks, and the most that they were since `forgetMostBytes`.
std::ptrdiff_t liveBytes();
std::ptrdiff_t mostBytes();
void forgetMostBytes();

/// The most that `query` had at a time.
template <typename Query>
std::ptrdiff_t bytesOf(Query query) {
  const std::ptrdiff_t before = liveBytes();
  forgetMostBytes();
  query();
  return mostBytes() - before;
}

/// Allocations made by `query`.
template <typename Query>
std::size_t allocationsOf(Query query) {
  const std::size_t before = allocationCount();
  query();
  return allocationCount() - before;
}

/// While it lives, the `n`-th allocation from now on fails; with 0 none does.
class FailingAllocation {
 public:
  explicit FailingAllocation(std::size_t n);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  static bool hasFailed();  ///< Of the one that lives.
};

/// Runs `query` again and again, each time with another allocation failing, and `judge` after each
/// with memory enough, until the one that shall fail is not reached any more: of the first hundred
/// each, then more and more rarely. How often one failed.
template <typename Query, typename Judge>
int failEach(Query query, Judge judge) {
  for (std::size_t at = 1, runs = 0;; at += 1 + at / 100, ++runs) {
    bool hasFailed = false;
    {
      const FailingAllocation failing(at);
      query();
      hasFailed = FailingAllocation::hasFailed();
    }
    if (!hasFailed) return static_cast<int>(runs);
    judge();
  }
}

}  // namespace korvo::test
