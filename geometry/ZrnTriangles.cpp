#include "geometry/ZrnTriangles.h"

#include <algorithm>
#include <atomic>
#include <limits>
#include <new>

#include "geometry/ZrnFace.h"
#include "geometry/ZrnFile.h"
#include "geometry/ZrnSubdivide.h"
#include "platform/solidra/CGeom_Bound.h"

using zgeo::UTri;

namespace zkin {
namespace {

constexpr int kRefused = -1;

/// No edge is longer than the part's largest extent divided by this.
constexpr double kPiecesPerExtent = 15.0;

constexpr double kNoSubdivision = -1.0;

std::atomic<bool> isSubdivided{true};

/// The faces of a file and the box that all its surfaces share.
struct Part {
  std::vector<zrn::FaceRecord> faces;
  CGeom_Bound bound = CGeom_Bound::Empty();
};

void addSurface(const CGeomFileNode& node, Part& part) {
  CGeom_Bound bound;  // the origin, which surfaces of other kinds stand for
  if (node.entity.GetKind() == ZRN_KIND_NURBS_SURFACE) {
    zrn::FaceRecord record = zrn::makeFaceRecord(node);
    if (!record.surface) return;
    record.surface->Get3DBound(bound);
    part.faces.push_back(std::move(record));
  }
  part.bound.Add(bound);
}

Part partOf(const CGeomFileNodeList& nodes) {
  Part part;
  for (const auto& node : nodes) {
    if (ZRN_IsSurface(node->entity.GetKind())) addSurface(*node, part);
  }
  return part;
}

double longestEdge(const CGeom_Bound& bound) {
  const CGeom_XYZ& low = bound.GetLow();
  const CGeom_XYZ& high = bound.GetHigh();
  return std::max({high.x - low.x, high.y - low.y, high.z - low.z}) / kPiecesPerExtent;
}

void convert(Part& part, double tolerance, double longest, std::vector<UTri>& triangles) {
  std::vector<UTri> face;
  for (zrn::FaceRecord& record : part.faces) {
    zrn::faceToTriangles(record, tolerance, face);
    for (const UTri& triangle : face) zrn::subdivide(triangle, longest, triangles);
  }
}

int countOf(const std::vector<UTri>& triangles) {
  constexpr std::size_t kMost = std::numeric_limits<int>::max();
  return static_cast<int>(std::min(triangles.size(), kMost));
}

/// The nodes go as soon as the faces are made of them.
bool load(const char* path, Part& part) {
  CGeomFileNodeList nodes;
  double scale = 1.0;  // Deliberate: not applied; see the header
  if (ZRN_LoadFile(path, nodes, scale) != 0) return false;
  part = partOf(nodes);
  return true;
}

}  // namespace

int ZRN_FileToTriangles(const char* path, double tolerance, std::vector<UTri>& triangles) try {
  triangles.clear();
  Part part;
  if (!load(path, part)) return kRefused;
  const double longest = isSubdivided ? longestEdge(part.bound) : kNoSubdivision;
  convert(part, tolerance, longest, triangles);
  return countOf(triangles);
} catch (const std::bad_alloc&) {
  triangles.clear();
  return kRefused;
}

void ZRN_SetSubdivision(bool on) { isSubdivided = on; }

bool ZRN_GetSubdivision() { return isSubdivided; }

}  // namespace zkin
