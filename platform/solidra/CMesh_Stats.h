#pragma once

/// How a face's mesh came to be.
struct CMesh_Stats {
  double asked =
      0;  ///< Deflection asked of the mesher, in mm; coarser than the tolerance at first.
  double first = 0;     ///< Largest distance between surface and triangles that it gave, in mm.
  double reached = 0;   ///< The same of the mesh as it stands, in mm.
  bool missed = false;  ///< Whether the mesher missed what was asked of it (first > asked).
  int rounds = 0;       ///< Rounds in which triangles too far from the surface were cut.
  int attempts = 0;     ///< Meshes asked for, each finer than the one before; 1 is the rule.
};
