#pragma once

/// A triangle as indices into the vertices. It turns from the surface's u to its v direction.
struct CMesh_Index {
  int i0 = 0;
  int i1 = 0;
  int i2 = 0;
};
