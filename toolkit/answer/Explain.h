#pragma once

#include "toolkit/answer/Answer.h"

namespace korvo {

/// Fills in why `answer`, the best that was found from `from`, is none: reason, amount, words,
/// conditions. `machine` is as the solver has it.
void explainMiss(const Machine& machine, const Target& target, const Position& from,
                 Answer& answer);

/// The direction nearest to the target's that the free rotary axes can turn the tool to, a hair
/// inside what they reach; nothing without two of them.
std::optional<zgeo::UVec3d> nearestDirection(const Machine& machine, const Target& target,
                                             const Position& from);

/// The same for a position that is reached outside the limits; fills in `outside` as well.
void explainOutside(const Machine& machine, Answer& answer);

/// Axes outside their limits, from the margins.
std::vector<AxisOutside> outsideOf(const std::vector<Margin>& margins);

/// Names of the locked axes whose values differ.
std::string movedLocks(const Machine& machine, const Position& from, const Position& to);

}  // namespace korvo
