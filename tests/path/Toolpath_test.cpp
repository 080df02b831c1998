// What a path chooses and says: breaks where limits leave no way, families, start, weights,
// margins, targets without a position, stopping, threads.
#include "toolkit/path/Toolpath.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "tests/path/Paths.h"
#include "tests/solve/Proof.h"
#include "tests/support/SphericalArm.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using Kind = PathBreak::Kind;

constexpr double kDegree = std::numbers::pi / 180;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kX = 0, kY = 1, kB = 3, kC = 4;

/// A fork head: C turns about z, B in it about y, both through the tool point. A direction tilted
/// by t at the azimuth a is B = t with C = a, and B = -t with C = a + 180.
Machine forkHead(double leastC, double mostC, double mostB = 110) {
  MachineLines lines;
  lines.head = {linear("X", 1, {1, 0, 0}, -1000, 1000), linear("Y", 2, {0, 1, 0}, -1000, 1000),
                linear("Z", 3, {0, 0, 1}, -1000, 1000),
                rotary("C", 6, {0, 0, 1}, {}, leastC, mostC),
                rotary("B", 5, {0, 1, 0}, {}, -mostB, mostB)};
  return lines.machine();
}

PathTarget pointing(double tilt, double azimuth, double x = 0) {
  const double t = tilt * kDegree, a = azimuth * kDegree;
  return {{{x, 0, 0}, {std::sin(t) * std::cos(a), std::sin(t) * std::sin(a), std::cos(t)}}, 0};
}

/// Tilted by 20, the azimuth from 0 on in steps of 10.
std::vector<PathTarget> spiral(int count) {
  std::vector<PathTarget> targets;
  for (int i = 0; i < count; ++i) targets.push_back(pointing(20, 10.0 * i));
  return targets;
}

Values at(double b, double c) {
  Values values{};
  values[kB] = b;
  values[kC] = c;
  return values;
}

void expectAt(const PathPosition& p, double b, double c) {
  EXPECT_NEAR(p.values[kB], b, 1e-9);
  EXPECT_NEAR(p.values[kC], c, 1e-9);
}

// --- breaks

TEST(ToolpathBreaks, EndlessAxisWindsUpWithoutOne) {
  const Ran ran = runPath(forkHead(-kNoLimit, kNoLimit), spiral(1000));
  EXPECT_TRUE(ran.report.isFitting());
  EXPECT_NEAR(ran.report.axes[kC].travel, 9990, 1e-6);
  EXPECT_NEAR(std::abs(ran.positions.back().values[kC] - ran.positions[0].values[kC]), 9990, 1e-6);
}

class SpiralOnLimitedC : public testing::TestWithParam<int> {};

TEST_P(SpiralOnLimitedC, IsUnwoundAsRarelyAsCanBe) {
  // From -360 to 360 there are 73 places in steps of 10. The first part begins at an end of them;
  // every other one begins 10 behind where an end would be, and has 72.
  const int count = GetParam();
  ToolpathOptions options;
  options.axes[kB].weight = 100;  // else changing the side is shorter
  const Ran ran = runPath(forkHead(-360, 360), spiral(count), options);
  ASSERT_EQ(ran.report.breaks.size(), static_cast<std::size_t>((count - 2) / 72));
  EXPECT_EQ(ran.report.breakCount(), ran.report.breaks.size());
  for (const PathBreak& b : ran.report.breaks) {
    EXPECT_EQ(b.kind, Kind::unwound);
    EXPECT_EQ(b.place, static_cast<int>(kC));
    EXPECT_EQ(b.before + 1, b.target);
    // Back by one turn or two, and on by the 10 of the step.
    EXPECT_TRUE(std::abs(b.by - 350) < 1e-6 || std::abs(b.by - 710) < 1e-6) << b.by;
    EXPECT_TRUE(ran.positions[b.target].isAfterBreak);
  }
  EXPECT_EQ(ran.report.isFitting(), count <= 73);
}

INSTANTIATE_TEST_SUITE_P(Turns, SpiralOnLimitedC, testing::Values(73, 74, 145, 146, 181, 721, 722));

