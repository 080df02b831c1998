#include "toolkit/answer/FreeAxes.h"

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValueBase;

namespace korvo {
namespace {

// As the solver tells which axes turn a wrist (squared sine of the angle).
constexpr double kParallelSq = 1e-5;

StandingAxis standing(const KMachine& machine, const KMachineValueBase& v, const KMachineElem* e) {
  UVec3d direction = e->getElemAxis();
  machine.getMatrix(v, e).applyDir(direction);
  return {e, direction};
}

bool isRotary(const KMachineElem* e) {
  return e->getElemType() == KMachineElem::KMET_TYPE_AROT && e->getValueIndex() >= 0;
}

}  // namespace

std::vector<StandingAxis> freeAxes(const KMachine& machine, const KMachineValueBase& v,
                                   KMachineElem::KME_TYPE type) {
  std::vector<StandingAxis> axes;
  for (const KMachineElem* e : machine.getToolChain(false, -1)) {
    const bool isFree = e->getElemType() == type && !e->isLocked() && e->getValueIndex() >= 0;
    if (isFree) axes.push_back(standing(machine, v, e));
  }
  return axes;
}

std::vector<StandingAxis> jointsOf(const KMachine& machine, const KMachineValueBase& v) {
  std::vector<StandingAxis> joints;
  for (const KMachineElem* e : machine.getToolChain(false, -1)) {
    if (isRotary(e)) joints.push_back(standing(machine, v, e));
  }
  return joints;
}

std::vector<StandingAxis> wristAxes(const KMachine& machine, const KMachineValueBase& v) {
  const std::vector<const KMachineElem*> chain = machine.getToolChain(true, -1);
  std::vector<StandingAxis> axes;
  if (chain.empty()) return axes;
  UVec3d behind = chain.back()->getElemAxis();
  for (auto e = chain.rbegin(); e != chain.rend() && axes.size() < 2; ++e) {
    if (!isRotary(*e) || ((*e)->getElemAxis() ^ behind).norm2() <= kParallelSq) continue;
    behind = (*e)->getElemAxis();
    axes.insert(axes.begin(), standing(machine, v, *e));
  }
  if (axes.size() < 2) axes.clear();
  return axes;
}

UVec3d toolDirection(const KMachine& machine, const KMachineValueBase& v) {
  UVec3d nose, direction;
  machine.getTool(v, nose, direction, -1);
  return direction;
}

bool isArmClass(const KMachine& machine) {
  return machine.analysis(machine.getCurrentTool()).kinematicClass == 5;
}

}  // namespace korvo
