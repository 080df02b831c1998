#pragma once

#include <span>

#include "toolkit/Export.h"
#include "toolkit/path/Toolpath.h"

namespace korvo {

/// What it comes to when of every target the position is taken that is nearest to the one before:
/// the sum of the differences of all axes, a degree counted as a mm. Target by target is how a path
/// is converted without looking ahead; a `Toolpath` is measured against it.
///
/// Breaks, travel and cost are counted as for a Toolpath with the same options. No positions are
/// added, and no reasons given. Without a start it begins from zero.
///
/// @cost  One solver call a target, in one thread.
KORVO_TOOLKIT_API ToolpathReport nearestFirst(const Machine& machine,
                                              const ToolpathOptions& options,
                                              std::span<const PathTarget> targets,
                                              const PathSink& sink = {},
                                              const ToolpathWatch& watch = {});

}  // namespace korvo
