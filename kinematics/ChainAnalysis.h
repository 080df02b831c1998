#pragma once

#include <vector>

#include "kinematics/KMachine.h"

namespace zkin {

using Chain = std::vector<const KMachineElem*>;

/// Classifies a tool's chain (root first, tool last, inactive elements included).
///
/// @param toolIndex  Element index of the tool, for the record.
/// @param ballJoint  Element index of the ball joint's first axis, 0 when there is none.
/// @param tool       The tool element, or null.
/// Traces "... ? Unrecognized stuff" for an arm without a first rotary axis two places before its
/// end.
KMachine::_sUKine classify(const Chain& chain, int toolIndex, int ballJoint,
                           const KMachineElem* tool);

/// The first of two rotary axes that meet the axis after them (a rotary axis, a tool or a gun) in
/// one point, the pair nearest the tool; null when there is none. `chain` holds active elements
/// only; their zero-position Denavit-Hartenberg records must be set.
const KMachineElem* ballJointOf(const Chain& chain);

}  // namespace zkin
