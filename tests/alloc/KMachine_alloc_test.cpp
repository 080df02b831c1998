// The queries that run in inner loops take nothing from the heap.
#include <cstddef>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "kinematics/KMachine.h"
#include "tests/alloc/Allocations.h"
#include "tests/support/MachineGenerator.h"

thread_local std::size_t korvo::test::allocations = 0;
thread_local std::ptrdiff_t korvo::test::liveBlocks = 0;

namespace {

using korvo::test::allocations;
using korvo::test::liveBlocks;

void* countedOrNull(std::size_t size) noexcept {
  ++allocations, ++liveBlocks;
  return std::malloc(size == 0 ? 1 : size);
}

void* counted(std::size_t size) {
  if (void* const p = countedOrNull(size)) return p;
  throw std::bad_alloc();
}

void* counted(std::size_t size, std::align_val_t alignment) {
  ++allocations, ++liveBlocks;
  const auto step = static_cast<std::size_t>(alignment);
  if (void* const p = std::aligned_alloc(step, (size + step - 1) / step * step)) return p;
  throw std::bad_alloc();
}

void release(void* p) noexcept {
  if (p) --liveBlocks;
  std::free(p);
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

namespace {

using korvo::test::Topology;
using zgeo::UVec3d;
using zkin::KMachine;

/// Allocations made by `query`.
template <typename Query>
std::size_t allocationsOf(Query query) {
  const std::size_t before = allocations;
  query();
  return allocations - before;
}

class NoAllocation : public testing::TestWithParam<int> {
 protected:
  NoAllocation() {
    korvo::test::Choices choices(static_cast<unsigned>(GetParam()));
    machine = korvo::test::loadMachine(
        korvo::test::machineText(choices, static_cast<Topology>(GetParam())));
    v = korvo::test::positionOf(*machine,
                                korvo::test::positionValues(choices, machine->getAxisNum()));
  }

  std::unique_ptr<KMachine> machine;
  korvo::test::Position v;
  UVec3d a, b;
};

TEST_P(NoAllocation, InMotionMatrices) {
  for (int rank = 0; rank < machine->getElemNumber(); ++rank) {
    const auto* const e = machine->getElemByRank(rank);
    EXPECT_EQ(allocationsOf([&] { machine->getMatrix(*v, e); }), 0u);
    EXPECT_EQ(allocationsOf([&] { machine->getMatrix(*v, e->getElemIndex()); }), 0u);
  }
}

TEST_P(NoAllocation, InToolFrames) {
  EXPECT_EQ(allocationsOf([&] { machine->getMatrix1(*v); }), 0u);
  EXPECT_EQ(allocationsOf([&] { machine->getMatrix(*v); }), 0u);
  EXPECT_EQ(allocationsOf([&] { machine->getMatrix_H2T(*v); }), 0u);
  EXPECT_EQ(allocationsOf([&] { machine->getMatrix_TP2U(*v); }), 0u);
}

TEST_P(NoAllocation, InToolPointsAndAxisLines) {
  EXPECT_EQ(allocationsOf([&] { machine->getTool(*v, a, b, 1); }), 0u);
  EXPECT_EQ(allocationsOf([&] { machine->getTool(*v, a, b, 99); }), 0u);
  for (int rank = 0; rank < machine->getElemNumber(); ++rank) {
    const int index = machine->getElemByRank(rank)->getElemIndex();
    EXPECT_EQ(allocationsOf([&] { machine->getElemAxis(*v, index, a, b); }), 0u);
    EXPECT_EQ(allocationsOf([&] { machine->getElemAxis(*v, index, a); }), 0u);
  }
}

TEST_P(NoAllocation, InUpdateOfDenavitHartenbergValues) {
  for (int tool = 0; tool <= machine->getToolNumber() + 1; ++tool) {
    EXPECT_EQ(allocationsOf([&] { machine->updateDHm(*v, tool); }), 0u);
  }
}

// The lists that the solvers fill are kept by the thread: the first solve may make them.
TEST_P(NoAllocation, InSolvingOnceWarm) {
  const auto target = korvo::test::positionOf(*machine);
  const auto out = korvo::test::positionOf(*machine);
  ASSERT_TRUE(machine->getTool(*target, a, b, 1));
  const UVec3d skew(0.3, 0.4, 0.5);
  machine->getConfigPlus(*v, a, skew, *out);
  machine->getConfig(*v, a, skew, *out);
  machine->solveConfig1(*v, a, skew, *out);
  for (const UVec3d& dir : {b, skew, UVec3d(), skew * -1.0}) {
    EXPECT_EQ(allocationsOf([&] { machine->getConfigPlus(*v, a, dir, *out); }), 0u);
    EXPECT_EQ(allocationsOf([&] { machine->getConfig(*v, a, dir, *out); }), 0u);
    EXPECT_EQ(allocationsOf([&] { machine->solveConfig1(*v, a, dir, *out); }), 0u);
  }
}

INSTANTIATE_TEST_SUITE_P(EveryTopology, NoAllocation, testing::Range(0, korvo::test::kTopologies),
                         [](const auto& kind) {
                           return std::string(nameOf(static_cast<Topology>(kind.param)));
                         });

TEST(AllocationCounter, SeesAllocationsInsideTheLibrary) {
  korvo::test::Choices choices(0u);
  const auto machine = korvo::test::loadMachine(korvo::test::machineText(choices));
  EXPECT_GT(allocationsOf([&] { machine->getChain(-101); }), 0u);
}

}  // namespace
