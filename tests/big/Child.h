#pragma once

#include <cstdint>
#include <functional>

namespace korvo::test {

/// What came of some work in a process of its own.
struct ChildAnswer {
  int code = 0;           ///< What the work returned.
  long peakMib = 0;       ///< Memory that it had at its peak, above what was there before it.
  bool hasEnded = false;  ///< By itself: no signal.
};

/// Runs `work` in a child with at most `addressSpace` bytes of address space (0: any number), so
/// that its peak starts where it is and what it takes is gone with it.
ChildAnswer inChild(const std::function<int()>& work, std::uint64_t addressSpace = 0);

}  // namespace korvo::test
