// Machines with more axes than a target needs: what stands where, and what moves by the least.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <set>
#include <vector>

#include "tests/solve/DenseSearch.h"
#include "tests/solve/Machines.h"
#include "tests/solve/Proof.h"
#include "tests/support/Dice.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using Rule = Redundancy::Rule;

constexpr double kDegree = std::numbers::pi / 180.0;

// --- a portal with a beam W that lifts as the ram Z does: X, Y, Z, C, A, W

constexpr std::size_t kX = 0, kY = 1, kZ = 2, kA = 3, kC = 4, kW = 5;

Machine portal() { return *load(std::filesystem::path(KORVO_MACHINES) / "gantry-w.def").machine; }

/// The tool tilted by A = 30 about the fork's pin, 230 mm above the nose, at C = 0: the nose swings
/// out by 230 sin 30 along Y and up by 230 (1 - cos 30). `lift` is what Z and W have to add up to.
Target tiltedAt(double x, double y, double lift) {
  const double angle = 30 * kDegree;
  return {{x, y + 230 * std::sin(angle), lift + 230 * (1 - std::cos(angle))},
          {0, -std::sin(angle), std::cos(angle)}};
}

/// Of the two ways to tilt: A = 30 at C = 0, and A = -30 at C = 180 (or -180).
std::vector<Solution> withoutTurning(const std::vector<Solution>& all) {
  std::vector<Solution> out;
  std::copy_if(all.begin(), all.end(), std::back_inserter(out),
               [](const Solution& s) { return std::abs(s.values[kC]) < 1; });
  return out;
}

void expectOne(const std::vector<Solution>& all, double z, double w) {
  const std::vector<Solution> out = withoutTurning(all);
  ASSERT_EQ(out.size(), 1u);
  EXPECT_EQ(all.size(), 3u);  // C = 0, 180 and -180
  EXPECT_NEAR(out[0].values[kX], 100, 1e-9);
  EXPECT_NEAR(out[0].values[kY], 200, 1e-9);
  EXPECT_NEAR(out[0].values[kZ], z, 1e-9);
  EXPECT_NEAR(out[0].values[kW], w, 1e-9);
  EXPECT_NEAR(out[0].values[kA], 30, 1e-9);
}

Values withW(double w) {
  Values start{};
  start[kW] = w;
  return start;
}

TEST(SolverRedundant, SpareLinearAxisStaysAtItsStart) {
  const Solver solver(portal());
  expectOne(solutionsOf(solver, tiltedAt(100, 200, -900), withW(-200)), -700, -200);
  expectOne(solutionsOf(solver, tiltedAt(100, 200, -900), withW(-450)), -450, -450);
}

TEST(SolverRedundant, SpareLinearAxisMovesByTheLeastThatBringsAllInside) {
  const Solver solver(portal());  // Z goes from -1250 to 0, W from -1500 to 0
  expectOne(solutionsOf(solver, tiltedAt(100, 200, -1600), withW(-200)), -1250, -350);
  expectOne(solutionsOf(solver, tiltedAt(100, 200, -900), withW(-1200)), 0, -900);
  expectOne(solutionsOf(solver, tiltedAt(100, 200, -2750), withW(0)), -1250, -1500);
  EXPECT_TRUE(solutionsOf(solver, tiltedAt(100, 200, -2750.001), withW(0)).empty());
  EXPECT_TRUE(solutionsOf(solver, tiltedAt(100, 200, 0.001), withW(0)).empty());
}

TEST(SolverRedundant, SpareLinearAxisOutsideItsLimitsComesInside) {
  const Solver solver(portal());
  expectOne(solutionsOf(solver, tiltedAt(100, 200, -900), withW(50)), -900, 0);
  expectOne(solutionsOf(solver, tiltedAt(100, 200, -1700), withW(-1600)), -200, -1500);
}

TEST(SolverRedundant, LockedAxisStays) {
  Machine machine = portal();
  machine->getElemByName("W")->setLocked(true);
  const Solver solver(machine);
  expectOne(solutionsOf(solver, tiltedAt(100, 200, -900), withW(-200)), -700, -200);
  EXPECT_TRUE(solutionsOf(solver, tiltedAt(100, 200, -1600), withW(-200)).empty());
}

