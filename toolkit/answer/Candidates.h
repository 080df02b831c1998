#pragma once

#include "toolkit/answer/Answer.h"

namespace korvo {

/// Turns every rotary axis outside its limits by full turns to the value inside that is nearest to
/// where it starts, when there is one. What lies outside by rounding alone is put on the limit.
void bringInside(const Machine& machine, const Position& from, Position& at);

/// Where the tool has the direction that it has at `at`, by the other solutions of every pair of
/// axes that turn it (of an arm: of the wrist). The linear axes and an arm stay where they are.
std::vector<Position> otherBranches(const Machine& machine, const Position& at);

/// Brings an arm whose wrist centre misses its place by `way`, a hair, there by one step along the
/// first three joints, and turns the wrist onto `direction` the nearest way. Nothing where these
/// joints lose a degree of freedom.
void polishArm(const Machine& machine, const zgeo::UVec3d& centre, const zgeo::UVec3d& way,
               const zgeo::UVec3d& direction, Position& at);

/// Gives locked rotary axes their value at `from` as limits, so that a list holds no other.
void pinLocked(Machine& machine, const Position& from);

}  // namespace korvo
