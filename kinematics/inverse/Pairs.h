#pragma once

#include <vector>

#include "kinematics/KMachineElem.h"
#include "kinematics/KMachineValue.h"
#include "kinematics/tolerances.h"
#include "platform/zgeo/UVec2d.h"

namespace zkin {

/// Increments of a position, of which a machine adds its first axes.
using Increments = KMachineValue<kMaxAxes>;

/// The pair of turns (radians) of the lowest cost by strategy: 1 looks at the first angle, 2 at the
/// second, any other at the smaller of the two; the earlier of equal ones. Free angles (-1000) turn
/// nothing: they become 0 first, in `pairs` too.
///
/// @param pairs  What the two-axis solver gave, not empty.
zgeo::UVec2d choosePair(std::vector<zgeo::UVec2d>& pairs, int strategy);

/// The increments (degrees) that turn `first` and `second` by a pair of angles (radians).
Increments turnsOf(const KMachineElem& first, const KMachineElem& second, const zgeo::UVec2d& pair);

/// Adds the first `axisNum` increments to a position.
void add(KMachineValueBase& v, const Increments& increments, int axisNum);

/// The list that every two-axis solve of this thread fills: once warm, solving allocates nothing.
/// Use it up before anything is traced, for a sink may solve too.
std::vector<zgeo::UVec2d>& pairList();

}  // namespace zkin
