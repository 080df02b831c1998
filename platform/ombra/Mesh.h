#pragma once

#include <cstdint>

namespace Ombra {

/// A view of a polygon mesh: corners of the polygons one after the other, as indices of points.
/// Nothing is checked: counts may be below 3, indices may lie beyond the arrays.
struct Mesh {
  const std::uint32_t* vertexCounts = nullptr;  ///< How many corners each polygon has.
  std::uint32_t polygonCount = 0;
  const std::uint32_t* indices = nullptr;  ///< All corners, polygon after polygon.
  std::uint32_t indexCount = 0;
  const double* points = nullptr;  ///< Four doubles each: x, y, z (mm) and one that is not used.
  std::uint32_t pointCount = 0;
};

}  // namespace Ombra
