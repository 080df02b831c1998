#include "toolkit/geometry/Measure.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <numeric>
#include <span>
#include <stdexcept>
#include <unordered_map>

using zgeo::UTri;
using zgeo::UVec3d;

namespace korvo {
namespace {

// --- corners and edges as numbers

// Adding zero turns -0 into 0, which is the same coordinate. The factor is that of Knuth's
// multiplicative hashing, the golden ratio of 64 bits.
struct HashOfPoint {
  std::size_t operator()(const UVec3d& p) const noexcept {
    std::uint64_t hash = 0;
    for (const double c : {p.x, p.y, p.z}) {
      hash = (hash ^ std::bit_cast<std::uint64_t>(c + 0.0)) * 0x9E3779B97F4A7C15u;
      hash ^= hash >> 32;
    }
    return hash;
  }
};

/// Gives equal points the same number.
class PointNumbers {
 public:
  std::uint32_t operator[](const UVec3d& p) {
    return numbers_.try_emplace(p, static_cast<std::uint32_t>(numbers_.size())).first->second;
  }

 private:
  std::unordered_map<UVec3d, std::uint32_t, HashOfPoint> numbers_;
};

/// A triangle's use of an edge: from which corner to which it runs tells which way it turns.
struct EdgeUse {
  std::uint32_t from, to, triangle;
  std::uint32_t low() const { return std::min(from, to); }
  std::uint32_t high() const { return std::max(from, to); }
  bool isUpwards() const { return from < to; }
  bool isSameEdge(const EdgeUse& o) const { return low() == o.low() && high() == o.high(); }
};

bool isBefore(const EdgeUse& a, const EdgeUse& b) {
  return a.low() != b.low() ? a.low() < b.low() : a.high() < b.high();
}

// What a triangle of two equal corners has between these two is no edge.
void addEdges(std::vector<EdgeUse>& edges, std::uint32_t triangle,
              const std::uint32_t (&corner)[3]) {
  for (std::size_t i = 0; i < 3; ++i) {
    const std::uint32_t from = corner[i], to = corner[(i + 1) % 3];
    if (from != to) edges.push_back({from, to, triangle});
  }
}

/// All uses of edges, those of one edge side by side.
std::vector<EdgeUse> edgesOf(const std::vector<UTri>& triangles) {
  PointNumbers numbers;
  std::vector<EdgeUse> edges;
  edges.reserve(3 * triangles.size());
  for (std::size_t t = 0; t < triangles.size(); ++t) {
    const UVec3d* p = triangles[t].p;
    addEdges(edges, static_cast<std::uint32_t>(t), {numbers[p[0]], numbers[p[1]], numbers[p[2]]});
  }
  std::sort(edges.begin(), edges.end(), isBefore);
  return edges;
}

template <class Function>
void forEachEdge(const std::vector<EdgeUse>& edges, const Function& function) {
  for (auto begin = edges.begin(); begin != edges.end();) {
    const auto end = std::find_if(begin, edges.end(),
                                  [&](const EdgeUse& use) { return !use.isSameEdge(*begin); });
    function(std::span(begin, end));
    begin = end;
  }
}

// --- which way triangles turn

/// Sets of triangles that hang together, each triangle with its turn against that of its set's root
/// (a disjoint-set forest with parities).
class Pieces {
 public:
  explicit Pieces(std::size_t count) : parent_(count), isTurned_(count, 0) {
    std::iota(parent_.begin(), parent_.end(), 0u);
  }

  /// Joins the sets of both. Where they are one already, it stays: on a one-sided surface no turn
  /// fits every edge.
  void join(std::uint32_t a, std::uint32_t b, bool isAgainst) {
    const Place first = place(a), second = place(b);
    if (first.root == second.root) return;
    parent_[second.root] = first.root;
    isTurned_[second.root] = first.isTurned ^ second.isTurned ^ isAgainst;
  }

  struct Place {
    std::uint32_t root;
    bool isTurned;
  };
  Place place(std::uint32_t t) {
    bool isTurned = false;
    for (; parent_[t] != t; t = parent_[t]) {
      halve(t);
      isTurned ^= isTurned_[t] != 0;
    }
    return {t, isTurned};
  }

 private:
  // Hangs a triangle on its parent's parent: paths stay short without a second walk.
  void halve(std::uint32_t t) {
    const std::uint32_t parent = parent_[t];
    if (parent_[parent] == parent) return;
    isTurned_[t] ^= isTurned_[parent];
    parent_[t] = parent_[parent];
  }

  std::vector<std::uint32_t> parent_;
  std::vector<std::uint8_t> isTurned_;  // against the parent
};

// Twice the area as a vector along the normal.
UVec3d doubleArea(const UTri& t) { return (t.p[1] - t.p[0]) ^ (t.p[2] - t.p[0]); }

double areaOf(const UTri& t) { return 0.5 * doubleArea(t).norm(); }

/// For every root how much area is turned as the root is, less what is turned against it.
std::vector<double> excessOf(const std::vector<UTri>& triangles, Pieces& pieces) {
  std::vector<double> excess(triangles.size(), 0.0);
  for (std::size_t t = 0; t < triangles.size(); ++t) {
    const Pieces::Place place = pieces.place(static_cast<std::uint32_t>(t));
    excess[place.root] += place.isTurned ? -areaOf(triangles[t]) : areaOf(triangles[t]);
  }
  return excess;
}

// Six times the volume of the cone from a point.
double sixConeVolumes(const UTri& t, const UVec3d& tip) { return (t.p[0] - tip) * doubleArea(t); }

double volumeOf(const std::vector<UTri>& triangles, Pieces& pieces, const UVec3d& middle) {
  const std::vector<double> excess = excessOf(triangles, pieces);
  double sum = 0.0;
  for (std::size_t t = 0; t < triangles.size(); ++t) {
    const Pieces::Place place = pieces.place(static_cast<std::uint32_t>(t));
    const bool isMinority = place.isTurned != (excess[place.root] < 0.0);
    const double cone = sixConeVolumes(triangles[t], middle);
    sum += isMinority ? -cone : cone;
  }
  return sum / 6.0;
}

// --- the box

void widen(Measures& m, const UVec3d& p) {
  m.min = {std::min(m.min.x, p.x), std::min(m.min.y, p.y), std::min(m.min.z, p.z)};
  m.max = {std::max(m.max.x, p.x), std::max(m.max.y, p.y), std::max(m.max.z, p.z)};
}

void measureBox(const std::vector<UTri>& triangles, Measures& m) {
  m.min = m.max = triangles.front().p[0];
  for (const UTri& t : triangles) {
    for (const UVec3d& p : t.p) widen(m, p);
  }
}

void requireNumbers(std::size_t count) {
  if (count > std::numeric_limits<std::uint32_t>::max() / 3) {
    throw std::length_error("expected at most 1.4e9 triangles to measure");
  }
}

}  // namespace

Measures measure(const std::vector<UTri>& triangles) {
  Measures m;
  m.count = triangles.size();
  if (triangles.empty()) return m;
  requireNumbers(m.count);
  measureBox(triangles, m);
  for (const UTri& t : triangles) m.area += areaOf(t);
  Pieces pieces(m.count);
  forEachEdge(edgesOf(triangles), [&](std::span<const EdgeUse> uses) {
    m.openEdges += uses.size() % 2;
    if (uses.size() != 2) return;
    pieces.join(uses[0].triangle, uses[1].triangle, uses[0].isUpwards() == uses[1].isUpwards());
  });
  m.volume = volumeOf(triangles, pieces, m.min * 0.5 + m.max * 0.5);
  return m;
}

}  // namespace korvo
