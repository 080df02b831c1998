#include "adapter/Axes.h"

#include <algorithm>

using Ombra::Kin::Entity;
using Ombra::Kin::LinkKind;
using Ombra::Kin::Machine;
using Ombra::Kin::MachinePosition;

namespace zkin {

std::vector<const Entity*> axesOf(const Machine& machine, LinkKind kind) {
  const int count = machine.GetRegisterNb().value;
  std::vector<const Entity*> axes;
  for (const Entity* e : machine.GetKinematic().GetListEntity()) {
    if (!e || e->GetEntityType() != Ombra::Kin::Axis || e->GetEntityLink().kind != kind) continue;
    const int reg = e->GetRegister().value;
    if (reg >= 0 && reg < count) axes.push_back(e);
  }
  return axes;
}

std::vector<double> startAngles(const Entity& axis) {
  const bool limited = axis.GetCheckRangeAxis();
  const double low = limited ? std::max(axis.GetRangeMin(), -kFullTurn) : -kFullTurn;
  const double high = limited ? std::min(axis.GetRangeMax(), kFullTurn) : kFullTurn;
  std::vector<double> angles;
  for (const double angle :
       {(low + high) * 0.5, low, high, -180.0, 180.0, -90.0, 90.0, -270.0, 270.0}) {
    const bool isNew = std::find(angles.begin(), angles.end(), angle) == angles.end();
    if (isNew && low <= angle && angle <= high) angles.push_back(angle);
  }
  return angles;
}

StartGrid::StartGrid(const std::vector<const Entity*>& axes) {
  for (const Entity* axis : axes) {
    wheels_.push_back({axis->GetRegister(), startAngles(*axis)});
    hasNext_ = hasNext_ && !wheels_.back().angles.empty();
  }
}

bool StartGrid::next(MachinePosition& p) {
  if (!hasNext_) return false;
  for (const Wheel& wheel : wheels_) p[wheel.reg] = wheel.angles[wheel.at];
  hasNext_ = advance();
  return true;
}

// Like a counter: the first axis turns over before the next one moves.
bool StartGrid::advance() {
  for (Wheel& wheel : wheels_) {
    if (++wheel.at < wheel.angles.size()) return true;
    wheel.at = 0;
  }
  return false;
}

}  // namespace zkin
