#pragma once

#include <memory>
#include <vector>

#include "platform/solidra/CGeom_Surf.h"
#include "platform/solidra/CMesh_Index.h"
#include "platform/solidra/CMesh_Stats.h"
#include "platform/solidra/CMesh_Vertex.h"
#include "platform/solidra/CStd_Array1.h"
#include "platform/solidra/CTopo_Wire.h"
#include "platform/solidra/Export.h"

/// A surface, the curves that trim it, and its triangles.
///
/// Every operation is noexcept in effect: what cannot be meshed is a face without a mesh. No thread
/// is started and nothing process-wide is kept, so different faces may be meshed on different
/// threads.
class SOLIDRA_API CTopo_Face {
 public:
  /// Owns `surface` from now on; null and a refused surface never get a mesh. `kind` is not used.
  CTopo_Face(CGeom_Surf* surface, int kind);
  ~CTopo_Face();
  CTopo_Face(const CTopo_Face&) = delete;
  CTopo_Face& operator=(const CTopo_Face&) = delete;

  const CGeom_Surf* GetSurface() const { return surface_.get(); }

  /// Bounds the face by its surface's own boundary: takes away the wires, and the mesh.
  /// `reversed` has no effect: triangles always turn from u to v.
  void AddOuterWire(bool reversed);

  /// Adds trimming curves, and takes away the mesh. All wires of a face act as one.
  /// @owner  The face owns `wire` from now on; pieces may still be added to it until the face is
  ///         meshed. False for null, and when memory is short.
  bool AddWire(CTopo_Wire* wire);

  /// Takes away the mesh, so that the next ValidateMesh makes it anew. Neither argument is used.
  void Regen(int kind, double tolerance);

  /// Lets pieces follow one another across gaps of up to `gap` mm, as well as across the gaps they
  /// were added with, and takes away the mesh. `deviation` and `angle` are not used: order and
  /// direction of the pieces are found whenever the face is meshed.
  void RepearOrderedWire(double deviation, double angle, double gap);

  /// Makes the mesh, unless the face has one.
  ///
  /// The region: curves are joined end to end, in either direction, across gaps of up to 1e-4 of
  /// the parameter range in both directions or the wire's gap in mm, whichever is wider; a chain
  /// left open is closed by a straight segment. A point is inside when an odd number of loops
  /// surround it, however they turn and in whatever order they were added; what lies outside the
  /// surface's range is cut off. Without loops that enclose an area the whole range is meshed.
  /// Loops that cross each other or themselves, or that share all of their points, give no mesh.
  ///
  /// @units   mm. `chord` is the largest distance between surface and triangles, measured on every
  ///          triangle; at most half of it goes into the boundary. `edge` likewise: the smaller
  ///          one counts. Raised to 1e-6 of the surface's size and 2.5e-7 of its largest
  ///         coordinate, as vertices are no finer.
  /// @return  Whether the face has a mesh. False, and no mesh, for a refused surface, a region that
  ///          cannot be meshed, a tolerance that is not a positive finite number, and a mesh of
  ///          more than a million triangles.
  /// @cost    Nearly linear in the triangles and in the points of the curves: some microseconds
  ///          each. Bounded whatever the input: no more than 2e8 steps go into the wire, 50,000
  ///          points into its curves and 1e9 steps into triangles, which is some seconds. Checking
  ///          the poles and knots is linear in their number, which the caller bounds.
  bool ValidateMesh(double chord, double edge);

  bool HasMesh() const;

  /// The mesh's vertices; how many. 0 and an empty array without a mesh (and when memory is short).
  /// Triangles share vertices inside the face, not across a seam or with other faces.
  int GetMeshVertex(CStd_Array1<CMesh_Vertex>& vertices) const;

  /// The mesh's triangles; how many. None has an area of zero.
  int GetVTriangles(CStd_Array1<CMesh_Index>& triangles) const;

  /// How the mesh came to be; all 0 without one.
  CMesh_Stats GetMeshStats() const;

 private:
  struct Mesh;

  std::unique_ptr<CGeom_Surf> surface_;
  std::vector<std::unique_ptr<CTopo_Wire>> wires_;
  std::unique_ptr<const Mesh> mesh_;
  double gap_ = 0;
};
