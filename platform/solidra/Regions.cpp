#include <algorithm>
#include <cmath>

#include "platform/solidra/Region.h"

namespace solidra {

namespace {

// A point nearer than this to a loop (unit parameters) lies on it.
constexpr double kOnLoop = 1e-9;

// Points of a loop that are asked whether another loop surrounds them.
constexpr std::size_t kAsked = 32;

struct Segment {
  CGeom2d_XY a;
  CGeom2d_XY b;

  double low() const { return std::min(a.x, b.x); }
  double high() const { return std::max(a.x, b.x); }
};

// Whether the ends of t lie clearly on either side of s: touching is no crossing.
bool isParted(const Segment& s, const Segment& t) {
  const GridPoint a = gridPoint(s.a);
  const GridPoint b = gridPoint(s.b);
  const auto p = static_cast<double>(turn(a, b, gridPoint(t.a)));
  const auto q = static_cast<double>(turn(a, b, gridPoint(t.b)));
  const double length = std::hypot(s.b.x - s.a.x, s.b.y - s.a.y) * kGrid;
  return (p > 0) != (q > 0) && std::min(std::abs(p), std::abs(q)) > kTouch * length;
}

bool isCrossing(const Segment& s, const Segment& t) {
  if (std::max(s.a.y, s.b.y) < std::min(t.a.y, t.b.y) ||
      std::max(t.a.y, t.b.y) < std::min(s.a.y, s.b.y))
    return false;
  return isParted(s, t) && isParted(t, s);
}

std::vector<Segment> segmentsOf(const std::vector<Loop>& loops) {
  std::vector<Segment> out;
  for (const Loop& loop : loops)
    for (std::size_t i = 0; i < loop.size(); ++i)
      out.push_back({loop[i], loop[(i + 1) % loop.size()]});
  std::sort(out.begin(), out.end(),
            [](const Segment& s, const Segment& t) { return s.low() < t.low(); });
  return out;
}

double distance(const CGeom2d_XY& p, const Segment& s) {
  const CGeom2d_XY d{s.b.x - s.a.x, s.b.y - s.a.y};
  const double length2 = d.x * d.x + d.y * d.y;
  double t = length2 > 0 ? ((p.x - s.a.x) * d.x + (p.y - s.a.y) * d.y) / length2 : 0;
  t = std::clamp(t, 0.0, 1.0);
  return std::hypot(p.x - s.a.x - t * d.x, p.y - s.a.y - t * d.y);
}

bool isOn(const CGeom2d_XY& p, const Loop& loop) {
  for (std::size_t i = 0; i < loop.size(); ++i)
    if (distance(p, {loop[i], loop[(i + 1) % loop.size()]}) <= kOnLoop) return true;
  return false;
}

bool surrounds(const Loop& loop, const CGeom2d_XY& p) {
  bool inside = false;
  for (std::size_t i = 0; i < loop.size(); ++i) {
    const CGeom2d_XY& a = loop[i];
    const CGeom2d_XY& b = loop[(i + 1) % loop.size()];
    if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (b.x - a.x) * (p.y - a.y) / (b.y - a.y))
      inside = !inside;
  }
  return inside;
}

struct Box {
  CGeom2d_XY low{HUGE_VAL, HUGE_VAL};
  CGeom2d_XY high{-HUGE_VAL, -HUGE_VAL};