TEST(ToolpathBreaks, ChangesSideWhereNoTurnIsLeft) {
  // C from -170 to 170: B = 20 from the azimuths -170 to 170, B = -20 from 10 to 350, and so on:
  // every 180 degrees at the latest the side is changed, to pass 180, 360, 540 and 720.
  const Ran ran = runPath(forkHead(-170, 170), spiral(73));
  ASSERT_EQ(ran.report.breaks.size(), 4u);
  for (const PathBreak& b : ran.report.breaks) EXPECT_EQ(b.kind, Kind::sideChanged);
}

TEST(ToolpathBreaks, AreStepsWhereTargetsLieFarApart) {
  ToolpathOptions options;
  options.axes[kX].largestStep = 50;
  const Ran ran = runPath(forkHead(-360, 360),
                          {pointing(20, 0, 0), pointing(20, 0, 50), pointing(20, 0, 101)}, options);
  ASSERT_EQ(ran.report.breaks.size(), 1u);
  EXPECT_EQ(ran.report.breaks[0].kind, Kind::step);
  EXPECT_EQ(ran.report.breaks[0].place, static_cast<int>(kX));
  EXPECT_NEAR(ran.report.breaks[0].by, 51, 1e-9);
  EXPECT_EQ(ran.report.breaks[0].target, 2u);
}

TEST(ToolpathBreaks, HaveNames) {
  EXPECT_STREQ(toString(Kind::unwound), "unwound");
  EXPECT_STREQ(toString(Kind::sideChanged), "side-changed");
  EXPECT_STREQ(toString(Kind::step), "step");
}

// --- families

TEST(ToolpathFamilies, FreeAxisStaysWhereTheStartHasIt) {
  ToolpathOptions options;
  options.start = at(0, 77);
  std::vector<PathTarget> targets;
  for (int i = 0; i < 20; ++i) targets.push_back(pointing(0, 0, i));
  const Ran ran = runPath(forkHead(-360, 360), targets, options);
  for (const PathPosition& p : ran.positions) expectAt(p, 0, 77);
  EXPECT_NEAR(ran.report.cost, 19, 1e-9);
}

TEST(ToolpathFamilies, FreeAxisTurnsOnInStepsThatItMayTake) {
  // From 40 to 100, by three targets that leave C free: 40 stays, 60 and 90 are samples.
  ToolpathOptions options;
  options.axes[kC].largestStep = 30;
  const Ran ran =
      runPath(forkHead(-360, 360),
              {pointing(10, 40), pointing(0, 0), pointing(0, 0), pointing(0, 0), pointing(10, 100)},
              options);
  EXPECT_TRUE(ran.report.isFitting());
  EXPECT_NEAR(ran.report.axes[kC].travel, 60, 1e-6);
  EXPECT_NEAR(ran.report.axes[kB].travel, 20, 1e-6);
  EXPECT_LE(ran.report.axes[kC].largestStep, 30 + 1e-6);
  EXPECT_EQ(ran.report.singularTargets, 3u);
}

TEST(ToolpathFamilies, OneTargetIsNotEnoughForAWayOfTwoSteps) {
  ToolpathOptions options;
  options.axes[kC].largestStep = 25;
  const Ran ran =
      runPath(forkHead(-360, 360), {pointing(10, 40), pointing(0, 0), pointing(10, 100)}, options);
  EXPECT_EQ(ran.report.breaks.size(), 1u);  // 60 degrees in two steps of 25
}

TEST(ToolpathFamilies, LongRowsAreTurnedInAtTheirEnds) {
  // Three thousand targets leave C free between 40 and -290, which is 70 away from 40 a turn below.
  ToolpathOptions options;
  options.axes[kC].largestStep = 30;
  options.start = at(10, 40);
  std::vector<PathTarget> targets(3000, pointing(0, 0));
  targets.front() = pointing(10, 40);
  targets.back() = pointing(10, -290);
  const Ran ran = runPath(forkHead(-300, 60), targets, options);
  EXPECT_TRUE(ran.report.isFitting());
  EXPECT_NEAR(ran.report.axes[kC].travel, 150, 1e-6);  // to 190 is outside: B = -10 at -110
  EXPECT_NEAR(ran.report.axes[kB].travel, 20, 1e-6);
  EXPECT_NEAR(ran.positions.back().values[kC], -110, 1e-6);
}

// --- start, weights, margins

