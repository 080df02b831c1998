// The best of all: against every choice there is, and against who takes the nearest each time.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

#include "tests/path/Paths.h"
#include "tests/solve/Proof.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/SphericalArm.h"

namespace korvo::test {
namespace {

/// Wishes of any kind.
ToolpathOptions drawnOptions(const Machine& machine, Dice& dice) {
  ToolpathOptions options;
  for (AxisWish& wish : options.axes) {
    if (dice.oneIn(3)) wish.weight = dice.between(0, 5);
    if (dice.oneIn(3)) wish.largestStep = dice.between(5, 200);
    if (dice.oneIn(4)) {
      wish.margin = dice.between(0, 100);
      wish.marginCost = dice.between(0, 3);
    }
  }
  if (dice.oneIn(2)) {
    Values start{};
    for (const Joint& joint : JointChain::of(*machine).joints) {
      if (joint.place >= 0) start[static_cast<std::size_t>(joint.place)] = drawn(joint, dice);
    }
    options.start = start;
  }
  return options;
}

/// The least cost of all choices, by trying them all.
class EveryChoice {
 public:
  EveryChoice(const Rules& rules, const ToolpathOptions& options,
              const std::vector<std::vector<Solution>>& lists)
      : rules_(rules), lists_(lists) {
    go(0, options.start ? &*options.start : nullptr, true, 0, 0.0);
  }

  Counted best() const { return best_; }

 private:
  void go(std::size_t next, const Values* last, bool isFree, std::size_t breaks, double way) {
    if (next == lists_.size()) {
      if (breaks < best_.breaks || (breaks == best_.breaks && way < best_.way)) {
        best_ = {breaks, way};
      }
      return;
    }
    if (lists_[next].empty()) return go(next + 1, last, true, breaks + 1, way);
    for (const Solution& s : lists_[next]) {
      const bool isBreak = last && !isFree && rules_.isBreak(*last, s.values);
      const double by = last ? rules_.travel(*last, s.values) : 0.0;
      go(next + 1, &s.values, false, breaks + (isBreak ? 1 : 0),
         way + by + rules_.margins(s.values));
    }
  }

