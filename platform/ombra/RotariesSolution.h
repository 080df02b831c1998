#pragma once

#include <array>

#include "platform/ombra/Angle.h"

namespace Ombra::Kin {

/// Angles of a pair of rotary axes, in the order in which their registers were given.
struct RotaryPair {
  Angle first;
  Angle second;
};

/// What turns a tool onto a direction: no, one or two pairs.
struct RotariesSolution {
  int count = 0;
  std::array<RotaryPair, 2> pairs{};
};

}  // namespace Ombra::Kin
