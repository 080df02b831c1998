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
    if (isRotary(*e) && hasPlace(machine, *e)) axes_.push_back({e->getValueIndex(), _anglesOf(*e)});
  }
}

std::uint64_t Seeds::count() const {
  std::uint64_t product = 1;
  for (const Axis& axis : axes_) product *= axis.angles.size();
  return product;
}

void Seeds::get(std::uint64_t i, KMachineValueBase& v) const {
  for (const Axis& axis : axes_) {
    v[axis.place] = axis.angles[i % axis.angles.size()];
    i /= axis.angles.size();
  }
}

}  // namespace zkin
