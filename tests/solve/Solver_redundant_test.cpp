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
#include "tests/support/MachineGenerator.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using Rule = Redundancy::Rule;

constexpr double kDegree = std::numbers::pi / 180.0;

double farthestApart(const Values& a, const Values& b) {
  double apart = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) apart = std::max(apart, std::abs(a[i] - b[i]));
  return apart;
}

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

// The quill W slides along Z but for 2e-10 rad: the two of them and X would carry across by 1e13
// mm.
TEST(SolverRedundant, LinearAxesThatAreAlmostParallelDoNotCarryTogether) {
  const auto machine = loadMachine(
      "frame\npart=x,y\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\naxis=W,4,0,2e-10,1\n"
      "tool=z\n",
      1);
  Values start{};
  start[3] = -40;
  const std::vector<Solution> all =
      solutionsOf(Solver(Machine(*machine)), {{100, 200, 300}, {0, 0, 1}}, start);
  ASSERT_EQ(all.size(), 1u);
  EXPECT_NEAR(all[0].values[0], 100, 1e-9);
  EXPECT_NEAR(all[0].values[1], 200, 1e-7);  // 300 2e-10 beside it
  EXPECT_NEAR(all[0].values[2] + all[0].values[3], 300, 1e-9);
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

TEST(SolverRedundant, SampledAxisWithoutTravelHasOnePlace) {
  Machine machine = portal();
  machine->getElemByName("W")->setMin(-200, true);
  machine->getElemByName("W")->setMax(-200, true);
  SolverOptions options;
  options.redundancy[kW] = {Rule::sampled, 0, 4};
  expectOne(solutionsOf(Solver(machine, options), tiltedAt(100, 200, -900), {}), -700, -200);
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

// --- two spare linear axes

MachineLines slidesInPairs() {
  MachineLines lines;  // U and V under X and Y, along them
  lines.head = {linear("U", 4, {1, 0, 0}, 0, 100), linear("V", 5, {0, 1, 0}, 0, 100),
                linear("X", 1, {1, 0, 0}, 0, 10), linear("Y", 2, {0, 1, 0}, 0, 10),
                linear("Z", 3, {0, 0, 1}, -10, 10)};
  return lines;
}

TEST(SolverRedundant, TwoSpareLinearAxesMoveTogether) {
  const Solver solver(slidesInPairs().machine());
  const UVec3d up(0, 0, 1);
  const auto found = solutionsOf(solver, {{50, 60, 0}, up}, {});
  ASSERT_EQ(found.size(), 1u);
  EXPECT_NEAR(found[0].values[0], 10, 1e-9);  // U = 40, V = 50 are the least that leave 10
  EXPECT_NEAR(found[0].values[1], 10, 1e-9);
  EXPECT_NEAR(found[0].values[3], 40, 1e-9);
  EXPECT_NEAR(found[0].values[4], 50, 1e-9);
  EXPECT_EQ(solutionsOf(solver, {{110, 110, 0}, up}, {}).size(), 1u);
  EXPECT_TRUE(solutionsOf(solver, {{110, 110.001, 0}, up}, {}).empty());
  EXPECT_TRUE(solutionsOf(solver, {{-0.001, 50, 0}, up}, {}).empty());
}

/// What two spare axes move by, and a joint that they move: its value is base + a p + b q.
struct Moved {
  double base, a, b, min, max;

  double at(double p, double q) const { return base + a * p + b * q; }
  /// How far it is from its limits, negative outside.
  double inside(double p, double q) const { return std::min(at(p, q) - min, max - at(p, q)); }
};

/// The least of p^2 + q^2 with all inside: at nothing, at the foot on one limit or where two meet.
struct Least {
  double p = 0.0, q = 0.0;
  double length = kNoLimit;
  double clearance = -kNoLimit;  ///< Of the best of all points looked at.

  explicit Least(const std::vector<Moved>& joints) {
    take(joints, 0, 0);
    for (const Moved& one : joints) {
      for (const double limit : {one.min, one.max}) {
        const double share = (limit - one.base) / (one.a * one.a + one.b * one.b);
        take(joints, share * one.a, share * one.b);
        for (const Moved& other : joints) {
          const double area = one.a * other.b - one.b * other.a;
          if (&one == &other || std::abs(area) < 1e-9) continue;
          for (const double second : {other.min, other.max}) {
            const double c = limit - one.base, d = second - other.base;
            take(joints, (c * other.b - one.b * d) / area, (one.a * d - c * other.a) / area);
          }
        }
      }
    }
  }

  void take(const std::vector<Moved>& joints, double x, double y) {
    double least = kNoLimit;
    for (const Moved& joint : joints) least = std::min(least, joint.inside(x, y));
    clearance = std::max(clearance, least);
    if (least < -1e-9 || std::hypot(x, y) >= length) return;
    p = x, q = y, length = std::hypot(x, y);
  }
};

TEST(SolverRedundant, TwoSpareLinearAxesOfAnyDirectionMoveByTheLeast) {
  const int count = proofCount(1000, 100000);
  int moved = 0, none = 0;
  for (int i = 0; i < count; ++i) {
    Dice dice(static_cast<unsigned>(i));
    const auto direction = [&] {
      return UVec3d(dice.between(0.1, 1), dice.between(0.1, 1), dice.between(-1, -0.1))
          .normalised();
    };
    const UVec3d u = direction(), v = direction();
    MachineLines lines;
    lines.head =
        std::vector{linear("U", 4, u, -200, 200), linear("V", 5, v, -100, 100)} + linearXyz();
    for (std::size_t k = 2; k < 5; ++k) {
      lines.head[k].min = -dice.between(0, 200);
      lines.head[k].max = dice.between(0, 200);
    }
    const UVec3d tip(dice.between(-400, 400), dice.between(-400, 400), dice.between(-400, 400));
    Values start{};
    start[3] = dice.between(-200, 200);
    start[4] = dice.between(-100, 100);
    const UVec3d left = tip - u * start[3] - v * start[4];
    const Least least({{start[3], 1, 0, -200, 200},
                       {start[4], 0, 1, -100, 100},
                       {left.x, -u.x, -v.x, lines.head[2].min, lines.head[2].max},
                       {left.y, -u.y, -v.y, lines.head[3].min, lines.head[3].max},
                       {left.z, -u.z, -v.z, lines.head[4].min, lines.head[4].max}});
    if (least.length == kNoLimit && least.clearance > -1e-6) continue;  // rounding decides
    const auto found = solutionsOf(Solver(lines.machine()), {tip, {0, 0, 1}}, start);
    ASSERT_EQ(found.size(), least.length < kNoLimit ? 1u : 0u) << i;
    none += found.empty();
    if (found.empty()) continue;
    moved += least.p != 0.0 && least.q != 0.0;
    ASSERT_NEAR(found[0].values[3], start[3] + least.p, 1e-6) << i;
    ASSERT_NEAR(found[0].values[4], start[4] + least.q, 1e-6) << i;
  }
  EXPECT_GT(moved, count / 20);
  EXPECT_GT(none, count / 20);
}

// --- a seventh joint of an arm

// J2, J3 and R are parallel and carry the wrist centre in a plane alone: with J1 it is carried
// every way, so that J2, the farthest of them from the tool, is held.
TEST(SolverRedundant, OfSevenJointsThoseAreSolvedThatCarryTheWristEveryWay) {
  MachineLines lines;
  lines.head = {rotary("J1", 1, {0, 0, 1}),
                rotary("J2", 2, {0, 1, 0}, {100, 0, 300}),
                rotary("J3", 3, {0, 1, 0}, {100, 0, 800}),
                rotary("R", 4, {0, 1, 0}, {400, 0, 900}),
                rotary("J4", 5, {1, 0, 0}, {400, 0, 900}),
                rotary("J5", 6, {0, 1, 0}, {900, 0, 900}),
                rotary("J6", 7, {1, 0, 0}, {0, 0, 900})};
  for (AxisLine& joint : lines.head) joint.min = -180, joint.max = 180;
  lines.toolDirection = {-1, 0, 0};
  lines.toolPoint = {1000, 0, 900};
  const auto machine = lines.load();
  const Solver solver{Machine(*machine)};
  ASSERT_EQ(solver.kind(), SolverKind::arm);
  for (unsigned seed = 0; seed < 50; ++seed) {
    Dice dice(seed);
    Values made{}, start{};
    for (std::size_t i = 0; i < 7; ++i) {
      made[i] = dice.between(-170, 170), start[i] = dice.between(-170, 170);
    }
    start[1] = made[1];
    std::vector<Solution> found;
    solver.solve(FrameTarget{machine->getMatrix_H2T(
                     *positionOf(*machine, {made.begin(), made.begin() + 7}))},
                 start, found);
    EXPECT_TRUE(std::any_of(found.begin(), found.end(), [&](const Solution& s) {
      return farthestApart(s.values, made) < 1e-6;
    })) << seed;
  }
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

// A start that reaches is found by every pair, each with the third axis where it stands. The tool
// is a hair from along C, so that each pair has its own rounding of C: that of a direction, 1e-16,
// over the hair.
TEST(SolverRedundant, StartThatReachesIsOneOfThePositionsOnce) {
  const int count = proofCount(100, 10000);
  for (int i = 0; i < count; ++i) {
    Dice dice(static_cast<unsigned>(i));
    const UVec3d c =
        UVec3d(dice.between(-1, 1), dice.between(-1, 1), dice.between(0.2, 1)).normalised();
    const UVec3d b = (c ^ UVec3d(0, 0.8, 0.6)).normalised();
    MachineLines lines;
    lines.head = linearXyz() + std::vector{rotary("C", 6, c, {}, -200, 200),
                                           rotary("B", 5, b, {}, -200, 200),
                                           rotary("A", 4, b ^ c, {}, -200, 200)};
    lines.toolDirection = c;
    const auto machine = lines.load();
    const Solver solver{Machine(*machine)};
    for (int k = 0; k < 20; ++k) {
      Values made{};
      made[4] = std::pow(10, dice.between(-4.5, -3));
      made[5] = dice.between(-190, 190);
      const auto found = solutionsOf(solver, tipAt(*machine, made), made);
      ASSERT_EQ(
          std::count_if(found.begin(), found.end(),
                        [&](const Solution& s) { return farthestApart(s.values, made) < 1e-7; }),
          1)
          << i << ", " << k;
    }
  }
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
