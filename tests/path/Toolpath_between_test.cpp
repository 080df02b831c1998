// Positions between targets: the tool stays on the way, by as few as it takes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <set>
#include <vector>

#include "tests/path/Paths.h"
#include "tests/path/Way.h"
#include "tests/solve/Proof.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/SphericalArm.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;

constexpr double kDegree = std::numbers::pi / 180;

struct Checked {
  std::size_t moves = 0, added = 0, standing = 0;
};

/// Samples every move that claims to stay on its way.
void expectOnTheWay(const Machine& machine, const std::vector<PathTarget>& targets,
                    const ToolpathOptions& options, int samples, Checked& checked) {
  const Ran ran = runPath(machine, targets, options);
  const JointChain chain = JointChain::of(*machine);
  const PathPosition* last = nullptr;
  std::size_t lastTarget = 0;
  for (const PathPosition& p : ran.positions) {
    const bool isOnWay = last && !p.isAfterBreak;
    if (isOnWay) {
      ASSERT_EQ(p.target, lastTarget + 1);
      const Way way(targets[lastTarget].target, targets[p.target].target);
      const double share = shareLeft(chain, way, last->values, p.values, options.tolerance->mm,
                                     options.tolerance->degrees, samples);
      ASSERT_LE(share, 1 + 1e-9) << "target " << p.target << " at " << p.way;
      ++checked.moves;
    }
    last = &p;
    if (!p.isAdded()) lastTarget = p.target;
  }
  ASSERT_EQ(ran.report.added,
            ran.positions.size() - ran.atTargets().size() + ran.report.unreached.size());
  for (const PathStanding& standing : ran.report.standing) ASSERT_GE(standing.place, 0);
  checked.added += ran.report.added;
  checked.standing += ran.report.standing.size();
}

void report(const char* what, const Checked& checked) {
  if (!isReportWanted()) return;
  std::printf("%s: %zu moves, %zu positions added, %zu standing\n", what, checked.moves,
              checked.added, checked.standing);
}

