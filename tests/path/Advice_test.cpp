// What would make a path fit, worked out by hand; and nearest-first, against which paths are
// measured.
#include "toolkit/path/Advice.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "tests/path/Paths.h"
#include "toolkit/path/NearestFirst.h"

namespace korvo::test {
namespace {

using Kind = PathAdvice::Kind;
using zgeo::UVec3d;

constexpr double kDegree = std::numbers::pi / 180;
constexpr std::size_t kX = 0, kY = 1, kB = 3, kC = 4;

/// A fork head: C turns about z, B in it about y, both through the tool point.
Machine forkHead(double leastC, double mostC, double mostX = 1000) {
  MachineLines lines;
  lines.head = {linear("X", 1, {1, 0, 0}, -1000, mostX), linear("Y", 2, {0, 1, 0}, -1000, 1000),
                linear("Z", 3, {0, 0, 1}, -1000, 1000),
                rotary("C", 6, {0, 0, 1}, {}, leastC, mostC),
                rotary("B", 5, {0, 1, 0}, {}, -110, 110)};
  return lines.machine();
}

/// C turns the part, B the tool; X up to 50, and B to one side alone: what is tilted outwards at
/// the radius r is reached with X = r, whatever its azimuth.
Machine headAndTable() {
  MachineLines lines;
  lines.part = {rotary("C", 6, {0, 0, 1})};
  lines.head = {linear("X", 1, {1, 0, 0}, -100, 50), linear("Y", 2, {0, 1, 0}, -1000, 1000),
                linear("Z", 3, {0, 0, 1}, -1000, 1000), rotary("B", 5, {0, 1, 0}, {}, 0, 110)};
  return lines.machine();
}

PathTarget pointing(double tilt, double azimuth, const UVec3d& tip = {}) {
  const double t = tilt * kDegree, a = azimuth * kDegree;
  return {{tip, {std::sin(t) * std::cos(a), std::sin(t) * std::sin(a), std::cos(t)}}, 0};
}

/// At 60 mm from the middle, tilted outwards by 20.
PathTarget outwards(double azimuth) {
  const double a = azimuth * kDegree;
  return pointing(20, azimuth, {60 * std::cos(a), 60 * std::sin(a), 0});
}

std::vector<PathTarget> spiral(int count) {
  std::vector<PathTarget> targets;
  for (int i = 0; i < count; ++i) targets.push_back(pointing(20, 10.0 * i));
  return targets;
}

std::vector<PathAdvice> adviceOf(const Machine& machine, const std::vector<PathTarget>& targets,
                                 const ToolpathOptions& options = {}) {
  return advise(machine, options, targets, runPath(machine, targets, options).report);
}

const PathAdvice* find(const std::vector<PathAdvice>& all, Kind kind, std::size_t place = 99) {
  const auto found = std::find_if(all.begin(), all.end(), [&](const PathAdvice& a) {
    return a.kind == kind && (place == 99 || a.place == static_cast<int>(place));
  });
  return found == all.end() ? nullptr : &*found;
}

void expectShift(const PathAdvice& advice, const UVec3d& wanted) {
  EXPECT_NEAR(advice.shift.x, wanted.x, 1e-9);
  EXPECT_NEAR(advice.shift.y, wanted.y, 1e-9);
  EXPECT_NEAR(advice.shift.z, wanted.z, 1e-9);
  EXPECT_TRUE(advice.after.isFitting());
}

// --- the part

TEST(PathAdvicePart, IsMovedAlongOneAxisWithHalfAMillimetreToSpare) {
  const std::vector<PathTarget> targets{pointing(20, 0, {900, 0, 0}), pointing(20, 0, {1000, 0, 0}),
                                        pointing(20, 0, {1100, 0, 0})};
  const auto all = adviceOf(forkHead(-360, 360), targets);
  const PathAdvice* const part = find(all, Kind::part);
  ASSERT_TRUE(part);
  expectShift(*part, {-100.5, 0, 0});
  EXPECT_EQ(part->before.unreached, 1u);
}

TEST(PathAdvicePart, IsMovedAsTheTableCarriesIt) {
  // At the azimuths 0 and 90 X = 60 + dx and X = 60 + dy: both up to 49.5. The least such shift has
  // both at -10.5.
  ToolpathOptions options;
  options.axes[kC].largestStep = 360;
  const auto all = adviceOf(headAndTable(), {outwards(0), outwards(90)}, options);
  const PathAdvice* const part = find(all, Kind::part);
  ASSERT_TRUE(part);
  expectShift(*part, {-10.5, -10.5, 0});
}

TEST(PathAdvicePart, IsNotMovedWhereNoShiftHelpsAll) {
  ToolpathOptions options;
  options.axes[kC].largestStep = 360;
  const auto all =
      adviceOf(headAndTable(), {outwards(0), outwards(90), outwards(180), outwards(270)}, options);
  EXPECT_FALSE(find(all, Kind::part));
  const PathAdvice* const limit = find(all, Kind::limit, kX);
  ASSERT_TRUE(limit);
  EXPECT_NEAR(*limit->max, 60, 0.11);
  EXPECT_NEAR(limit->more, 10, 0.11);
  EXPECT_FALSE(limit->min);
  EXPECT_TRUE(limit->after.isFitting());
}

TEST(PathAdvicePart, IsBroughtIntoTheReachOfAnArm) {
  // The wrist is reached up to 705 + 767 mm from the shoulder, which is 100 mm in front of the
  // first axis; the flange 85 mm further.
  const Loaded arm = load(KORVO_MACHINES "/arm-irb2400.def");
  ASSERT_TRUE(arm);
  std::vector<PathTarget> targets;
  for (int i = 0; i <= 10; ++i) targets.push_back({{{1650.0 + i, 0, 700}, {-1, 0, 0}}, 0});
  const auto all = adviceOf(*arm.machine, targets);
  const PathAdvice* const part = find(all, Kind::part);
  ASSERT_TRUE(part);
  EXPECT_LT(part->shift.x, -20);
  EXPECT_EQ(part->shift.y, 0);
  EXPECT_TRUE(part->after.isFitting());
}

// --- limits

TEST(PathAdviceLimit, SaysHowMuchAWindingAxisNeeds) {
  // 145 steps of 10 degrees: 1450, where 720 are allowed.
  ToolpathOptions options;
  options.axes[kB].weight = 100;
  const auto all = adviceOf(forkHead(-360, 360), spiral(146), options);
  const PathAdvice* const limit = find(all, Kind::limit, kC);
  ASSERT_TRUE(limit);
  EXPECT_NEAR(limit->more, 730, 0.2);
  EXPECT_NEAR(limit->max.value_or(360) - limit->min.value_or(-360), 1450, 0.2);
  EXPECT_EQ(limit->before.breaks, 2u);
  EXPECT_TRUE(limit->after.isFitting());
  EXPECT_FALSE(find(all, Kind::limit, kB));
}

TEST(PathAdviceLimit, TakesTheSideThatNeedsLess) {
  // The azimuths 0 to 240: C = 0 to 240 with B = 20, or -180 to 60 with B = -20, where 170 are
  // allowed on either side.
  const auto all = adviceOf(forkHead(-170, 170), spiral(25));
  const PathAdvice* const limit = find(all, Kind::limit, kC);
  ASSERT_TRUE(limit);
  EXPECT_NEAR(*limit->min, -180, 0.11);
  EXPECT_FALSE(limit->max);
  EXPECT_NEAR(limit->more, 10, 0.11);
  EXPECT_EQ(limit->before.breaks, 1u);
  EXPECT_TRUE(limit->after.isFitting());
  EXPECT_EQ(
      std::count_if(all.begin(), all.end(), [](const auto& a) { return a.kind == Kind::limit; }),
      1);
}

TEST(PathAdviceLimit, OfALinearAxis) {
  const auto all = adviceOf(forkHead(-360, 360),
                            {pointing(20, 0, {990, 0, 0}), pointing(20, 0, {1033.2, 0, 0})});
  const PathAdvice* const limit = find(all, Kind::limit, kX);
  ASSERT_TRUE(limit);
  EXPECT_NEAR(*limit->max, 1033.2, 0.11);
  EXPECT_NEAR(limit->more, 33.2, 0.11);
}

// --- the start

TEST(PathAdviceStart, PutsALockedAxisWhereTheTargetsAre) {
  Machine machine = forkHead(-360, 360);
  for (int i = 0; i < machine->getElemNumber(); ++i) {
    zkin::KMachineElem* const e = machine->getElemByRank(i);
    if (e->getValueIndex() == static_cast<int>(kY)) e->setLocked(true);
  }
  // Of the nine places from -1000 to 1000.
  const auto all = adviceOf(machine, {pointing(20, 0, {0, 250, 0}), pointing(20, 0, {50, 250, 0})});
  const PathAdvice* const start = find(all, Kind::start, kY);
  ASSERT_TRUE(start);
  EXPECT_EQ(start->value, 250);
  EXPECT_EQ(start->before.unreached, 2u);
  EXPECT_TRUE(start->after.isFitting());
}

TEST(PathAdviceStart, PutsAHeldAxisWithoutLimitsWhereAReasonWantsIt) {
  constexpr double kEndless = std::numeric_limits<double>::infinity();
  ToolpathOptions options;
  options.solver.redundancy[kC] = {Redundancy::Rule::value, 70};
  const auto all = adviceOf(forkHead(-kEndless, kEndless),
                            {pointing(20, 13), pointing(30, 13, {50, 0, 0})}, options);
  const PathAdvice* const start = find(all, Kind::start, kC);
  ASSERT_TRUE(start);
  EXPECT_NEAR(start->value, 13, 1e-9);
  EXPECT_TRUE(start->after.isFitting());
}

TEST(PathAdviceSide, SaysWhereToBeginInsteadOfNearest) {
  ToolpathOptions options;
  options.start = Values{};
  (*options.start)[kB] = 20;
  (*options.start)[kC] = 350;
  const auto all = adviceOf(forkHead(-360, 360), {pointing(20, -10), pointing(20, 10)}, options);
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].kind, Kind::side);
  EXPECT_NEAR(all[0].begin[kB], -20, 1e-9);
  EXPECT_NEAR(all[0].begin[kC], 170, 1e-9);
  EXPECT_EQ(all[0].before.breaks, 1u);
  EXPECT_TRUE(all[0].after.isFitting());
}

