#pragma once

#include <vector>

#include "platform/zgeo/UTri.h"

namespace zkin::zrn {

/// Appends the pieces of `triangle`, cut at the midpoints of its edges longer than `longest` and
/// those of its pieces again, until none has such an edge.
///
/// Deliberate: of the four pieces of a triangle with three long edges, the middle one turns the
/// other way; all others turn as their triangle.
///
/// @param longest  In the unit of the corners. Not a positive finite number: nothing is cut.
/// @errors  A triangle with a corner that is not finite is appended as it is. Cutting ends after
///          `kMostCuts` rounds, so that no triangle makes more than 4^kMostCuts pieces; then longer
///          edges stay.
/// @cost    Linear in the pieces.
void subdivide(const zgeo::UTri& triangle, double longest, std::vector<zgeo::UTri>& pieces);

/// Rounds of cutting. Corners lie in a box whose longest side is 15 times `longest`, so edges are
/// at most sqrt(3) * 15 = 26 times as long. A round halves the longest edge, or nearly: of two long
/// edges x and y, x >= y, and one c <= 1, the quadrilateral's shorter diagonal d has
/// 4 d^2 = 2 y^2 + 2 c^2 - x^2 <= x^2 + 2. So 26 becomes 13.1, 6.6, 3.4, 1.9, 1.2, 0.9: six rounds.
inline constexpr int kMostCuts = 8;

}  // namespace zkin::zrn
