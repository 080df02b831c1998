#include "platform/solidra/FaceMesh.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace solidra {

namespace {

// The part of the tolerance that cutting curves into straight pieces may use.
constexpr double kBoundaryShare = 0.5;

// What the samples of a triangle may reach of the tolerance: between them it may be a little more.
constexpr double kSampledShare = 0.92;

// Vertices are no finer than this: of the surface's size, and of its largest coordinate (single
// precision rounds by 6e-8 of it, in each of three directions).
constexpr double kFinestOfSize = 1e-6;
constexpr double kFinestOfCoordinate = 2.5e-7;

// Triangles cover exactly what the loops enclose, but for rounding: beyond, the mesher has turned a
// loop inside out or lost one, which it does without a word, or has folded triangles over.
constexpr double kAreaSlack = 1e-6;

// Steps that a face may cost, of some nanoseconds each: far more than a million triangles take.
constexpr long long kMaxSteps = 1'000'000'000;

// What the mesher is asked for, of the surface's size, where the tolerance is finer: its time grows
// faster than its triangles (70 microseconds each at 1e-4 of the size), cutting them costs one or
// two.
constexpr double kCoarse = 1.0 / 500;

// Points on a rim that the mesher is given. Its time grows with their square: a thousand may take
// it a second. Beyond, the own triangulation is as good and faster by far.
constexpr std::size_t kMaxRim = 100;

double finest(const Surface& surface) {
  const CGeom_Bound bound = surface.poleBound();
  double largest = 0;
  for (const CGeom_XYZ& p : {bound.GetLow(), bound.GetHigh()})
    largest = std::max({largest, std::abs(p.x), std::abs(p.y), std::abs(p.z)});
  return std::max(kFinestOfSize * bound.GetDiag(), kFinestOfCoordinate * largest);
}

std::vector<Region> wholeRegion() { return {{{{0, 0}, {1, 0}, {1, 1}, {0, 1}}, {}, true}}; }

bool regionsOf(const Surface& surface, const Trim& trim, double tolerance,
               std::vector<Region>& out) {
  Work work;
  Loops loops;
  if (!makeLoops(surface, trim, tolerance, work, loops)) return false;
  if (loops.isTrimmed) return makeRegions(std::move(loops.loops), work, out) && !out.empty();
  out = wholeRegion();
  return true;
}

double areaOf(const Region& region) {
  double area = signedArea(region.outer);
  for (const Loop& hole : region.holes) area += signedArea(hole);
  return area;
}

// No triangle is turned over, and together they cover what the loops enclose.
bool isUnfolded(const Region& region, const UvMesh& mesh) {
  double found = 0;
  for (const auto& [a, b, c] : mesh.triangles) {
    const double area = signedArea({mesh.points[a], mesh.points[b], mesh.points[c]});
    if (area < 0) return false;
    found += area;
  }
  const double wanted = areaOf(region);
  return std::abs(found - wanted) <= kAreaSlack * wanted;
}

void append(const Surface& surface, const UvMesh& part, FaceMesh& out) {
  const int first = static_cast<int>(out.unit.size());
  for (const CGeom2d_XY& p : part.points) {
    out.unit.push_back(p);
    out.points.push_back(rounded(surface.unitPoint(p)));
  }
  for (const auto& [a, b, c] : part.triangles)
    out.triangles.push_back({first + a, first + b, first + c});
}

// Whether the three points span no area, which is so along collapsed sides.
bool isFlat(const CGeom_XYZ& a, const CGeom_XYZ& b, const CGeom_XYZ& c) {
  const CGeom_XYZ p{b.x - a.x, b.y - a.y, b.z - a.z};
  const CGeom_XYZ q{c.x - a.x, c.y - a.y, c.z - a.z};
  return p.y * q.z == p.z * q.y && p.z * q.x == p.x * q.z && p.x * q.y == p.y * q.x;
}

void dropFlat(FaceMesh& mesh) {
  std::erase_if(mesh.triangles, [&](const std::array<int, 3>& t) {
    return isFlat(mesh.points[t[0]], mesh.points[t[1]], mesh.points[t[2]]);
  });
}

std::size_t pointsOf(const std::vector<Region>& regions) {
  std::size_t count = 0;
  for (const Region& region : regions) {
    count += region.outer.size();
    for (const Loop& hole : region.holes) count += hole.size();
  }
  return count;
}

/// Triangulates one region; false when it cannot.
using Way = std::function<bool(const Region&, UvMesh&)>;

// One way of triangulating, checked, then cut until it keeps the tolerance.
bool meshBy(const Way& way, const Surface& surface, const std::vector<Region>& regions,
            double tolerance, Work& work, FaceMesh& out) {
  out.unit.clear();
  out.points.clear();
  out.triangles.clear();
  ++out.stats.attempts;
  for (const Region& region : regions) {
    UvMesh part;
    if (!way(region, part) || !isUnfolded(region, part)) return false;
    append(surface, part, out);
  }
  if (!refine(surface, kSampledShare * tolerance, work, out)) return false;
  out.stats.missed = out.stats.first > out.stats.asked;
  dropFlat(out);
  return !out.triangles.empty() && out.triangles.size() <= kMaxTriangles;
}

}  // namespace

CGeom_XYZ rounded(const CGeom_XYZ& p) {
  return {static_cast<float>(p.x), static_cast<float>(p.y), static_cast<float>(p.z)};
}

bool meshFace(const Surface& surface, const Trim& trim, double tolerance, FaceMesh& out) {
  const double least = finest(surface);
  if (!std::isfinite(tolerance) || tolerance <= 0 || least == 0) return false;
  tolerance = std::max(tolerance, least);
  const Mesher triangulate = mesher();
  if (!triangulate) return false;
  std::vector<Region> regions;
  if (!regionsOf(surface, trim, kBoundaryShare * tolerance, regions)) return false;
  Work work(kMaxSteps);
  out = {};
  out.stats.asked = std::max(tolerance, kCoarse * surface.poleBound().GetDiag());
  const Way byMesher = [&](const Region& region, UvMesh& part) {
    return triangulate(surface, region, out.stats.asked, part);
  };
  if (pointsOf(regions) <= kMaxRim && meshBy(byMesher, surface, regions, tolerance, work, out))
    return true;
  if (out.triangles.size() > kMaxTriangles / 2) return false;  // no other way takes far fewer
  out.stats.asked = tolerance;
  const Way densely = [&](const Region& region, UvMesh& part) {
    return triangulateDensely(surface, region, tolerance, work, part);
  };
  return meshBy(densely, surface, regions, tolerance, work, out);
}

}  // namespace solidra
