#include "tests/alloc/Allocations.h"

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocations = 0;
thread_local std::ptrdiff_t live = 0;
thread_local std::ptrdiff_t bytes = 0;
thread_local std::ptrdiff_t most = 0;
thread_local std::size_t failing = 0;  // the one that fails, counted from now; 0: none

bool isFailing() noexcept {
  ++allocations;
  return failing > 0 && --failing == 0;
}

void* alive(void* p) noexcept {
  if (!p) return p;
  ++live;
  bytes += static_cast<std::ptrdiff_t>(malloc_usable_size(p));
  most = std::max(most, bytes);
  return p;
}

void release(void* p) noexcept {
  if (p) {
    --live;
    bytes -= static_cast<std::ptrdiff_t>(malloc_usable_size(p));
  }
  std::free(p);
}

void* countedOrNull(std::size_t size) noexcept {
  return isFailing() ? nullptr : alive(std::malloc(size == 0 ? 1 : size));
}

void* counted(std::size_t size) {
  if (void* const p = countedOrNull(size)) return p;
  throw std::bad_alloc();
}

void* counted(std::size_t size, std::align_val_t alignment) {
  const auto step = static_cast<std::size_t>(alignment);
  void* const p = isFailing() ? nullptr : std::aligned_alloc(step, (size + step - 1) / step * step);
  if (p) return alive(p);
  throw std::bad_alloc();
}

}  // namespace

// Every form that this program and its libraries use: under a sanitizer the standard ones do not
// call each other.
[[gnu::noinline]] void* operator new(std::size_t size) { return counted(size); }
[[gnu::noinline]] void* operator new[](std::size_t size) { return counted(size); }
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return countedOrNull(size);
}
[[gnu::noinline]] void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return countedOrNull(size);
}
[[gnu::noinline]] void* operator new(std::size_t size, std::align_val_t a) {
  return counted(size, a);
}
[[gnu::noinline]] void operator delete(void* p) noexcept { release(p); }
[[gnu::noinline]] void operator delete[](void* p) noexcept { release(p); }
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept { release(p); }
[[gnu::noinline]] void operator delete[](void* p, std::size_t) noexcept { release(p); }
[[gnu::noinline]] void operator delete(void* p, const std::nothrow_t&) noexcept { release(p); }
[[gnu::noinline]] void operator delete[](void* p, const std::nothrow_t&) noexcept { release(p); }
[[gnu::noinline]] void operator delete(void* p, std::align_val_t) noexcept { release(p); }
[[gnu::noinline]] void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
  release(p);
}

namespace korvo::test {

std::size_t allocationCount() { return allocations; }
std::ptrdiff_t liveBlocks() { return live; }
std::ptrdiff_t liveBytes() { return bytes; }
std::ptrdiff_t mostBytes() { return most; }
void forgetMostBytes() { most = bytes; }

FailingAllocation::FailingAllocation(std::size_t n) { failing = n; }
FailingAllocation::~FailingAllocation() { failing = 0; }
bool FailingAllocation::hasFailed() { return failing == 0; }

}  // namespace korvo::test
