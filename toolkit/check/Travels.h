#pragma once

#include <optional>
#include <vector>

#include "toolkit/check/Operands.h"
#include "toolkit/check/Rule.h"

namespace korvo::checking {

/// The limits of an axis when the whole file is read, and where they stand.
struct Travel {
  int rank = 0;  ///< Of the axis.
  std::optional<double> min, max;
  Place minPlace, maxPlace;

  std::optional<double> length() const {
    if (!min || !max) return {};
    return *max - *min;
  }
};

/// The limits of every element that has some, in the order in which they are first named.
std::vector<Travel> travelsOf(const Source& source);

/// A point on a tool or on the centre line of a rotary axis.
struct StatedPoint {
  int rank = 0;
  zgeo::UVec3d point;
  double distance = 0.0;  ///< From the origin.
};

/// The points that element lines state and that are finite.
std::vector<StatedPoint> pointsOf(const LinkedElements& linked);

/// The line that declares an element.
const SourceLine& lineOf(const Source& source, int rank);

/// The operands of an element that a reader takes for `role`; the whole line without them.
Place placeOf(const Source& source, int rank, Role role);

}  // namespace korvo::checking
