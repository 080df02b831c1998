// A value that stands exactly on a limit is inside. What is solved for it misses it by rounding, to
// either side: the position that made the target has to be among the answers all the same, wherever
// the machine is not next to a singular position. KORVO_PROOF=full tries more.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "tests/solve/ArmSearch.h"
#include "tests/solve/DenseSearch.h"
#include "tests/solve/Machines.h"
#include "tests/solve/Proof.h"
#include "tests/support/Dice.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/SphericalArm.h"

namespace korvo::test {
namespace {

using zkin::KMachine;
using zkin::KMachineElem;

bool isRotary(const KMachineElem& axis) {
  return axis.getElemType() == KMachineElem::KMET_TYPE_AROT;
}

std::size_t placeOf(const KMachineElem& axis) {
  return static_cast<std::size_t>(axis.getValueIndex());
}

/// The axes of the current tool that are solved for.
std::vector<KMachineElem*> freeAxes(KMachine& machine) {
  std::vector<KMachineElem*> axes;
  for (const KMachineElem* e : machine.getToolChain(false, 0)) {
    if (e->getValueIndex() >= 0 && !e->isLocked())
      axes.push_back(machine.getElemByIndex(e->getElemIndex()));
  }
  return axes;
}

/// No axis has a limit, and of linear ones parallel to others all but three are locked.
void open(KMachine& machine) {
  int linear = 0;
  for (KMachineElem* axis : freeAxes(machine)) {
    axis->setMin(0, false);
    axis->setMax(0, false);
    if (!isRotary(*axis) && ++linear > 3) axis->setLocked(true);
  }
}

struct Made {
  Values values{};
  Values start{};  ///< Locked axes as in `values`, rotary ones less than half a turn beside.
};

Made anyPosition(KMachine& machine, Dice& dice) {
  Made made;
  for (int i = 0; i < machine.getAxisNum(); ++i) {
    const auto place = static_cast<std::size_t>(i);
    made.values[place] = made.start[place] = dice.between(-300, 300);
  }
  for (const KMachineElem* axis : freeAxes(machine)) {
    made.values[placeOf(*axis)] =
        isRotary(*axis) ? dice.between(-180, 180) : dice.between(-500, 500);
    made.start[placeOf(*axis)] = made.values[placeOf(*axis)] + dice.between(-170, 170);
  }
  return made;
}

/// Of an arm the whole frame is asked for.
std::vector<Solution> solved(const KMachine& machine, const Made& made, Limits limits) {
  const Solver solver{Machine(machine)};
  std::vector<Solution> out;
  if (solver.kind() == SolverKind::arm) {
    solver.solve(frameAt(machine, made.values), made.start, out, limits);
  } else {
    solver.solve(tipAt(machine, made.values), made.start, out, limits);
  }
  return out;
}

bool isMade(KMachine& machine, const Made& made, const Solution& s, double degrees = 1e-9) {
  const auto axes = freeAxes(machine);
  return std::all_of(axes.begin(), axes.end(), [&](const KMachineElem* axis) {
    const double by = std::abs(s.values[placeOf(*axis)] - made.values[placeOf(*axis)]);
    return by <= (isRotary(*axis) ? degrees : 1e-8);
  });
}

/// The volume of the ways of the linear axes for a millimetre; 1 of a machine without any.
double volumeOfWays(KMachine& machine, const Values& values) {
  std::vector<zgeo::UVec3d> ways;
  const zgeo::UVec3d tip = tipAt(machine, values).tip;
  for (const KMachineElem* axis : freeAxes(machine)) {
    if (isRotary(*axis)) continue;
    Values moved = values;
    moved[placeOf(*axis)] += 100;
    ways.push_back((tipAt(machine, moved).tip - tip) / 100);
  }
  return ways.size() < 3 ? 1.0 : std::abs(ways[0] * (ways[1] ^ ways[2]));
}

/// Next to singular positions rounding moves an axis by more than the 5e-11 degrees that count as
/// on its limit. Where an arm whose second and third joint are not parallel is next to one no
/// solution tells: there the angles themselves have to be sure.
bool isSure(KMachine& machine, const Made& made) {
  if (volumeOfWays(machine, made.values) < 0.3) return false;
  const auto all = solved(machine, made, Limits::ignored);
  return std::any_of(all.begin(), all.end(), [&](const Solution& s) {
    return isMade(machine, made, s, 2e-11) && !s.isFamily() && s.singular.directionRad > 0.3 &&
           s.singular.elbowRad > 0.3 && s.singular.shoulderMm > 100;
  });
}

class SolverOnLimit : public testing::Test {
 protected:
  /// Every free axis with its lower, then its upper limit where it stands, the other limit there,
  /// too, or somewhere behind.
  void expectFound(KMachine& machine, Dice& dice, const std::string& text) {
    constexpr double kWidths[] = {0, 1e-3, 90, 359, 400};
    open(machine);
    const Made made = anyPosition(machine, dice);
    ++drawn_;
    if (!isSure(machine, made)) return;
    ++sure_;
    largest_ = std::max(largest_, sizeOf(machine, made.values, tipAt(machine, made.values)));
    for (KMachineElem* axis : freeAxes(machine)) {
      const double value = made.values[placeOf(*axis)];
      for (const bool isLower : {true, false}) {
        const double width = kWidths[dice.below(5)];
        axis->setMin(isLower ? value : value - width, true);
        axis->setMax(isLower ? value + width : value, true);
        const auto found = solved(machine, made, Limits::kept);
        const auto of = std::find_if(found.begin(), found.end(),
                                     [&](const Solution& s) { return isMade(machine, made, s); });
        ++asked_;
        ASSERT_NE(of, found.end()) << text << "value " << axis->getValueIndex() << " on " << value
                                   << ", the other " << width << (isLower ? " above" : " below");
        EXPECT_GE(of->margin, 0);
        EXPECT_GE(of->values[placeOf(*axis)], axis->getMin());
        EXPECT_LE(of->values[placeOf(*axis)], axis->getMax());
      }
      axis->setMin(0, false);
      axis->setMax(0, false);
    }
  }

  void TearDown() override {
    if (!isReportWanted()) return;
    std::printf(
        "%d machines, %d of them not next to a singular position, the largest %.1f m; %d limits\n",
        drawn_, sure_, largest_ / 1000, asked_);
  }

  int drawn_ = 0;
  int sure_ = 0;
  int asked_ = 0;
  double largest_ = 0.0;  ///< Of the sure ones, mm.
};

TEST_F(SolverOnLimit, APositionOfAMillIsFound) {
  const int machines = proofCount(1000, 10000);
  for (const Topology topology :
       {Topology::mill, Topology::fourAxis, Topology::tableTable, Topology::headTable,
        Topology::headHead, Topology::gantry, Topology::guns}) {
    for (int i = 0; i < machines && !HasFailure(); ++i) {
      Choices choices(static_cast<unsigned>(i));
      Dice dice(static_cast<unsigned>(i));
      const MachineText text = machineText(choices, topology);
      expectFound(*loadMachine(text), dice, text.text);
    }
  }
  EXPECT_GT(asked_, 7 * machines);
}

TEST_F(SolverOnLimit, AFrameOfAnArmIsFound) {
  const int machines = proofCount(200, 5000);
  for (int i = 0; i < machines && !HasFailure(); ++i) {
    Dice dice(static_cast<unsigned>(i));
    const SphericalArm arm = sphericalArm(dice, {});
    expectFound(*arm.load(), dice, arm.text);
  }
  EXPECT_GT(asked_, machines);
}

}  // namespace
}  // namespace korvo::test
