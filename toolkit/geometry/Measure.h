#pragma once

#include <cstddef>
#include <vector>

#include "platform/zgeo/UTri.h"
#include "platform/zgeo/UVec3d.h"
#include "toolkit/Export.h"

namespace korvo {

/// What can be measured of triangles, in their own unit of length.
struct Measures {
  std::size_t count = 0;      ///< Triangles.
  zgeo::UVec3d min, max;      ///< Corners of the smallest box around them; zero for none.
  double area = 0.0;          ///< Sum of their areas.
  double volume = 0.0;        ///< What they enclose; below zero where their outside looks inwards.
  std::size_t openEdges = 0;  ///< Edges of an odd number of triangles: 0 for a closed surface.
};

/// Measures `triangles`.
///
/// Corners are one point when their coordinates are equal exactly, and an edge is two of them. So a
/// surface that is stitched together within a tolerance only, or with a corner in the middle of
/// another triangle's edge, has open edges there. Faces of a geometry text file are meshed one by
/// one: inside a face every edge is shared, along the border of two faces only where both put their
/// corners on the same points.
///
/// The volume does not take the order of corners on trust: subdivided triangles of such a file are
/// deliberately turned, some of them, against their neighbours. Where exactly two triangles share
/// an edge they count as turned alike, and what hangs together so is turned as most of its area is.
///
/// @units   Those of the corners, squared and cubed for area and volume.
/// @frames  Any: moving or turning the triangles changes no measure but the box.
/// @errors  With open edges the volume is that of cones from the middle of the box to the
///          triangles, a hint at best. Coordinates that are no numbers, or so large that their
///          products overflow, make area and volume infinite or NaN. Throws std::length_error above
///          1.4e9 triangles, std::bad_alloc.
/// @cost    About one sorting of all edges, whatever the corners; memory below 100 bytes a triangle
///          beside the list where triangles share their corners, 300 where none does.
KORVO_TOOLKIT_API Measures measure(const std::vector<zgeo::UTri>& triangles);

}  // namespace korvo
