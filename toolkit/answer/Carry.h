#pragma once

#include "toolkit/answer/Answer.h"

namespace korvo {

/// Positions of a tool that points the wanted way already, carried towards the target by the free
/// linear axes: by every three independent ones, the library's choice first, the others staying
/// where they are. With more than three an axis left outside its limits is also put on the limit
/// and the rest carries on. Fewer than three independent axes go as near as they can. Empty without
/// a free one.
std::vector<Position> carriedWays(const Machine& machine, const Target& target,
                                  const Position& from);

/// Whether more than three linear axes are free and some stand behind a rotary one: the library
/// takes the first three from the tool, and how far these go depends on how the tool is turned.
bool hasTurnedSpare(const Machine& machine);

/// Whether the first three free linear axes that can carry the tool, counted from it, nearly lie in
/// one plane.
bool isNearlyDependent(const Machine& machine, const Position& at);

/// Locks every linear axis: what is solved then is the direction alone.
void lockLinear(Machine& machine);

}  // namespace korvo
