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

}  // namespace
}  // namespace korvo::test
