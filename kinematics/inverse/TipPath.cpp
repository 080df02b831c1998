#include "kinematics/inverse/TipPath.h"

#include "kinematics/inverse/Reach.h"
#include "platform/zgeo/UAlgo.h"

using zgeo::UAlgo;
using zgeo::UMatrix;
using zgeo::UVec3d;

namespace zkin {

void shortestWay(KMachineElem::KME_TYPE type, double a, double b, double t, double& out) {
  const double s = 1 - t;
  if (type == KMachineElem::KMET_TYPE_ALIN) out = t * b + s * a;
  if (type != KMachineElem::KMET_TYPE_AROT) return;
  const double turn = a - b > 180 ? 360 : a - b < -180 ? -360 : 0;
  out = s * a + t * (b + turn);
}

UVec3d tipAt(const SolveView& view, const KMachineValueBase& v) {
  if (!view.tool) return {};
  const UMatrix motion = motionOf(view.machine, v, view.chain);
  UVec3d back = view.tool->getElemAxis().normalised() * view.tool->getTHELength();
  motion.applyDir(back);
  return motion * view.tool->getElemPivot() - back;
}

void correctTip(const SolveView& view, const UVec3d& target, KMachineValueBase& out) {
  if (!view.tool) return;
  const Reach reach = reachAt(view, out, KMachineElem::KMET_TYPE_ALIN);
  const UVec3d error = target - reach.tip(*view.tool);
  if (error.norm2() <= kTipErrorSq || reach.axes.size() < 3) return;
  const MovedAxis* axis = reach.axes.data();
  UVec3d xyz;
  UAlgo::_solveXYZ(error, axis[0].dir, axis[1].dir, axis[2].dir, xyz);
  out[axis[0].element->getValueIndex()] += xyz.x;
  out[axis[1].element->getValueIndex()] += xyz.y;
  out[axis[2].element->getValueIndex()] += xyz.z;
}

}  // namespace zkin
