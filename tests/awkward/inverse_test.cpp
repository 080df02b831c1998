// The library's own solvers and lists for targets of awkward machines, judged by a product of
// motions in long double.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "tests/awkward/Awkward.h"
#include "tests/support/Matchers.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValueBase;
using Numbers = std::vector<double>;

/// A direction off the reachable ones by this (rad) counts as on them, and is missed by it.
constexpr double kReachable = 1e-9;

/// Places of the axes that solvers may move, counted from the tool.
std::vector<PlacedAxis> freeAxes(const AwkwardMachine& drawn, bool isRotary) {
  std::vector<PlacedAxis> axes = chainOf(drawn.lines);
  std::erase_if(axes, [isRotary](const PlacedAxis& a) { return a.line.isRotary != isRotary; });
  std::reverse(axes.begin(), axes.end());
  return axes;
}

/// Where linear axis `axis` carries the tool to, at a position.
Exact directionAt(const AwkwardMachine& drawn, Numbers values, const PlacedAxis& axis) {
  values[axis.place] = 0;
  const Exact before = drawn.pose(values).point;
  values[axis.place] = 1 << 20;
  return (drawn.pose(values).point - before) * (1.0L / (1 << 20));
}

/// The size of the box that each three free linear axes span, in the order of the solver.
std::vector<double> volumesAt(const AwkwardMachine& drawn, const Numbers& values) {
  std::vector<Exact> a;
  for (const PlacedAxis& axis : freeAxes(drawn, false)) {
    a.push_back(directionAt(drawn, values, axis));
  }
  std::vector<double> out;
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (std::size_t j = i + 1; j < a.size(); ++j) {
      for (std::size_t k = j + 1; k < a.size(); ++k) {
        out.push_back(std::abs(static_cast<double>(dot(a[i], cross(a[j], a[k])))));
      }
    }
  }
  return out;
}

/// Of the axes that solve the point; 0 where none do, and where they are nearly dependent: then
/// they travel far, between the solves of a list, too, and the point is met to some 1e-5 mm only.
double solvingVolume(const AwkwardMachine& drawn, const Numbers& values) {
  constexpr double kIndependent = 1e-11, kNearly = 1e-6;
  for (const double volume : volumesAt(drawn, values)) {
    if (volume > kIndependent) return volume > kNearly ? volume : 0.0;
  }
  return 0.0;
}

class AwkwardInverse : public AwkwardTest {
 protected:
  template <typename Law>
  void onTargets(int machines, LimitKinds limits, Law law) {
    onMachines(
        machines, [limits](Dice& dice) { return awkwardMill(dice, limits); },
        [&](const AwkwardMachine& drawn, Dice& dice) {
          const auto machine = drawn.load();
          for (int i = 0; i < 3 && !HasFailure(); ++i) {
            Marks marks = drawn.marks, others;
            const Numbers made = awkwardValues(drawn, true, dice, marks);
            const Numbers start = awkwardValues(drawn, false, dice, others);
            tally.add(marks);
            note = "\nmade at" + textOf(made) + "\nstart" + textOf(start);
            law(drawn, *machine, made, start);
          }
        });
    tally.expectCommon({mark::almostParallel, mark::parallel, mark::onePoint, mark::almostMeeting,
                        mark::atOrigin, mark::huge, mark::tiny, mark::noLength, mark::turns,
                        mark::manyTurns, mark::slight, mark::nothing});
  }

  void expectDirection(const AwkwardMachine& drawn, const Numbers& made, const Numbers& values) {
    const auto miss =
        static_cast<double>(angleBetween(drawn.pose(values).direction, drawn.pose(made).direction));
    EXPECT_LE(miss, 1.001 * kReachable + drawn.directionBound(values) + drawn.directionBound(made))
        << textOf(values);
    mostRad = std::max(mostRad, miss);
  }

  /// Solving goes by increments: values far away at the start round what they are added to.
  void expectPoint(const AwkwardMachine& drawn, const KMachine& machine, const Numbers& made,
                   const Numbers& start, const Numbers& values) {
    const double volume = solvingVolume(drawn, values);
    if (volume == 0) return;
    const auto miss = static_cast<double>(length(drawn.tip(values) - drawn.tip(made)));
    // The axes travel 1 / volume times as far, and what each rounds adds up.
    const double bound = drawn.pointBound(machine, made) + drawn.pointBound(machine, start) +
                         drawn.pointBound(machine, values);
    EXPECT_LE(miss, 4 * bound / volume + kReachable * lengthOf(drawn)) << textOf(values);
    if (bound < 1e-8) mostMm = std::max(mostMm, miss * volume);
    ++points;
  }