TEST(ToolpathStart, PicksTheTurn) {
  ToolpathOptions options;
  options.start = at(20, 350);
  const Ran ran = runPath(forkHead(-360, 360), {pointing(20, -10), pointing(20, 0)}, options);
  ASSERT_EQ(ran.positions.size(), 2u);
  expectAt(ran.positions[0], 20, 350);
  expectAt(ran.positions[1], 20, 360);
  EXPECT_NEAR(ran.report.cost, 10, 1e-9);
}

TEST(ToolpathStart, WithoutOneThePathBeginsNearZero) {
  // One way round C = -360 is as good a beginning as 0, the other way round 360.
  for (const double step : {10.0, -10.0}) {
    std::vector<PathTarget> targets;
    for (int i = 0; i < 10; ++i) targets.push_back(pointing(20, step * i));
    const Ran ran = runPath(forkHead(-360, 360), targets);
    expectAt(ran.positions[0], 20, 0);
    EXPECT_NEAR(ran.report.cost, 90, 1e-7);
  }
}

TEST(ToolpathStart, LooksAhead) {
  // Nearest first would take C = 350 and be at its limit at once: 20 more need C = -10 from the
  // beginning, or the other side.
  ToolpathOptions options;
  options.start = at(20, 350);
  const Ran ran = runPath(forkHead(-360, 360), {pointing(20, -10), pointing(20, 10)}, options);
  EXPECT_TRUE(ran.report.isFitting());
  expectAt(ran.positions[0], -20, 170);
  expectAt(ran.positions[1], -20, 190);
  EXPECT_NEAR(ran.report.cost, 40 + 180 + 20, 1e-9);
}

TEST(ToolpathStart, MayBeManyTurnsAway) {
  ToolpathOptions options;
  options.start = at(20, 7e8);
  const Ran ran = runPath(forkHead(-kNoLimit, kNoLimit), {pointing(20, 0)}, options);
  ASSERT_EQ(ran.positions.size(), 1u);
  EXPECT_NEAR(ran.positions[0].values[kC], 7e8, 180);
}

TEST(ToolpathStart, TooFarAwayIsSaid) {
  ToolpathOptions options;
  options.start = at(20, 1e10);
  const Ran ran = runPath(forkHead(-kNoLimit, kNoLimit), spiral(3), options);
  EXPECT_TRUE(ran.positions.empty());
  EXPECT_EQ(ran.report.unreached, (std::vector<std::size_t>{0, 1, 2}));
  ASSERT_EQ(ran.report.reasons.size(), 1u);
  EXPECT_EQ(ran.report.reasons[0].first, 0u);
  EXPECT_EQ(ran.report.reasons[0].second.reason, Reason::noDirection);
  EXPECT_NE(ran.report.reasons[0].second.text.find("1e9 degrees"), std::string::npos);
  // Brought inside its limits it is near.
  EXPECT_TRUE(runPath(forkHead(-360, 360), spiral(3), options).report.isFitting());
}

TEST(ToolpathStart, TheWayFromItIsNoBreak) {
  ToolpathOptions options;
  options.start = at(0, -360);
  const Ran ran = runPath(forkHead(0, 360), {pointing(20, 300)}, options);
  EXPECT_EQ(ran.report.breakCount(), 0u);
  EXPECT_FALSE(ran.positions[0].isAfterBreak);
}

TEST(ToolpathWeights, DecideWhichAxisMoves) {
  ToolpathOptions options;
  options.start = at(20, 0);
  const std::vector<PathTarget> targets{pointing(20, 180)};
  expectAt(runPath(forkHead(-360, 360), targets, options).positions[0], -20, 0);  // 40 < 180
  options.axes[kB].weight = 10;
  const Ran ran = runPath(forkHead(-200, 360), targets, options);
  EXPECT_NEAR(ran.positions[0].values[kB], 20, 1e-9);  // 180 < 400
  EXPECT_NEAR(std::abs(ran.positions[0].values[kC]), 180, 1e-9);
  EXPECT_NEAR(ran.report.cost, 180, 1e-9);
}

