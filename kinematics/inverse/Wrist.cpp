#include <algorithm>

#include "kinematics/inverse/MachineSolve.h"
#include "kinematics/inverse/Pairs.h"
#include "platform/zgeo/UAlgo.h"

using zgeo::UAlgo;
using zgeo::UMatrix;
using zgeo::UVec3d;

namespace zkin {

namespace {

bool crosses(const KMachineElem& e, const UVec3d& dir) {
  return (e.getElemAxis() ^ dir).norm2() > kParallelCrossSq;
}

// The last rotary axis before `end` that is not parallel to `dir`, by directions as defined.
const KMachineElem* const* lastCrossing(const MachineView& machine,
                                        const KMachineElem* const* begin,
                                        const KMachineElem* const* end, const UVec3d& dir) {
  while (end != begin) {
    const KMachineElem& e = **--end;
    if (e.getElemType() == KMachineElem::KMET_TYPE_AROT && hasPlace(machine, e) &&
        crosses(e, dir)) {
      return end;
    }
  }
  return nullptr;
}

UVec3d dirAt(const SolveView& view, const KMachineValueBase& v, const KMachineElem* e, UVec3d dir) {
  motionOf(view.machine, v, e).applyDir(dir);
  return dir;
}

// An element looked up by its index: of several the first answers.
UVec3d axisAt(const SolveView& view, const KMachineValueBase& v, const KMachineElem& axis) {
  const KMachineElem* e = elementOf(view.machine.elements, axis.getElemIndex());
  return dirAt(view, v, e, e->getElemAxis());
}

}  // namespace

bool turnWrist(const SolveView& view, const UVec3d& dir, KMachineValueBase& out) {
  const ChainWalk chain(view.machine.elements, view.tool);
  const auto last = std::find_if(std::make_reverse_iterator(chain.end()),
                                 std::make_reverse_iterator(chain.begin()),
                                 [](const KMachineElem* e) { return e->isActive(); });
  if (last.base() == chain.begin()) return false;
  const auto* a = lastCrossing(view.machine, chain.begin(), last.base(), (*last)->getElemAxis());
  const auto* b = a ? lastCrossing(view.machine, chain.begin(), a, (*a)->getElemAxis()) : nullptr;
  if (!b) return false;
  auto& pairs = pairList();
  const UVec3d tool = dirAt(view, out, view.tool, view.tool->getElemAxis().normalised());
  if (UAlgo::_solveRot_conical(tool, dir, axisAt(view, out, **b), axisAt(view, out, **a), pairs)) {
    add(out, turnsOf(**b, **a, choosePair(pairs, view.strategy)), view.axisNum);
  }
  return true;
}

}  // namespace zkin
