// A path searched by several threads is the one of a single thread.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "tests/support/MachineGenerator.h"
#include "toolkit/path/Toolpath.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;

/// Longer than a few blocks, with targets that leave an axis free and positions between.
std::vector<PathTarget> targets() {
  std::vector<PathTarget> out;
  for (int i = 0; i < 5000; ++i) {
    const double u = 0.01 * i, tilt = i % 500 < 5 ? 0.0 : 0.3 + 0.2 * std::sin(0.7 * u);
    out.push_back({{{50 * std::cos(u), 50 * std::sin(u), 10},
                    {std::sin(tilt) * std::cos(u), std::sin(tilt) * std::sin(u), std::cos(tilt)}},
                   0.0});
  }
  return out;
}

TEST(ToolpathThreads, GiveTheSamePositionsBitByBit) {
  const auto loaded = loadMachine(
      "frame\npart=x,y,0,0,0\nlien=BATI\naxis=X,1,1,0,0\naxis=Y,2,0,1,0\naxis=Z,3,0,0,1\n"
      "rotation=C,6,0,0,1,0,0,0,0,0\nlimits=C,-360,360\nrotation=B,5,0,1,0,0,0,0,0,100\n"
      "tool=0,0,1,0,0,0\n",
      1);
  ASSERT_TRUE(loaded);
  const Machine machine(*loaded);
  const std::vector<PathTarget> path = targets();
  std::vector<Values> given[2];
  for (std::size_t run = 0; run < 2; ++run) {
    ToolpathOptions options;
    options.tolerance = Tolerance{0.002, 0.01};
    options.jobs = run == 0 ? 1 : 4;
    const ToolpathReport report = Toolpath(machine, options).run(path, [&](const PathPosition& p) {
      given[run].push_back(p.values);
    });
    EXPECT_TRUE(report.unreached.empty());
    EXPECT_GT(report.added, 0u);
  }
  EXPECT_EQ(given[0], given[1]);
}

}  // namespace
}  // namespace korvo::test
