#pragma once

#include <new>

namespace zkin {

/// Runs `part`; false when memory was out.
template <typename Part>
bool hadMemory(Part part) {
  try {
    part();
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace zkin
