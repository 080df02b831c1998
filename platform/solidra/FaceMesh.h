#pragma once

#include <array>
#include <vector>

#include "platform/solidra/CGeom_XYZ.h"
#include "platform/solidra/CMesh_Stats.h"
#include "platform/solidra/Mesher.h"
#include "platform/solidra/Region.h"
#include "platform/solidra/Rim.h"

/// From a surface and what trims it to triangles that keep a tolerance.
namespace solidra {

/// Triangles of one face; a face with more has no mesh.
inline constexpr std::size_t kMaxTriangles = 1'000'000;

/// A mesh in space and in the parameter plane.
struct FaceMesh {
  std::vector<CGeom2d_XY> unit;   ///< Where each vertex lies on the surface.
  std::vector<CGeom_XYZ> points;  ///< The same in mm, in single precision already.
  std::vector<std::array<int, 3>> triangles;
  CMesh_Stats stats;
};

/// Meshes a face. False, and nothing in `out`, when it cannot be meshed within `tolerance`.
bool meshFace(const Surface& surface, const Trim& trim, double tolerance, FaceMesh& out);

/// Cuts triangles further than `tolerance` from the surface until none is; fills `stats.first`,
/// `stats.reached` and `stats.rounds`. False when that takes too many rounds or triangles.
///
/// Edges of the rim are cut at the points of the loops that they stand for, down to the last one.
bool refine(const Surface& surface, double tolerance, const Deadline& deadline, Rim rim,
            FaceMesh& mesh);

/// The point as a vertex holds it.
CGeom_XYZ rounded(const CGeom_XYZ& p);

}  // namespace solidra
