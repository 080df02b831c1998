#include "platform/solidra/Rim.h"

#include <algorithm>
#include <cmath>

namespace solidra {

namespace {

// A straight piece stands for this many pieces of the fine loop at most, which bounds the work.
constexpr std::size_t kMaxStretch = 64;

// How far a loop may be simplified: of its length, so that a circle keeps some twenty points.
constexpr double kOfLength = 0.002;

// The mesher's vertices lie this near to where they were asked for, in unit parameters.
constexpr double kSameVertex = 1e-9;

double distance(const CGeom_XYZ& a, const CGeom_XYZ& b) {
  return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

// Share of the way from a to b at which p lies.
double shareOf(const CGeom2d_XY& p, const CGeom2d_XY& a, const CGeom2d_XY& b) {
  const CGeom2d_XY d{b.x - a.x, b.y - a.y};
  const double share = ((p.x - a.x) * d.x + (p.y - a.y) * d.y) / (d.x * d.x + d.y * d.y);
  return std::clamp(share, 0.0, 1.0);
}

CGeom2d_XY between(const CGeom2d_XY& a, const CGeom2d_XY& b, double share) {
  return {a.x + share * (b.x - a.x), a.y + share * (b.y - a.y)};
}

/// Drops points of one loop.
class Simplifier {
 public:
  Simplifier(const Surface& surface, const Loop& loop, double tolerance)
      : surface_(surface), loop_(loop) {
    double length = 0;
    for (const CGeom2d_XY& p : loop) points_.push_back(surface.unitPoint(p));
    for (std::size_t i = 0; i < loop.size(); ++i)
      length += distance(points_[i], points_[(i + 1) % loop.size()]);
    tolerance_ = std::min(tolerance, kOfLength * length);
  }

  std::vector<std::size_t> kept() const {
    std::vector<std::size_t> out;
    for (std::size_t i = 0; i < loop_.size();) {
      out.push_back(i);
      std::size_t j = i + 1;
      while (j < loop_.size() && j < i + kMaxStretch && fits(i, j + 1)) ++j;
      i = j;
    }
    return out;
  }

 private:
  bool fits(std::size_t i, std::size_t j) const {
    const CGeom2d_XY& a = loop_[i];
    const CGeom2d_XY& b = loop_[j % loop_.size()];
    for (std::size_t k = i + 1; k < j; ++k) {
      const CGeom2d_XY foot = between(a, b, shareOf(loop_[k], a, b));
      if (!(distance(points_[k], surface_.unitPoint(foot)) <= tolerance_)) return false;
    }
    return true;
  }

  const Surface& surface_;
  const Loop& loop_;
  double tolerance_ = 0;
  std::vector<CGeom_XYZ> points_;
};

Loop pick(const Loop& loop, const std::vector<std::size_t>& kept) {
  Loop out;
  for (const std::size_t i : kept) out.push_back(loop[i]);
  return out;
}

// All points are kept of a loop that would lose its shape.
Loop coarsenLoop(const Surface& surface, const Loop& loop, double tolerance,
                 std::vector<std::size_t>& kept) {
  kept = Simplifier(surface, loop, tolerance).kept();
  Loop out = pick(loop, kept);
  if (out.size() >= 3 && signedArea(out) / signedArea(loop) > 0.5) return out;
  kept.resize(loop.size());
  for (std::size_t i = 0; i < kept.size(); ++i) kept[i] = i;
  return loop;
}

/// The boundary of a mesh: which vertex follows which.
class Boundary {
 public:
  explicit Boundary(const UvMesh& mesh) : mesh_(mesh) {
    std::unordered_map<std::uint64_t, bool> sides;
    for (const auto& [a, b, c] : mesh.triangles)
      for (const auto& [p, q] : {std::pair{a, b}, std::pair{b, c}, std::pair{c, a}})
        sides[directedKey(p, q)] = true;
    for (const auto& [key, unused] : sides) {
      const int a = static_cast<int>(key >> 32);
      const int b = static_cast<int>(key & 0xffffffff);
      if (sides.contains(directedKey(b, a))) continue;
      next_[a] = next_.contains(a) ? -1 : b;  // two boundaries that touch in a vertex: no way on
      sorted_.push_back(a);
    }
    std::sort(sorted_.begin(), sorted_.end(),
              [&](int a, int b) { return mesh.points[a].x < mesh.points[b].x; });
  }

  int next(int vertex) const {
    const auto at = next_.find(vertex);
    return at == next_.end() ? -1 : at->second;
  }

  // The vertex at a point, -1 for none.
  int at(const CGeom2d_XY& p) const {
    auto it = std::lower_bound(sorted_.begin(), sorted_.end(), p.x - kSameVertex,
                               [&](int i, double x) { return mesh_.points[i].x < x; });
    for (; it != sorted_.end() && mesh_.points[*it].x <= p.x + kSameVertex; ++it)
      if (std::abs(mesh_.points[*it].y - p.y) <= kSameVertex) return *it;
    return -1;
  }

 private:
  const UvMesh& mesh_;
  std::unordered_map<int, int> next_;
  std::vector<int> sorted_;
};

/// A vertex of the mesh and its position on its loop.
struct Place {
  int vertex;
  double position;
};

// The vertices from the loop's point i to its point j, j not counted; empty when there is no way.
std::vector<Place> walk(const Loop& loop, std::size_t i, std::size_t j, const Boundary& boundary,
                        const UvMesh& mesh) {
  const CGeom2d_XY& a = loop[i];
  const CGeom2d_XY& b = loop[j % loop.size()];
  const int last = boundary.at(b);
  std::vector<Place> places;
  for (int v = boundary.at(a); v != last; v = boundary.next(v)) {
    if (v < 0 || places.size() > mesh.points.size()) return {};
    const double share = places.empty() ? 0 : shareOf(mesh.points[v], a, b);
    places.push_back({v, static_cast<double>(i) + share * static_cast<double>(j - i)});
    if (places.size() > 1 && !(places.back().position > places[places.size() - 2].position))
      return {};
  }
  if (last >= 0) places.push_back({last, static_cast<double>(j)});
  return places;
}

bool addLoop(const Loop& loop, const std::vector<std::size_t>& kept, const Boundary& boundary,
             int first, UvMesh& mesh, std::vector<Place>& moved, Rim& rim) {
  for (std::size_t k = 0; k < kept.size(); ++k) {
    const std::size_t i = kept[k];
    const std::size_t j = k + 1 < kept.size() ? kept[k + 1] : loop.size() + kept[0];
    if (j - i < 2) continue;
    const std::vector<Place> places = walk(loop, i, j, boundary, mesh);
    if (places.size() < 2) return false;
    for (std::size_t n = 1; n < places.size(); ++n) {
      const Stretch stretch{&loop, places[n - 1].position, places[n].position};
      if (hasPoints(stretch))
        rim[directedKey(first + places[n - 1].vertex, first + places[n].vertex)] = stretch;
      if (n + 1 < places.size()) moved.push_back(places[n]);
    }
  }
  for (const Place& place : moved) mesh.points[place.vertex] = pointAt(loop, place.position);
  moved.clear();
  return true;
}

}  // namespace

CoarseRegion coarsen(const Surface& surface, const Region& region, double tolerance) {
  CoarseRegion out;
  out.region.isWhole = region.isWhole;
  out.kept.resize(region.holes.size() + 1);
  out.region.outer = coarsenLoop(surface, region.outer, tolerance, out.kept[0]);
  for (std::size_t i = 0; i < region.holes.size(); ++i)
    out.region.holes.push_back(coarsenLoop(surface, region.holes[i], tolerance, out.kept[i + 1]));
  return out;
}

bool makeRim(const Region& region, const CoarseRegion& coarse, int first, UvMesh& mesh, Rim& rim) {
  if (region.isWhole) return true;
  const UvMesh before = mesh;
  const Boundary boundary(before);
  std::vector<Place> moved;
  if (!addLoop(region.outer, coarse.kept[0], boundary, first, mesh, moved, rim)) return false;
  for (std::size_t i = 0; i < region.holes.size(); ++i)
    if (!addLoop(region.holes[i], coarse.kept[i + 1], boundary, first, mesh, moved, rim))
      return false;
  return true;
}

bool hasPoints(const Stretch& s) { return std::floor(s.from) + 1 < s.to; }

double middleOf(const Stretch& s) {
  const double low = std::floor(s.from) + 1;
  const double high = std::ceil(s.to) - 1;
  return std::floor((low + high) / 2);
}

CGeom2d_XY pointAt(const Loop& loop, double position) {
  const double whole = std::floor(position);
  const auto i = static_cast<std::size_t>(whole);
  return between(loop[i % loop.size()], loop[(i + 1) % loop.size()], position - whole);
}

}  // namespace solidra
