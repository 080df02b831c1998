// The choice among the pairs of turns that bring the tool onto a direction.
#include "tests/kinematics/KMachine_inverse.h"

// The library keeps this function to itself: its source is compiled in here.
#include "kinematics/inverse/Pairs.cpp"  // NOLINT(bugprone-suspicious-include)

namespace korvo::test {
namespace {

using zgeo::UVec2d;
using zgeo::UVec3d;
using zkin::KMachine;

using Pairs = std::vector<UVec2d>;

UVec2d chosen(Pairs pairs, int strategy) { return zkin::choosePair(pairs, strategy); }

void expectPair(const UVec2d& seen, double first, double second) {
  EXPECT_EQ(seen.x, first);
  EXPECT_EQ(seen.y, second);
}

// --- the rule itself

TEST(PairChoice, AFreeAngleTurnsNothing) {
  expectPair(chosen({UVec2d(-1000, 0.3)}, 0), 0, 0.3);
  expectPair(chosen({UVec2d(0.3, -1000)}, 0), 0.3, 0);
}

TEST(PairChoice, OnlyAnglesCloserThanTheToleranceAreFree) {
  for (const double side : {-1.0, 1.0}) {
    expectPair(chosen({UVec2d(-1000 + side * 0.999e-5, 0.3)}, 2), 0, 0.3);
    const double far = -1000 + side * 1.001e-5;
    expectPair(chosen({UVec2d(far, 0.3)}, 2), far, 0.3);
    expectPair(chosen({UVec2d(0.3, far)}, 1), 0.3, far);
  }
}

TEST(PairChoice, FreeAnglesCostNothing) {
  const Pairs pairs = {UVec2d(0.1, 0.2), UVec2d(-1000, 3), UVec2d(3, -1000)};
  expectPair(chosen(pairs, 1), 0, 3);
  expectPair(chosen(pairs, 2), 3, 0);
  expectPair(chosen(pairs, 0), 0, 3);
}

TEST(PairChoice, LooksAtTheAngleThatTheStrategyNames) {
  const Pairs pairs = {UVec2d(rad(10), rad(50)), UVec2d(rad(80), rad(20))};
  expectPair(chosen(pairs, 1), rad(10), rad(50));
  expectPair(chosen(pairs, 2), rad(80), rad(20));
  for (const int other : {0, 3, -1, 99}) expectPair(chosen(pairs, other), rad(10), rad(50));
}

TEST(PairChoice, TheEarlierOfEqualCostsWins) {
  expectPair(chosen({UVec2d(-0.1, 0.5), UVec2d(0.1, 0.2)}, 1), -0.1, 0.5);
  expectPair(chosen({UVec2d(0.5, 0.1), UVec2d(0.2, -0.1)}, 2), 0.5, 0.1);
  expectPair(chosen({UVec2d(0.5, 0.1), UVec2d(-0.1, 0.2)}, 0), 0.5, 0.1);
}

// --- on a machine: a head with C (value 4) carrying A (value 3). C = c, A = a and C = c + 180,
// A = -a give the same direction (sin c sin a, -cos c sin a, cos a).

UVec3d alongCA(double c, double a) {
  return {std::sin(rad(c)) * std::sin(rad(a)), -std::cos(rad(c)) * std::sin(rad(a)),
          std::cos(rad(a))};
}

const std::string kCA = kXYZ + "rotation=C,6,z,0,0,0,0,0\nrotation=A,4,x,0,0,0,0,0\n";

struct ChoiceRow {
  const char* name;
  int strategy;
  double startC, startA;  ///< The turns below are from here.
  double targetC, targetA;
  double c, a;  ///< Expected.
};

std::ostream& operator<<(std::ostream& out, const ChoiceRow& row) { return out << row.name; }

class HeadCA : public InverseTest, public testing::WithParamInterface<ChoiceRow> {};

TEST_P(HeadCA, TakesTheWayOfItsStrategy) {
  const ChoiceRow& row = GetParam();
  KMachine machine = head(kCA);
  machine.setStrategy(row.strategy);
  const Solved s = solve(machine, {0, 0, 0, row.startA, row.startC}, UVec3d(),
                         alongCA(row.targetC, row.targetA));
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{0, 0, 0, row.a, row.c}, 1e-9));
}

INSTANTIATE_TEST_SUITE_P(
    Ways, HeadCA,
    testing::Values(
        // turns (10, 50) and (-170, 20)
        ChoiceRow{"FirstAngle", 1, 0, -35, 10, 15, 10, 15},
        ChoiceRow{"SecondAngle", 2, 0, -35, 10, 15, -170, -15},
        ChoiceRow{"SmallestAngleIsAFirst", 0, 0, -35, 10, 15, 10, 15},
        // turns (30, 50) and (-150, 20)
        ChoiceRow{"FirstAngleAgain", 1, 0, -35, 30, 15, 30, 15},
        ChoiceRow{"SecondAngleAgain", 2, 0, -35, 30, 15, -150, -15},
        ChoiceRow{"SmallestAngleIsASecond", 0, 0, -35, 30, 15, -150, -15},
        ChoiceRow{"UnknownStrategiesTakeTheSmallest", 42, 0, -35, 30, 15, -150, -15},
        // from another turn: the same turns
        ChoiceRow{"StartPicksTheTurn", 1, 360, -395, 10, 15, 370, -345},
        // turns (60, 30) and (-120, -30): equal second angles, the smaller sum comes first
        ChoiceRow{"EqualSecondAngles", 2, 0, 0, 60, 30, 60, 30},
        ChoiceRow{"EqualSmallestAngles", 0, 0, 0, 60, 30, 60, 30},
        ChoiceRow{"EqualSecondAnglesOtherSide", 2, 0, 0, 120, 30, -60, -30},
        // turns (90, 30) and (-90, -30): everything equal, a second angle from 0 up comes first
        ChoiceRow{"AllEqual1", 1, 0, 0, 90, 30, 90, 30},
        ChoiceRow{"AllEqual2", 2, 0, 0, 90, 30, 90, 30},
        ChoiceRow{"AllEqual0", 0, 0, 0, 90, 30, 90, 30},
        ChoiceRow{"AllEqualOtherSide", 1, 0, 0, -90, 30, -90, 30},
        // the direction of the outer axis: it stays, the inner one turns
        ChoiceRow{"FreeFirstAngleStays", 0, 25, 30, 0, 0, 25, 0},
        ChoiceRow{"FreeFirstAngleStays1", 1, -300, 30, 0, 0, -300, 0},
        ChoiceRow{"FreeFirstAngleStays2", 2, 25, -400, 0, 0, 25, -360},
        ChoiceRow{"NothingToTurn", 0, 25, 0, 77, 0, 25, 0}),
    [](const auto& row) { return std::string(row.param.name); });

using HeadAC = InverseTest;

TEST_F(HeadAC, AnInnerAxisAlongTheToolStays) {
  const KMachine machine = head(kXYZ + "rotation=A,4,x,0,0,0,0,0\nrotation=C,6,z,0,0,0,0,0\n");
  const Solved s =
      solve(machine, {0, 0, 0, 0, 33}, UVec3d(), UVec3d(0, -std::sin(rad(20)), std::cos(rad(20))));
  EXPECT_EQ(s.code, 0);
  EXPECT_THAT(s.v, AllNear(Numbers{0, 0, 0, 20, 33}, 1e-9));
}

}  // namespace
}  // namespace korvo::test
