#include "kinematics/inverse/Reach.h"

using zgeo::UMatrix;
using zgeo::UVec3d;

namespace zkin {

namespace {

std::vector<MovedAxis>& emptyList() {
  thread_local std::vector<MovedAxis> axes;  // once warm, solving allocates nothing
  axes.clear();
  return axes;
}

UVec3d moved(UVec3d dir, const UMatrix& motion) {
  motion.applyDir(dir);
  return dir;
}

}  // namespace

Reach reachAt(const SolveView& view, const KMachineValueBase& v, const ChainWalk& chain,
              KMachineElem::KME_TYPE type) {
  Reach reach{{}, {}, emptyList()};
  walkMotions(view.machine, v, chain, [&](const KMachineElem& e, const UMatrix& motion) {
    if (e.getElemType() == type && !e.isLocked() && hasPlace(view.machine, e)) {
      reach.axes.push_back({&e, moved(e.getElemAxis(), motion)});
    }
    if (&e != view.tool) return;
    reach.point = motion * e.getElemPivot();
    reach.dir = moved(e.getElemAxis().normalised(), motion);
  });
  return reach;
}

}  // namespace zkin
