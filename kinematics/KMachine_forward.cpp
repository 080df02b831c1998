// Element placement, tool frames, tool point.

#include "kinematics/ChainWalk.h"
#include "kinematics/KMachine.h"

using zgeo::UMatrix;
using zgeo::UVec3d;

namespace zkin {

UMatrix KMachine::getMatrix(const KMachineValueBase& v, const KMachineElem* e) const {
  return motionOf({elements_, axisValueIndex_}, v, ChainWalk(elements_, e));
}

UMatrix KMachine::getMatrix(const KMachineValueBase& v, int elemIndex) const {
  return getMatrix(v, getElemByIndex(elemIndex));
}

void KMachine::getMatrices(const KMachineValueBase& v, std::vector<UMatrix>& out) const {
  motionsOf({elements_, axisValueIndex_}, v, out);
}

UMatrix KMachine::getMatrix1(const KMachineValueBase& v) const {
  return getMatrix(v, toolElem(currentTool_));
}

UMatrix KMachine::getMatrix(const KMachineValueBase& v) const { return getMatrix_H2T(v); }

UMatrix KMachine::getMatrix_H2T(const KMachineValueBase& v) const {
  const ChainWalk chain = toolChain(currentTool_);
  Placement placed = placementOf({elements_, axisValueIndex_}, v, chain);
  if (chain.last()) placed.slide(chain.last()->getElemPivot());
  return placed.matrix();
}

// Deliberate: a gun slides forward by its length, which is part of its motion, and the tip lies the
// length back from there. Test: KMachineForward.TipFrameOfAGunCountsItsLengthTwice.
UMatrix KMachine::getMatrix_TP2U(const KMachineValueBase& v) const {
  const ChainWalk chain = toolChain(currentTool_);
  const KMachineElem* tool = chain.last();
  const UMatrix motion = motionOf({elements_, axisValueIndex_}, v, chain);
  UVec3d point;
  if (tool) {
    UVec3d dir = tool->getElemAxis().normalised();
    motion.applyDir(dir);
    point = motion * tool->getElemPivot() - dir * tool->getTHELength();
  }
  UMatrix tip = mac2uni_ * motion;
  tip.setOrigin(mac2uni_ * point);
  return tip;
}

bool KMachine::getTool(const KMachineValueBase& v, UVec3d& pos, UVec3d& dir, int tool) const {
  const ChainWalk chain = toolChain(tool);
  const KMachineElem* e = chain.last();
  if (!e) return false;
  const Placement placed = placementOf({elements_, axisValueIndex_}, v, chain);
  pos = placed * e->getElemPivot();
  dir = placed.turned(e->getElemAxis().normalised());
  return true;
}

bool KMachine::getElemAxis(const KMachineValueBase& v, int elemIndex, UVec3d& dir,
                           UVec3d& point) const {
  const KMachineElem* e = getElemByIndex(elemIndex);
  if (!e) return false;
  const UMatrix motion = getMatrix(v, e);
  point = motion * e->getElemPivot();
  dir = e->getElemAxis();
  motion.applyDir(dir);
  return true;
}

bool KMachine::getElemAxis(const KMachineValueBase& v, int elemIndex, UVec3d& dir) const {
  UVec3d point;
  return getElemAxis(v, elemIndex, dir, point);
}

void KMachine::setUNI2MAC(const UMatrix& m) {
  const UMatrix inverse = m.inverse();  // first: m may be one of the two
  uni2mac_ = m;
  mac2uni_ = inverse;
}

double KMachine::getTHELength(int tool) const {
  const KMachineElem* e = toolElem(tool);
  return e ? e->getTHELength() : -1.0;
}

bool KMachine::setTHELength(double length, int tool) const {
  const KMachineElem* e = toolElem(tool);
  if (e) e->setTHELength(length);
  return e != nullptr;
}

void KMachine::updateDHm(const KMachineValueBase& v, int tool) const {
  updateRecords({elements_, axisValueIndex_}, v, toolChain(tool));
}

}  // namespace zkin
