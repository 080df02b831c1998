#pragma once

#include <vector>

#include "toolkit/Machine.h"

namespace korvo {

/// An axis in the chain of the current tool, as it stands at a position.
struct StandingAxis {
  const zkin::KMachineElem* element;
  zgeo::UVec3d direction;

  int place() const { return element->getValueIndex(); }
};

/// The axes of one type that a solver may move, root first: not locked, with a place in positions.
std::vector<StandingAxis> freeAxes(const zkin::KMachine& machine, const zkin::KMachineValueBase& v,
                                   zkin::KMachineElem::KME_TYPE type);

/// All rotary axes with a place in positions, locked or not, root first.
std::vector<StandingAxis> jointsOf(const zkin::KMachine& machine, const zkin::KMachineValueBase& v);

/// The two axes that an arm's solver turns the wrist with, nearer the root first: the last one that
/// is not parallel to the tool and the last before it not parallel to that. Empty without such.
std::vector<StandingAxis> wristAxes(const zkin::KMachine& machine,
                                    const zkin::KMachineValueBase& v);

/// Unit direction of the current tool.
zgeo::UVec3d toolDirection(const zkin::KMachine& machine, const zkin::KMachineValueBase& v);

/// Whether the current tool's kinematic class is that of arms and of machines without three
/// independent linear axes.
bool isArmClass(const zkin::KMachine& machine);

}  // namespace korvo
