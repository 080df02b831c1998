#pragma once

#include <memory>
#include <vector>

#include "geometry/ZrnFile.h"
#include "platform/solidra/CGeom2d_Curve.h"
#include "platform/solidra/CGeom_SNurbs.h"
#include "platform/zgeo/UTri.h"

/// From one surface node to the triangles of its face.
namespace zkin::zrn {

/// A curve in a surface's parameter plane.
struct TrimmingCurve {
  std::unique_ptr<CGeom2d_Curve> curve;
  bool isPolygon = false;
};

/// A surface and what trims it.
struct FaceRecord {
  std::unique_ptr<CGeom_SNurbs> surface;  ///< Null when the node gives none.
  std::vector<TrimmingCurve> trims;
};

/// The NURBS surface of a node of that kind, null when its numbers make none, and the curves that
/// are one in its parameter plane, in order.
/// @errors  Throws std::bad_alloc only.
/// @cost    Copies the poles and knots.
FaceRecord makeFaceRecord(const CGeomFileNode& node);

/// Meshes a face and replaces `triangles` by its triangles, in the mesh's order.
///
/// @param record  Gives its surface away: it has none afterwards.
/// @return  The number of triangles; 0 when the face cannot be meshed; -1 without a surface.
/// @errors  Throws std::bad_alloc only.
int faceToTriangles(FaceRecord& record, double tolerance, std::vector<zgeo::UTri>& triangles);

}  // namespace zkin::zrn
