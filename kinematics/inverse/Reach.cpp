#include "kinematics/inverse/Reach.h"

namespace zkin {

namespace {

std::vector<MovedAxis>& emptyList() {
  thread_local std::vector<MovedAxis> axes;  // once warm, solving allocates nothing
  axes.clear();
  return axes;
}

}  // namespace

Reach reachAt(const SolveView& view, const KMachineValueBase& v, KMachineElem::KME_TYPE type) {
  Reach reach{{}, {}, emptyList()};
  walkMotions(view.machine, v, view.chain, [&](const KMachineElem& e, const Placement& motion) {
    if (e.getElemType() == type && !e.isLocked() && hasPlace(view.machine, e)) {
      reach.axes.push_back({&e, motion.turned(e.getElemAxis())});
    }
    if (&e != view.tool) return;
    reach.point = motion * e.getElemPivot();
    reach.dir = motion.turned(e.getElemAxis().normalised());
  });
  return reach;
}

}  // namespace zkin
