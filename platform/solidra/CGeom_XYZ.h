#pragma once

/// A point or direction in space, in mm.
struct CGeom_XYZ {
  double x = 0;
  double y = 0;
  double z = 0;
};
