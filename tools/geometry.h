#pragma once

#include <optional>
#include <string>
#include <vector>

#include "geometry/ZrnFile.h"
#include "platform/zgeo/UTri.h"
#include "toolkit/geometry/Measure.h"

namespace korvo::tools {

/// All that a geometry file holds, and what reading it said.
struct GeometryAnswer {
  std::string file;
  bool isText = false;  ///< A .zrn file; an STL file otherwise, which has code and triangles alone.
  int code = 0;         ///< Of the reader.
  double scale = 1.0;
  std::vector<std::string> messages;  ///< Of the reader, as sent.
  zkin::CGeomFileNodeList nodes;
  std::vector<zgeo::UTri> triangles;  ///< In the file's own frame and units.
  Measures measures;                  ///< Of the triangles.
  std::optional<std::string> output;  ///< The file that the triangles were written to.
};

}  // namespace korvo::tools
