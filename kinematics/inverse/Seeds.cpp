#include "kinematics/inverse/Seeds.h"

#include <algorithm>

#include "kinematics/inverse/Limits.h"
#include "kinematics/inverse/MachineSolve.h"
#include "kinematics/tolerances.h"

namespace zkin {

std::vector<double> Seeds::_anglesOf(const KMachineElem& axis) {
  const double low = axis.hasMin() ? std::max(axis.getMin(), -kSeedTurn) : -kSeedTurn;
  const double high = axis.hasMax() ? std::min(axis.getMax(), kSeedTurn) : kSeedTurn;
  std::vector<double> angles;
  for (const double angle :
       {(low + high) / 2, low, high, -180.0, 180.0, -90.0, 90.0, -270.0, 270.0}) {
    const bool isNew = std::find(angles.begin(), angles.end(), angle) == angles.end();
    if (isNew && low <= angle && angle <= high) angles.push_back(angle);
  }
  return angles;
}

Seeds::Seeds(const MachineView& machine, const ChainWalk& chain) {
  for (const KMachineElem* e : chain) {
    if (!isRotary(*e) || !hasPlace(machine, *e)) continue;
    axes_.push_back({e->getValueIndex(), _anglesOf(*e)});
    hasNext_ = hasNext_ && !axes_.back().angles.empty();
  }
}

bool Seeds::next(KMachineValueBase& v) {
  if (!hasNext_) return false;
  for (const Axis& axis : axes_) v[axis.place] = axis.angles[axis.at];
  hasNext_ = advance();
  return true;
}

// Like a counter: the first axis turns over before the next one moves.
bool Seeds::advance() {
  for (Axis& axis : axes_) {
    if (++axis.at < axis.angles.size()) return true;
    axis.at = 0;
  }
  return false;
}

}  // namespace zkin
