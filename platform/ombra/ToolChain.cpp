#include "platform/ombra/ToolChain.h"

#include <algorithm>
#include <cstddef>

namespace Ombra::Kin {

Matrix43 motionOf(const Entity& axis, const MachinePosition& position, double sense) {
  const double value = sense * position[axis.GetRegister()];
  const int kind = axis.GetEntityLink().kind;
  if (kind == Linear) return Matrix43::Translation(axis.GetDirection() * value);
  if (kind == Rotary) return Matrix43::Rotation(axis.GetDirection(), axis.GetPivot(), value);
  return {};
}

ToolChain::ToolChain(const Kinematic& kinematic, const Entity& head, const Entity& table)
    : toolFrame_(head.GetToolFrame()), tableFrame_(table.GetZeroPlacement()) {
  const auto below = kinematic.GetChain(table);
  const auto above = kinematic.GetChain(head);
  const auto [tableSide, headSide] =
      std::mismatch(below.begin(), below.end(), above.begin(), above.end());
  steps_.reserve(static_cast<std::size_t>((below.end() - tableSide) + (above.end() - headSide)));
  for (auto e = below.end(); e != tableSide;) steps_.push_back({*--e, -1.0, {}});
  for (auto e = headSide; e != above.end(); ++e) steps_.push_back({*e, 1.0, {}});
}

Matrix43 ToolChain::walk(const MachinePosition& position) {
  Matrix43 placed;
  for (Step& step : steps_) {
    step.direction = placed.ApplyDir(step.axis->GetDirection() * step.sense);
    placed = placed * motionOf(*step.axis, position, step.sense);
  }
  return placed * toolFrame_;
}

const ToolChain::Step* ToolChain::find(const Register& reg) const {
  const auto found = std::find_if(steps_.begin(), steps_.end(), [&reg](const Step& step) {
    return step.axis->GetRegister() == reg;
  });
  return found == steps_.end() ? nullptr : &*found;
}

}  // namespace Ombra::Kin
