#pragma once

#include <vector>

#include "kinematics/Export.h"
#include "platform/zgeo/UTri.h"

namespace zkin {

/// Triangles of the faces of a geometry file (.zrn).
///
/// Every NURBS surface of the file gives a face, bounded by those of its trimming curves that lie
/// in its parameter plane (UV polylines and NURBS curves); without such a curve it is the whole
/// parameter range. Curves, and planar, polynomial and multi-patch surfaces, give nothing. Poles of
/// a NURBS trimming curve are taken as (v, u), points of a UV polyline as (u, v).
///
/// Triangles with an edge longer than L are cut up until none has one; the pieces lie in their
/// triangle. L is a fifteenth of the largest extent of all faces together, untrimmed; a surface of
/// another kind counts as a point at the origin. See `ZRN_SetSubdivision`.
///
/// @param path       Narrow path of a regular file, taken as it is (UTF-8 on Windows).
/// @param tolerance  Largest distance between a surface and its triangles, where the face can be
///                   meshed that finely; otherwise, and when it is no positive finite number, a
///                   tenth of the diagonal of the surface's box.
/// @param[out] triangles  Emptied first (its storage is kept), then the faces' in file order. They
///                   turn from u to v, but Deliberate: the middle one of four pieces turns the
///                   other way (test:
///                   ZrnSubdivide.ThreeLongEdgesGiveFourPiecesWithTheMiddleOneReversed).
/// @frames  The file's own.
/// @units   The file's own; Deliberate: its scale is not applied (test:
///          ZrnTriangles.ScaleOfTheFileIsNotApplied). Corners are rounded to single precision.
/// @return  The number of triangles: 0 too when no face could be meshed, and the largest int when
///          there are more. -1, and an empty list, when `ZRN_LoadFile` does not return 0, and when
///          memory is short.
/// @errors  A surface or curve that is none (knots that are too few or decrease, a degree outside 1
///          to 25 or above the number of poles - 1, numbers that are not finite, weights that are
///          not positive, loops that cross) is left out and the rest goes on; nothing is told.
///          Never throws.
/// @cost    Bounded for each face: at most a million triangles before they are cut up.
KORVO_KINEMATICS_API int ZRN_FileToTriangles(const char* path, double tolerance,
                                             std::vector<zgeo::UTri>& triangles);

/// Whether long triangles are cut up; on from the start. One switch for the process, read once by
/// each conversion: may be set while another thread converts.
KORVO_KINEMATICS_API void ZRN_SetSubdivision(bool on);
KORVO_KINEMATICS_API bool ZRN_GetSubdivision();

}  // namespace zkin
