// A whole geometry file to triangles: what comes is finite, counted, within the surfaces' reach and
// cut up as far as it must be.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "geometry/ZrnFile.h"
#include "geometry/ZrnTriangles.h"
#include "tests/support/MemoryFile.h"

namespace {

using zgeo::UTri;
using zgeo::UVec3d;

void require(bool holds) {
  if (!holds) std::abort();
}

/// Largest extent of the poles of all NURBS surfaces, and of the origin where another surface is:
/// no smaller than that of the surfaces themselves, which lie among their poles.
class Extent {
 public:
  explicit Extent(const char* path) {
    zkin::CGeomFileNodeList nodes;
    double scale = 0;
    require(zkin::ZRN_LoadFile(path, nodes, scale) == 0);
    for (const auto& node : nodes) add(node->entity);
  }
  double largest() const {
    const UVec3d size = high_ - low_;
    return std::fmax(size.x, std::fmax(size.y, size.z));
  }
  /// Whether a point is no further out than rounding to single precision takes it.
  bool holds(const UVec3d& p) const {
    const double slack = 1e-6 * (1 + std::fmax(high_.norm(), low_.norm()));
    return p.x >= low_.x - slack && p.y >= low_.y - slack && p.z >= low_.z - slack &&
           p.x <= high_.x + slack && p.y <= high_.y + slack && p.z <= high_.z + slack;
  }

 private:
  void add(const zkin::CGeomFileEntity& e) {
    if (e.GetKind() == zkin::ZRN_KIND_NURBS_SURFACE) {
      const auto& s = static_cast<const zkin::CGeomFilePrivateNurbsSurface&>(*e.GetGeom());
      for (const UVec3d& pole : s.poles) add(pole);
    } else if (zkin::ZRN_IsSurface(e.GetKind())) {
      add(UVec3d());
    }
  }
  void add(const UVec3d& p) {
    low_ = {std::fmin(low_.x, p.x), std::fmin(low_.y, p.y), std::fmin(low_.z, p.z)};
    high_ = {std::fmax(high_.x, p.x), std::fmax(high_.y, p.y), std::fmax(high_.z, p.z)};
  }

  UVec3d low_{HUGE_VAL, HUGE_VAL, HUGE_VAL};
  UVec3d high_{-HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
};

bool isFinite(const UTri& t) {
  bool finite = true;
  for (const UVec3d& p : t.p)
    finite &= std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
  return finite;
}

double longestEdge(const UTri& t) {
  return std::fmax(t.p[0].distanceTo(t.p[1]),
                   std::fmax(t.p[1].distanceTo(t.p[2]), t.p[2].distanceTo(t.p[0])));
}

/// Coarser than bodies are meshed, so that a face takes milliseconds and not seconds.
constexpr double kTolerance = 0.5;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const korvo::test::MemoryFile file(data, size);
  const std::string path = file.path();
  std::vector<UTri> triangles(3);
  const int count = zkin::ZRN_FileToTriangles(path.c_str(), kTolerance, triangles);
  require(count >= -1);
  require(triangles.size() == static_cast<std::size_t>(count < 0 ? 0 : count));
  if (triangles.empty()) return 0;

  const Extent extent(path.c_str());
  const double longest = extent.largest() / 15;
  for (const UTri& t : triangles) {
    require(isFinite(t));
    for (const UVec3d& p : t.p) require(extent.holds(p));
    require(longestEdge(t) <= longest * (1 + 1e-12));
  }
  return 0;
}
