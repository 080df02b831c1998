// Travel limits, interpolation and translation; expected values are worked in the comments.
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <utility>

#include "tests/support/LoadText.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/Matchers.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValue;

/// A table C under the part, X Y Z in the head; the tool at (0, 0, 50), along z.
constexpr const char* kTableC =
    "frame\nrotation=C,4,z,0,0,0,0,0\npart=x,y,0,0,0\nlien=BATI\n"
    "axis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\ntool=z,0,0,50\n"
    "limits=X,-100,200\nlimits=C,-90,180\ncourseminimum=Y,-10\n";

using Value4 = KMachineValue<4>;

Value4 at(double x, double y, double z, double c) {
  Value4 v;
  v[0] = x, v[1] = y, v[2] = z, v[3] = c;
  return v;
}

class OnTable : public LoadingTest {
 protected:
  OnTable() : machine(load(kTableC, 1)) { machine.setCurrentTool(1); }

  UVec3d tip(const Value4& v) {
    UVec3d point, dir;
    EXPECT_TRUE(machine.getTool(v, point, dir, 1));
    return point - dir * machine.getTHELength(1);
  }

  KMachine machine;
};

// --- limits

class Limits : public OnTable {};

TEST_F(Limits, ValuesOnALimitAreInside) {
  EXPECT_EQ(machine.checkLimitsFull(at(-100, -10, 0, -90), nullptr), 0);
  EXPECT_EQ(machine.checkLimitsFull(at(200, 0, 0, 180), nullptr), 0);
}

TEST_F(Limits, AreCountedOnceHoweverOftenItIsFinalised) {
  ASSERT_EQ(machine.finalise(), 0);
  trace.claimAll(L"e[");
  EXPECT_EQ(machine.checkLimitsFull(at(201, 0, 0, 181), nullptr), 2);
}

TEST_F(Limits, NoToleranceIsGiven) {
  EXPECT_EQ(machine.checkLimitsLin(at(200 + 1e-9, 0, 0, 0), nullptr), 1);
  EXPECT_EQ(machine.checkLimitsLin(at(-100 - 1e-9, 0, 0, 0), nullptr), 1);
  EXPECT_EQ(machine.checkLimitsRot(at(0, 0, 0, 180 + 1e-9), nullptr), 1);
}

TEST_F(Limits, EntriesSayWhichSide) {
  std::vector<int> out;
  EXPECT_EQ(machine.checkLimitsFull(at(-101, -11, 1e9, 181), &out), 3);
  EXPECT_EQ(out, (std::vector<int>{-1, -1, 0, 1}));
  EXPECT_EQ(machine.checkLimitsFull(at(201, 0, 0, -91), &out), 2);
  EXPECT_EQ(out, (std::vector<int>{1, 0, 0, -1}));
}

TEST_F(Limits, AnAxisWithAMinimumOnlyIsNeverAbove) {
  EXPECT_EQ(machine.checkLimitsLin(at(0, 1e300, 0, 0), nullptr), 0);
  EXPECT_EQ(machine.checkLimitsLin(at(0, -10.5, 0, 0), nullptr), 1);
}

TEST_F(Limits, CrossedLimitsCountOnceAsBelow) {
  machine.getElemByName(L"Z")->setMin(10, true);
  machine.getElemByName(L"Z")->setMax(-10, true);
  std::vector<int> out;
  EXPECT_EQ(machine.checkLimitsLin(at(0, 0, 0, 0), &out), 1);  // below 10 and above -10
  EXPECT_EQ(out[2], -1);
}

