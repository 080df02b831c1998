// Where awkward machines stand, against a product of motions in long double.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

#include "platform/zgeo/UMatrix.h"
#include "tests/awkward/Awkward.h"
#include "tests/support/MachineWriter.h"
#include "tests/support/Matchers.h"

namespace korvo::test {
namespace {

using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValueBase;
using Numbers = std::vector<double>;

constexpr int kPositions = 4;  // of each machine

class AwkwardForward : public AwkwardTest {
 protected:
  /// Machines at positions that need not be inside any limits.
  template <typename Law>
  void onPositions(int machines, Law law) {
    onMachines(
        machines, [](Dice& dice) { return awkwardMachine(dice, LimitKinds::any); },
        [&](const AwkwardMachine& drawn, Dice& dice) {
          const auto machine = drawn.load();
          ASSERT_NE(machine, nullptr);
          for (int i = 0; i < kPositions && !HasFailure(); ++i) {
            Marks marks = drawn.marks;
            const Numbers values = awkwardValues(drawn, false, dice, marks);
            tally.add(marks);
            note = "\nat" + textOf(values);
            law(drawn, *machine, values, dice);
          }
        });
    tally.expectCommon(
        {mark::almostParallel, mark::parallel,      mark::onePoint,      mark::almostMeeting,
         mark::atOrigin,       mark::huge,          mark::tiny,          mark::noLength,
         mark::turns,          mark::manyTurns,     mark::slight,        mark::nothing,
         mark::onLimit,        mark::oneUlp,        mark::equalLimits,   mark::crossedLimits,
         mark::farLimits,      mark::straightElbow, mark::straightWrist, mark::overFirst});
  }
};

void expectWithin(const UVec3d& is, const Exact& wanted, double bound, const char* what) {
  EXPECT_LE(static_cast<double>(length(exact(is) - wanted)), bound)
      << what << textOf(is) << " instead of" << textOf(rounded(wanted));
}

TEST_F(AwkwardForward, ToolStandsWhereItsAuthorsNumbersPutIt) {
  onPositions(
      1000, [](const AwkwardMachine& drawn, const KMachine& machine, const Numbers& values, Dice&) {
        const Position v = positionOf(machine, values);
        const double bound = drawn.pointBound(machine, values);
        for (int tool = 1; tool <= drawn.tools(); ++tool) {
          const ExactPose wanted = drawn.pose(values, tool);
          UVec3d point, direction;
          ASSERT_TRUE(machine.getTool(*v, point, direction, tool));
          expectWithin(point, wanted.point, bound, "point");
          expectWithin(direction, wanted.direction, drawn.directionBound(values), "direction");
        }
      });
}

TEST_F(AwkwardForward, LinesStayWithinAHundredThousandthOfAMillimetreForEachTool) {
  onMachines(
      3000, [](Dice& dice) { return awkwardMachine(dice, LimitKinds::none); },
      [this](const AwkwardMachine& drawn, Dice&) {
        const auto machine = drawn.load();
        tally.add(drawn.marks);
        for (const PlacedAxis& axis : chainOf(drawn.lines)) {
          if (!axis.line.isRotary) continue;
          const double away = axis.line.point.norm() +
                              machine->getElemByIndex(axis.line.number)->getElemPivot().norm();
          // Every tool's pass may move a point onto a neighbour's line that is no farther away.
          EXPECT_LE(offLine(*machine, axis.line), 1e-5 * drawn.tools() + 1e-15 * away)
              << axis.line.name;
        }
      });
  tally.expectCommon({mark::almostParallel, mark::almostMeeting, mark::tiny, mark::onePoint});
}

UVec3d column(const UMatrix& m, int i) { return {m(0, i), m(1, i), m(2, i)}; }

TEST_F(AwkwardForward, FramesOfToolAndTipAreTurnedAsTheToolIs) {
  onPositions(
      500, [](const AwkwardMachine& drawn, const KMachine& machine, const Numbers& values, Dice&) {
        const Position v = positionOf(machine, values);
        const double bound = drawn.pointBound(machine, values);
        const double angle = drawn.directionBound(values);
        const ExactPose wanted = drawn.pose(values);
        const UMatrix tool = machine.getMatrix_H2T(*v), tip = machine.getMatrix_TP2U(*v);
        for (int i = 0; i < 3; ++i) {
          expectWithin(column(tool, i), wanted.axes[static_cast<std::size_t>(i)], angle, "tool");
          expectWithin(column(tip, i), wanted.axes[static_cast<std::size_t>(i)], angle, "tip");
        }
        expectWithin(tool.getOrigin(), wanted.point, bound, "origin");
        expectWithin(tip.getOrigin(), drawn.tip(values), bound, "tip");
      });
}

TEST_F(AwkwardForward, MatricesAreRigidToTheLastDigits) {
  onPositions(500,
              [](const AwkwardMachine&, const KMachine& machine, const Numbers& values, Dice&) {
                std::vector<UMatrix> all;
                machine.getMatrices(*positionOf(machine, values), all);
                for (const UMatrix& m : all) {
                  const UVec3d x = column(m, 0), y = column(m, 1), z = column(m, 2);
                  EXPECT_LE(difference(x ^ y, z), 1e-12);
                  EXPECT_NEAR(x.norm(), 1, 1e-12);
                  EXPECT_NEAR(y.norm(), 1, 1e-12);
                }
              });
}

// --- limits

/// -1, 0 or 1 for every place, by the numbers of the definition.
std::vector<int> sidesOf(const AwkwardMachine& drawn, const Numbers& values, bool isRotary,
                         std::vector<int> sides) {
  for (const PlacedAxis& axis : chainOf(drawn.lines)) {
    if (axis.line.isRotary != isRotary) continue;
    const double value = values[axis.place];
    sides[axis.place] = value < axis.line.min ? -1 : value > axis.line.max ? 1 : 0;
  }
  return sides;
}

int countOf(const std::vector<int>& sides) {
  return static_cast<int>(std::count_if(sides.begin(), sides.end(), [](int s) { return s != 0; }));
}

TEST_F(AwkwardForward, LimitChecksCountWhatIsOutsideByAStepOfADouble) {
  onPositions(
      1000, [](const AwkwardMachine& drawn, const KMachine& machine, const Numbers& values, Dice&) {
        const Position v = positionOf(machine, values);
        const std::vector<int> zeros(values.size());
        const std::vector<int> rotary = sidesOf(drawn, values, true, zeros);
        const std::vector<int> linear = sidesOf(drawn, values, false, zeros);
        std::vector<int> out;
        EXPECT_EQ(machine.checkLimitsRot(*v, &out), countOf(rotary));
        EXPECT_EQ(out, rotary);
        EXPECT_EQ(machine.checkLimitsLin(*v, &out), countOf(linear));
        EXPECT_EQ(out, sidesOf(drawn, values, false, rotary));  // keeps what the others held
        EXPECT_EQ(machine.checkLimitsFull(*v, &out), countOf(rotary) + countOf(linear));
        EXPECT_EQ(out, sidesOf(drawn, values, false, rotary));
        EXPECT_EQ(machine.checkLimitsFull(*v, nullptr), countOf(rotary) + countOf(linear));
      });
}

// --- ways

/// Whole turns between `is` and `wanted`, exactly but for the rounding of their sum.
bool isSameAngle(double is, double wanted) {
  const double size = std::max({std::abs(is), std::abs(wanted), 360.0});
  return std::abs(std::remainder(is - wanted, 360.0)) <= 4e-16 * size;
}

TEST_F(AwkwardForward, WaysBeginAndEndWhereTheyShould) {
  onPositions(500, [](const AwkwardMachine& drawn, const KMachine& machine, const Numbers& from,
                      Dice& dice) {
    Marks marks;
    const Numbers to = awkwardValues(drawn, false, dice, marks);
    const Position a = positionOf(machine, from), b = positionOf(machine, to);
    const Position out = positionOf(machine);
    ASSERT_EQ(machine.interpolateRaw(*a, *b, 0, *out), 0);
    EXPECT_EQ(machine.axisValues(*out), from);
    ASSERT_EQ(machine.interpolateRaw(*a, *b, 1, *out), 0);
    for (const PlacedAxis& axis : chainOf(drawn.lines)) {
      const double start = from[axis.place], end = to[axis.place];
      const double value = std::as_const(*out)[static_cast<int>(axis.place)];
      EXPECT_TRUE(axis.line.isRotary ? isSameAngle(value, end) : value == end) << axis.line.name;
      // From farther apart than a turn and a half one turn less is no short way yet.
      if (axis.line.isRotary && std::abs(start - end) <= 540) {
        EXPECT_LE(std::abs(value - start), 180 * (1 + 1e-15)) << axis.line.name;
      }
    }
  });
}

/// The first three linear axes of the chain as they stand: how large a box they span.
double volumeAt(const AwkwardMachine& drawn, const Numbers& values) {
  std::vector<Exact> directions;
  const std::vector<PlacedAxis> chain = chainOf(drawn.lines);
  for (std::size_t i = 0; i < chain.size() && directions.size() < 3; ++i) {
    if (chain[i].line.isRotary) continue;
    MachineLines alone;
    alone.toolDirection = chain[i].line.direction;
    for (std::size_t k = 0; k < i; ++k) alone.head.push_back(chain[k].line);
    Numbers before(13);  // by the axes' own order
    for (std::size_t k = 0; k < i; ++k) {
      alone.head[k].number = static_cast<int>(k) + 1;
      before[k] = values[chain[k].place];
    }
    directions.push_back(poseAt(alone, before).direction);
  }
  if (directions.size() < 3) return 0;
  return std::abs(static_cast<double>(dot(directions[0], cross(directions[1], directions[2]))));
}

TEST_F(AwkwardForward, WaysKeepTheTipOnItsLine) {
  int kept = 0;
  onPositions(500, [&kept](const AwkwardMachine& drawn, const KMachine& machine,
                           const Numbers& from, Dice& dice) {
    Marks marks;
    const Numbers to = awkwardValues(drawn, false, dice, marks);
    const double t = dice.between(0, 1);
    const Position a = positionOf(machine, from), b = positionOf(machine, to);
    const Position out = positionOf(machine);
    ASSERT_EQ(machine.interpolate(*a, *b, t, *out), 0);
    const Numbers at = machine.axisValues(*out);
    const double volume = volumeAt(drawn, at);
    if (volume < 1e-2)
      return;  // nearly in one plane they carry the tip far and their error with it
    ++kept;
    const Exact wanted = drawn.tip(from) * (1 - static_cast<long double>(t)) +
                         drawn.tip(to) * static_cast<long double>(t);
    const double bound = drawn.pointBound(machine, from) + drawn.pointBound(machine, to) +
                         drawn.pointBound(machine, at);
    expectWithin(rounded(drawn.tip(at)), wanted, 1e-5 + 4 * bound / volume, "tip");
  });
  EXPECT_GT(kept, tally.draws() / 4);
}

// --- writing and reading again

/// The same definition as another author would type it.
std::string retyped(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '\n') out += "  # a comment, with = and ,\r\n\r\n* and a line of them\r";
    if (c == ',') out += "\t";
    out += c;
    if (c == '=' || c == ',') out += "  ";
  }
  return out;
}