TEST(ToolpathMargins, KeepAwayFromLimitsForTheirCost) {
  // Standing at C = 350, 10 before the limit. Staying costs (100 - 10) * 10 = 900, the other side
  // 40 + 180, a turn back 360.
  ToolpathOptions options;
  options.start = at(20, 350);
  const std::vector<PathTarget> targets{pointing(20, -10)};
  expectAt(runPath(forkHead(-360, 360), targets, options).positions[0], 20, 350);
  options.axes[kC].margin = 100;
  options.axes[kC].marginCost = 10;
  const Ran ran = runPath(forkHead(-360, 360), targets, options);
  expectAt(ran.positions[0], -20, 170);
  EXPECT_NEAR(ran.report.cost, 220, 1e-9);
  options.axes[kC].marginCost = 2;  // 180 < 220
  EXPECT_NEAR(runPath(forkHead(-360, 360), targets, options).report.cost, 180, 1e-9);
}

// --- few targets, and those without a position

TEST(ToolpathTargets, NoneGivesNothing) {
  const Ran ran = runPath(forkHead(-360, 360), {});
  EXPECT_TRUE(ran.positions.empty());
  EXPECT_TRUE(ran.report.isFitting());
  EXPECT_EQ(ran.report.cost, 0.0);
}

TEST(ToolpathTargets, OneIsAPath) {
  const Ran ran = runPath(forkHead(-360, 360), {pointing(20, 30, 5)});
  ASSERT_EQ(ran.positions.size(), 1u);
  EXPECT_EQ(ran.positions[0].target, 0u);
  EXPECT_EQ(ran.positions[0].way, 1.0);
  EXPECT_NEAR(ran.positions[0].values[kX], 5, 1e-9);
  EXPECT_NEAR(ran.positions[0].singular.directionRad, 20 * kDegree, 1e-6);
  EXPECT_EQ(ran.report.cost, 0.0);
}

TEST(ToolpathTargets, RepeatedOnesMoveNothing) {
  ToolpathOptions options;
  options.tolerance = Tolerance{};
  const Ran ran =
      runPath(forkHead(-360, 360), std::vector<PathTarget>(50, pointing(20, 30, 5)), options);
  EXPECT_EQ(ran.positions.size(), 50u);
  EXPECT_EQ(ran.report.cost, 0.0);
  EXPECT_TRUE(ran.report.isFitting());
}

TEST(ToolpathTargets, FeedsAreHandedOn) {
  std::vector<PathTarget> targets{pointing(20, 0), pointing(20, 60, 9)};
  targets[1].feed = 1500;
  ToolpathOptions options;
  options.tolerance = Tolerance{0.01, 0.01};
  const Ran ran = runPath(forkHead(-360, 360), targets, options);
  ASSERT_GT(ran.report.added, 0u);
  EXPECT_EQ(ran.positions[0].feed, 0.0);
  for (std::size_t i = 1; i < ran.positions.size(); ++i) EXPECT_EQ(ran.positions[i].feed, 1500);
}

TEST(ToolpathTargets, UnreachedOnesAreReportedWithTheirReason) {
  std::vector<PathTarget> targets = spiral(8);
  targets[2].target.tip.x = targets[3].target.tip.x = 2000;  // X ends at 1000
  targets[5].target.direction = {};
  targets[6].target.direction = {kNan, 0, 0};
  targets[7] = pointing(20, 250);
  const Ran ran = runPath(forkHead(-360, 360), targets);
  EXPECT_EQ(ran.report.unreached, (std::vector<std::size_t>{2, 3, 5, 6}));
  EXPECT_TRUE(ran.report.breaks.empty());  // what comes behind a gap is no further break
  EXPECT_EQ(ran.report.breakCount(), 4u);
  EXPECT_EQ(ran.positions.size(), 4u);
  EXPECT_EQ(ran.report.done, 8u);
  ASSERT_EQ(ran.report.reasons.size(), 2u);
  EXPECT_EQ(ran.report.reasons[0].first, 2u);
  EXPECT_EQ(ran.report.reasons[0].second.reason, Reason::outsideLimits);
  EXPECT_NEAR(ran.report.reasons[0].second.by, 1000, 1e-6);
  EXPECT_EQ(ran.report.reasons[1].first, 5u);
  EXPECT_EQ(ran.report.reasons[1].second.reason, Reason::noDirection);
  EXPECT_TRUE(ran.positions[2].isAfterBreak);
  EXPECT_FALSE(ran.positions[1].isAfterBreak);
}

