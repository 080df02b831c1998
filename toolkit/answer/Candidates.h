#pragma once

#include "toolkit/answer/Answer.h"

namespace korvo {

/// Turns every rotary axis outside its limits by full turns to the value inside that is nearest to
/// where it starts, when there is one. What lies outside by rounding alone is put on the limit.
void bringInside(const Machine& machine, const Position& from, Position& at);

/// Where the tool has the direction that it has at `at`, by the other solutions of every pair of
/// axes that turn it (of an arm: of the wrist). The linear axes and an arm stay where they are.
std::vector<Position> otherBranches(const Machine& machine, const Position& at);

/// The first three independent free linear axes, counted from the tool, are enough: locks the other
/// linear ones, which then stay where they are.
///
/// The library gives the code of the last three of more than three axes, solved or not, and its
/// lists go by that code.
void lockSpareLinear(Machine& machine, const Position& from);

/// Gives locked rotary axes their value at `from` as limits, so that a list holds no other.
void pinLocked(Machine& machine, const Position& from);

/// The position of a tool that points the wanted way already, carried onto the target by the first
/// three independent free linear axes, counted from the tool; `from` where there are none.
Position carried(const Machine& machine, const Target& target, const Position& from);

}  // namespace korvo
