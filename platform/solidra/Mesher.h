#pragma once

#include <array>
#include <vector>

#include "platform/solidra/Region.h"

/// The one seam to what triangulates: Mesher_module.cpp, which loads the module made of
/// Mesher_occt.cpp, or, without a mesher, Mesher_none.cpp.
namespace solidra {

/// Triangles in the parameter plane.
struct UvMesh {
  std::vector<CGeom2d_XY> points;  ///< Unit parameters.
  std::vector<std::array<int, 3>> triangles;
};

/// Triangulates a region of a surface so that no triangle should be further than `deflection` mm
/// from the surface. Callers measure whether that is so, and where the triangles lie.
///
/// @errors  False where the mesher refuses the region, says that it did it wrongly, or takes too
/// many
///          steps. Throws nothing but what std::exception is the base of.
/// @cost    Grows with the square of the region's points, and worse: give it few.
using Mesher = bool (*)(const Surface& surface, const Region& region, double deflection,
                        UvMesh& out);

/// The mesher, which the first call loads; it stays. Null when there is none: no face has a mesh
/// then.
Mesher mesher();

}  // namespace solidra
