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
/// names and ranges (a limit that is not set is infinite). The root of the frame's chain, the part
/// where there is one, is table 0, and its frame the machine frame; tools and guns are the heads,
/// in rank order: tool n is head n - 1. The frame and bodies without motion are axes of a fixed
/// link. Axes between part and frame move the table, against the sense that they have in the
/// definition.
///
/// @errors  Null when the machine has no frame element, no tool or no axis, or more than 12. An
///          axis without a place in positions, or with one that an axis before it has, stays. Guns
///          keep the extension that they have now. Limits, not locks, lengths and pairs, come
///          along.
/// @cost    One look at every element; with bodies every geometry file is read.
KORVO_KINEMATICS_API std::unique_ptr<Ombra::Kin::Machine> machineFromDefinition(
    const KMachine& machine, Bodies bodies);

}  // namespace zkin