  static double lengthOf(const AwkwardMachine& drawn) { return std::abs(drawn.lengths[0]); }

  double mostRad = 0, mostMm = 0;
  int points = 0, entries = 0;
};

TEST_F(AwkwardInverse, SolvedTargetsAreMet) {
  onTargets(1000, LimitKinds::none,
            [this](const AwkwardMachine& drawn, const KMachine& machine, const Numbers& made,
                   const Numbers& start) {
              const Position out = positionOf(machine);
              const Target target{rounded(drawn.tip(made)), rounded(drawn.pose(made).direction)};
              const int code = machine.getConfigPlus(*positionOf(machine, start), target.tip,
                                                     target.direction, *out);
              const int kinematicClass = machine.getKine(1).kinematicClass;
              if (kinematicClass < 1 || kinematicClass > 4) return;
              const Numbers values = machine.axisValues(*out);
              if (freeAxes(drawn, true).empty()) {
                EXPECT_EQ(code, -1);
                EXPECT_EQ(values, start);
                return;
              }
              if (code == -1 && values == start) return;
              expectDirection(drawn, made, values);
              if (code == 0) expectPoint(drawn, machine, made, start, values);
            });
  EXPECT_GT(points, tally.draws() / 3);
  if (std::getenv("KORVO_REPORT")) {
    std::printf("  %d points, %.1e mm, %.1e rad\n", points, mostMm, mostRad);
  }
}

bool isInside(const AwkwardMachine& drawn, const Numbers& values, bool isRotary, double by) {
  for (const PlacedAxis& axis : freeAxes(drawn, isRotary)) {
    const double value = values[axis.place];
    if (!(axis.line.min - by <= value && value <= axis.line.max + by)) return false;
  }
  return true;
}

bool isEqual(const Numbers& a, const Numbers& b) {
  return std::equal(a.begin(), a.end(), b.begin(),
                    [](double x, double y) { return std::abs(x - y) < 1e-5; });
}

void expectEachOnce(const std::vector<Numbers>& list) {
  for (std::size_t i = 0; i < list.size(); ++i) {
    for (std::size_t k = 0; k < i; ++k) EXPECT_FALSE(isEqual(list[i], list[k])) << textOf(list[i]);
  }
}

std::vector<Numbers> taken(const KMachine& machine, std::vector<KMachineValueBase*>& list) {
  std::vector<Numbers> rows;
  for (const KMachineValueBase* v : list) rows.push_back(machine.axisValues(*v));
  KMachineValueBase::_release(list);
  return rows;
}

TEST_F(AwkwardInverse, ListedAnglesTurnTheToolThereInsideTheLimitsOnceEach) {
  onTargets(200, LimitKinds::any,
            [this](const AwkwardMachine& drawn, const KMachine& machine, const Numbers& made,
                   const Numbers&) {
              std::vector<KMachineValueBase*> list;
              EXPECT_EQ(machine.getPossibleAngles(rounded(drawn.pose(made).direction), list, 1), 0);
              const std::vector<Numbers> rows = taken(machine, list);
              const int kinematicClass = machine.getKine(1).kinematicClass;
              if (kinematicClass < 1 || kinematicClass > 4) return;
              expectEachOnce(rows);
              for (const Numbers& values : rows) {
                EXPECT_TRUE(isInside(drawn, values, true, 0)) << textOf(values);
                expectDirection(drawn, made, values);
                ++entries;
              }
            });
  EXPECT_GT(entries, tally.draws());
}

TEST_F(AwkwardInverse, ListedPositionsMeetThePointInsideTheLinearLimits) {
  onTargets(200, LimitKinds::any,
            [this](const AwkwardMachine& drawn, const KMachine& machine, const Numbers& made,
                   const Numbers&) {
              std::vector<KMachineValueBase*> list;
              EXPECT_EQ(machine.getPossibleConfigs(rounded(drawn.pose(made).direction),
                                                   rounded(drawn.tip(made)), list, 1),
                        0);
              const int kinematicClass = machine.getKine(1).kinematicClass;
              const std::vector<Numbers> rows = taken(machine, list);
              if (kinematicClass < 1 || kinematicClass > 4) return;
              for (const Numbers& values : rows) {
                EXPECT_TRUE(isInside(drawn, values, false, 0)) << textOf(values);
                // Rotary limits are not looked at again: beside a pole the second solve passes
                // them.
                expectDirection(drawn, made, values);
                expectPoint(drawn, machine, made, values, values);
                ++entries;
              }
            });
  EXPECT_GT(entries, tally.draws() / 4);
}

}  // namespace
}  // namespace korvo::test
