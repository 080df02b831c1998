// Arms whose last three axes meet but for a hair, as numbers written with a few decimals leave it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/solve/DenseSearch.h"
#include "tests/solve/Machines.h"
#include "tests/support/MachineGenerator.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;

/// Shoulder, elbow and a ball wrist; the last axis passes the wrist centre (900, 0, 1200) by
/// `beside` along y, and the tool stands on that axis, 100 mm out.
MachineLines armBeside(double beside) {
  MachineLines lines;
  lines.head = {rotary("J1", 1, {0, 0, 1}),
                rotary("J2", 2, {0, 1, 0}, {150, 0, 500}),
                rotary("J3", 3, {0, 1, 0}, {150, 0, 1200}),
                rotary("J4", 4, {1, 0, 0}, {900, 0, 1200}),
                rotary("J5", 5, {0, 1, 0}, {900, 0, 1200}),
                rotary("J6", 6, {1, 0, 0}, {900, beside, 1200})};
  lines.toolDirection = {-1, 0, 0};
  lines.toolPoint = {1000, beside, 1200};
  return lines;
}

FrameTarget frameAt(const KMachine& machine, const Values& made) {
  FrameTarget target;
  target.frame = machine.getMatrix_H2T(*positionOf(machine, {made.begin(), made.end()}));
  return target;
}

int countNear(const std::vector<Solution>& solutions, const Values& made) {
  return static_cast<int>(
      std::count_if(solutions.begin(), solutions.end(), [&made](const Solution& s) {
        for (std::size_t i = 0; i < 6; ++i) {
          if (!(std::abs(std::remainder(s.values[i] - made[i], 360)) < 1e-7)) return false;
        }
        return true;
      }));
}

class WristThatAlmostMeets : public testing::TestWithParam<double> {};

TEST_P(WristThatAlmostMeets, GivesEveryPositionThatMadeAFrame) {
  const auto machine = armBeside(GetParam()).load();
  const Solver solver{Machine(*machine)};
  ASSERT_EQ(solver.kind(), SolverKind::arm);
  for (const double bend : {-100.0, -20.0, 35.0, 110.0}) {
    for (const double turn : {-160.0, 10.0, 75.0}) {
      const Values made{turn, bend / 4, bend / 3, turn / 2, bend, -turn};
      std::vector<Solution> out;
      solver.solve(frameAt(*machine, made), Values{}, out, Limits::ignored);
      EXPECT_EQ(countNear(out, made), 1) << turn << " " << bend;
      for (const Solution& s : out) EXPECT_TRUE(s.residual.isReached());
    }
  }
}

TEST_P(WristThatAlmostMeets, GivesAPositionForEveryDirection) {
  const auto machine = armBeside(GetParam()).load();
  const Solver solver{Machine(*machine)};
  const Target target = tipAt(*machine, Values{30, 20, -15, 40, 60, 0});
  const std::vector<Solution> out = solutionsOf(solver, target, Values{});
  EXPECT_FALSE(out.empty());
  for (const Solution& s : out) {
    const Target there = tipAt(*machine, s.values);
    EXPECT_LE(there.tip.distanceTo(target.tip), kReachedMm);
    EXPECT_LE(radiansBetween(there.direction, target.direction), kReachedRad);
  }
}

INSTANTIATE_TEST_SUITE_P(By, WristThatAlmostMeets, testing::Values(0.0, 5e-7, 2e-6, 9e-6),
                         [](const auto& by) { return "Case" + std::to_string(by.index); });

/// Seven digits of a direction, as a tool is written: it leaves the axis by 1e-5 mm at 200 mm,
/// which is one line for the library, and the axis is kept where the tool is.
TEST(WristOfATiltedArm, IsServedWithAToolWrittenInSevenDigits) {
  MachineLines lines = armBeside(0.0);
  const double angle = 0.2730617;
  const UVec3d last(std::cos(angle), 0, std::sin(angle));
  const UVec3d centre(900, 0, 1200);
  const double sevenDigits = 1e7;
  const UVec3d typed(std::round(last.x * sevenDigits) / sevenDigits, 0,
                     std::round(last.z * sevenDigits) / sevenDigits);
  lines.head[5] = rotary("J6", 6, last, centre);
  lines.toolDirection = -typed;
  lines.toolPoint = centre + typed * 200.0;
  const auto machine = lines.load();
  const Values made{10, 20, 30, 40, 50, 60};
  std::vector<Solution> out;
  Solver{Machine(*machine)}.solve(frameAt(*machine, made), Values{}, out, Limits::ignored);
  EXPECT_EQ(countNear(out, made), 1);
}

}  // namespace
}  // namespace korvo::test
