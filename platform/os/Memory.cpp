#include "platform/os/Memory.h"

#ifdef __linux__
#include <sys/mman.h>

#include <cstdint>
#endif

namespace korvo::os {

#ifdef __linux__
void wishLargePages(void* begin, std::size_t size) {
  constexpr std::uintptr_t kPage = std::uintptr_t{1} << 21;
  const auto address = reinterpret_cast<std::uintptr_t>(begin);
  const std::uintptr_t first = (address + kPage - 1) / kPage * kPage;
  const std::uintptr_t last = (address + size) / kPage * kPage;
  if (first >= last) return;
  madvise(static_cast<char*>(begin) + (first - address), last - first, MADV_HUGEPAGE);
}
#else
void wishLargePages(void*, std::size_t) {}
#endif

}  // namespace korvo::os
