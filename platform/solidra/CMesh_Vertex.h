#pragma once

/// A vertex of a mesh in mm. Single precision: 2e-7 of the coordinate.
struct CMesh_Vertex {
  float x = 0;
  float y = 0;
  float z = 0;
};
