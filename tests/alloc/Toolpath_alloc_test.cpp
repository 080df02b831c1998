// What a path keeps of its own while it is searched and given.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <vector>

#include "tests/alloc/Allocations.h"
#include "toolkit/Machine.h"
#include "toolkit/path/Toolpath.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;

/// A tool that tilts to and fro while it goes round; `tilt` 0: it stands upright, which leaves a
/// rotary axis free at every target.
std::vector<PathTarget> roundPath(std::size_t count, double tilt, const UVec3d& middle) {
  std::vector<PathTarget> targets(count);
  for (std::size_t i = 0; i < count; ++i) {
    const double u = 0.003 * static_cast<double>(i);
    const double t = tilt * (0.4 + 0.2 * std::sin(0.3 * u));
    targets[i].target.tip = middle + UVec3d(50 * std::cos(u), 50 * std::sin(u), 0);
    targets[i].target.direction = {std::sin(t) * std::cos(u), std::sin(t) * std::sin(u),
                                   std::cos(t)};
  }
  return targets;
}

struct MemoryRow {
  const char* name;
  const char* machine;
  double tilt;
  UVec3d middle;
};

class ToolpathMemory : public testing::TestWithParam<MemoryRow> {};

TEST_P(ToolpathMemory, IsAtMost64BytesATargetAndAConstant) {
  const MemoryRow& row = GetParam();
  const Machine machine = *load(std::filesystem::path(KORVO_MACHINES) / row.machine).machine;
  const Toolpath path(machine);
  const std::size_t few = 10'000, many = 4 * few;
  std::ptrdiff_t bytes[2];
  std::size_t i = 0, given = 0;
  for (const std::size_t count : {few, many}) {
    const std::vector<PathTarget> targets = roundPath(count, row.tilt, row.middle);
    ToolpathReport report;
    bytes[i++] =
        bytesOf([&] { report = path.run(targets, [&](const PathPosition&) { ++given; }); });
    ASSERT_EQ(report.unreached.size(), 0u);
  }
  EXPECT_EQ(given, few + many);
  EXPECT_LE(bytes[1] - bytes[0], 64 * static_cast<std::ptrdiff_t>(many - few));
  EXPECT_LE(bytes[0], 64 * static_cast<std::ptrdiff_t>(few) + 16'000'000);
}

INSTANTIATE_TEST_SUITE_P(
    FiveAxes, ToolpathMemory,
    testing::Values(MemoryRow{"Table", "table-ac.def", 1, {0, 0, 120}},
                    MemoryRow{"Fork", "head-cb-fork.def", 1, {2000, 1250, -500}},
                    MemoryRow{"ForkUpright", "head-cb-fork.def", 0, {2000, 1250, -500}}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace korvo::test
