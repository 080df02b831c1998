#pragma once

#include <optional>

#include "kinematics/KMachine.h"

namespace korvo {

/// Where the base of tool `tool`'s Denavit-Hartenberg table stands in the machine frame: base times
/// the product of the rows up to an element is the frame whose Z runs along that element's line.
///
/// The table itself does not say: its first theta is 0 whatever its base's X axis. `machine` must
/// hold the table of `tool`, as after `initDHm(tool)`. The part's row takes no part.
///
/// @errors  Nothing when an element of the chain has no direction. When the lines of the chain
///          leave a turn about the first of them open, some turn is taken.
std::optional<zgeo::UMatrix> dhBase(const zkin::KMachine& machine, int tool);

}  // namespace korvo
