#pragma once

#include <string>
#include <vector>

#include "platform/zgeo/UVec2d.h"
#include "platform/zgeo/UVec3d.h"

namespace korvo::bench {

/// A polyline, or a NURBS surface with one UV polyline as its rim.
struct PlainEntity {
  std::vector<zgeo::UVec3d> points;  ///< Or poles.
  std::vector<double> weights, knotsU, knotsV;
  long long degreeU = 0, degreeV = 0;
  std::vector<zgeo::UVec2d> rim;
};

/// Reads a geometry file that holds nothing else, a line at a time by fgets and sscanf, as a short
/// program would.
std::vector<PlainEntity> plainZrn(const std::string& path);

}  // namespace korvo::bench