// Deliberate: the single checks resize the list and leave the entries of other axes.
TEST_F(Limits, SingleChecksKeepTheEntriesOfOtherAxes) {
  std::vector<int> out = {7, 7, 7, 7, 7};
  EXPECT_EQ(machine.checkLimitsRot(at(-101, 0, 0, -91), &out), 1);
  EXPECT_EQ(out, (std::vector<int>{7, 7, 7, -1}));
  EXPECT_EQ(machine.checkLimitsLin(at(-101, 0, 0, 0), &out), 1);
  EXPECT_EQ(out, (std::vector<int>{-1, 0, 0, -1}));
  out.resize(1);
  EXPECT_EQ(machine.checkLimitsRot(at(0, 0, 0, 0), &out), 0);
  EXPECT_EQ(out, (std::vector<int>{-1, 0, 0, 0}));
}

TEST_F(Limits, FullCheckStartsFromZeros) {
  std::vector<int> out = {7, 7, 7, 7, 7, 7};
  EXPECT_EQ(machine.checkLimitsFull(at(0, 0, 0, 0), &out), 0);
  EXPECT_EQ(out, std::vector<int>(4, 0));
}

TEST_F(Limits, ShortPositionsAreCheckedByTheirLastValue) {
  KMachineValue<2> v;
  v[0] = 0, v[1] = -91;  // reads as Z = C = -91: Y is below -10, C below -90
  std::vector<int> out;
  EXPECT_EQ(machine.checkLimitsFull(v, &out), 2);
  EXPECT_EQ(out, (std::vector<int>{0, -1}));
}

TEST_F(Limits, WhatIsNoNumberIsInside) {
  EXPECT_EQ(machine.checkLimitsFull(at(NAN, NAN, NAN, NAN), nullptr), 0);
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(machine.checkLimitsFull(at(inf, -inf, inf, -inf), nullptr), 3);
}

TEST_F(Limits, RotaryCheckOfALinearMachineOnlyResizes) {
  const KMachine mill = load(
      "frame\npart=x,y\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\n"
      "tool=z,0,0,0\nlimits=X,0,1\n",
      1);
  std::vector<int> out = {5};
  EXPECT_EQ(mill.checkLimitsRot(KMachineValue<3>(), &out), 0);
  EXPECT_EQ(out, (std::vector<int>{5, 0, 0}));
}

// --- the short way

struct WayRow {
  const char* name;
  double from, to, t, expected;
};

class ShortWay : public OnTable, public testing::WithParamInterface<WayRow> {};

TEST_P(ShortWay, IsTurned) {
  const WayRow& row = GetParam();
  Value4 out;
  EXPECT_EQ(machine.interpolateRaw(at(0, 0, 0, row.from), at(0, 0, 0, row.to), row.t, out), 0);
  EXPECT_NEAR(out[3], row.expected, 1e-12);
}

INSTANTIATE_TEST_SUITE_P(C, ShortWay,
                         testing::Values(WayRow{"ForwardsOverHalf", 170, -170, 0.5, 180},
                                         WayRow{"BackwardsOverHalf", -170, 170, 0.5, -180},
                                         WayRow{"ThroughZero", 10, 350, 0.5, 0},
                                         WayRow{"AQuarterThroughZero", 10, 350, 0.25, 5},
                                         WayRow{"HalfATurnAsGiven", 0, 180, 0.5, 90},
                                         WayRow{"HalfATurnBackAsGiven", 180, 0, 0.5, 90},
                                         WayRow{"OneTurnOnly", 0, 720, 0.5, 180},  // 0 to 720 - 360
                                         WayRow{"Plain", 10, 50, 0.25, 20},
                                         WayRow{"Start", 170, -170, 0, 170},
                                         WayRow{"End", 170, -170, 1, 190},
                                         WayRow{"Beyond", 0, 10, 2, 20}),
                         [](const auto& row) { return row.param.name; });

TEST_F(OnTable, LinearAxesGoStraight) {
  Value4 out;
  machine.interpolateRaw(at(0, -10, 350, 0), at(10, 10, 10, 0), 0.25, out);
  EXPECT_DOUBLE_EQ(out[0], 2.5);
  EXPECT_DOUBLE_EQ(out[1], -5);
  EXPECT_DOUBLE_EQ(out[2], 265);  // no short way for lengths
}

