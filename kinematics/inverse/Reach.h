#pragma once

#include <vector>

#include "kinematics/inverse/MachineSolve.h"

namespace zkin {

/// An axis and its direction, moved by its own motion matrix.
struct MovedAxis {
  const KMachineElem* element;
  zgeo::UVec3d dir;
};

/// Where the tool is at a position and what can move it.
struct Reach {
  zgeo::UVec3d point;            ///< Tool point (mm, machine frame).
  zgeo::UVec3d dir;              ///< Unit tool direction.
  std::vector<MovedAxis>& axes;  ///< In chain order, one list per thread: use it up before tracing.

  /// The point that targets mean: the tool length back from the tool point.
  zgeo::UVec3d tip(const KMachineElem& tool) const { return point - dir * tool.getTHELength(); }
};

/// One walk along the chain of the view's tool at `v`, collecting the axes of one type that a
/// solver may move: not locked, with a place in positions.
Reach reachAt(const SolveView& view, const KMachineValueBase& v, KMachineElem::KME_TYPE type);

}  // namespace zkin
