#pragma once

#include <cstddef>

/// What this thread takes from the heap, as this program's own operator new sees it.
namespace korvo::test {

extern thread_local std::size_t allocations;    ///< That were made.
extern thread_local std::ptrdiff_t liveBlocks;  ///< Made, and not freed.

}  // namespace korvo::test
