// Targets that leave a rotary axis free: the member given is the nearest of all inside the limits,
// against a scan of the free axis by what `KMachine::getTool` answers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "tests/solve/DenseSearch.h"
#include "tests/solve/Machines.h"
#include "tests/solve/Proof.h"
#include "tests/support/Dice.h"

namespace korvo::test {
namespace {

using std::numbers::pi;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

constexpr double kStep = 0.01;  // of the scan, degrees
constexpr std::size_t kB = 3, kC = 4;

/// Which axis a target leaves free.
enum class Free {
  only,    ///< The one rotary axis: the tool lies along it.
  first,   ///< The one nearest the part: the second one turns the tool onto it.
  second,  ///< The one nearest the tool: the tool lies along it.
  both,    ///< About two parallel lines only the sum of the turns counts: the second is free.
};

UVec3d anyDirection(Dice& dice) {
  while (true) {
    const UVec3d v(dice.between(-1, 1), dice.between(-1, 1), dice.between(-1, 1));
    if (v.norm() > 0.1 && v.norm() < 1) return v.normalised();
  }
}

UVec3d turned(const UVec3d& v, const UVec3d& axis, double degrees) {
  const double angle = degrees * pi / 180;
  return v * std::cos(angle) + (axis ^ v) * std::sin(angle) +
         axis * ((axis * v) * (1 - std::cos(angle)));
}

UVec3d anyPoint(Dice& dice) {
  return {dice.between(-400, 400), dice.between(-400, 400), dice.between(-400, 400)};
}

/// A machine, a position of it inside all limits whose target leaves an axis free, and a start.
struct FamilyCase {
  std::unique_ptr<KMachine> machine;
  Values made{};
  Values start{};
  std::size_t free = kC;
  double sense = 0.0;  ///< By which the other axis follows; 0 where it stays.
};

void limit(KMachine& machine, const Values& made, Dice& dice) {
  for (const KMachineElem* e : machine.getToolChain(false, 0)) {
    if (e->getValueIndex() < 0) continue;
    KMachineElem& axis = *machine.getElemByIndex(e->getElemIndex());
    const bool isRotary = e->getElemType() == KMachineElem::KMET_TYPE_AROT;
    const double value = made[static_cast<std::size_t>(e->getValueIndex())];
    const double reach = isRotary ? 300 : 400;
    const auto aside = [&] { return std::exp(dice.between(std::log(0.5), std::log(reach))); };
    axis.setMin(value - aside(), !dice.oneIn(3));
    axis.setMax(value + aside(), !dice.oneIn(3));
  }
}

FamilyCase caseOf(Free free, Dice& dice) {
  FamilyCase one;
  for (std::size_t i = 0; i < 5; ++i) {
    one.made[i] = dice.between(-200, 200);
    one.start[i] = dice.between(-250, 250);
  }
  const UVec3d axis1 = anyDirection(dice);
  const UVec3d axis2 =
      free == Free::both ? axis1 * (dice.oneIn(2) ? 1.0 : -1.0) : anyDirection(dice);
  MachineLines lines{{}, linearXyz(), anyDirection(dice), anyPoint(dice)};
  if (free == Free::first) lines.toolDirection = turned(axis1, axis2, -one.made[kB]);
  if (free == Free::second) lines.toolDirection = axis2;
  if (free == Free::only) lines.toolDirection = axis1;
  if (dice.oneIn(2)) lines.toolDirection = -lines.toolDirection;
  if (free == Free::second || free == Free::both) one.free = kB;
  if (free == Free::both) one.sense = -(axis1 * axis2 > 0 ? 1.0 : -1.0);
  const AxisLine first = rotary("C", 6, axis1, anyPoint(dice));
  const AxisLine second = rotary("B", 5, axis2, anyPoint(dice));
  if (free == Free::only) {
    one.free = kB;  // the fourth of four axes
    (dice.oneIn(2) ? lines.part : lines.head).push_back(first);
  } else if (dice.oneIn(2)) {
    lines.head = linearXyz() + std::vector{first, second};
  } else {
    dice.oneIn(2) ? lines.head.push_back(second) : lines.part.push_back(second);
    lines.part.push_back(first);
  }
  one.machine = lines.load();
  limit(*one.machine, one.made, dice);
  return one;
}

const KMachineElem& axisAt(const KMachine& machine, std::size_t place) {
  return *machine.getAxisElem(static_cast<int>(place) + 1);
}

bool isInside(const KMachineElem& axis, double value) {
  return (!axis.hasMin() || value >= axis.getMin()) && (!axis.hasMax() || value <= axis.getMax());
}

/// Whether some full turn of the other axis is inside.
bool hasTurnInside(const KMachineElem& axis, double value, double start) {
  for (int turn = -4; turn <= 4; ++turn) {
    const double v = value + 360 * (turn + std::round((start - value) / 360));
    const bool isNear = (axis.hasMin() && axis.hasMax()) || std::abs(v - start) <= 360;
    if (isNear && isInside(axis, v)) return true;
  }
  return false;
}

/// Whether the member with the free axis at `degrees` is inside all limits.
bool isMember(const FamilyCase& one, const DenseSearch& search, const Target& target,
              double degrees) {
  if (!isInside(axisAt(*one.machine, one.free), degrees)) return false;
  Values values = one.made;
  values[one.free] = degrees;
  if (one.sense != 0.0) {
    const std::size_t other = one.free == kB ? kC : kB;
    values[other] += one.sense * (degrees - one.made[one.free]);
    if (!hasTurnInside(axisAt(*one.machine, other), values[other], one.start[other])) return false;
  }
  return search.isCarriedInside(target, 1e-7, values);
}

/// The distance from the start of the nearest member that the scan meets; negative for none.
double scannedDistance(const FamilyCase& one, const DenseSearch& search, const Target& target) {
  const double start = one.start[one.free];
  for (int k = 0; k <= 36000; ++k) {
    for (const double degrees : {start + k * kStep, start - k * kStep}) {
      if (isMember(one, search, target, degrees)) return k * kStep;
    }
  }
  return -1.0;
}

/// Whether the position that made the target is one that is listed: of axes without both limits
/// only the turns within one turn of the start are.
bool isMadeListed(const FamilyCase& one) {
  const int last = one.machine->getAxisNum();
  for (std::size_t i = kB; i < static_cast<std::size_t>(last); ++i) {
    if (!hasTurnInside(axisAt(*one.machine, i), one.made[i], one.start[i])) return false;
  }
  return true;
}

/// What is wrong with the family of a case, or "".
std::string faultOf(const FamilyCase& one) {
  const Solver solver{Machine(*one.machine)};
  const DenseSearch search(*one.machine, one.start);
  const Target target = tipAt(*one.machine, one.made);
  // Another member or another turn of the axis that is not free may stand in the list, too.
  double nearest = kNoLimit;
  for (const Solution& s : solutionsOf(solver, target, one.start)) {
    if (s.freePlaces[0] != static_cast<int>(one.free)) return "another axis free";
    const Target reached = tipAt(*one.machine, s.values);
    const double size = sizeOf(*one.machine, s.values, target) / 1000;
    if (reached.tip.distanceTo(target.tip) > 1e-9 * size) return "point missed";
    if (radiansBetween(reached.direction, target.direction) > 1e-10) return "direction missed";
    for (std::size_t i = 0; i < (one.machine->getAxisNum() == 5 ? 5u : 4u); ++i) {
      if (!isInside(axisAt(*one.machine, i), s.values[i])) return "outside";
    }
    nearest = std::min(nearest, std::abs(s.values[one.free] - one.start[one.free]));
  }
  const double scanned = scannedDistance(one, search, target);
  if (!isMadeListed(one)) return "";
  if (!(nearest < kNoLimit)) return "no member";
  if (scanned >= 0 && nearest > scanned + 1e-9) return "a nearer member";
  return "";
}

class SolverFamily : public testing::TestWithParam<Free> {};

TEST_P(SolverFamily, GivesTheMemberNearestToTheStart) {
  const int count = proofCount(25, 2500);
  for (int i = 0; i < count; ++i) {
    Dice dice(static_cast<unsigned>(i));
    ASSERT_EQ(faultOf(caseOf(GetParam(), dice)), "") << i;
  }
}

std::string freeName(const testing::TestParamInfo<Free>& free) {
  constexpr const char* names[] = {"OneAxis", "FirstAxis", "SecondAxis", "ParallelAxes"};
  return names[static_cast<int>(free.param)];
}

INSTANTIATE_TEST_SUITE_P(AxisFree, SolverFamily,
                         testing::Values(Free::only, Free::first, Free::second, Free::both),
                         freeName);

// --- other than three free linear axes

AxisLine limited(AxisLine axis, double min, double max) {
  axis.min = min, axis.max = max;
  return axis;
}

// X = 50 cos C: at least 49.99999 only within some hundredths of a degree, which W beside Z leaves
// as it is.
TEST(SolverFamilyOfFourLinearAxes, IsFoundWhereItIsNarrow) {
  MachineLines lines;
  lines.part = {rotary("C", 6, {0, 0, 1}, {}, -360, 360)};
  lines.head = {linear("W", 7, {0, 0, 1}, -100, 100), linear("X", 1, {1, 0, 0}, 49.99999, 60),
                linear("Y", 2, {0, 1, 0}, -100, 100), linear("Z", 3, {0, 0, 1}, -100, 100),
                rotary("B", 5, {0, 1, 0}, {}, -10, 370)};
  Values start{};
  start[4] = 33.5;
  const auto found = solutionsOf(Solver(lines.machine()), {{50, 0, 0}, {0, 0, 1}}, start);
  ASSERT_EQ(found.size(), 2u);
  for (const std::size_t k : {0u, 1u}) {
    EXPECT_TRUE(found[k].isFamily());
    EXPECT_NEAR(found[k].values[4], std::acos(49.99999 / 50) * 180 / pi, 1e-6);
    EXPECT_NEAR(found[k].values[3], k == 0 ? 0 : 360, 1e-9);
  }
}

// Y turns with C: y = Y cos C is 3 with Y from 2 to 4. At 90 degrees, nearer to the start, Y moves
// along X and carries the tool nowhere.
TEST(SolverFamilyOfTurningLinearAxes, IsNotTheFlatPlaceNearerToTheStart) {
  MachineLines lines;
  lines.head = {linear("X", 1, {1, 0, 0}, -100, 100), rotary("C", 6, {0, 0, 1}, {}, -180, 180),
                linear("Y", 2, {0, 1, 0}, 2, 4), linear("Z", 3, {0, 0, 1}, -100, 100)};
  for (const double side : {-1.0, 1.0}) {
    Values start{};
    start[3] = 100 * side;
    const auto found = solutionsOf(Solver(lines.machine()), {{5, 3, 0}, {0, 0, 1}}, start);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_TRUE(found[0].isFamily());
    EXPECT_NEAR(found[0].values[3], side * std::acos(0.75) * 180 / pi, 1e-6);
    EXPECT_NEAR(found[0].values[1], 4, 1e-9);
  }
}

// The position that made the target is a member inside limits that leave it little way.
TEST(SolverFamilyOfFourLinearAxes, HasNoFartherMemberThanTheOneThatMadeIt) {
  const int count = proofCount(100, 10000);
  for (int i = 0; i < count; ++i) {
    Dice dice(static_cast<unsigned>(i));
    MachineLines lines;
    lines.toolDirection = anyDirection(dice);
    lines.toolPoint = anyPoint(dice);
    Values made{}, start{};
    for (std::size_t k = 0; k < 5; ++k) made[k] = dice.between(-200, 200);
    const auto narrow = [&](AxisLine axis) {
      const double value = made[static_cast<std::size_t>(axis.number - 1)];
      return limited(std::move(axis), value - dice.between(0.001, 1),
                     value + dice.between(0.001, 1));
    };
    lines.head = {narrow(linear("W", 4, anyDirection(dice)))};
    for (const AxisLine& axis : linearXyz()) lines.head.push_back(narrow(axis));
    const AxisLine turn = rotary("C", 5, lines.toolDirection, anyPoint(dice), -400, 400);
    (dice.oneIn(2) ? lines.part : lines.head).push_back(turn);
    start[4] = dice.between(-380, 380);
    const auto machine = lines.load();
    const auto found = solutionsOf(Solver{Machine(*machine)}, tipAt(*machine, made), start);
    ASSERT_EQ(found.size(), 1u) << i;
    EXPECT_TRUE(found[0].isFamily()) << i;
    EXPECT_LE(std::abs(found[0].values[4] - start[4]), std::abs(made[4] - start[4]) + 1e-6) << i;
  }
}

MachineLines turningTableUnderXz() {
  MachineLines lines;
  lines.part = {rotary("C", 6, {0, 0, 1}, {}, -180, 180)};
  lines.head = {linear("X", 1, {1, 0, 0}), linear("Z", 3, {0, 0, 1})};
  return lines;
}

// Without Y the table turns the point to where X gets: on either side of its centre.
TEST(SolverTwoLinearAxes, HaveTheRotaryAxisSolvedThatTheDirectionLeavesFree) {
  const Solver solver(turningTableUnderXz().machine());
  const auto found = solutionsOf(solver, {{10, 20, 5}, {0, 0, 1}}, {});
  ASSERT_EQ(found.size(), 2u);
  const double angle = std::atan2(20, 10) * 180 / pi, radius = std::hypot(10, 20);
  for (const Solution& s : found) {
    const bool isBefore = s.values[0] > 0;
    EXPECT_NEAR(s.values[0], isBefore ? radius : -radius, 1e-9);
    EXPECT_NEAR(s.values[1], 5, 1e-12);
    EXPECT_NEAR(std::abs(s.values[2]), isBefore ? angle : 180 - angle, 1e-9);
    EXPECT_FALSE(s.isFamily());
    EXPECT_LE(s.residual.pointMm, 1e-12);
  }
  EXPECT_NE(found[0].values[0] > 0, found[1].values[0] > 0);
}

TEST(SolverTwoLinearAxes, LeaveTheRotaryAxisFreeOnItsOwnLine) {
  Values start{};
  start[2] = 70;
  const Solver solver(turningTableUnderXz().machine());
  const auto found = solutionsOf(solver, {{0, 0, 5}, {0, 0, 1}}, start);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_TRUE(found[0].isFamily());
  EXPECT_EQ(found[0].values[2], 70);
  EXPECT_NEAR(found[0].values[0], 0, 1e-12);
}

// The circle of the tip and the plane of the two axes have two points in common, each once in each
// of the three turns from -540 to 540.
TEST(SolverTwoLinearAxes, HaveThePositionThatMadeTheTargetAndItsOtherSide) {
  const int count = proofCount(100, 10000);
  for (int i = 0; i < count; ++i) {
    Dice dice(static_cast<unsigned>(i));
    MachineLines lines;
    lines.toolDirection = anyDirection(dice);
    lines.toolPoint = anyPoint(dice);
    lines.head = {linear("X", 1, anyDirection(dice)), linear("Y", 2, anyDirection(dice))};
    const AxisLine turn = rotary("C", 6, lines.toolDirection, anyPoint(dice), -540, 540);
    (dice.oneIn(2) ? lines.part : lines.head).push_back(turn);
    Values made{};
    for (std::size_t k = 0; k < 3; ++k) made[k] = dice.between(-200, 200);
    const auto machine = lines.load();
    const auto found = solutionsOf(Solver{Machine(*machine)}, tipAt(*machine, made), {});
    EXPECT_EQ(found.size(), 6u) << i;
    EXPECT_TRUE(std::any_of(found.begin(), found.end(), [&](const Solution& s) {
      return std::abs(s.values[0] - made[0]) + std::abs(s.values[1] - made[1]) < 1e-6 &&
             std::abs(s.values[2] - made[2]) < 1e-6;
    })) << i;
  }
}

// A radial arm: X alone on a turning head reaches a point of its plane from either side.
TEST(SolverOneLinearAxis, HasTheRotaryAxisSolved) {
  MachineLines lines;
  lines.head = {rotary("C", 6, {0, 0, 1}, {}, -180, 180), linear("X", 1, {1, 0, 0}, -100, 100)};
  const Solver solver(lines.machine());
  const auto found = solutionsOf(solver, {{30, 40, 0}, {0, 0, 1}}, {});
  ASSERT_EQ(found.size(), 2u);
  for (const Solution& s : found) EXPECT_NEAR(std::abs(s.values[0]), 50, 1e-9);
  EXPECT_TRUE(solutionsOf(solver, {{30, 40, 1}, {0, 0, 1}}, {}).empty());
}

}  // namespace
}  // namespace korvo::test
