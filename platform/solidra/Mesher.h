#pragma once

#include <array>
#include <chrono>
#include <vector>

#include "platform/solidra/Region.h"

/// The one seam to what triangulates: Mesher_occt.cpp or, without a mesher, Mesher_none.cpp.
namespace solidra {

/// Triangles in the parameter plane.
struct UvMesh {
  std::vector<CGeom2d_XY> points;  ///< Unit parameters.
  std::vector<std::array<int, 3>> triangles;
};

/// When meshing is given up. A last resort against hostile data: no sensible face comes near it.
class Deadline {
 public:
  using Clock = std::chrono::steady_clock;
  explicit Deadline(Clock::duration time) : end_(Clock::now() + time) {}
  bool isPast() const { return Clock::now() > end_; }

 private:
  Clock::time_point end_;
};

/// Triangulates regions of a surface, one mesh for each, so that no triangle should be further than
/// `deflection` mm from the surface. Callers measure whether that is so.
///
/// @errors  False where the mesher refuses a region, says that it did it wrongly, or runs out of
/// time.
///          Throws nothing but what std::exception is the base of.
bool triangulate(const Surface& surface, const std::vector<Region>& regions, double deflection,
                 const Deadline& deadline, std::vector<UvMesh>& out);

}  // namespace solidra
