#pragma once

#include <kdl/chain.hpp>
#include <vector>

#include "kinematics/KMachine.h"

/// A machine as Orocos KDL has it.
namespace korvo::test {

inline KDL::Vector kdl(const zgeo::UVec3d& v) { return {v.x, v.y, v.z}; }

inline bool turns(const zkin::KMachineElem& e) {
  return e.getElemType() == zkin::KMachineElem::KMET_TYPE_AROT;
}

/// One segment for each axis of tool 1; the last ends at the tool point. Lengths are mm by `unit`.
inline KDL::Chain kdlChain(const zkin::KMachine& machine, double unit = 1.0) {
  std::vector<const zkin::KMachineElem*> axes = machine.getToolChain(true, 1);
  const KDL::Vector end = kdl(axes.back()->getElemPivot()) * unit;
  std::erase_if(axes, [](const auto* e) { return e->getValueIndex() < 0; });
  KDL::Chain chain;
  KDL::Vector at = KDL::Vector::Zero();
  for (const zkin::KMachineElem* e : axes) {
    const KDL::Vector place = turns(*e) ? kdl(e->getElemPivot()) * unit : at;
    const KDL::Joint joint(place - at, kdl(e->getElemAxis()),
                           turns(*e) ? KDL::Joint::RotAxis : KDL::Joint::TransAxis);
    chain.addSegment(KDL::Segment(joint, KDL::Frame((e == axes.back() ? end : place) - at)));
    at = place;
  }
  return chain;
}

}  // namespace korvo::test
