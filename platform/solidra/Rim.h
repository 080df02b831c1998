#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "platform/solidra/Mesher.h"
#include "platform/solidra/Region.h"

/// Loops in two finenesses. The mesher's time grows with the square of the points on a face's rim
/// and worse: it is given few of them, and the others are put in where triangles are cut.
namespace solidra {

/// A stretch of a loop: positions are indices of its points and fractions between them, from < to;
/// beyond the loop's size they go on at its start.
struct Stretch {
  const Loop* loop = nullptr;
  double from = 0;
  double to = 0;
};

/// Key of an edge from vertex a to vertex b.
inline std::uint64_t directedKey(int a, int b) {
  return static_cast<std::uint64_t>(a) << 32 | static_cast<unsigned>(b);
}

/// The stretches of loops that edges of a mesh stand for, where that is more than the edge itself.
using Rim = std::unordered_map<std::uint64_t, Stretch>;

/// A region with fewer points on its loops.
struct CoarseRegion {
  Region region;
  /// For the outer loop and each hole, the indices of the points that were kept.
  std::vector<std::vector<std::size_t>> kept;
};

/// Keeps points so that no other is further than `tolerance` mm from where the straight piece that
/// stands for it lies on the surface, and loops keep their shape however small they are.
CoarseRegion coarsen(const Surface& surface, const Region& region, double tolerance);

/// Moves the vertices that the mesher put on straight pieces of `coarse` onto the loops of
/// `region`, which must outlive the rim, and finds what each edge there stands for. Vertices of the
/// mesh count from `first` in the rim. False when the mesh's boundary is not that of the region.
bool makeRim(const Region& region, const CoarseRegion& coarse, int first, UvMesh& mesh, Rim& rim);

/// The loop's point in the middle of a stretch, and its position; there is one inside.
double middleOf(const Stretch& stretch);
CGeom2d_XY pointAt(const Loop& loop, double position);

/// Whether points of the loop lie strictly inside the stretch.
bool hasPoints(const Stretch& stretch);

}  // namespace solidra
