// Who deletes an adapter's copy of the machine: told by the blocks that stay.
#include <cstddef>

#include <gtest/gtest.h>

#include "adapter/NMachine.h"
#include "tests/alloc/Allocations.h"
#include "tests/ombra/Machines.h"

namespace korvo::test {
namespace {

using zkin::NMachine;

/// Blocks that are there after `work`, and were not before.
template <typename Work>
std::ptrdiff_t leftBy(Work work) {
  const std::ptrdiff_t before = liveBlocks();
  work();
  return liveBlocks() - before;
}

class AdaptersCopy : public testing::Test {
 protected:
  NMachine adapter() const { return {&machine_, HeadIndex(), TableIndex()}; }

  const Machine machine_ = headHead();
};

TEST_F(AdaptersCopy, IsDeletedByResetTrue) {
  EXPECT_EQ(leftBy([&] { adapter().reset(true); }), 0);
}

TEST_F(AdaptersCopy, IsLeftByTheDestructor) {
  const Machine* left = nullptr;
  EXPECT_GT(leftBy([&] { left = adapter().machine(); }), 0);
  delete left;
}

TEST_F(AdaptersCopy, IsLeftByResetFalse) {
  NMachine used = adapter();
  const Machine* const left = used.machine();
  EXPECT_EQ(leftBy([&] { used.reset(false); }), 0);
  EXPECT_LT(leftBy([&] { delete left; }), 0);
}

TEST_F(AdaptersCopy, IsLeftBySet) {
  NMachine used = adapter(), source = adapter();
  const Machine* const first = used.machine();
  EXPECT_GT(leftBy([&] { used.set(&machine_, HeadIndex(), TableIndex()); }), 0);
  const Machine* const second = used.machine();
  EXPECT_GT(leftBy([&] { used.set(source); }), 0);
  delete first;
  delete second;
  used.reset(true);
  source.reset(true);
}

}  // namespace
}  // namespace korvo::test
