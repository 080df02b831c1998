// The wish for large pages changes nothing that a program can see in its memory.

#include "platform/os/Memory.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace {

using korvo::os::wishLargePages;

TEST(LargePages, WhatIsInTheMemoryStays) {
  std::vector<char> bytes(std::size_t{9} << 20, 'x');
  wishLargePages(bytes.data() + 1, bytes.size() - 2);
  EXPECT_TRUE(std::ranges::all_of(bytes, [](char c) { return c == 'x'; }));
  std::ranges::fill(bytes, 'y');
  EXPECT_EQ(std::ranges::count(bytes, 'y'), std::ptrdiff_t{9} << 20);
}

TEST(LargePages, NothingAndLittleMayBeAskedFor) {
  char few[16] = "as it was";
  wishLargePages(nullptr, 0);
  wishLargePages(few, sizeof few);
  EXPECT_STREQ(few, "as it was");
}

}  // namespace