TEST_F(OnTable, PlacesBeyondTheMachineAreLeft) {
  KMachineValue<6> out;
  out[4] = 4, out[5] = 5;
  machine.interpolateRaw(at(1, 1, 1, 1), at(2, 2, 2, 2), 0.5, out);
  EXPECT_EQ(out[4], 4);
  EXPECT_EQ(out[5], 5);
}

// --- the tip on its line

class Interpolation : public OnTable {};

// From C = 0 with the tool at part point (100, 0) to C = 90 with the tool at (0, 100): the axes
// alone would go along the arc.
TEST_F(Interpolation, KeepsTheTipOnTheStraightLine) {
  const Value4 from = at(100, 0, 0, 0), to = at(100, 0, 0, 90);
  const UVec3d a = tip(from), b = tip(to);
  ASSERT_GT((a - b).norm(), 100);
  for (const double t : {0.0, 0.1, 0.25, 0.5, 0.75, 1.0}) {
    Value4 out;
    EXPECT_EQ(machine.interpolate(from, to, t, out), 0);
    EXPECT_THAT(tip(out), Near(a * (1 - t) + b * t, 1e-12)) << t;
    EXPECT_DOUBLE_EQ(out[3], 90 * t);
  }
}

TEST_F(Interpolation, MayWriteOverItsStart) {
  Value4 from = at(100, 0, 0, 0), expected;
  const Value4 to = at(100, 0, 0, 90);
  machine.interpolate(from, to, 0.5, expected);
  machine.interpolate(from, to, 0.5, from);
  EXPECT_TRUE(from == std::as_const(expected));
}

TEST_F(Interpolation, OfALinearMachineIsThatOfTheAxes) {
  KMachine mill = load(
      "frame\npart=x,y\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\n"
      "tool=z,0,0,0\n",
      1);
  mill.setCurrentTool(1);
  KMachineValue<3> from, to, raw, out;
  from[0] = 1, to[1] = 5, to[2] = -7;
  mill.interpolateRaw(from, to, 0.3, raw);
  mill.interpolate(from, to, 0.3, out);
  EXPECT_EQ(0, std::memcmp(raw.get(), out.get(), 3 * sizeof(double)));
}

// Halfway along a turn by a on a radius of 100 the arc is 100 (1 - cos(a / 2)) = 12.5 a^2 beside
// the line: 9e-6 mm for 8.485e-4 radians and 12e-6 mm for 9.798e-4.
TEST_F(Interpolation, LeavesATipThatIsNearItsWay) {
  for (const double radians : {8.485e-4, 9.798e-4}) {
    const Value4 from = at(100, 0, 0, 0), to = at(100, 0, 0, radians * 180 / std::numbers::pi);
    Value4 out;
    machine.interpolate(from, to, 0.5, out);
    const double beside = (tip(out) - (tip(from) + tip(to)) * 0.5).norm();
    if (radians < 9e-4) {
      EXPECT_EQ(out[0], 100);
      EXPECT_NEAR(beside, 9e-6, 1e-8);
    } else {
      EXPECT_LE(beside, 1e-12);
    }
  }
}

TEST_F(Interpolation, LockedAxesDoNotCorrect) {
  machine.getElemByName(L"Y")->setLocked(true);  // two free linear axes: no correction
  Value4 raw, out;
  const Value4 from = at(100, 0, 0, 0), to = at(100, 0, 0, 90);
  machine.interpolateRaw(from, to, 0.5, raw);
  machine.interpolate(from, to, 0.5, out);
  EXPECT_TRUE(raw == std::as_const(out));
}