TEST(ToolpathTargets, ReasonsAreAsManyAsWanted) {
  std::vector<PathTarget> targets = spiral(9);
  for (std::size_t i = 1; i < 9; i += 2) targets[i].target.tip.x = 5000;
  ToolpathOptions options;
  options.mostReasons = 3;
  const Ran ran = runPath(forkHead(-360, 360), targets, options);
  EXPECT_EQ(ran.report.unreached.size(), 4u);
  EXPECT_EQ(ran.report.reasons.size(), 3u);
}

TEST(ToolpathTargets, NothingIsReachedByAMachineWithoutASolver) {
  MachineLines lines;
  lines.head = {linear("X", 1, {1, 0, 0}), rotary("A", 4, {1, 0, 0}), rotary("B", 5, {0, 1, 0}),
                rotary("C", 6, {0, 0, 1})};
  const Machine machine = lines.machine();
  EXPECT_EQ(Toolpath(machine).kind(), SolverKind::none);
  const Ran ran = runPath(machine, spiral(3));
  EXPECT_EQ(ran.report.unreached.size(), 3u);
  ASSERT_EQ(ran.report.reasons.size(), 1u);
  EXPECT_EQ(ran.report.reasons[0].second.reason, Reason::noSolver);
}

// --- statistics

TEST(ToolpathStatistics, SayHowFarWhereAndHowNear) {
  ToolpathOptions options;
  options.start = at(0, 0);
  const Ran ran =
      runPath(forkHead(-360, 360, 30),
              {pointing(10, 0, 100), pointing(25, 15, 400), pointing(0.5, 15, 350)}, options);
  const ToolpathReport& r = ran.report;
  EXPECT_EQ(r.axisCount, 5);
  EXPECT_NEAR(r.axes[kX].travel, 100 + 300 + 50, 1e-6);
  EXPECT_NEAR(r.axes[kX].low, 100, 1e-6);
  EXPECT_NEAR(r.axes[kX].high, 400, 1e-6);
  EXPECT_NEAR(r.axes[kX].largestStep, 300, 1e-6);
  EXPECT_EQ(r.axes[kX].largestStepTarget, 1u);
  EXPECT_NEAR(r.axes[kY].travel, 0, 1e-6);
  EXPECT_NEAR(r.axes[kB].travel, 10 + 15 + 24.5, 1e-6);
  EXPECT_NEAR(r.axes[kC].travel, 15, 1e-6);
  EXPECT_NEAR(r.cost, 450 + 49.5 + 15, 1e-6);
  EXPECT_NEAR(r.margin, 5, 1e-6);  // B = 25 of 30
  EXPECT_EQ(r.marginPlace, static_cast<int>(kB));
  EXPECT_EQ(r.marginTarget, 1u);
  EXPECT_EQ(r.singularTargets, 1u);  // half a degree beside the pole
  EXPECT_EQ(r.nearestSingularTarget, 2u);
  EXPECT_NEAR(r.nearestSingular.directionRad, 0.5 * kDegree, 1e-8);
}

// --- a run

std::vector<PathTarget> longPath(int count) {
  std::vector<PathTarget> targets;
  for (int i = 0; i < count; ++i) {
    const double u = 0.01 * i;
    targets.push_back(pointing(25 + 25 * std::sin(3 * u), 40 * u, 100 * std::sin(u)));
    if (i % 700 < 20) targets.back() = pointing(0, 0, i % 20);   // C is free
    if (i % 997 == 500) targets.back() = pointing(20, 0, 5000);  // out of reach
  }
  return targets;
}

bool isSame(const PathPosition& a, const PathPosition& b) {
  return a.target == b.target && a.way == b.way && a.values == b.values && a.branch == b.branch &&
         a.margin == b.margin && a.isAfterBreak == b.isAfterBreak &&
         a.singular.directionRad == b.singular.directionRad;
}

void expectSame(const Ran& a, const Ran& b) {
  ASSERT_EQ(a.positions.size(), b.positions.size());
  for (std::size_t i = 0; i < a.positions.size(); ++i) {
    ASSERT_TRUE(isSame(a.positions[i], b.positions[i])) << i;
  }
  EXPECT_EQ(a.report.cost, b.report.cost);
  EXPECT_EQ(a.report.breaks.size(), b.report.breaks.size());
  EXPECT_EQ(a.report.unreached, b.report.unreached);
  EXPECT_EQ(a.report.standing.size(), b.report.standing.size());
  EXPECT_EQ(a.report.axes[kC].travel, b.report.axes[kC].travel);
}

