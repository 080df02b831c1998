#pragma once

#include <vector>

#include "kinematics/KMachineElem.h"

namespace zkin {

/// One element's zero-position frame along a tool chain.
struct DhFrame {
  KMachineElem::_sUDHm parameters;  ///< From the frame before it in the chain.
  zgeo::UVec3d origin;              ///< On the element's axis line (mm, machine frame).
};

/// Modified Denavit-Hartenberg frames of a chain of active elements, root first, tool last.
///
/// Every element is a frame: its Z axis is its direction, its line passes through its point. The
/// walk goes from the tool to the root; the common normal with the line before it gives each
/// frame's X axis and origin. The root's predecessor, and a part, are the world Z line.
///
/// @source  Craig, Introduction to Robotics, 3rd edition, ch. 3.4 (link frame attachment). Kept
///          departures: theta of the first frame is 0 whatever its X axis, and a null direction
///          stores nothing, so its origin becomes (0,0,0).
/// @return  One frame per chain element.
std::vector<DhFrame> dhFrames(const std::vector<const KMachineElem*>& chain);

}  // namespace zkin
