#pragma once

#include <memory>

#include "kinematics/Export.h"
#include "kinematics/KMachine.h"
#include "platform/ombra/Machine.h"

namespace zkin {

/// Whether a converted machine gets its bodies.
enum class Bodies { none, fromGeometryFiles };

/// A loaded machine as one of the external kinematics library, which answers as it does.
///
/// Entity k is the element of rank k - 1. Axes keep their places in positions as registers, their
/// names and ranges (a limit that is not set is infinite). Table 0 is the root of the frame's chain
/// where that is the part; another root gets a table of its own, the one entity more, and keeps its
/// motion. The table's frame is the machine frame. Tools and guns are the heads, in rank order:
/// tool n is head n - 1, unless a machine built in memory has its tools in another order than that
/// of their numbers. The frame and bodies without motion are axes of a fixed link. Axes between
/// root and frame move the table, against the sense that they have in the definition.
///
/// @errors  Null when memory is out and when the machine has no frame element, no tool or no axis,
///          or more than 12: axes are numbered only where there is exactly one part and one frame.
///          An axis without a place in positions, or with one that an axis before it has, stays.
///          Guns keep the extension that they have now. Limits, not locks, lengths and pairs, come
///          along. A body whose file cannot be read, or is too large for the memory that is left,
///          is left out, as from `KMachine::getTrianglesU`.
/// @cost    One look at every element; with bodies every geometry file is read.
KORVO_KINEMATICS_API std::unique_ptr<Ombra::Kin::Machine> machineFromDefinition(
    const KMachine& machine, Bodies bodies);

}  // namespace zkin
