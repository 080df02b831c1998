#include "platform/os/Files.h"

#include <cstdint>

#include "platform/os/Names.h"

namespace korvo::os {

// What differs from system to system is in Files_posix.cpp and Files_windows.cpp.
int _wcsicmp(const wchar_t* a, const wchar_t* b) {
  const auto key = [](wchar_t c) { return static_cast<std::uint32_t>(lowered(c)); };
  while (*a != 0 && key(*a) == key(*b)) ++a, ++b;
  return key(*a) < key(*b) ? -1 : static_cast<int>(key(*a) > key(*b));
}

}  // namespace korvo::os
