#pragma once

#include "toolkit/solve/Core.h"

namespace korvo {

/// Solves an arm for a frame of its tool, two branches at once. False, with nothing added, where
/// some branch is singular, almost singular or free to turn, where there are too many turns and
/// where a joint is locked or stands inside the arm: that is for the way that knows all cases. Both
/// give the same list.
bool solveRegular(const Query& query, const Values& values, const zgeo::UMatrix& frame,
                  const std::array<int, 2>& freePlaces);

}  // namespace korvo
