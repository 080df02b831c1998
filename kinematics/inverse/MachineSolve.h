#pragma once

#include "kinematics/ChainWalk.h"
#include "platform/zgeo/UVec3d.h"

namespace zkin {

/// What the solvers need of a machine: where its axes are, which tool, which strategy.
struct SolveView {
  MachineView machine;
  ChainWalk chain;  ///< Of the current tool; empty when it has no element.
  int axisNum;
  int strategy;
  const KMachineElem* tool = chain.last();
};

/// A wanted tool tip (mm) and unit tool direction, in the machine frame.
struct Target {
  zgeo::UVec3d point;
  zgeo::UVec3d dir;
};

/// Whether an axis has a place in positions, as the walk along the chain finds it: no solver can
/// move one without.
inline bool hasPlace(const MachineView& machine, const KMachineElem& e) {
  const int number = e.getElemIndex();
  return number >= 1 && number <= static_cast<int>(machine.axisValueIndex.size()) &&
         e.getValueIndex() >= 0;
}

/// Rotary and linear axes: first the rotary axes turn the tool onto the wanted direction, then the
/// linear ones carry its point there. All by increments from `current`, so that the start picks the
/// turn and the branch.
///
/// @param[out] out  `current` when there is no rotary solution; the rotary solution when the linear
///                  axes do not reach.
/// @return  -1 (and a trace) without a rotary solution; else the code of the last linear solve, 0
///          when there are fewer than three free linear axes. Deliberate: with more than three free
///          linear axes that is the code of the last triple tried, also when an earlier one was
///          solved and is the result (FourLinearAxes.TakeTheFirstTripleAndTheCodeOfTheLast).
/// @cost    Two passes along the chain; one two-axis solve for each pair of free rotary axes, one
///          linear solve for each triple of free linear ones. No allocation once warm.
int solveRotaryAndLinear(const SolveView& view, const KMachineValueBase& current,
                         const Target& target, KMachineValueBase& out);

/// Turns the last two rotary axes that are not parallel to the tool, nor to each other, so that the
/// tool has the wanted direction at `out`; changes nothing when that cannot be.
///
/// Deliberate: locks are not looked at (WristTurn.LocksAreNotLookedAt).
/// @return  Whether there are two such axes.
bool turnWrist(const SolveView& view, const zgeo::UVec3d& dir, KMachineValueBase& out);

/// The six-joint arm with a ball wrist, in closed form from the Denavit-Hartenberg parameters of
/// its joints; see ArmSolver.cpp. `out` holds the start on entry. Sets the current values of the
/// first three joints.
///
/// @param rotule    Element index of the wrist.
/// @param mac2uni   For one trace line.
/// @return  0, reached or not: the caller verifies forward. -1, `out` untouched, when the chain has
///          no tool or fewer than three elements after its first rotary axis.
int solveArm(const SolveView& view, const KMachineValueBase& current, const Target& target,
             int rotule, const zgeo::UMatrix& mac2uni, KMachineValueBase& out);

}  // namespace zkin
