// Travel limits, interpolation, translation.

#include <algorithm>
#include <new>

#include "kinematics/KMachine.h"
#include "kinematics/inverse/Limits.h"
#include "kinematics/inverse/MachineSolve.h"
#include "kinematics/inverse/TipPath.h"

using zgeo::UVec3d;

namespace zkin {

// --- limits

template <typename IsChecked>
int KMachine::countOutside(const KMachineValueBase& v, IsChecked isChecked,
                           std::vector<int>* out) const {
  const double* const values = v.get();
  const int size = v.size();
  int count = 0;
  for (const int rank : axisElems_) {
    const KMachineElem& e = elements_[rank];
    const int place = e.getValueIndex();
    if (!isChecked(e) || place < 0) continue;
    const int side = sideOfLimits(e, values[std::min(place, size - 1)]);
    count += side != 0;
    if (out && place < size) (*out)[place] = side;
  }
  return count;
}

// Deliberate: the single checks keep what other positions held, the full one starts from zeros
// (Limits.SingleChecksKeepTheEntriesOfOtherAxes).
int KMachine::checkLimitsRot(const KMachineValueBase& v, std::vector<int>* out) const {
  if (out) out->resize(v.size());
  return countOutside(v, isRotary, out);
}

int KMachine::checkLimitsLin(const KMachineValueBase& v, std::vector<int>* out) const {
  if (out) out->resize(v.size());
  return countOutside(v, isLinearOrGun, out);
}

int KMachine::checkLimitsFull(const KMachineValueBase& v, std::vector<int>* out) const {
  // Without a list the order of the axes can't be told: one pass.
  if (!out) return countOutside(v, [](auto& e) { return isRotary(e) || isLinearOrGun(e); }, out);
  out->assign(v.size(), 0);
  return countOutside(v, isRotary, out) + countOutside(v, isLinearOrGun, out);
}

// --- interpolation

int KMachine::interpolateRaw(const KMachineValueBase& from, const KMachineValueBase& to, double t,
                             KMachineValueBase& out) const {
  const int axes = std::min(axisNum_, static_cast<int>(axisElems_.size()));
  for (int i = 0; i < axes; ++i) {
    shortestWay(elements_[axisElems_[i]].getElemType(), from[i], to[i], t, out[i]);
  }
  return 0;
}

int KMachine::interpolate(const KMachineValueBase& from, const KMachineValueBase& to, double t,
                          KMachineValueBase& out) const try {
  const SolveView view = solveView();
  const UVec3d target = tipAt(view, from) * (1 - t) + tipAt(view, to) * t;
  interpolateRaw(from, to, t, out);
  correctTip(view, target, out);
  return 0;
} catch (const std::bad_alloc&) {
  return 0;  // the axes have gone their way, the tip is not on its line
}

KMachineValueBase* KMachine::axisTranslation(const KMachineValueBase* v,
                                             const UVec3d& delta) const {
  KMachineValueBase* increment = v ? newMachineValue() : nullptr;
  if (!increment) return nullptr;
  const SolveView view = solveView();
  UVec3d tip, dir;
  if (const KMachineElem* const tool = view.tool) {
    const Placement placed = placementOf(view.machine, *v, view.chain);
    dir = placed.turned(tool->getElemAxis().normalised());
    tip = placed * tool->getElemPivot() - dir * tool->getTHELength();
  }
  // Deliberate: whatever the solver left counts (Translation.OfAThreeAxisMachineIsZero).
  solve(view, *v, tip + delta, dir, *increment);
  *increment -= *v;
  return increment;
}

}  // namespace zkin