std::vector<UMatrix> matricesOf(const KMachine& machine, const Numbers& values) {
  std::vector<UMatrix> all;
  machine.getMatrices(*positionOf(machine, values), all);
  return all;
}

TEST_F(AwkwardForward, ReadAgainFromOtherSpacingAnswersBitByBit) {
  onPositions(
      300, [](const AwkwardMachine& drawn, const KMachine& machine, const Numbers& values, Dice&) {
        const auto again = loadMachine(retyped(drawn.lines.text()), 1);
        ASSERT_NE(again, nullptr);
        for (int tool = 1; tool <= drawn.tools(); ++tool) {
          again->setTHELength(drawn.lengths[static_cast<std::size_t>(tool - 1)], tool);
        }
        const auto one = matricesOf(machine, values), two = matricesOf(*again, values);
        ASSERT_EQ(one.size(), two.size());
        for (std::size_t i = 0; i < one.size(); ++i) EXPECT_TRUE(isSameBits(one[i], two[i])) << i;
        for (const PlacedAxis& axis : chainOf(drawn.lines)) {
          const KMachineElem& e = *again->getElemByIndex(axis.line.number);
          EXPECT_EQ(e.hasMin() ? e.getMin() : -kNoLimit, axis.line.min);
          EXPECT_EQ(e.hasMax() ? e.getMax() : kNoLimit, axis.line.max);
        }
      });
}

TEST_F(AwkwardForward, WrittenFromMemoryAndReadAgainStandsTheSame) {
  onPositions(
      300, [](const AwkwardMachine& drawn, const KMachine& machine, const Numbers& values, Dice&) {
        const auto again = loadMachine(definitionText(machine), 1);
        ASSERT_NE(again, nullptr);
        for (int tool = 1; tool <= drawn.tools(); ++tool) {
          again->setTHELength(drawn.lengths[static_cast<std::size_t>(tool - 1)], tool);
          UVec3d point, direction;
          ASSERT_TRUE(again->getTool(*positionOf(*again, values), point, direction, tool));
          const ExactPose wanted = drawn.pose(values, tool);
          const double bound = drawn.pointBound(machine, values) + drawn.pointBound(*again, values);
          expectWithin(point, wanted.point, bound, "point");
          expectWithin(direction, wanted.direction, drawn.directionBound(values), "direction");
        }
      });
}

}  // namespace
}  // namespace korvo::test
