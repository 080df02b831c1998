#include "platform/solidra/FaceMesh.h"

#include <algorithm>
#include <cmath>
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

// The mesher's parts may differ from what the loops enclose by this share of it: beyond, it has
// turned a loop inside out or lost one, which it does without a word.
constexpr double kAreaSlack = 0.01;

// The same once all points of the loops are in the mesh: rounding alone.
constexpr double kFoldSlack = 1e-6;

constexpr std::chrono::seconds kMaxTime{10};

// What the mesher is asked for first, of the surface's size, where the tolerance is finer. Its time
// grows faster than its triangles (70 microseconds each at 1e-4 of the size), cutting them costs
// one or two: the same tolerance is reached some ten times as fast, and with fewer triangles.
constexpr double kCoarse = 1.0 / 500;

// How far the loops may be simplified for it.
constexpr double kRimShare = 0.1;

// Points that a rim may have to be left whole: a thousand may take the mesher a second.
constexpr std::size_t kMaxFullRim = 1000;

// Points that the mesher is given at all: its time and memory grow with their square at worst, and
// it looks at no clock meanwhile.
constexpr std::size_t kMaxRim = 5000;

// Where the first mesh leads to none within the tolerance, the mesher is asked for finer ones.
constexpr int kAttempts = 3;
constexpr double kFiner = 0.2;

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

double areaOf(const UvMesh& mesh) {
  double area = 0;
  for (const auto& [a, b, c] : mesh.triangles)
    area += std::abs(signedArea({mesh.points[a], mesh.points[b], mesh.points[c]}));
  return area;
}

bool isRightArea(const Region& region, const UvMesh& mesh) {
  const double wanted = areaOf(region);
  return std::abs(areaOf(mesh) - wanted) <= kAreaSlack * wanted;
}

// Whether no triangle was turned over when points of the rim were put in: the areas without their
// signs would exceed what the loops enclose.
bool isUnfolded(const std::vector<Region>& regions, const FaceMesh& mesh) {
  double wanted = 0;
  double found = 0;
  for (const Region& region : regions) wanted += areaOf(region);
  for (const auto& [a, b, c] : mesh.triangles)
    found += std::abs(signedArea({mesh.unit[a], mesh.unit[b], mesh.unit[c]}));
  return std::abs(found - wanted) <= kFoldSlack * wanted;
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

std::vector<CoarseRegion> coarsenAll(const Surface& surface, const std::vector<Region>& regions,
                                     double tolerance) {
  std::vector<CoarseRegion> out;
  for (const Region& region : regions) out.push_back(coarsen(surface, region, tolerance));
  return out;
}

// One mesh of the mesher, checked, then cut until it keeps the tolerance and has all of the loops.
bool meshOnce(const Surface& surface, const std::vector<Region>& regions,
              const std::vector<CoarseRegion>& coarse, double tolerance, const Deadline& deadline,
              FaceMesh& out) {
  std::vector<Region> asked;
  for (const CoarseRegion& c : coarse) asked.push_back(c.region);
  if (pointsOf(asked) > kMaxRim) return false;
  std::vector<UvMesh> parts;
  Rim rim;
  if (!triangulate(surface, asked, out.stats.asked, deadline, parts)) return false;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (!isRightArea(asked[i], parts[i])) return false;
    if (!makeRim(regions[i], coarse[i], static_cast<int>(out.unit.size()), parts[i], rim))
      return false;
    append(surface, parts[i], out);
  }
  if (!refine(surface, kSampledShare * tolerance, deadline, std::move(rim), out)) return false;
  if (!isUnfolded(regions, out)) return false;
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
  const Deadline deadline(kMaxTime);
  std::vector<Region> regions;
  if (!regionsOf(surface, trim, kBoundaryShare * tolerance, regions)) return false;
  double asked = std::max(tolerance, kCoarse * surface.poleBound().GetDiag());
  for (int attempt = 1; attempt <= kAttempts && !deadline.isPast(); ++attempt, asked *= kFiner) {
    out = {};
    out.stats.asked = asked;
    out.stats.attempts = attempt;
    // The last attempt leaves the mesher all points of the loops, if they are not too many.
    const bool isFull = attempt == kAttempts && pointsOf(regions) <= kMaxFullRim;
    const double simplified = isFull ? 0 : kRimShare * asked;
    if (meshOnce(surface, regions, coarsenAll(surface, regions, simplified), tolerance, deadline,
                 out))
      return true;
  }
  return false;
}

}  // namespace solidra