  explicit Box(const Loop& loop) {
    for (const CGeom2d_XY& p : loop) {
      low = {std::min(low.x, p.x), std::min(low.y, p.y)};
      high = {std::max(high.x, p.x), std::max(high.y, p.y)};
    }
  }
  bool meets(const Box& other) const {
    return other.low.x <= high.x && other.high.x >= low.x && other.low.y <= high.y &&
           other.high.y >= low.y;
  }
};

enum class Place { outside, inside, same, unknown };

// Loops do not cross: any point of a loop that is not on the other decides for all of it. Some more
// are asked all the same, as loops that cross in common points alone do so unseen.
Place placeOf(const Loop& inner, const Loop& outer, Work& work) {
  const std::size_t step = std::max<std::size_t>(1, 2 * inner.size() / kAsked);
  Place found = Place::same;
  for (std::size_t i = 0; i < 2 * inner.size(); i += found == Place::same ? 1 : step) {
    if (!work.spend(10 * static_cast<long long>(outer.size()))) return Place::unknown;
    const CGeom2d_XY& a = inner[i / 2];
    const CGeom2d_XY& b = inner[(i / 2 + 1) % inner.size()];
    const CGeom2d_XY p = i % 2 == 0 ? a : CGeom2d_XY{(a.x + b.x) / 2, (a.y + b.y) / 2};
    if (isOn(p, outer)) continue;
    const Place place = surrounds(outer, p) ? Place::inside : Place::outside;
    if (found != Place::same && place != found) return Place::unknown;
    found = place;
  }
  return found;
}

/// Which loops surround which.
class Nesting {
 public:
  Nesting(const std::vector<Loop>& loops, Work& work) : loops_(loops), work_(work) {}

  // False when two loops share all points or the work is used up.
  bool find() {
    const std::vector<Box> boxes(loops_.begin(), loops_.end());
    surrounding_.resize(loops_.size());
    for (std::size_t i = 0; i < loops_.size(); ++i) {
      if (!work_.spend(static_cast<long long>(loops_.size()))) return false;
      for (std::size_t j = 0; j < loops_.size(); ++j) {
        if (i == j || !boxes[j].meets(boxes[i])) continue;
        const Place place = placeOf(loops_[i], loops_[j], work_);
        if (place == Place::same || place == Place::unknown) return false;
        if (place == Place::inside) surrounding_[i].push_back(j);
      }
    }
    return true;
  }

  bool isHole(std::size_t i) const { return surrounding_[i].size() % 2 == 1; }

  // The innermost loop around a hole: the one that itself lies deepest.
  std::size_t parent(std::size_t hole) const {
    return *std::max_element(surrounding_[hole].begin(), surrounding_[hole].end(),
                             [this](std::size_t a, std::size_t b) {
                               return surrounding_[a].size() < surrounding_[b].size();
                             });
  }

 private:
  const std::vector<Loop>& loops_;
  Work& work_;
  std::vector<std::vector<std::size_t>> surrounding_;
};

Loop turned(const Loop& loop, bool counterClockwise) {
  Loop out = loop;
  if ((signedArea(out) > 0) != counterClockwise) std::reverse(out.begin(), out.end());
  return out;
}

bool isOnSide(const CGeom2d_XY& p) { return p.x == 0 || p.x == 1 || p.y == 0 || p.y == 1; }

// One loop around the whole unit square trims nothing; the mesher knows seams and poles better
// then.
bool isWhole(const Region& region) {
  return region.holes.empty() && std::abs(signedArea(region.outer) - 1) < kOnLoop &&
         std::all_of(region.outer.begin(), region.outer.end(), isOnSide);
}

}  // namespace

// Sweeps along x with those segments in hand that the sweep line still meets.
bool areFreeOfCrossings(const std::vector<Loop>& loops, Work& work) {
  std::vector<Segment> active;
  for (const Segment& s : segmentsOf(loops)) {
    std::erase_if(active, [&](const Segment& t) { return t.high() < s.low(); });
    if (!work.spend(static_cast<long long>(active.size()))) return false;
    for (const Segment& t : active)
      if (isCrossing(s, t)) return false;
    active.push_back(s);
  }
  return true;
}

bool makeRegions(std::vector<Loop> loops, Work& work, std::vector<Region>& out) {
  Nesting nesting(loops, work);
  if (!areFreeOfCrossings(loops, work) || !nesting.find()) return false;
  std::vector<std::size_t> regionOf(loops.size());
  for (std::size_t i = 0; i < loops.size(); ++i) {
    if (nesting.isHole(i)) continue;
    regionOf[i] = out.size();
    out.push_back({turned(loops[i], true), {}});
  }
  for (std::size_t i = 0; i < loops.size(); ++i)
    if (nesting.isHole(i))
      out[regionOf[nesting.parent(i)]].holes.push_back(turned(loops[i], false));
  for (Region& region : out) region.isWhole = isWhole(region);
  return true;
}

}  // namespace solidra
