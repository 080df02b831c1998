// From a tool point and direction to axis values; all positions that have a direction.

#include <memory>
#include <new>

#include "kinematics/KMachine.h"
#include "kinematics/inverse/Limits.h"
#include "kinematics/inverse/MachineSolve.h"
#include "kinematics/inverse/Seeds.h"
#include "kinematics/inverse/SolutionList.h"
#include "platform/zgeo/UTools.h"

using zgeo::UTools;
using zgeo::UVec3d;

namespace zkin {

// --- one position

int KMachine::getConfigPlus(const KMachineValueBase& current, const UVec3d& pos, const UVec3d& dir,
                            KMachineValueBase& out) const try {
  return solve(solveView(), current, pos, dir, out);
} catch (const std::bad_alloc&) {
  return -1;
}

int KMachine::solve(const SolveView& view, const KMachineValueBase& current, const UVec3d& pos,
                    const UVec3d& dir, KMachineValueBase& out) const try {
  const UVec3d n = dir.normalised();
  updateRecords(view.machine, current, view.chain);
  // Deliberate: without a record of the current tool the last one found anywhere decides
  // (WithoutCurrentTool.TheRecordOfTheLastToolLeadsToFailure).
  const _sUKine kine = recordOf(-1);
  const Target target{pos, n.normalised()};
  if (kine.kinematicClass >= 1 && kine.kinematicClass <= 4) {
    return solveRotaryAndLinear(view, current, target, out);
  }
  if (kine.kinematicClass != 5) return -1;
  out = current;
  if (!view.tool) return -1;
  // Deliberate: -1, no ball joint, passes too, and is the part's index: the part is the wrist then
  // (ArmProtocol.WithoutABallJointThePartIsTakenForTheWrist).
  const bool isArm = kine.armType == 1 && kine.rotuleIndex != 0;
  const int code = isArm ? solveArm(view, current, target, kine.rotuleIndex, mac2uni_, out) : 0;
  // Deliberate: with a wrist to turn the answer is 0, whatever the arm solver said
  // (ArmRecords.AWristAnswersZeroWhereTheArmRefuses), and the wrist of an arm is turned a second
  // time (ArmSolver.SecondTurnOfTheWristChangesNothing).
  return turnWrist(view, n, out) ? 0 : code;
} catch (const std::bad_alloc&) {
  return -1;
}

int KMachine::getConfig(const KMachineValueBase& current, const UVec3d& pos, const UVec3d& dir,
                        KMachineValueBase& out) const try {
  return solveRotaryAndLinear(solveView(), current, {pos, dir.normalised()}, out);
} catch (const std::bad_alloc&) {
  return -1;
}

int KMachine::solveConfig1(const KMachineValueBase& current, const UVec3d& pos, const UVec3d& dir,
                           KMachineValueBase& out) const try {
  const SolveView view = solveView();
  if (!view.tool) return -1;
  updateRecords(view.machine, current, view.chain);
  const Target target{pos, dir.normalised()};
  return solveArm(view, current, target, recordOf(-1).rotuleIndex, mac2uni_, out);
} catch (const std::bad_alloc&) {
  return -1;
}

SolveView KMachine::solveView() const {
  return {{elements_, axisValueIndex_}, toolChain(-1), axisNum_, strategy_};
}

// --- all positions

namespace {

struct Release {
  void operator()(KMachineValueBase* v) const { KMachineValueBase::_release(v); }
};
using OwnedValue = std::unique_ptr<KMachineValueBase, Release>;

}  // namespace

int KMachine::getPossibleAngles(const UVec3d& dir, std::vector<KMachineValueBase*>& out,
                                int tool) const try {
  if (axisNum_ < 1 || axisNum_ > kMaxAxes) return 0;
  const OwnedValue seed(newMachineValue()), solved(newMachineValue());
  if (!seed || !solved) return 0;
  SolutionList known(out);
  Seeds seeds({elements_, axisValueIndex_}, toolChain(tool));
  const SolveView view = solveView();
  while (seeds.next(*seed)) {
    // Deliberate: seeds come from `tool`'s chain, the current tool is solved
    // (TwoTools.StartsAreThoseOfTheToolAskedFor).
    if (solve(view, *seed, UVec3d(), dir, *solved) != 0) {
      UTools::_trace(L"** NO SOLUTION");
    } else if (checkLimitsRot(*solved, nullptr) == 0 && !known.holds(*solved)) {
      OwnedValue entry(newMachineValue(*solved));
      if (!entry) return 0;
      out.push_back(entry.get());
      known.add(*entry.release());
    }
  }
  return 0;
} catch (const std::bad_alloc&) {
  return 0;
}

// Deliberate: entries that the host had in the list are solved, or released, like the others, and
// rotary limits are not looked at again (Configs.EntriesOfTheHostAreSolvedToo and
// Configs.RotaryLimitsAreNotCheckedAgain).
int KMachine::getPossibleConfigs(const UVec3d& dir, const UVec3d& pos,
                                 std::vector<KMachineValueBase*>& out, int tool) const {
  const int code = getPossibleAngles(dir, out, tool);
  const OwnedValue solved(code == 0 && !out.empty() ? newMachineValue() : nullptr);
  for (std::size_t i = 0; solved && i < out.size();) {
    solved->reset();
    const bool isReached = out[i] && getConfigPlus(*out[i], pos, dir, *solved) == 0;
    if (isReached && checkLimitsLin(*solved, nullptr) == 0) {
      *out[i++] = *solved;
    } else {
      KMachineValueBase::_release(out[i]);
      out.erase(out.begin() + static_cast<std::ptrdiff_t>(i));
    }
  }
  return code;
}

// --- conversions that are not supported

// Deliberate: these three are part of the interface and do nothing (Conversions.AreNotSupported).
int KMachine::ijk2abc(const UVec3d&, const UVec3d&, UVec3d& abc) const {
  abc.set(0, 0, 0);
  return -1;
}

int KMachine::abc2ijk(const UVec3d&, UVec3d& ijk) const {
  ijk.set(0, 0, 0);
  return -1;
}

int KMachine::pts2xyz(const UVec3d&, const UVec3d&, UVec3d&) const { return -1; }

}  // namespace zkin
