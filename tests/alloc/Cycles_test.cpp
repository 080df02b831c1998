// A host that loads, asks and lets go of machines all day long keeps the memory that it had.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <vector>

#include "adapter/machineFromDefinition.h"
#include "tests/adapter/External.h"
#include "tests/alloc/Allocations.h"
#include "toolkit/Machine.h"
#include "toolkit/solve/Solver.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineValueBase;

#if defined(KORVO_SANITIZED)
constexpr int kCycles = 300;  // each allocation costs a sanitizer a hundred times as much
#else
constexpr int kCycles = 10'000;
#endif
constexpr int kFirst = kCycles / 10;  ///< What is made once for the process is made in these.

const std::filesystem::path kDefinition =
    std::filesystem::path(KORVO_MACHINES) / "head-cb-fork.def";

/// A point and a direction above the table of that machine: each axis is within its limits there.
const UVec3d kPoint(2000, 1250, -500);
UVec3d directionOf(int cycle) {
  const double tilt = 0.2 + 0.5 * (cycle % 100) / 100.0, turn = 0.01 * (cycle % 300);
  return {std::sin(tilt) * std::cos(turn), std::sin(tilt) * std::sin(turn), std::cos(tilt)};
}

/// KiB; 0 where a sanitizer keeps what is freed.
long residentKib() {
#if defined(KORVO_SANITIZED)
  return 0;
#else
  long total = 0, resident = 0;
  std::FILE* const file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr || std::fscanf(file, "%ld %ld", &total, &resident) != 2) resident = -1;
  if (file != nullptr) std::fclose(file);
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
#endif
}

/// Runs the cycles, numbered from 0; memory after the first tenth is that at the end.
template <typename Cycle>
void expectFlat(Cycle cycle) {
  std::ptrdiff_t blocks = 0, bytes = 0;
  long resident = 0;
  for (int i = 0; i < kCycles && !testing::Test::HasFailure(); ++i) {
    if (i == kFirst) {
      blocks = liveBlocks();
      bytes = liveBytes();
      resident = residentKib();
      ASSERT_GE(resident, 0);
    }
    cycle(i);
  }
  EXPECT_EQ(liveBlocks(), blocks);
  EXPECT_EQ(liveBytes(), bytes);
  EXPECT_LE(residentKib() - resident, 1024);
}

TEST(Cycles, OfAMachineLeaveMemoryAsItWas) {
  expectFlat([](int i) {
    KMachine machine(kDefinition.wstring().c_str(), 1);
    ASSERT_EQ(machine.readDataFile(), 0);
    machine.setCurrentTool(1);
    KMachineValueBase* at = machine.newMachineValue();
    KMachineValueBase* found = machine.newMachineValue();
    UVec3d tip, direction;
    EXPECT_EQ(machine.getConfigPlus(*at, kPoint, directionOf(i), *found), 0);
    EXPECT_TRUE(machine.getTool(*found, tip, direction, 1));
    EXPECT_LT((tip - kPoint).norm(), 1e-6);
    std::vector<int> outside;
    EXPECT_EQ(machine.checkLimitsFull(*found, &outside), 0);
    std::vector<KMachineValueBase*> all;
    machine.getPossibleAngles(directionOf(i), all, 1);
    EXPECT_FALSE(all.empty());
    KMachineValueBase::_release(all);
    KMachineValueBase::_release(found);
    KMachineValueBase::_release(at);
  });
}

TEST(Cycles, OfAnAdapterLeaveMemoryAsItWas) {
  expectFlat([](int i) {
    KMachine machine(kDefinition.wstring().c_str(), 1);
    ASSERT_EQ(machine.readDataFile(), 0);
    const auto external = zkin::machineFromDefinition(machine, zkin::Bodies::none);
    ASSERT_NE(external, nullptr);
    const Adapter adapter(external.get());
    const MachinePosition at = adapter.newMachinePosition();
    MachinePosition found = at;
    EXPECT_EQ(adapter.getConfigPlus(at, kPoint, directionOf(i), found), 0);
    EXPECT_NE(valuesOf(found), valuesOf(at));
    if (i % 10 != 0) return;  // a list takes as long as ten others
    Positions all;
    EXPECT_EQ(adapter.getPossibleConfigs(directionOf(i), kPoint, all.list), 0);
    EXPECT_FALSE(all.list.empty());
  });
}

TEST(Cycles, OfAToolkitMachineAndItsSolverLeaveMemoryAsItWas) {
  expectFlat([](int i) {
    const Loaded loaded = load(kDefinition, Format::automatic, Checks::endless);
    ASSERT_TRUE(loaded);
    const Solver solver(*loaded.machine);
    std::vector<Solution> found;
    solver.solve(Target{kPoint, directionOf(i)}, Values{}, found, Limits::kept);
    EXPECT_FALSE(found.empty());
  });
}

}  // namespace
}  // namespace korvo::test
