#pragma once

#include <array>
#include <vector>

#include "platform/solidra/CGeom_XYZ.h"
#include "platform/solidra/CMesh_Stats.h"
#include "platform/solidra/Mesher.h"
#include "platform/solidra/Region.h"

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
/// `stats.reached` and `stats.rounds`. False when that takes too many rounds, triangles or steps.
///
/// Sides are cut in their middles in the parameter plane: what covers a region without a fold goes
/// on doing so.
bool refine(const Surface& surface, double tolerance, Work& work, FaceMesh& mesh);

/// Triangulates a region from its rim and from points of the surface that are as dense as
/// `tolerance` asks for. False when the loops cross or that takes too many steps.
bool triangulateDensely(const Surface& surface, const Region& region, double tolerance, Work& work,
                        UvMesh& out);

/// The point as a vertex holds it.
CGeom_XYZ rounded(const CGeom_XYZ& p);

}  // namespace solidra