// --- none

TEST(PathAdviceNone, WhereThePathFitsAndBeginsNearest) {
  EXPECT_TRUE(adviceOf(forkHead(-360, 360), spiral(30)).empty());
}

TEST(PathAdviceNone, WhereNothingHelps) {
  MachineLines lines;
  lines.head = {linear("X", 1, {1, 0, 0}, -10, 10), linear("Y", 2, {0, 1, 0}),
                linear("Z", 3, {0, 0, 1})};
  EXPECT_TRUE(adviceOf(lines.machine(), {pointing(20, 0)}).empty());
}

TEST(PathAdviceNone, OfAPathThatWasStopped) {
  const Machine machine = forkHead(-360, 360);
  const std::vector<PathTarget> targets = spiral(2000);
  const ToolpathReport report =
      Toolpath(machine).run(targets, {}, [](const ToolpathProgress&) { return false; });
  ASSERT_TRUE(report.isStopped());
  EXPECT_TRUE(advise(machine, {}, targets, report).empty());
}

TEST(PathAdviceNone, OnceItIsStopped) {
  const Machine machine = forkHead(-360, 360);
  const std::vector<PathTarget> targets = spiral(2000);
  const ToolpathReport report = runPath(machine, targets).report;
  ASSERT_GT(report.breakCount(), 0u);
  EXPECT_TRUE(advise(machine, {}, targets, report, [](const auto&) { return false; }).empty());
}