// Deliberate: W along X is the first linear axis of the chain, so W, X, Y are taken: dependent.
TEST_F(Interpolation, CorrectsOnceWithTheFirstThreeLinearAxes) {
  KMachine gantry = load(
      "frame\nrotation=C,5,z,0,0,0,0,0\npart=x,y,0,0,0\nlien=BATI\n"
      "axis=W,4,x\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\ntool=z,0,0,50\n",
      1);
  gantry.setCurrentTool(1);
  KMachineValue<5> from, to, raw, out;
  from[0] = to[0] = 100, to[4] = 90;
  gantry.interpolateRaw(from, to, 0.5, raw);
  gantry.interpolate(from, to, 0.5, out);
  EXPECT_TRUE(raw == std::as_const(out));
  gantry.getElemByName(L"W")->setLocked(true);  // X, Y, Z then
  gantry.interpolate(from, to, 0.5, out);
  EXPECT_FALSE(raw == std::as_const(out));
}

TEST_F(Interpolation, WithoutAToolMovesTheAxes) {
  KMachine none = load(kTableC, 1);  // current tool unset
  Value4 raw, out;
  const Value4 from = at(100, 0, 0, 0), to = at(100, 0, 0, 90);
  EXPECT_EQ(none.interpolate(from, to, 0.5, out), 0);
  none.interpolateRaw(from, to, 0.5, raw);
  EXPECT_TRUE(raw == std::as_const(out));
}

TEST_F(Interpolation, MeansTheTipOfALongTool) {
  machine.setTHELength(30, 1);
  const Value4 from = at(100, 0, 0, 0), to = at(-20, 40, 10, 60);
  Value4 out;
  machine.interpolate(from, to, 0.5, out);
  EXPECT_THAT(tip(out), Near((tip(from) + tip(to)) * 0.5, 1e-12));
}

// --- translation

class Translation : public OnTable {
 protected:
  Position increments(const Value4& v, const UVec3d& delta) {
    return Position(machine.axisTranslation(&v, delta));
  }
};

// At C = 90 the tool has turned a quarter about the part: the part's x is the head's -y... the tool
// moves along part x when X and Y move by the delta turned back.
TEST_F(Translation, ShiftsTheTipByTheDelta) {
  const Value4 v = at(10, 20, 30, 90);
  const UVec3d delta(3, -4, 5);
  const Position by = increments(v, delta);
  ASSERT_TRUE(by);
  Value4 moved = v;
  moved += *by;
  EXPECT_THAT(tip(moved), Near(tip(v) + delta, 1e-12));
  EXPECT_NEAR((*by)[3], 0, 1e-12);
  EXPECT_NEAR((*by)[2], 5, 1e-12);
}

TEST_F(Translation, KeepsTheLengthOfTheTool) {
  machine.setTHELength(25, 1);
  const Value4 v = at(10, 20, 30, 45);
  Value4 moved = v;
  moved += *increments(v, UVec3d(1, 2, 3));
  EXPECT_THAT(tip(moved), Near(tip(v) + UVec3d(1, 2, 3), 1e-12));
}

TEST_F(Translation, NullWithoutAPosition) {
  EXPECT_EQ(machine.axisTranslation(nullptr, UVec3d(1, 0, 0)), nullptr);
  const Value4 v;
  EXPECT_EQ(KMachine().axisTranslation(&v, UVec3d(1, 0, 0)), nullptr);
  EXPECT_TRUE(trace.claim(noPositionLine(0)));
}

// Deliberate: a machine without rotary axes is never solved: the start comes back, minus itself.
TEST_F(Translation, OfAThreeAxisMachineIsZero) {
  KMachine mill = load(
      "frame\npart=x,y\nlien=BATI\naxis=X,1,x\naxis=Y,2,y\naxis=Z,3,z\n"
      "tool=z,0,0,0\n",
      1);
  mill.setCurrentTool(1);
  KMachineValue<3> v;
  v[0] = 5, v[1] = 6;
  const Position by(mill.axisTranslation(&v, UVec3d(1, 0, 0)));
  EXPECT_TRUE(*by == std::as_const(static_cast<const zkin::KMachineValueBase&>(
                         *Position(mill.newMachineValue()))));
  EXPECT_TRUE(trace.claim(L"getConfig failed (no rotations)"));
}

}  // namespace
}  // namespace korvo::test
