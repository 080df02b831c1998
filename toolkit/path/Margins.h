#pragma once

#include <algorithm>

#include "toolkit/path/Axes.h"

namespace korvo {

/// The least distance of a position to a limit, and of which axis.
inline void takeMargin(const PathAxes& axes, PathPosition& position) {
  for (const PathAxis& axis : axes.all()) {
    const double value = position.values[axis.at()];
    const double margin = std::min(value - axis.min, axis.max - value);
    if (!(margin < position.margin)) continue;
    position.margin = margin;
    position.marginPlace = axis.place;
  }
}

}  // namespace korvo
