#include <algorithm>
#include <cmath>

#include "kinematics/inverse/MachineSolve.h"
#include "kinematics/inverse/Pairs.h"
#include "kinematics/inverse/Reach.h"
#include "platform/zgeo/UAlgo.h"
#include "platform/zgeo/UTools.h"

using zgeo::UAlgo;
using zgeo::UTools;
using zgeo::UVec3d;

namespace zkin {

namespace {

// Deliberate: solved, too, when the cone of the tool misses the wanted direction
// (OneRotaryAxis.TakesTheNearestDirectionWhenItsConeMissesTheWantedOne).
bool turnOne(const MovedAxis& axis, const UVec3d& from, const UVec3d& to, KMachineValueBase& out) {
  double angle = 0.0;
  if (UAlgo::_solveRot_conical(from, to, axis.dir, angle) == 0) {
    UTools::_traceTS(L"solveRot_conical (4X) failed : ");
    axis.dir.dump(L"rotAxis", true);
    from.dump(L" from", true);
    to.dump(L" to", false);
    return false;
  }
  out[axis.element->getValueIndex()] += angle * kRadToDeg;
  return true;
}

double travel(const Increments& increments) {
  double sum = 0.0;
  for (int i = 0; i < kMaxAxes; ++i) sum += std::fabs(increments[i]);
  return sum;
}

// The pair of axes that has to turn least; the earlier of equal ones.
bool turnTwo(const SolveView& view, const Reach& reach, const UVec3d& to, KMachineValueBase& out) {
  Increments best;
  bool found = false;
  for (auto i = reach.axes.begin(); i != reach.axes.end(); ++i) {
    for (auto j = i + 1; j != reach.axes.end(); ++j) {
      auto& pairs = pairList();
      if (UAlgo::_solveRot_conical(reach.dir, to, i->dir, j->dir, pairs) == 0) continue;
      const Increments turns = turnsOf(*i->element, *j->element, choosePair(pairs, view.strategy));
      if (!found || travel(turns) < travel(best)) best = turns;
      found = true;
    }
  }
  if (found) add(out, best, view.axisNum);
  return found;
}

// Deliberate: without a free rotary axis nothing is solved, not even the tool's own direction
// (NoRotaryAxis.IsNeverSolved).
bool turnTool(const SolveView& view, const UVec3d& to, KMachineValueBase& out) {
  const Reach start = reachAt(view, out, KMachineElem::KMET_TYPE_AROT);
  const bool turned = start.axes.empty()       ? false
                      : start.axes.size() == 1 ? turnOne(start.axes.front(), start.dir, to, out)
                                               : turnTwo(view, start, to, out);
  if (!turned) UTools::_trace(L"getConfig failed (no rotations)");
  return turned;
}

// Targets are tips, the walk gives the tool point: they lie the tool length apart.
UVec3d toolPointOf(const KMachineElem& tool, const Target& target) {
  return tool.isTool() ? target.point + target.dir * tool.getTHELength() : target.point;
}

// Deliberate: 0 with fewer than three free linear axes, wherever the point is
// (LinearStage.LockedAxesStayAndTwoAreNotSolved).
int slideTool(const SolveView& view, const Target& target, KMachineValueBase& out) {
  const Reach turned = reachAt(view, out, KMachineElem::KMET_TYPE_ALIN);
  const UVec3d way = toolPointOf(*view.tool, target) - turned.point;
  std::vector<MovedAxis>& axes = turned.axes;
  std::reverse(axes.begin(), axes.end());  // counted from the tool
  int code = 0;
  bool found = false;
  for (std::size_t i = 0; i < axes.size(); ++i) {
    for (std::size_t j = i + 1; j < axes.size(); ++j) {
      for (std::size_t k = j + 1; k < axes.size(); ++k) {
        UVec3d xyz;
        code = UAlgo::_solveXYZ(way, axes[i].dir, axes[j].dir, axes[k].dir, xyz);
        if (code != 0 || found) continue;
        found = true;
        out[axes[i].element->getValueIndex()] += xyz.x;
        out[axes[j].element->getValueIndex()] += xyz.y;
        out[axes[k].element->getValueIndex()] += xyz.z;
      }
    }
  }
  return code;
}

}  // namespace

int solveRotaryAndLinear(const SolveView& view, const KMachineValueBase& current,
                         const Target& target, KMachineValueBase& out) {
  out = current;
  if (!turnTool(view, target.dir, out)) return -1;
  return slideTool(view, target, out);
}

}  // namespace zkin
