#pragma once

#include <string>
#include <vector>

#include "tests/solidra/Faces.h"

/// Trimmed surfaces as plain data, from which both meshers make what they take.
namespace korvo::bench {

/// A curve of a loop: a polyline (degree 1) or a rational one.
struct Trim {
  int degree = 1;
  std::vector<CGeom2d_XY> poles;
  std::vector<double> weights;

  std::vector<double> flatKnots() const;
};

using Loop = std::vector<Trim>;

Trim polyline(const std::vector<CGeom2d_XY>& points);

struct FaceModel {
  std::string kind;
  test::Patch patch;
  std::vector<Loop> loops;  ///< The outer one counter-clockwise, the hole clockwise; or none.
};

/// Five kinds of faces, each in some sizes.
std::vector<FaceModel> faceModels(int sizes);

}  // namespace korvo::bench
