#pragma once

#include <optional>
#include <vector>

#include "platform/ombra/Entity.h"
#include "platform/ombra/Indices.h"
#include "platform/ombra/Kinematic.h"
#include "platform/ombra/MachinePosition.h"
#include "platform/ombra/Matrix43.h"
#include "platform/ombra/Vector3D.h"

namespace Ombra::Kin {

/// The motion of an axis at a position, about or along its line at the zero position; against its
/// sense when `sense` is -1.
Matrix43 motionOf(const Entity& axis, const MachinePosition& position, double sense);

/// The axes between a table and the tool of a head, the one next to the table first: those below
/// the table in the opposite sense, then those below the head. What carries both is left out.
class ToolChain {
 public:
  ToolChain(const Kinematic& kinematic, const Entity& head, const Entity& table);

  /// One axis on the way, as its predecessors have placed it.
  struct Step {
    const Entity* axis = nullptr;
    double sense = 1.0;
    Vector3D direction;  ///< For growing values, as far as the walk has moved it.
  };

  /// Moves every direction to where the position has it.
  /// @return  The tool frame, the table taken as it stands at the zero position.
  Matrix43 walk(const MachinePosition& position);

  /// The step of a register, or null; valid like this object.
  const Step* find(const Register& reg) const;

  /// From the frame of the table to where `walk` has its frame.
  const Matrix43& tableFrame() const { return tableFrame_; }

 private:
  std::vector<Step> steps_;
  Matrix43 toolFrame_;
  Matrix43 tableFrame_;
};

}  // namespace Ombra::Kin
