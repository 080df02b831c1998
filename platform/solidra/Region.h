#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "platform/solidra/Nurbs.h"

/// From trimming curves to the parts of the parameter plane that they bound.
namespace solidra {

/// Points of loops are rounded to multiples of 1 / kGrid: 1e-9 of the parameter range. Whether
/// three of them turn left is then exact in 64 bits, and so are the middles of their connections in
/// doubles, many times over.
inline constexpr double kGrid = 1 << 30;

/// A point of that grid.
struct GridPoint {
  std::int64_t x = 0;
  std::int64_t y = 0;
};

inline GridPoint gridPoint(const CGeom2d_XY& p) {
  return {std::llround(p.x * kGrid), std::llround(p.y * kGrid)};
}

inline CGeom2d_XY unitOf(const GridPoint& p) {
  return {static_cast<double>(p.x) / kGrid, static_cast<double>(p.y) / kGrid};
}

/// Twice the area of the triangle, positive when it turns left.
inline std::int64_t turn(const GridPoint& a, const GridPoint& b, const GridPoint& c) {
  return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

/// The distance of two steps of the grid within which loops touch rather than cross: rounding moves
/// each of their points by up to one.
inline constexpr double kTouch = 2;

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

/// Steps left; false from spend() when they are used up. Counted, so that what is given up does not
/// depend on how fast a machine is.
class Work {
 public:
  explicit Work(long long steps = kMaxWork) : left_(steps) {}
  bool spend(long long steps) { return (left_ -= steps) >= 0; }

 private:
  long long left_;
};

/// The loops of the curves, flattened within `tolerance` mm, cut to the unit square: flatten, join,
/// clip in this order. `false` where they cost too much. No loops at all: nothing is trimmed.
struct Loops {
  std::vector<Loop> loops;
  bool isTrimmed = false;
};
bool makeLoops(const Surface& surface, const Trim& trim, double tolerance, Work& work, Loops& out);

/// Whether no two segments of the loops clearly cross. False too when the work is used up.
bool areFreeOfCrossings(const std::vector<Loop>& loops, Work& work);

/// What an odd number of loops surround. False when loops cross or cannot be told apart.
bool makeRegions(std::vector<Loop> loops, Work& work, std::vector<Region>& out);

/// The part of the even-odd inside of `loops` that lies in the unit square.
std::vector<Loop> clipToUnit(std::vector<Loop> loops);

/// Area, positive when counter-clockwise.
double signedArea(const Loop& loop);

}  // namespace solidra
