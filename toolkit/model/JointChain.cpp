#include "toolkit/model/JointChain.h"

#include <set>

#include "toolkit/model/Walk.h"

using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

namespace korvo {
namespace {

Joint jointOf(const KMachineElem& e) {
  Joint joint;
  joint.direction = e.getElemAxis();
  joint.point = e.getElemPivot();
  if (e.getElemType() == KMachineElem::KMET_TYPE_DGUN) {
    joint.length = e.getTHELength();
    return joint;
  }
  const bool isTurn = e.getElemType() == KMachineElem::KMET_TYPE_AROT;
  joint.motion = isTurn ? Joint::Motion::turn : Joint::Motion::slide;
  joint.place = e.getValueIndex();
  if (e.hasMin()) joint.min = e.getMin();
  if (e.hasMax()) joint.max = e.getMax();
  joint.isLocked = e.isLocked();
  return joint;
}

// An axis without a place in positions stays where it is.
bool isMoving(const KMachineElem& e) {
  switch (e.getElemType()) {
    case KMachineElem::KMET_TYPE_AROT:
    case KMachineElem::KMET_TYPE_ALIN:
      return e.getValueIndex() >= 0;
    default:
      return e.getElemType() == KMachineElem::KMET_TYPE_DGUN;
  }
}

}  // namespace

JointChain JointChain::of(const KMachine& machine, int tool) {
  JointChain chain;
  chain.axisCount = machine.getAxisNum();
  const std::vector<const KMachineElem*> elements = machine.getToolChain(false, tool);
  if (elements.empty()) return chain;
  const KMachineElem& last = *elements.back();
  chain.hasTool = true;
  chain.toolPoint = last.getElemPivot();
  chain.toolDirection = last.getElemAxis().normalised();
  chain.toolLength = last.getTHELength();
  for (const KMachineElem* e : elements) {
    if (e == &last && e->isInverted()) break;  // moved only by what carries it
    if (isMoving(*e)) chain.joints.push_back(jointOf(*e));
  }
  return chain;
}

UMatrix JointChain::motion(const Values& values) const {
  UMatrix placed;
  for (const Joint& joint : joints) moveBy(joint, valueOf(joint, values), placed);
  return placed;
}

ToolPose JointChain::pose(const Values& values) const {
  const UMatrix placed = motion(values);
  ToolPose pose{placed * toolPoint, toolDirection};
  placed.applyDir(pose.direction);
  return pose;
}

bool JointChain::isCoupled() const {
  std::set<int> places;
  for (const Joint& joint : joints) {
    if (joint.place >= 0 && !places.insert(joint.place).second) return true;
  }
  return false;
}

}  // namespace korvo
