// What is no target and no position: told by the result, never by a crash or by no end.
#include <cmath>
#include <limits>

#include "tests/awkward/Awkward.h"
#include "toolkit/solve/Solver.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineValueBase;
using Numbers = std::vector<double>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

double badNumber(Dice& dice) {
  constexpr double numbers[] = {kNan, kInf, -kInf};
  return numbers[dice.below(3)];
}

UVec3d spoilt(UVec3d v, Dice& dice) {
  double* const components[] = {&v.x, &v.y, &v.z};
  *components[dice.below(3)] = badNumber(dice);
  return v;
}

Numbers spoilt(Numbers values, Dice& dice) {
  values[static_cast<std::size_t>(dice.below(static_cast<int>(values.size())))] = badNumber(dice);
  return values;
}

/// What is wrong with a question: one of the four.
struct Question {
  Target target;
  Numbers start;
  bool isBadDirection = false, isBadStart = false;
};

Question badQuestion(const AwkwardMachine& drawn, Dice& dice, Marks& marks) {
  const Numbers made = awkwardValues(drawn, true, dice, marks);
  Question q{{rounded(drawn.tip(made)), rounded(drawn.pose(made).direction)},
             awkwardValues(drawn, true, dice, marks)};
  const int kind = dice.below(4);
  marks.insert(kind == 0 ? mark::nullDirection : mark::notFinite);
  q.isBadDirection = kind < 2;
  q.isBadStart = kind == 2;
  if (kind == 0) q.target.direction = {dice.oneIn(2) ? 0.0 : -0.0, 0, 0};
  if (kind == 1) q.target.direction = spoilt(q.target.direction, dice);
  if (kind == 2) q.start = spoilt(q.start, dice);
  if (kind == 3) q.target.tip = spoilt(q.target.tip, dice);
  return q;
}

class AwkwardBadInput : public AwkwardTest {
 protected:
  template <typename Draw, typename Law>
  void onQuestions(int machines, Draw draw, Law law) {
    onMachines(machines, draw, [&](const AwkwardMachine& drawn, Dice& dice) {
      const auto machine = drawn.load();
      for (int i = 0; i < 3 && !HasFailure(); ++i) {
        Marks marks = drawn.marks;
        const Question q = badQuestion(drawn, dice, marks);
        tally.add(marks);
        note = "\nstart" + textOf(q.start) + "\ntip" + textOf(q.target.tip) + "\ndirection" +
               textOf(q.target.direction);
        law(*machine, q);
      }
    });
    tally.expectCommon({mark::notFinite, mark::nullDirection, mark::almostParallel});
  }
};

AwkwardMachine any(Dice& dice) { return awkwardMachine(dice, LimitKinds::any); }

TEST_F(AwkwardBadInput, HasNoSolution) {
  onQuestions(300, any, [](const KMachine& machine, const Question& q) {
    const Solver solver{Machine(machine)};
    Values start{};
    std::copy(q.start.begin(), q.start.end(), start.begin());
    std::vector<Solution> out(1);
    for (const Limits limits : {Limits::kept, Limits::ignored}) {
      solver.solve(q.target, start, out, limits);
      EXPECT_TRUE(out.empty());
    }
    solver.approach(q.target, start, out);
    for (const Solution& s : out) {
      for (const double value : s.values) EXPECT_TRUE(std::isfinite(value));
    }
  });
}

/// Machines of rotary and linear axes alone refuse a direction that is none and stay at the start.
TEST_F(AwkwardBadInput, DirectionIsRefusedAndTheStartStays) {
  onQuestions(
      300, [](Dice& dice) { return awkwardMill(dice, LimitKinds::any); },
      [](const KMachine& machine, const Question& q) {
        const Position start = positionOf(machine, q.start);
        const Position out = positionOf(machine, Numbers(12, 12345.0));
        const int code = machine.getConfigPlus(*start, q.target.tip, q.target.direction, *out);
        if (!q.isBadDirection) return;
        EXPECT_EQ(code, -1);
        const int kinematicClass = machine.getKine(1).kinematicClass;
        if (kinematicClass < 1 || kinematicClass > 4) return;
        EXPECT_EQ(machine.axisValues(*out), q.start);
      });
}

TEST_F(AwkwardBadInput, ListsAreEmptyForNoDirection) {
  onQuestions(
      60, [](Dice& dice) { return awkwardMill(dice, LimitKinds::any); },
      [](const KMachine& machine, const Question& q) {
        std::vector<KMachineValueBase*> list;
        EXPECT_EQ(machine.getPossibleAngles(q.target.direction, list, 1), 0);
        if (q.isBadDirection) {
          EXPECT_TRUE(list.empty());
        }
        KMachineValueBase::_release(list);
        EXPECT_EQ(machine.getPossibleConfigs(q.target.direction, q.target.tip, list, 1), 0);
        if (q.isBadDirection) {
          EXPECT_TRUE(list.empty());
        }
        KMachineValueBase::_release(list);
      });
}

TEST_F(AwkwardBadInput, PositionsAreCountedMovedAndInterpolatedWithoutHarm) {
  onQuestions(300, any, [](const KMachine& machine, const Question& q) {
    const Position bad = positionOf(machine, q.start), zero = positionOf(machine);
    const Position out = positionOf(machine);
    std::vector<int> sides;
    EXPECT_GE(machine.checkLimitsFull(*bad, &sides), 0);
    EXPECT_EQ(static_cast<int>(sides.size()), machine.getAxisNum());
    EXPECT_EQ(machine.interpolate(*bad, *zero, 0.5, *out), 0);
    EXPECT_EQ(machine.interpolate(*zero, *bad, 0.5, *out), 0);
    UVec3d point, direction;
    EXPECT_TRUE(machine.getTool(*bad, point, direction, 1));
    KMachineValueBase* by = machine.axisTranslation(bad.get(), q.target.tip);
    EXPECT_NE(by, nullptr);
    KMachineValueBase::_release(by);
  });
}

}  // namespace
}  // namespace korvo::test
