#include "adapter/Axes.h"

#include <cmath>
#include <cstdint>
#include <limits>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "adapter/PositionList.h"
#include "tests/adapter/External.h"

namespace korvo::test {
namespace {

using Ombra::Kin::Entity;
using zkin::NMachine;

constexpr double kInfinite = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// C (register 3) of a fork, with a range.
class RangedAxis {
 public:
  RangedAxis(double min, double max) { edit().SetRange(min, max); }
  const Entity& operator*() const { return *machine_.GetKinematic().GetEntity(EntityId(4)); }
  Entity& edit() { return *machine_.EditKinematic().EditEntity(EntityId(4)); }

 private:
  Machine machine_ = headHead();
};

// --- whole turns

TEST(WholeTurns, GoUpToTheFirstAngleNotBelow) {
  EXPECT_EQ(zkin::raised(-190, -180), 170.0);
  EXPECT_EQ(zkin::raised(-180, -180), -180.0);
  EXPECT_EQ(zkin::raised(-1000, -180), 80.0);
  EXPECT_EQ(zkin::raised(500, -180), 500.0);
  EXPECT_EQ(zkin::raised(500, -kInfinite), 500.0);
}

TEST(WholeTurns, GoDownToTheFirstAngleNotAbove) {
  EXPECT_EQ(zkin::lowered(190, 180), -170.0);
  EXPECT_EQ(zkin::lowered(180, 180), 180.0);
  EXPECT_EQ(zkin::lowered(1000, 180), -80.0);
  EXPECT_EQ(zkin::lowered(-500, 180), -500.0);
}

TEST(WholeTurns, BringNearTheStartWithinAFullTurn) {
  EXPECT_EQ(zkin::nearStart(720, 0), 0.0);
  EXPECT_EQ(zkin::nearStart(-725, 0), -5.0);
  EXPECT_EQ(zkin::nearStart(350, 0), 350.0) << "less than a full turn away is near enough";
  EXPECT_EQ(zkin::nearStart(360, 0), 0.0);
  EXPECT_EQ(zkin::nearStart(-360, 10), 0.0);
}

TEST(WholeTurns, OfWhichThereAreVeryManyAreTakenOffExactly) {
  const double turns = 360.0 * (std::int64_t{1} << 40);  // a sixteenth of a degree is left to it
  EXPECT_EQ(zkin::lowered(turns + 10, 180), 10.0);
  EXPECT_EQ(zkin::raised(-turns - 10, -180), -10.0);
}

struct Fold {
  const char* name;
  double angle, min, max;
  bool fits;
  double folded;
};

class Folding : public testing::TestWithParam<Fold> {};

TEST_P(Folding, FindsTheTurnInTheRange) {
  const Fold& row = GetParam();
  const RangedAxis axis(row.min, row.max);
  double v = row.angle;
  EXPECT_EQ(zkin::fold(*axis, v), row.fits);
  if (row.fits) {
    EXPECT_NEAR(v, row.folded, 1e-9);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Angles, Folding,
    testing::Values(Fold{"Inside", 10, -180, 180, true, 10},
                    Fold{"ATurnAbove", 370, -180, 180, true, 10},
                    Fold{"ThreeTurnsBelow", -1070, -180, 180, true, 10},
                    Fold{"OutsideEveryTurn", 10, 20, 300, false, 0},
                    Fold{"OnTheTolerance", 180.00009, -180, 180, true, 180.00009},
                    Fold{"BeyondTheTolerance", 100.0002, 0, 100, false, 0},
                    Fold{"ARangeOfTwoTurns", 800, -360, 360, true, 80},
                    Fold{"FromBelowTwoTurns", -800, -360, 360, true, -80},
                    // One turn less is 40.00010000000003: one bit above the range, and again out.
                    Fold{"ABitAboveATurn", 400.00010000000003, -360, 40, true, -319.9999},
                    Fold{"ABitBelowATurn", -400.00010000000003, -40, 360, true, 319.9999},
                    Fold{"NoUpperBound", -800, -360, kInfinite, true, -80},
                    Fold{"NoBounds", 1e6, -kInfinite, kInfinite, true, 1e6},
                    Fold{"RangeUpsideDown", 10, 100, -100, false, 0},
                    Fold{"Infinite", kInfinite, -180, 180, false, 0},
                    Fold{"NotANumber", kNan, -180, 180, false, 0},
                    Fold{"RangeAtInfinity", 10, kInfinite, kInfinite, false, 0}),
    [](const auto& row) { return row.param.name; });

TEST(Folding, OfHugeAnglesEnds) {
  const RangedAxis axis(-180, 180);
  for (const double angle : {1e18, -1e18, 1e300, -1e300}) {
    double v = angle;
    EXPECT_FALSE(zkin::fold(*axis, v) && std::abs(v) > 181);
  }
}

TEST(Folding, WithoutARangeEveryFiniteAngleFits) {
  RangedAxis axis(-180, 180);
  axis.edit().ClearRange();
  double v = 5000;
  EXPECT_TRUE(zkin::fold(*axis, v));
  EXPECT_EQ(v, 5000.0);
  v = kNan;
  EXPECT_FALSE(zkin::fold(*axis, v));
  EXPECT_TRUE(zkin::isInRange(*axis, 1e9));
}

// --- starts

TEST(StartAngles, WithoutARangeAreNine) {
  RangedAxis axis(-1, 1);
  axis.edit().ClearRange();
  EXPECT_EQ(zkin::startAngles(*axis),
            (std::vector<double>{0, -360, 360, -180, 180, -90, 90, -270, 270}));
}

TEST(StartAngles, StayInTheRangeAndOneTurn) {
  EXPECT_EQ(zkin::startAngles(*RangedAxis(0, 90)), (std::vector<double>{45, 0, 90}));
  EXPECT_EQ(zkin::startAngles(*RangedAxis(-400, 400)),
            (std::vector<double>{0, -360, 360, -180, 180, -90, 90, -270, 270}));
  EXPECT_EQ(zkin::startAngles(*RangedAxis(-100, kInfinite)),
            (std::vector<double>{130, -100, 360, 180, -90, 90, 270}));
  EXPECT_TRUE(zkin::startAngles(*RangedAxis(10, -10)).empty());
  EXPECT_EQ(zkin::startAngles(*RangedAxis(50, 50)), (std::vector<double>{50}));
}

std::vector<const Entity*> rotaryOf(const Machine& machine) {
  return zkin::axesOf(machine, Ombra::Kin::Rotary);
}

TEST(StartGrid, TurnsTheFirstAxisFastest) {
  Machine machine = headHead();
  machine.EditKinematic().EditEntity(EntityId(4))->SetRange(0, 90);
  zkin::StartGrid grid(rotaryOf(machine));
  std::vector<std::pair<double, double>> starts;
  MachinePosition p = position({1, 1, 1, 1, 1});
  while (grid.next(p)) starts.emplace_back(p[Register(3)], p[Register(4)]);
  ASSERT_EQ(starts.size(), 27u);
  EXPECT_EQ(starts[0], std::make_pair(45.0, 0.0));
  EXPECT_EQ(starts[1], std::make_pair(0.0, 0.0));
  EXPECT_EQ(starts[2], std::make_pair(90.0, 0.0));
  EXPECT_EQ(starts[3], std::make_pair(45.0, -360.0));
  EXPECT_EQ(starts[26], std::make_pair(90.0, 270.0));
  EXPECT_EQ(p[Register(0)], 1.0) << "other registers are left";
}

TEST(StartGrid, OfNoAxesHasOneStartAndOfAnEmptyRangeNone) {
  MachinePosition p = position({0});
  zkin::StartGrid none({});
  EXPECT_TRUE(none.next(p));
  EXPECT_FALSE(none.next(p));
  Machine machine = headHead();
  machine.EditKinematic().EditEntity(EntityId(5))->SetRange(1, -1);
  EXPECT_FALSE(zkin::StartGrid(rotaryOf(machine)).next(p));
}

TEST(AxesOf, AKindAreInTheOrderOfTheEntities) {
  Machine machine;
  Ombra::Kin::Kinematic& k = machine.EditKinematic();
  k.AddAxis(rotary(L"C", 2, {0, 0, 1}));
  k.AddAxis(linear(L"X", 1, {1, 0, 0}));
  k.AddAxis(rotary(L"A", 0, {1, 0, 0}));
  k.AddAxis(rotary(L"IDLE", -1, {1, 0, 0}));
  k.AddHead(L"H", Matrix43());
  std::vector<std::wstring> names;
  for (const Entity* e : rotaryOf(machine)) names.push_back(e->GetEntityName());
  EXPECT_EQ(names, (std::vector<std::wstring>{L"C", L"A"}));
  EXPECT_EQ(zkin::axesOf(machine, Ombra::Kin::Linear).size(), 1u);
}

// --- each position once

RC_GTEST_PROP(PositionListLaws, KeepsWhatComparingWithAllKeeps, ()) {
  // Half tolerances about zero and about values in which a tolerance is lost.
  const auto value = rc::gen::map(
      rc::gen::pair(rc::gen::inRange(-4, 5), rc::gen::element(0.0, 359.99, -1e7, 1e13)),
      [](const std::pair<int, double>& v) { return v.second + v.first * 0.5e-4; });
  const auto rows = *rc::gen::container<std::vector<std::vector<double>>>(
      rc::gen::container<std::vector<double>>(2, value));
  Positions all;
  std::vector<std::vector<double>> expected;
  zkin::PositionList list(all.list);
  for (const std::vector<double>& row : rows) {
    MachinePosition p = position({row[0], row[1]});
    list.add(p);
    bool known = false;
    for (const auto& e : expected) {
      known = known || NMachine::_equals(p, position({e[0], e[1]}), 1e-4);
    }
    if (!known) expected.push_back(row);
  }
  RC_ASSERT(all.values() == expected);
}

TEST(PositionList, NotANumberEqualsNothing) {
  Positions positions;
  zkin::PositionList list(positions.list);
  list.add(position({kNan}));
  list.add(position({kNan}));
  list.add(position({0}));
  list.add(position({0, 0}));
  EXPECT_EQ(positions.list.size(), 4u);
}

}  // namespace
}  // namespace korvo::test
