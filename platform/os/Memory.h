#pragma once

#include <cstddef>

namespace korvo::os {

/// Asks the system to give large pages for memory that is about to be filled: giving a fresh page
/// takes longer than filling it, and a large one is 512 of the others.
///
/// Only whole large pages (2 MB) inside the range are asked for, so small ranges stay as they are.
/// What is in the memory stays. Where the system has no such wish or refuses it, nothing happens.
void wishLargePages(void* begin, std::size_t size);

}  // namespace korvo::os