  const Rules& rules_;
  const std::vector<std::vector<Solution>>& lists_;
  Counted best_{~std::size_t{0}, 0.0};
};

TEST(ToolpathBest, CostsWhatTheBestOfAllChoicesCosts) {
  const int wanted = proofCount(1000, 20000);
  int paths = 0, broken = 0, gaps = 0;
  for (unsigned seed = 0; paths < wanted; ++seed) {
    Dice dice(seed);
    const Machine machine = fiveAxes(dice).machine();
    const ToolpathOptions options = drawnOptions(machine, dice);
    const std::vector<PathTarget> targets = wandering(machine, dice, 1 + dice.below(6));
    const Solver solver(machine);
    std::vector<std::vector<Solution>> lists;
    double choices = 1;
    for (const PathTarget& target : targets) {
      lists.push_back(solutionsOf(solver, target.target, options.start.value_or(Values{})));
      choices *= std::max<double>(1.0, static_cast<double>(lists.back().size()));
    }
    if (choices > 2e5) continue;
    ++paths;
    const Counted best = EveryChoice(Rules(machine, options), options, lists).best();
    const Ran ran = runPath(machine, targets, options);
    ASSERT_EQ(ran.report.breakCount(), best.breaks) << seed;
    ASSERT_NEAR(ran.report.cost, best.way, 1e-7 + 1e-9 * best.way) << seed;
    const Counted given = Rules(machine, options).count(ran.atTargets());
    ASSERT_EQ(given.breaks, best.breaks) << seed;
    ASSERT_NEAR(given.way, best.way, 1e-7 + 1e-9 * best.way) << seed;
    broken += best.breaks > ran.report.unreached.size();
    gaps += !ran.report.unreached.empty();
  }
  EXPECT_GT(broken, wanted / 20);
  EXPECT_GT(gaps, wanted / 50);
  if (isReportWanted()) std::printf("%d paths, %d broken, %d with gaps\n", paths, broken, gaps);
}

// --- nearest-first

double plainDistance(const Values& a, const Values& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += std::abs(a[i] - b[i]);
  return sum;
}

/// Takes of every target the position nearest to the last.
std::vector<std::optional<Values>> nearestFirst(const Machine& machine,
                                                const std::vector<PathTarget>& targets, Values at,
                                                const SolverOptions& options) {
  const Solver solver(machine, options);
  std::vector<std::optional<Values>> out;
  for (const PathTarget& target : targets) {
    const std::vector<Solution> all = solutionsOf(solver, target.target, at);
    const auto nearest =
        std::min_element(all.begin(), all.end(), [&](const auto& a, const auto& b) {
          return plainDistance(a.values, at) < plainDistance(b.values, at);
        });
    if (nearest == all.end()) {
      out.emplace_back();
      continue;
    }
    at = nearest->values;
    out.emplace_back(at);
  }
  return out;
}

/// What a hundred paths came to.
struct Tally {
  int paths = 0, fewer = 0, shorter = 0;
};

void compare(const Machine& machine, unsigned seed, int count, Tally& tally) {
  Dice dice(seed);
  ToolpathOptions options;
  options.solver.toolTurns = 4;
  Values start{};
  for (const Joint& joint : JointChain::of(*machine).joints) {
    if (joint.place >= 0) start[static_cast<std::size_t>(joint.place)] = drawn(joint, dice);
  }
  options.start = start;
  const std::vector<PathTarget> targets = wandering(machine, dice, count);
  const Rules rules(machine, options);
  const auto nearestWay = nearestFirst(machine, targets, start, options.solver);
  const Counted nearest = rules.count(nearestWay);
  const Ran ran = runPath(machine, targets, options);
  const Counted ours = rules.count(ran.atTargets());
  ASSERT_EQ(ours.breaks, ran.report.breakCount()) << seed;
  ASSERT_LE(ours.breaks, nearest.breaks) << seed;
  const std::size_t leftOut =
      static_cast<std::size_t>(std::count(nearestWay.begin(), nearestWay.end(), std::nullopt));
  ASSERT_LE(ran.report.unreached.size(), leftOut) << seed;
  // A way that leaves out a target which can be reached is no way of the toolpath.
  if (ours.breaks == nearest.breaks && ran.report.unreached.size() == leftOut) {
    ASSERT_LE(ours.way, nearest.way + 1e-6 + 1e-9 * nearest.way) << seed;
  }
  ++tally.paths;
  tally.fewer += ours.breaks < nearest.breaks;
  tally.shorter += ours.breaks == nearest.breaks && ours.way < nearest.way - 1e-6;
}

void report(const char* what, const Tally& tally) {
  if (!isReportWanted()) return;
  std::printf("%s: %d paths, %d with fewer breaks, %d shorter\n", what, tally.paths, tally.fewer,
              tally.shorter);
}

TEST(ToolpathBest, IsNeverWorseThanNearestFirstOnFiveAxes) {
  Tally tally;
  for (int i = 0; i < proofCount(500, 5000); ++i) {
    Dice dice(static_cast<unsigned>(i));
    compare(fiveAxes(dice).machine(), static_cast<unsigned>(i) + 1000, 40, tally);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(tally.fewer + tally.shorter, tally.paths / 10);
  report("five axes", tally);
}

class ToolpathOfEveryTopology : public testing::TestWithParam<int> {};

TEST_P(ToolpathOfEveryTopology, IsNeverWorseThanNearestFirst) {
  Tally tally;
  for (int i = 0; i < proofCount(60, 600); ++i) {
    Choices choices(static_cast<unsigned>(i));
    const auto machine = loadMachine(machineText(choices, static_cast<Topology>(GetParam())));
    compare(Machine(*machine), static_cast<unsigned>(i), 25, tally);
    if (HasFatalFailure()) return;
  }
  report(nameOf(static_cast<Topology>(GetParam())), tally);
}

INSTANTIATE_TEST_SUITE_P(Generated, ToolpathOfEveryTopology, testing::Range(0, kTopologies),
                         [](const auto& kind) {
                           return std::string(nameOf(static_cast<Topology>(kind.param)));
                         });

TEST(ToolpathBest, IsNeverWorseThanNearestFirstOnArms) {
  Tally tally;
  for (int i = 0; i < proofCount(60, 600); ++i) {
    Dice dice(static_cast<unsigned>(i));
    const SphericalArm arm = sphericalArm(
        dice, {.isUsual = i % 3 == 0, .hasLimits = i % 2 == 0, .isCoaxial = i % 4 != 0});
    compare(Machine(*arm.load()), static_cast<unsigned>(i), 15, tally);
    if (HasFatalFailure()) return;
  }
  report("arms", tally);
}

}  // namespace
}  // namespace korvo::test
