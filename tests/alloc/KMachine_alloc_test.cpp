// The queries that run in inner loops take nothing from the heap; those that make lists end with
// what they found so far where there is no memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kinematics/KMachine.h"
#include "tests/alloc/Allocations.h"
#include "tests/support/MachineGenerator.h"

namespace {

using korvo::test::allocationsOf;
using korvo::test::Topology;
using zgeo::UVec3d;
using zkin::KMachine;

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

// --- memory that runs out at any one allocation

using List = std::vector<zkin::KMachineValueBase*>;

void release(List& list) {
  for (zkin::KMachineValueBase*& v : list) zkin::KMachineValueBase::_release(v);
  list.clear();
}

bool beginsWith(const List& all, const List& first) {
  return first.size() <= all.size() && std::equal(first.begin(), first.end(), all.begin(),
                                                  [](auto* a, auto* b) { return *a == *b; });
}

TEST(ShortageInAMachine, LeavesTheAnglesFoundSoFar) {
  korvo::test::Choices choices(3u);
  const auto machine =
      korvo::test::loadMachine(korvo::test::machineText(choices, Topology::tableTable));
  const UVec3d direction(0.1, -0.2, 0.9);
  List all, some;
  ASSERT_EQ(machine->getPossibleAngles(direction, all, 1), 0);
  ASSERT_GT(all.size(), 1u);
  int code = -1, shorter = 0;
  const int failures = korvo::test::failEach(
      [&] {
        release(some);
        code = machine->getPossibleAngles(direction, some, 1);
      },
      [&] {
        EXPECT_EQ(code, 0);
        EXPECT_TRUE(beginsWith(all, some));
        shorter += some.size() < all.size();
      });
  EXPECT_GT(failures, 4);
  EXPECT_GT(shorter, 4);
  release(all);
  release(some);
}

}  // namespace