TEST(SolverRedundant, AxisWithAValueOfItsOwnStandsThere) {
  SolverOptions options;
  options.redundancy[kW] = {Rule::value, -600, 2};
  const Solver solver(portal(), options);
  expectOne(solutionsOf(solver, tiltedAt(100, 200, -900), withW(-200)), -300, -600);
  EXPECT_TRUE(solutionsOf(solver, tiltedAt(100, 200, -1900), withW(-700)).empty());
}

TEST(SolverRedundant, SampledAxisStandsAtEvenPlacesFromLimitToLimit) {
  SolverOptions options;
  options.redundancy[kW] = {Rule::sampled, 0, 4};  // -1500, -1000, -500, 0
  const Solver solver(portal(), options);
  const std::vector<Solution> all = solutionsOf(solver, tiltedAt(100, 200, -1600), withW(-200));
  std::vector<std::pair<double, double>> found;
  for (const Solution& s : withoutTurning(all)) found.emplace_back(s.values[kW], s.values[kZ]);
  ASSERT_EQ(found.size(), 3u);  // with W = 0 the ram would go to -1600
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_NEAR(found[i].first, -1500 + 500.0 * static_cast<double>(i), 1e-9);
    EXPECT_NEAR(found[i].second, -100 - 500.0 * static_cast<double>(i), 1e-9);
  }
  EXPECT_EQ(all.size(), 9u);
}

TEST(SolverRedundant, SampledAxisWithoutBothLimitsHasItsStartAlone) {
  Machine machine = portal();
  machine->getElemByName("W")->setMin(0, false);
  SolverOptions options;
  options.redundancy[kW] = {Rule::sampled, 0, 4};
  expectOne(solutionsOf(Solver(machine, options), tiltedAt(100, 200, -900), withW(-200)), -700,
            -200);
}

// --- a spare linear axis in any direction, against the interval of what it may do

struct Spare {
  double low = 0.0;
  double high = 0.0;

  void keep(double value, double rate, double min, double max) {
    const double a = (min - value) / rate, b = (max - value) / rate;
    low = std::max(low, std::min(a, b));
    high = std::min(high, std::max(a, b));
  }
};

// X, Y and Z carry: a mm of U along u moves them by -u.
TEST(SolverRedundant, SpareLinearAxisOfAnyDirectionMovesByTheLeast) {
  const int count = proofCount(1000, 100000);
  int moved = 0, none = 0;
  for (int i = 0; i < count; ++i) {
    Dice dice(static_cast<unsigned>(i));
    const UVec3d u = UVec3d(dice.between(-1, 1), dice.between(-1, 1), dice.between(-1, 1));
    if (std::min({std::abs(u.x), std::abs(u.y), std::abs(u.z)}) < 0.01) continue;
    MachineLines lines;
    lines.head = {linear("U", 4, u, -300, 300)};
    for (const AxisLine& axis : linearXyz()) lines.head.push_back(axis);
    for (std::size_t k = 1; k < 4; ++k) {
      lines.head[k].min = -dice.between(0, 400);
      lines.head[k].max = dice.between(0, 400);
    }
    const Target target{{dice.between(-600, 600), dice.between(-600, 600), dice.between(-600, 600)},
                        {0, 0, 1}};
    Values start{};
    start[3] = dice.between(-300, 300);
    const UVec3d along = u.normalised();  // files give directions of any length
    const UVec3d left = target.tip - along * start[3];
    Spare by{-300 - start[3], 300 - start[3]};
    by.keep(left.x, -along.x, lines.head[1].min, lines.head[1].max);
    by.keep(left.y, -along.y, lines.head[2].min, lines.head[2].max);
    by.keep(left.z, -along.z, lines.head[3].min, lines.head[3].max);
    if (std::abs(by.high - by.low) < 1e-6) continue;  // rounding decides
    const auto found = solutionsOf(Solver(lines.machine()), target, start);
    ASSERT_EQ(found.size(), by.low < by.high ? 1u : 0u) << i;
    none += found.empty();
    if (found.empty()) continue;
    const double least = std::clamp(0.0, by.low, by.high);
    moved += least != 0.0;
    ASSERT_NEAR(found[0].values[3], start[3] + least, 1e-6) << i;
  }
  EXPECT_GT(moved, count / 20);
  EXPECT_GT(none, count / 20);
}

