#pragma once

#include "kinematics/inverse/MachineSolve.h"

namespace zkin {

/// The value between `a` (t = 0) and `b` (t = 1) of one axis. A rotary axis turns the short way
/// (half a turn goes as given). Other types than linear and rotary axes: `out` keeps what it held.
///
/// Deliberate: not brought back into any range, limits neither (ShortWay.IsTurned).
void shortestWay(KMachineElem::KME_TYPE type, double a, double b, double t, double& out);

/// Tool tip (mm, machine frame) at a position: the tool point less the tool length along the
/// direction. (0, 0, 0) without a tool.
zgeo::UVec3d tipAt(const SolveView& view, const KMachineValueBase& v);

/// Brings the tool tip at `out` onto `target` by one linear step of the first three unlocked linear
/// axes of the chain; nothing when it is there within a hundredth of a micrometre or there are
/// fewer than three.
///
/// Deliberate: exactly the first three, even when they are dependent (then nothing moves), and once
/// (Interpolation.CorrectsOnceWithTheFirstThreeLinearAxes).
void correctTip(const SolveView& view, const zgeo::UVec3d& target, KMachineValueBase& out);

}  // namespace zkin