TEST(PathAdvice, KindsHaveNames) {
  EXPECT_STREQ(toString(Kind::part), "part");
  EXPECT_STREQ(toString(Kind::start), "start");
  EXPECT_STREQ(toString(Kind::side), "side");
  EXPECT_STREQ(toString(Kind::limit), "limit");
}

TEST(PathFit, CountsBreaksOfBothKindsFirst) {
  EXPECT_TRUE((PathFit{0, 1, 9} < PathFit{2, 0, 0}));
  EXPECT_TRUE((PathFit{1, 0, 1} < PathFit{0, 1, 2}));
  EXPECT_FALSE((PathFit{1, 0, 1} < PathFit{0, 1, 1}));
}

// --- nearest-first

TEST(NearestFirst, TakesTheNearestAndCountsWhatBreaks) {
  // C = 350 is there at once. Then C = 10 lies 340 away; B = -20 with C = 190 40 + 160.
  ToolpathOptions options;
  options.start = Values{};
  (*options.start)[kB] = 20;
  (*options.start)[kC] = 350;
  std::vector<PathPosition> positions;
  const std::vector<PathTarget> targets{pointing(20, -10), pointing(20, 10)};
  const ToolpathReport report =
      nearestFirst(forkHead(-360, 360), options, targets,
                   [&positions](const PathPosition& p) { positions.push_back(p); });
  ASSERT_EQ(positions.size(), 2u);
  EXPECT_NEAR(positions[0].values[kC], 350, 1e-9);
  EXPECT_NEAR(positions[1].values[kB], -20, 1e-9);
  EXPECT_NEAR(positions[1].values[kC], 190, 1e-9);
  EXPECT_TRUE(positions[1].isAfterBreak);
  ASSERT_EQ(report.breaks.size(), 1u);
  EXPECT_EQ(report.breaks[0].kind, PathBreak::Kind::sideChanged);
  EXPECT_NEAR(report.cost, 200, 1e-9);
  EXPECT_NEAR(report.axes[kC].travel, 160, 1e-9);
  EXPECT_EQ(report.done, 2u);
}

TEST(NearestFirst, GoesOnBehindATargetWithoutAPosition) {
  const std::vector<PathTarget> targets{pointing(20, 0), pointing(20, 0, {5000, 0, 0}),
                                        pointing(20, 100)};
  const ToolpathReport report = nearestFirst(forkHead(-360, 360), {}, targets);
  EXPECT_EQ(report.unreached, std::vector<std::size_t>{1});
  EXPECT_TRUE(report.breaks.empty());  // what follows a gap is none
  EXPECT_EQ(report.positions, 2u);
}

TEST(NearestFirst, CanBeStopped) {
  const std::vector<PathTarget> targets = spiral(5000);
  const ToolpathReport report =
      nearestFirst(forkHead(-360, 360), {}, targets, {}, [](const auto&) { return false; });
  EXPECT_TRUE(report.isStopped());
  EXPECT_LT(report.done, 5000u);
}

}  // namespace
}  // namespace korvo::test
