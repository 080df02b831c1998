// Ways between targets of awkward machines: every move that is said to stay on its way does.
#include <algorithm>
#include <cmath>

#include "tests/awkward/Awkward.h"
#include "tests/path/Paths.h"
#include "tests/path/Way.h"

namespace korvo::test {
namespace {

using Numbers = std::vector<double>;

class AwkwardPaths : public AwkwardTest {
 protected:
  /// The most that the tool is off the way at some places of a move, in shares of the tolerance.
  static double shareOf(const AwkwardMachine& drawn, const Way& way, const Values& a,
                        const Values& b, const Tolerance& tolerance) {
    constexpr int kSamples = 8;
    double most = 0.0;
    for (int i = 0; i <= kSamples; ++i) {
      Numbers at(static_cast<std::size_t>(drawn.axes()));
      for (std::size_t k = 0; k < at.size(); ++k) at[k] = a[k] + (b[k] - a[k]) * i / kSamples;
      most = std::max({most, way.mm(rounded(drawn.tip(at))) / tolerance.mm,
                       way.degrees(rounded(drawn.pose(at).direction)) / tolerance.degrees});
    }
    return most;
  }

  int moves = 0, added = 0;
};

TEST_F(AwkwardPaths, KeepTheToolOnItsWay) {
  onMachines(
      80, [](Dice& dice) { return awkwardMill(dice, LimitKinds::ordered); },
      [this](const AwkwardMachine& drawn, Dice& dice) {
        const auto machine = drawn.load();
        std::vector<PathTarget> targets;
        Marks marks = drawn.marks;
        double farthest = 1000;
        for (int i = 0; i < 4; ++i) {
          const Numbers at = awkwardValues(drawn, true, dice, marks);
          note += "\nat" + textOf(at);
          targets.push_back({{rounded(drawn.tip(at)), rounded(drawn.pose(at).direction)}});
          farthest = std::max(farthest, targets.back().target.tip.norm());
        }
        tally.add(marks);
        ToolpathOptions options;
        options.tolerance = Tolerance{1e-3 * farthest, 2.0};
        const Ran ran = runPath(Machine(*machine), targets, options);
        const PathPosition* last = nullptr;
        std::size_t lastTarget = 0;
        for (const PathPosition& p : ran.positions) {
          if (last && !p.isAfterBreak) {
            ASSERT_EQ(p.target, lastTarget + 1);
            const Way way(targets[lastTarget].target, targets[p.target].target);
            EXPECT_LE(shareOf(drawn, way, last->values, p.values, *options.tolerance), 1 + 1e-9)
                << "target " << p.target << " at " << p.way;
            ++moves;
          }
          last = &p;
          added += p.isAdded();
          if (!p.isAdded()) lastTarget = p.target;
        }
      });
  tally.expectCommon({mark::almostParallel, mark::parallel, mark::onePoint, mark::almostMeeting,
                      mark::atOrigin, mark::huge, mark::tiny, mark::noLength, mark::turns,
                      mark::manyTurns, mark::slight, mark::nothing, mark::farLimits});
  EXPECT_GT(moves, tally.draws());
  EXPECT_GT(added, tally.draws());
}

}  // namespace
}  // namespace korvo::test
