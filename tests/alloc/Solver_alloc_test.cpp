// A solver takes nothing from the heap once its caller's list has grown.
#include <gtest/gtest.h>

#include <vector>

#include "tests/alloc/Allocations.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/SphericalArm.h"
#include "toolkit/solve/Solver.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;

/// Allocations of asking a second time what has been asked once.
template <typename AnyTarget>
std::size_t whenWarm(const Solver& solver, const AnyTarget& target, Limits limits) {
  std::vector<Solution> out;
  const Values from{};
  solver.solve(target, from, out, limits);
  return allocationsOf([&] { solver.solve(target, from, out, limits); });
}

class SolverNoAllocation : public testing::TestWithParam<int> {};

TEST_P(SolverNoAllocation, OnceWarm) {
  Choices choices(static_cast<unsigned>(GetParam()));
  const auto machine = loadMachine(machineText(choices, static_cast<Topology>(GetParam())));
  const Solver solver{Machine(*machine)};
  std::vector<double> values(static_cast<std::size_t>(machine->getAxisNum()), 12.0);
  UVec3d tip, direction;
  machine->getTool(*positionOf(*machine, values), tip, direction, 1);
  for (const Limits limits : {Limits::kept, Limits::ignored}) {
    for (const UVec3d& to : {direction, UVec3d(0.3, 0.4, 0.5), UVec3d()}) {
      EXPECT_EQ(whenWarm(solver, Target{tip, to}, limits), 0u);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(EveryTopology, SolverNoAllocation, testing::Range(0, kTopologies),
                         [](const auto& kind) {
                           return std::string(nameOf(static_cast<Topology>(kind.param)));
                         });

TEST(SolverNoAllocationOfArms, OnceWarm) {
  for (unsigned seed = 0; seed < 20; ++seed) {
    Dice dice(seed);
    const SphericalArm arm = sphericalArm(dice, {.isCoaxial = seed % 2 == 0});
    const auto machine = arm.load();
    const Solver solver{Machine(*machine)};
    FrameTarget target{machine->getMatrix_H2T(*positionOf(*machine, {10, 20, 30, 40, 50, 60}))};
    UVec3d tip, direction;
    machine->getTool(*positionOf(*machine, {10, 20, 30, 40, 50, 60}), tip, direction, 1);
    EXPECT_EQ(whenWarm(solver, target, Limits::kept), 0u) << seed;
    EXPECT_EQ(whenWarm(solver, target, Limits::ignored), 0u) << seed;
    EXPECT_EQ(whenWarm(solver, Target{tip, direction}, Limits::kept), 0u) << seed;
  }
}

}  // namespace
}  // namespace korvo::test
