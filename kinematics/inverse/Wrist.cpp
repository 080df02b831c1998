#include <algorithm>

#include "kinematics/inverse/MachineSolve.h"
#include "kinematics/inverse/Pairs.h"
#include "platform/zgeo/UAlgo.h"

using zgeo::UAlgo;
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

/// Directions at a position: of the tool and of the two axes that turn it.
struct Wrist {
  UVec3d tool;
  UVec3d first;
  UVec3d second;
};

// Each axis is the first element of its index, as all of a chain are.
Wrist wristAt(const SolveView& view, const KMachineValueBase& v, const KMachineElem* first,
              const KMachineElem* second) {
  Wrist wrist;
  walkMotions(view.machine, v, view.chain, [&](const KMachineElem& e, const Placement& motion) {
    if (&e == first) wrist.first = motion.turned(e.getElemAxis());
    if (&e == second) wrist.second = motion.turned(e.getElemAxis());
    if (&e == view.tool) wrist.tool = motion.turned(e.getElemAxis().normalised());
  });
  return wrist;
}

}  // namespace

bool turnWrist(const SolveView& view, const UVec3d& dir, KMachineValueBase& out) {
  const ChainWalk& chain = view.chain;
  const auto last = std::find_if(std::make_reverse_iterator(chain.end()),
                                 std::make_reverse_iterator(chain.begin()),
                                 [](const KMachineElem* e) { return e->isActive(); });
  if (last.base() == chain.begin()) return false;
  const auto* a = lastCrossing(view.machine, chain.begin(), last.base(), (*last)->getElemAxis());
  const auto* b = a ? lastCrossing(view.machine, chain.begin(), a, (*a)->getElemAxis()) : nullptr;
  if (!b) return false;
  auto& pairs = pairList();
  const Wrist wrist = wristAt(view, out, *b, *a);
  if (UAlgo::_solveRot_conical(wrist.tool, dir, wrist.first, wrist.second, pairs)) {
    add(out, turnsOf(**b, **a, choosePair(pairs, view.strategy)), view.axisNum);
  }
  return true;
}

}  // namespace zkin