TEST(ToolpathBetween, ToolStaysOnTheWayOnFiveAxes) {
  Checked checked;
  for (int i = 0; i < proofCount(300, 3000); ++i) {
    Dice dice(static_cast<unsigned>(i));
    const Machine machine = fiveAxes(dice).machine();
    ToolpathOptions options;
    const double scale = std::pow(10.0, dice.between(-2, 0.5));
    options.tolerance = Tolerance{scale, scale * dice.between(0.3, 10)};
    expectOnTheWay(machine, wandering(machine, dice, 8), options, 100, checked);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(checked.added, checked.moves / 2);
  report("five axes", checked);
}

TEST(ToolpathBetween, ToolStaysOnTheWayOnEveryTopology) {
  for (int kind = 0; kind < kTopologies; ++kind) {
    Checked checked;
    for (int i = 0; i < proofCount(60, 600); ++i) {
      Choices choices(static_cast<unsigned>(i));
      Dice dice(static_cast<unsigned>(i));
      const Machine machine(*loadMachine(machineText(choices, static_cast<Topology>(kind))));
      ToolpathOptions options;
      options.tolerance = Tolerance{0.3, 0.5};
      expectOnTheWay(machine, wandering(machine, dice, 6), options, 60, checked);
      if (HasFatalFailure()) return;
    }
    report(nameOf(static_cast<Topology>(kind)), checked);
  }
}

TEST(ToolpathBetween, ToolStaysOnTheWayOnArms) {
  Checked checked;
  for (int i = 0; i < proofCount(20, 200); ++i) {
    Dice dice(static_cast<unsigned>(i));
    const Machine machine(*sphericalArm(dice, {.isUsual = i % 2 == 0, .isCoaxial = true}).load());
    ToolpathOptions options;
    options.tolerance = Tolerance{0.5, 0.5};
    expectOnTheWay(machine, wandering(machine, dice, 6), options, 60, checked);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(checked.added, 0u);
  report("arms", checked);
}

// --- how many

/// How many positions the longest kept step again and again adds, its error sampled.
class LongestSteps {
 public:
  LongestSteps(const Machine& machine, const Target& a, const Target& b, const Values& from,
               const Values& to, const Tolerance& tolerance)
      : solver_(machine), a_(a), b_(b), way_(a, b), from_(from), to_(to), tolerance_(tolerance) {}

  int count() const {
    int added = 0;
    double begin = 0.0;
    for (Values at = from_; !isKept(at, to_); ++added) {
      double end = 1.0;
      Values next;
      // From far to near: what is kept further on is taken even where nearer ends are not.
      do {
        end = begin + (end - begin) * 0.99;
        next = at_(end);
      } while (!isKept(at, next));
      begin = end;
      at = next;
    }
    return added;
  }

 private:
  bool isKept(const Values& a, const Values& b) const {
    const auto share = [&](int samples) {
      return shareLeft(solver_.chain(), way_, a, b, tolerance_.mm, tolerance_.degrees, samples);
    };
    return share(16) <= 1 && share(proofCount(10'000, 10'000)) <= 1;
  }

  Values at_(double way) const {
    Values line{};
    for (std::size_t i = 0; i < line.size(); ++i) line[i] = from_[i] + (to_[i] - from_[i]) * way;
    const double angle = Way::angle(way_.first, way_.last) * kDegree;
    const UVec3d direction =
        angle < 1e-12
            ? way_.first
            : (way_.first * std::sin(angle * (1 - way)) + way_.last * std::sin(angle * way)) /
                  std::sin(angle);
    const Target target{a_.tip + (b_.tip - a_.tip) * way, direction};
    const auto all = solutionsOf(solver_, target, line);
    const auto distance = [&](const Solution& s) {
      double sum = 0.0;
      for (std::size_t i = 0; i < line.size(); ++i) sum += std::abs(s.values[i] - line[i]);
      return sum;
    };
    return std::min_element(all.begin(), all.end(),
                            [&](const auto& s, const auto& t) { return distance(s) < distance(t); })
        ->values;
  }

  Solver solver_;
  Target a_, b_;
  Way way_;
  Values from_, to_;
  Tolerance tolerance_;
};

Machine example(const char* name) {
  return *load(std::filesystem::path(KORVO_MACHINES) / name).machine;
}

struct Segment {
  const char* machine;
  std::vector<double> from, to;
};

Values valuesOf(const std::vector<double>& numbers) {
  Values values{};
  std::copy(numbers.begin(), numbers.end(), values.begin());
  return values;
}

TEST(ToolpathBetween, AddsAtMostAThirdMoreThanTheFewest) {
  // X, Y, Z, A, C; X, Y, Z, B, C; six joints. Way by way, in one branch.
  const Segment segments[] = {
      {"table-ac.def", {10, -20, 100, -20, 10}, {60, 30, 120, -40, 60}},
      {"table-ac.def", {10, -20, 100, -60, 0}, {20, -10, 110, -10, 20}},
      {"table-ac.def", {80, 20, 150, -30, 170}, {90, 10, 100, -35, 230}},
      {"head-cb-fork.def", {2000, 1000, -500, 20, 0}, {2100, 1100, -450, 50, 40}},
      {"head-cb-fork.def", {2000, 1000, -500, 10, 0}, {2000, 1000, -500, 12, 80}},
      {"head-cb-fork.def", {1500, 900, -300, -80, 100}, {1700, 900, -300, -60, 30}},
      {"arm-irb2400.def", {0, 10, 0, 10, 40, 0}, {30, 20, 10, 30, 60, 0}},
      {"arm-irb2400.def", {-20, 30, -10, 0, 60, 0}, {-40, 0, 20, 20, 30, 0}},
      {"arm-puma560.def", {0, -30, 60, 20, 40, 0}, {20, -50, 80, 50, 60, 0}},
  };
  const Tolerance tolerances[] = {{1, 2}, {0.1, 0.1}, {0.01, 0.5}, {5, 0.05}};
  int ways = 0;
  double worst = 0.0;
  for (const Segment& segment : segments) {
    const Machine machine = example(segment.machine);
    const std::vector<PathTarget> targets =
        targetsOf(machine, {valuesOf(segment.from), valuesOf(segment.to)});
    for (const Tolerance& tolerance : tolerances) {
      ToolpathOptions options;
      options.start = valuesOf(segment.from);
      options.tolerance = tolerance;
      const Ran ran = runPath(machine, targets, options);
      ASSERT_TRUE(ran.report.isFitting()) << segment.machine;
      const int fewest =
          LongestSteps(machine, targets[0].target, targets[1].target, ran.positions.front().values,
                       ran.positions.back().values, tolerance)
              .count();
      const auto added = static_cast<double>(ran.report.added);
      EXPECT_LE(added, 1.3 * fewest) << segment.machine << " " << tolerance.mm;
      if (fewest > 0) worst = std::max(worst, added / fewest);
      ways += fewest > 0;
    }
  }
  EXPECT_GE(ways, 24);
  if (isReportWanted()) std::printf("%d ways, at most %.3f times the fewest\n", ways, worst);
}

// --- poles

/// A fork head, both axes through the tool point: the tip never leaves its place for them.
Machine forkHead(double leastB, double toolZ = 0) {
  MachineLines lines;
  lines.toolPoint = {0, 0, toolZ};
  lines.head = linearXyz() + std::vector{rotary("C", 6, {0, 0, 1}, {}, -400, 400),
                                         rotary("B", 5, {0, 1, 0}, {}, leastB, 110)};
  return lines.machine();
}

PathTarget pointing(const UVec3d& tip, double tilt, double azimuth) {
  const double t = tilt * kDegree, a = azimuth * kDegree;
  return {{tip, {std::sin(t) * std::cos(a), std::sin(t) * std::sin(a), std::cos(t)}}, 0};
}

constexpr std::size_t kB = 3, kC = 4;

TEST(ToolpathAtAPole, TiltsThroughItWhereItCan) {
  ToolpathOptions options;
  options.tolerance = Tolerance{0.001, 0.001};
  const Ran ran =
      runPath(forkHead(-110), {pointing({0, 0, 0}, 5, 30), pointing({9, 0, 0}, 5, 210)}, options);
  EXPECT_TRUE(ran.report.isFitting());
  EXPECT_EQ(ran.report.added, 0u);  // B goes from 5 to -5 while C stands: on the shortest turn
  EXPECT_NEAR(ran.report.axes[kB].travel, 10, 1e-9);
  EXPECT_NEAR(ran.report.axes[kC].travel, 0, 1e-9);
}

TEST(ToolpathAtAPole, BreaksWhereItMustTurnThereByMoreThanItMay) {
  const Ran ran = runPath(forkHead(0), {pointing({0, 0, 0}, 5, 30), pointing({9, 0, 0}, 5, 210)});
  ASSERT_EQ(ran.report.breaks.size(), 1u);
  EXPECT_EQ(ran.report.breaks[0].target, 1u);
  EXPECT_EQ(ran.report.breaks[0].before, 0u);
  EXPECT_EQ(ran.report.breaks[0].place, static_cast<int>(kC));
  EXPECT_NEAR(ran.report.breaks[0].by, 180, 1e-9);
  EXPECT_TRUE(ran.positions[1].isAfterBreak);
}

TEST(ToolpathAtAPole, TurnsThereWhereThatMovesTheToolWithinTheTolerance) {
  // The tip lies in both axes: only the direction leaves its way while C turns, by B as it stands.
  ToolpathOptions options;
  options.axes[kC].largestStep = 360;
  options.tolerance = Tolerance{0.01, 0.1};
  Checked checked;
  expectOnTheWay(forkHead(0), {pointing({0, 0, 0}, 5, 30), pointing({9, 0, 0}, 5, 210)}, options,
                 1000, checked);
  EXPECT_EQ(checked.standing, 0u);
  EXPECT_GT(checked.added, 0u);
}

TEST(ToolpathAtAPole, SaysWhereAnAxisHasToTurnWhileTheToolStands) {
  // The part turns on C under a tool that tilts to one side alone. 100 mm off C the tip would leave
  // its place while C turns a half turn and X and Y go straight.
  MachineLines lines;
  lines.part = {rotary("C", 6, {0, 0, 1}, {}, -400, 400)};
  lines.head = linearXyz() + std::vector{rotary("B", 5, {0, 1, 0}, {}, 0, 110)};
  ToolpathOptions options;
  options.axes[kC].largestStep = 360;
  options.tolerance = Tolerance{0.01, 0.1};
  const Ran ran = runPath(lines.machine(),
                          {pointing({100, 0, 0}, 5, 30), pointing({109, 0, 0}, 5, 210)}, options);
  EXPECT_EQ(ran.report.breaks.size(), 0u);
  ASSERT_EQ(ran.report.standing.size(), 1u);
  EXPECT_EQ(ran.report.standing[0].target, 1u);
  EXPECT_NEAR(ran.report.standing[0].way, 0.5, 0.02);
  EXPECT_GE(ran.report.standing[0].behind, 0.5);
  EXPECT_EQ(ran.report.standing[0].place, static_cast<int>(kC));
  EXPECT_NEAR(ran.report.standing[0].by, 180, 1);
  EXPECT_FALSE(ran.report.isFitting());
}

TEST(ToolpathAtAPole, StandsAllTheWayBetweenOppositeDirections) {
  ToolpathOptions options;
  options.axes[kC].largestStep = 200;
  options.tolerance = Tolerance{0.01, 0.1};
  const Ran ran =
      runPath(forkHead(0), {pointing({0, 0, 0}, 90, 0), pointing({9, 0, 0}, 90, 180)}, options);
  EXPECT_EQ(ran.report.breakCount(), 0u);
  EXPECT_EQ(ran.report.added, 0u);
  ASSERT_EQ(ran.report.standing.size(), 1u);
  EXPECT_EQ(ran.report.standing[0].target, 1u);
  EXPECT_EQ(ran.report.standing[0].way, 0.0);
  EXPECT_EQ(ran.report.standing[0].behind, 1.0);
  EXPECT_EQ(ran.report.standing[0].place, static_cast<int>(kC));
  EXPECT_NEAR(ran.report.standing[0].by, 180, 1e-9);
  ASSERT_EQ(ran.positions.size(), 2u);
  EXPECT_TRUE(ran.positions[1].isAfterBreak);
}

TEST(ToolpathAtAPole, StandsNowhereForWhatIsBelowRounding) {
  ToolpathOptions options;
  options.tolerance = Tolerance{1e-30, 1e-30};
  const PathTarget target = pointing({1.1, 2.2, 3.3}, 17, 30);
  const Ran ran = runPath(forkHead(-110, -123.4), {target, target, target}, options);
  EXPECT_EQ(ran.positions.size(), 3u);
  EXPECT_TRUE(ran.report.isFitting());
}

// --- stopped between targets

/// The second call and all behind it say stop: the first one is the only block's search.
ToolpathReport stoppedGiving(const std::vector<PathTarget>& targets, const ToolpathOptions& options,
                             std::vector<PathPosition>& positions) {
  int calls = 0;
  return Toolpath(forkHead(-110, -200), options)
      .run(
          targets, [&](const PathPosition& p) { positions.push_back(p); },
          [&](const ToolpathProgress&) { return calls++ == 0; });
}

TEST(ToolpathBetween, AStopIsHeededOnTheWay) {
  // A turn by 80 degrees with the tip 200 mm off it leaves a straight line by far more than the
  // tolerance a thousand times.
  std::vector<PathTarget> targets{
      pointing({0, 0, 0}, 5, 30), pointing({9, 0, 0}, 85, 30), {{{0, 0, 0}, {0, 0, 0}}, 0}};
  ToolpathOptions options;
  options.tolerance = Tolerance{1e-7, 1e-7};
  for (const int jobs : {1, 3}) {
    options.jobs = jobs;
    std::vector<PathPosition> positions;
    const ToolpathReport report = stoppedGiving(targets, options, positions);
    EXPECT_TRUE(report.isStopped());
    EXPECT_LE(report.done, 1u);  // with threads it may be stopped before the first one
    EXPECT_EQ(report.positions, report.done);
    EXPECT_EQ(report.added, 0u);
    EXPECT_EQ(positions.size(), report.done);
    EXPECT_TRUE(report.unreached.empty());
    EXPECT_EQ(report.cost, 0.0);
  }
}

TEST(ToolpathBetween, AStopIsHeededBetweenTargetsOfOneBlock) {
  std::vector<PathTarget> targets;
  for (int i = 0; i < 1000; ++i) targets.push_back(pointing({0.01 * i, 0, 0}, i % 2 * 60, 30));
  ToolpathOptions options;
  options.tolerance = Tolerance{1, 1};
  for (const int jobs : {1, 3}) {
    options.jobs = jobs;
    std::vector<PathPosition> positions;
    const ToolpathReport report = stoppedGiving(targets, options, positions);
    EXPECT_GT(report.added, report.done);
    EXPECT_GT(report.done, 1u);
    EXPECT_LT(report.positions, 4000u);
    ASSERT_EQ(report.positions, positions.size());
    EXPECT_EQ(positions.back().target, report.done - 1);
    EXPECT_EQ(positions.back().way, 1.0);
    // B goes by 60 from target to target, X as the tip and the tool's 200 mm do.
    const double by = 200 * std::sin(60 * kDegree);
    EXPECT_NEAR(report.axes[kB].travel, 60.0 * static_cast<double>(report.done - 1), 1e-6);
    EXPECT_GT(report.cost, (60 + by / 2) * static_cast<double>(report.done - 1));
    EXPECT_LT(report.cost, (60 + 3 * by) * static_cast<double>(report.done - 1));
  }
}

TEST(ToolpathAtAPole, TurnsInSmallStepsBesideIt) {
  // A tenth of a degree beside the pole, C turns by nearly a half turn, with the tip 200 mm off it.
  const Machine machine = forkHead(0, -200);
  ToolpathOptions options;
  options.axes[kC].largestStep = 360;
  options.tolerance = Tolerance{0.05, 0.05};
  Checked checked;
  const std::vector<PathTarget> targets{pointing({0, 0, 0}, 5, 30), pointing({9, 0, 0}, 5, 208)};
  expectOnTheWay(machine, targets, options, 1000, checked);
  EXPECT_GT(checked.added, 5u);
  EXPECT_EQ(checked.standing, 0u);
}

}  // namespace
}  // namespace korvo::test
