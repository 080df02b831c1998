#pragma once

/// A point of a surface's parameter plane: x is u, y is v.
struct CGeom2d_XY {
  double x = 0;
  double y = 0;
};