// --- a third rotary axis

// Every two of the three turn the tool, the third stands at its start: what a search finds that
// holds one axis after the other is all there is.
TEST(SolverRedundant, OfThreeRotaryAxesEveryTwoAreSolvedTheThirdHeld) {
  const int count = proofCount(6, 600);
  std::size_t all = 0;
  for (int i = 0; i < count; ++i) {
    Dice dice(static_cast<unsigned>(i));
    const auto direction = [&] {
      return UVec3d(dice.between(-1, 1), dice.between(-1, 1), dice.between(0.2, 1)).normalised();
    };
    const auto point = [&] {
      return UVec3d(dice.between(-300, 300), dice.between(-300, 300), dice.between(-300, 300));
    };
    MachineLines lines;
    lines.part = {rotary("C", 6, {0, 0, 1}, point(), -200, 200)};
    lines.head = linearXyz() + std::vector{rotary("B", 5, direction(), point(), -180, 200),
                                           rotary("A", 4, direction(), point(), -170, 190)};
    lines.toolDirection = direction();
    const auto machine = lines.load();
    const Solver solver{Machine(*machine)};
    ASSERT_EQ(solver.kind(), SolverKind::moreRotary);
    Values start{}, made{};
    for (std::size_t k = 0; k < 6; ++k) {
      start[k] = dice.between(-160, 160), made[k] = dice.between(-160, 160);
    }
    made[3 + static_cast<std::size_t>(dice.below(3))] = start[3];  // any: the search decides
    const Target target = tipAt(*machine, made);
    const std::vector<Solution> found = solutionsOf(solver, target, start);
    std::size_t expected = 0;
    for (const int held : {3, 4, 5}) {
      const DenseSearch search(*machine, start, {held});
      const auto searched = search.search(target);
      ASSERT_FALSE(searched.isContinuum) << i;
      for (const Found& f : searched.found) {
        ++expected;
        EXPECT_EQ(std::count_if(found.begin(), found.end(),
                                [&](const Solution& s) {
                                  return std::abs(s.values[3] - f.values[3]) < 1e-5 &&
                                         std::abs(s.values[4] - f.values[4]) < 1e-5 &&
                                         std::abs(s.values[5] - f.values[5]) < 1e-5;
                                }),
                  1)
            << i << ", held " << held;
      }
    }
    EXPECT_EQ(found.size(), expected) << i;
    all += expected;
  }
  EXPECT_GT(all, static_cast<std::size_t>(count));
}

TEST(SolverRedundant, HeldRotaryAxisOutsideItsLimitsIsBroughtInsideByFullTurns) {
  MachineLines lines;
  lines.head = linearXyz() + std::vector{rotary("C", 6, {0, 0, 1}, {}, -180, 180),
                                         rotary("B", 5, {0, 1, 0}, {}, -100, 100),
                                         rotary("A", 4, {1, 0, 0}, {}, -100, 100)};
  Values start{};
  start[5] = 390;  // 30 by a full turn less
  const double tilt = 20 * kDegree;
  const Target target{{0, 0, 0},
                      {std::cos(30 * kDegree) * std::sin(tilt),
                       std::sin(30 * kDegree) * std::sin(tilt), std::cos(tilt)}};
  const auto found = solutionsOf(Solver(lines.machine()), target, start);
  EXPECT_TRUE(std::any_of(found.begin(), found.end(), [](const Solution& s) {
    return std::abs(s.values[5] - 30) < 1e-9 && std::abs(s.values[4] - 20) < 1e-9 &&
           std::abs(s.values[3]) < 1e-9;
  }));
}

}  // namespace
}  // namespace korvo::test