TEST(ToolpathRun, IsTheSameBitByBitWithMoreThreads) {
  const Machine machine = forkHead(-360, 360);
  const std::vector<PathTarget> targets = longPath(proofCount(6000, 60000));
  ToolpathOptions options;
  options.mostReasons = 1;
  options.tolerance = Tolerance{0.001, 0.01};
  const Ran one = runPath(machine, targets, options);
  EXPECT_GT(one.report.added, 0u);
  for (const int jobs : {2, 4}) {
    options.jobs = jobs;
    expectSame(one, runPath(machine, targets, options));
  }
}

TEST(ToolpathRun, OfAnArmIsTheSameBitByBitWithMoreThreads) {
  Dice dice(3);
  const Machine machine(*sphericalArm(dice, {.isUsual = true}).load());
  const std::vector<PathTarget> targets = wandering(machine, dice, 150);
  ToolpathOptions options;
  options.solver.toolTurns = 3;
  options.mostReasons = 1;
  const Ran one = runPath(machine, targets, options);
  options.jobs = 4;
  expectSame(one, runPath(machine, targets, options));
}

TEST(ToolpathRun, TellsItsProgress) {
  const Machine machine = forkHead(-360, 360);
  const std::vector<PathTarget> targets = longPath(5000);
  std::vector<ToolpathProgress> seen;
  Toolpath(machine).run(targets, {}, [&](const ToolpathProgress& p) {
    seen.push_back(p);
    return true;
  });
  ASSERT_GE(seen.size(), 8u);
  for (std::size_t i = 1; i < seen.size(); ++i) {
    EXPECT_GE(seen[i].searched, seen[i - 1].searched);
    EXPECT_GE(seen[i].given, seen[i - 1].given);
    EXPECT_EQ(seen[i].targets, 5000u);
  }
  EXPECT_EQ(seen.back().searched, 5000u);
  EXPECT_EQ(seen.back().given, 5000u);
}

TEST(ToolpathRun, StoppedWhileItSearchesGivesTheBestOfWhatItHas) {
  const Machine machine = forkHead(-360, 360);
  const std::vector<PathTarget> targets = longPath(5000);
  Ran stopped;
  stopped.report = Toolpath(machine).run(
      targets, [&](const PathPosition& p) { stopped.positions.push_back(p); },
      [](const ToolpathProgress& p) { return p.searched < 2000; });
  EXPECT_TRUE(stopped.report.isStopped());
  EXPECT_FALSE(stopped.report.isFitting());
  EXPECT_GE(stopped.report.done, 2000u);
  EXPECT_LT(stopped.report.done, 4000u);
  const std::ptrdiff_t done = static_cast<std::ptrdiff_t>(stopped.report.done);
  expectSame(stopped, runPath(machine, {targets.begin(), targets.begin() + done}));
}

TEST(ToolpathRun, StoppedWhileItGivesKeepsWhatItGave) {
  const Machine machine = forkHead(-360, 360);
  const std::vector<PathTarget> targets = longPath(5000);
  const Ran whole = runPath(machine, targets);
  Ran stopped;
  stopped.report = Toolpath(machine).run(
      targets, [&](const PathPosition& p) { stopped.positions.push_back(p); },
      [](const ToolpathProgress& p) { return p.given < 2000; });
  EXPECT_TRUE(stopped.report.isStopped());
  EXPECT_GE(stopped.report.done, 2000u);
  EXPECT_LT(stopped.report.done, 4000u);
  const Counted counted = Rules(machine, {}).count(stopped.atTargets());
  EXPECT_NEAR(stopped.report.cost, counted.way, 1e-6 * counted.way);
  EXPECT_EQ(stopped.report.breakCount(), counted.breaks);
  ASSERT_LT(stopped.positions.size(), whole.positions.size());
  for (std::size_t i = 0; i < stopped.positions.size(); ++i) {
    ASSERT_TRUE(isSame(stopped.positions[i], whole.positions[i])) << i;
  }
}

}  // namespace
}  // namespace korvo::test
