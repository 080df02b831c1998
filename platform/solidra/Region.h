#pragma once

#include <vector>

#include "platform/solidra/Nurbs.h"

/// From trimming curves to the parts of the parameter plane that they bound.
namespace solidra {

/// A closed polyline in unit parameters, without its first point again at its end.
using Loop = std::vector<CGeom2d_XY>;

/// One connected part: what `outer` (counter-clockwise) surrounds but the holes (clockwise) do not.
struct Region {
  Loop outer;
  std::vector<Loop> holes;
  bool isWhole = false;  ///< The whole surface; the loops are then its four corners.
};

/// What trims a face.
struct Trim {
  std::vector<Curve> curves;
  double gap = 0;  ///< In mm.
};

/// Steps that one wire may cost: comparisons of ends, segments and points. Some seconds' worth.
inline constexpr long long kMaxWork = 200'000'000;

/// Points that the loops of one wire may have together.
inline constexpr std::size_t kMaxBoundary = 50'000;

/// Steps left; false from spend() when they are used up.
class Work {
 public:
  bool spend(long long steps) { return (left_ -= steps) >= 0; }

 private:
  long long left_ = kMaxWork;
};

/// The loops of the curves, flattened within `tolerance` mm, cut to the unit square: flatten, join,
/// clip in this order. `false` where they cost too much. No loops at all: nothing is trimmed.
struct Loops {
  std::vector<Loop> loops;
  bool isTrimmed = false;
};
bool makeLoops(const Surface& surface, const Trim& trim, double tolerance, Work& work, Loops& out);

/// What an odd number of loops surround. False when loops cross or cannot be told apart.
bool makeRegions(std::vector<Loop> loops, Work& work, std::vector<Region>& out);

/// The part of the even-odd inside of `loops` that lies in the unit square.
std::vector<Loop> clipToUnit(std::vector<Loop> loops);

/// Area, positive when counter-clockwise.
double signedArea(const Loop& loop);

}  // namespace solidra
