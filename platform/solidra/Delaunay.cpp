#include "platform/solidra/Delaunay.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <deque>

namespace solidra {

namespace {

// How clearly a point must lie in a circle, of the terms that are summed: points on one circle are
// left alone, whatever their rounding says.
constexpr double kInCircle = 1e-9;

// Ways that may lead round points of the rim at once.
constexpr std::size_t kMaxRounds = 32;

constexpr std::int64_t kSide = static_cast<std::int64_t>(kGrid);

std::uint64_t keyOf(const GridPoint& p) {
  return static_cast<std::uint64_t>(p.x + 1) << 32 | static_cast<std::uint64_t>(p.y + 1);
}

double along(const GridPoint& a, const GridPoint& b, const GridPoint& p) {
  return static_cast<double>(b.x - a.x) * static_cast<double>(p.x - a.x) +
         static_cast<double>(b.y - a.y) * static_cast<double>(p.y - a.y);
}

}  // namespace

// The square is one step larger on each side, so that all points lie inside.
Delaunay::Delaunay(const Metric& metric, Work& work) : metric_(metric), work_(work) {
  points_ = {{-1, -1}, {kSide + 1, -1}, {kSide + 1, kSide + 1}, {-1, kSide + 1}};
  around_ = {0, 0, 0, 1};
  triangles_ = {{{0, 1, 2}, {-1, -1, 1}}, {{0, 2, 3}, {0, -1, -1}}};
}

std::int64_t Delaunay::turnOf(int a, int b, int c) const {
  return turn(points_[a], points_[b], points_[c]);
}

Delaunay::Side Delaunay::opposite(Side s) const {
  const int other = triangles_[s.triangle].across[s.side];
  if (other < 0) return {};
  const auto& corners = triangles_[other].corners;
  return {other,
          static_cast<int>(std::find(corners.begin(), corners.end(), to(s)) - corners.begin())};
}

Delaunay::Side Delaunay::turned(Side s) const { return opposite(next(next(s))); }

Delaunay::Side Delaunay::sideFrom(int point) const {
  const int triangle = around_[point];
  const auto& corners = triangles_[triangle].corners;
  return {triangle,
          static_cast<int>(std::find(corners.begin(), corners.end(), point) - corners.begin())};
}

// Around a; from a corner of the square, whose triangles do not close, in both directions.
Delaunay::Side Delaunay::sideBetween(int a, int b) const {
  const Side first = sideFrom(a);
  Side s = first;
  do {
    if (to(s) == b) return s;
    s = turned(s);
  } while (s.triangle >= 0 && s.triangle != first.triangle);
  for (s = first; s.triangle >= 0 && to(s) != b;) {
    const Side back = opposite(s);
    if (back.triangle < 0) return {};
    s = next(back);
    if (s.triangle == first.triangle) return {};
  }
  return s;
}

bool Delaunay::isInCircle(Side s, int point) const {
  const auto away = [&](int i) {
    const GridPoint& p = points_[i];
    const GridPoint& q = points_[point];
    return CGeom2d_XY{metric_.u * static_cast<double>(p.x - q.x),
                      metric_.v * static_cast<double>(p.y - q.y)};
  };
  const CGeom2d_XY a = away(from(s));
  const CGeom2d_XY b = away(to(s));
  const CGeom2d_XY c = away(apex(s));
  const double x = (a.x * a.x + a.y * a.y) * (b.x * c.y - b.y * c.x);
  const double y = (b.x * b.x + b.y * b.y) * (c.x * a.y - c.y * a.x);
  const double z = (c.x * c.x + c.y * c.y) * (a.x * b.y - a.y * b.x);
  return x + y + z > kInCircle * (std::abs(x) + std::abs(y) + std::abs(z));
}

bool Delaunay::isTooNear(const Triangle& t, const GridPoint& p, double least) const {
  const auto length = [&](const GridPoint& a, const GridPoint& b) {
    return std::hypot(metric_.u * static_cast<double>(a.x - b.x),
                      metric_.v * static_cast<double>(a.y - b.y)) /
           kGrid;
  };
  for (int i = 0; i < 3; ++i) {
    const GridPoint& a = points_[t.corners[i]];
    const GridPoint& b = points_[t.corners[(i + 1) % 3]];
    if (length(a, p) < least) return true;
    const double twice = metric_.u * metric_.v * static_cast<double>(turn(a, b, p)) / kGrid / kGrid;
    if (t.isRim[i] && (twice <= least * length(a, b))) return true;
  }
  return false;
}

// Both sides of a side; `other` may be none.
void Delaunay::join(Side s, Side other, bool isRim) {
  triangles_[s.triangle].across[s.side] = other.triangle;
  triangles_[s.triangle].isRim[s.side] = isRim;
  if (other.triangle < 0) return;
  triangles_[other.triangle].across[other.side] = s.triangle;
  triangles_[other.triangle].isRim[other.side] = isRim;
}

// Walks towards the point; where it turns first changes from step to step, so that no ring of
// triangles holds it.
int Delaunay::locate(const GridPoint& p) {
  for (int step = 0; work_.spend(1); ++step) {
    const Triangle& t = triangles_[last_];
    int out = -1;
    for (int k = 0; k < 3 && out < 0; ++k) {
      const int i = (k + step) % 3;
      if (turn(points_[t.corners[i]], points_[t.corners[(i + 1) % 3]], p) < 0) out = t.across[i];
    }
    if (out < 0) return last_;
    last_ = out;
  }
  return -1;
}

// The point's index; -1 when the work is used up.
int Delaunay::addPoint(const GridPoint& p) {
  const auto [at, isNew] = known_.try_emplace(keyOf(p), static_cast<int>(points_.size()));
  if (!isNew) return at->second;
  const int triangle = locate(p);
  if (triangle < 0) return -1;
  points_.push_back(p);
  around_.push_back(triangle);
  return insert(at->second, triangle) ? at->second : -1;
}

// Three triangles for one. On a side one of them is flat; the flip of that side mends it.
bool Delaunay::insert(int point, int triangle) {
  const Triangle old = triangles_[triangle];
  const int count = static_cast<int>(triangles_.size());
  const std::array<int, 3> made = {triangle, count, count + 1};
  std::array<Side, 3> outer;
  for (int i = 0; i < 3; ++i) outer[i] = opposite({triangle, i});
  triangles_.resize(triangles_.size() + 2);
  std::vector<Side> sides;
  for (int i = 0; i < 3; ++i) {
    triangles_[made[i]] = {{old.corners[i], old.corners[(i + 1) % 3], point},
                           {-1, made[(i + 1) % 3], made[(i + 2) % 3]},
                           {},
                           old.isInside};
    join({made[i], 0}, outer[i], old.isRim[i]);
    around_[old.corners[i]] = made[i];
    sides.push_back({made[i], 0});
  }
  return legalize(std::move(sides));
}

// The two triangles at a side must form a convex quadrilateral.
bool Delaunay::canFlip(Side s) const {
  const Side other = opposite(s);
  if (other.triangle < 0 || isRim(s)) return false;
  const int c = apex(s);
  const int d = apex(other);
  return turnOf(c, from(s), d) > 0 && turnOf(d, to(s), c) > 0;
}

// Puts the other diagonal in; the first of the new triangles' sides is it.
Delaunay::Side Delaunay::flip(Side s) {
  const Side other = opposite(s);
  const int a = from(s);
  const int b = to(s);
  const int c = apex(s);
  const int d = apex(other);
  const std::array<Side, 4> around = {next(other), next(next(other)), next(s), next(next(s))};
  std::array<Side, 4> outer;
  std::array<bool, 4> rim{};
  for (int i = 0; i < 4; ++i) {
    outer[i] = opposite(around[i]);
    rim[i] = isRim(around[i]);
  }
  const bool isInside = triangles_[s.triangle].isInside;
  triangles_[s.triangle] = {{d, c, a}, {other.triangle, -1, -1}, {}, isInside};
  triangles_[other.triangle] = {{c, d, b}, {s.triangle, -1, -1}, {}, isInside};
  join({s.triangle, 2}, outer[0], rim[0]);      // a to d
  join({other.triangle, 1}, outer[1], rim[1]);  // d to b
  join({other.triangle, 2}, outer[2], rim[2]);  // b to c
  join({s.triangle, 1}, outer[3], rim[3]);      // c to a
  around_[a] = around_[c] = s.triangle;
  around_[b] = around_[d] = other.triangle;
  return {s.triangle, 0};
}

// Flips sides whose opposite point lies in their triangle's circle, and those that this concerns.
bool Delaunay::legalize(std::vector<Side> sides) {
  while (!sides.empty()) {
    const Side s = sides.back();
    sides.pop_back();
    if (!canFlip(s)) continue;
    const Side other = opposite(s);
    const bool isFlat = turnOf(from(s), to(s), apex(s)) == 0;
    if (!isFlat && !isInCircle(s, apex(other))) continue;
    if (!work_.spend(10)) return false;
    const Side made = flip(s);
    const Side back = opposite(made);
    sides.insert(sides.end(), {next(made), next(next(made)), next(back), next(next(back))});
  }
  return true;
}

// All points come first: one on a connection of others is then a corner on that way.
bool Delaunay::addRim(const Region& region) {
  if (!addPoints(region.outer)) return false;
  for (const Loop& hole : region.holes)
    if (!addPoints(hole)) return false;
  if (!addWay(region.outer)) return false;
  for (const Loop& hole : region.holes)
    if (!addWay(hole)) return false;
  std::vector<Side> sides;
  for (int t = 0; t < static_cast<int>(triangles_.size()); ++t)
    for (int k = 0; k < 3; ++k) sides.push_back({t, k});
  if (!legalize(std::move(sides))) return false;
  markInside();
  return true;
}

// First few points all along the loop, then more and more between them: one after the other, each
// would turn over most of the triangles that the ones before it made.
bool Delaunay::addPoints(const Loop& loop) {
  for (std::size_t step = std::bit_ceil(loop.size()); step > 0; step /= 2)
    for (std::size_t i = 0; i < loop.size(); i += step)
      if (addPoint(gridPoint(loop[i])) < 0) return false;
  return true;
}

bool Delaunay::addWay(const Loop& loop) {
  int last = known_.at(keyOf(gridPoint(loop.back())));
  for (const CGeom2d_XY& p : loop) {
    const int point = known_.at(keyOf(gridPoint(p)));
    if (!constrain(last, point)) return false;
    last = point;
  }
  return true;
}

// The way from a to b becomes sides of triangles. It leads through the points that it touches, so
// that parts of the rim that lie on each other share their sides.
bool Delaunay::constrain(int a, int b) {
  std::vector<int> targets = {b};
  while (!targets.empty()) {
    if (a == targets.back()) {
      targets.pop_back();
      continue;
    }
    if (!work_.spend(10)) return false;
    std::vector<Pair> crossed;
    Side side = firstOnWay(a, targets.back());
    if (side.triangle < 0) return false;
    int end = to(side);
    if (from(side) != a) {
      int round = -1;
      end = cross(a, targets.back(), side, crossed, round);
      if (round >= 0 && targets.size() < kMaxRounds) {
        targets.push_back(round);
        continue;
      }
      if (end < 0 || !clear(a, end, crossed)) return false;
      side = sideBetween(a, end);
      if (side.triangle < 0) return false;
    }
    // Twice the same way is none: what lies on its two sides is then alike.
    join(side, opposite(side), !isRim(side));
    a = end;
  }
  return true;
}

// Of the triangles around a: the side from a that lies on the way to b, or else the side opposite
// to a that the way crosses.
Delaunay::Side Delaunay::firstOnWay(int a, int b) const {
  const Side first = sideFrom(a);
  Side s = first;
  do {
    const std::int64_t right = turnOf(a, b, to(s));
    const std::int64_t left = turnOf(a, b, apex(s));
    if (right == 0 && along(points_[a], points_[b], points_[to(s)]) > 0) return s;
    if (right < 0 && left > 0) return next(s);
    s = turned(s);
  } while (s.triangle >= 0 && s.triangle != first.triangle);
  return {};
}

// Whether the way from a to b touches p on its way: rounding may have moved both.
bool Delaunay::touches(int a, int b, int p) const {
  const double length2 = along(points_[a], points_[b], points_[b]);
  const double at = along(points_[a], points_[b], points_[p]);
  return at > 0 && at < length2 &&
         static_cast<double>(std::abs(turnOf(a, b, p))) <= kTouch * std::sqrt(length2);
}

// The sides that the way from a to b crosses, and the first point on it, mostly b. Where it touches
// a point it must lead through it, which `round` then is, and -1 the answer; so too, without one,
// where a part of the rim bars the way.
int Delaunay::cross(int a, int b, Side first, std::vector<Pair>& crossed, int& round) const {
  for (Side s = first;;) {
    if (!work_.spend(1)) return -1;
    for (const int p : {from(s), to(s)})
      if (touches(a, b, p)) round = round >= 0 && touches(a, p, round) ? round : p;
    if (round >= 0 || isRim(s)) return -1;
    crossed.push_back({from(s), to(s)});
    s = opposite(s);
    const int point = apex(s);
    const std::int64_t turned = turnOf(a, b, point);
    if (turned == 0) return point;
    // The side that the way leaves the triangle through.
    s = turned > 0 ? next(s) : next(next(s));
  }
}

// Flips the crossed sides until none crosses the way any more.
bool Delaunay::clear(int a, int b, const std::vector<Pair>& crossed) {
  std::deque<Pair> open(crossed.begin(), crossed.end());
  while (!open.empty()) {
    if (!work_.spend(10)) return false;
    const Pair pair = open.front();
    open.pop_front();
    const Side s = sideBetween(pair[0], pair[1]);
    if (s.triangle < 0) return false;
    if (!canFlip(s)) {
      open.push_back(pair);
      continue;
    }
    const Side made = flip(s);
    const int c = from(made);
    const int d = to(made);
    if (c == a || c == b || d == a || d == b) continue;
    if ((turnOf(a, b, c) > 0) != (turnOf(a, b, d) > 0)) open.push_back({c, d});
  }
  return true;
}

// From the outside inwards: each part of the rim leads from one to the other.
void Delaunay::markInside() {
  std::vector<bool> seen(triangles_.size());
  std::vector<int> open = {around_[0]};
  seen[open[0]] = true;
  while (!open.empty()) {
    const Triangle& t = triangles_[open.back()];
    open.pop_back();
    for (int k = 0; k < 3; ++k) {
      const int other = t.across[k];
      if (other < 0 || seen[other]) continue;
      seen[other] = true;
      triangles_[other].isInside = t.isInside != t.isRim[k];
      open.push_back(other);
    }
  }
}

bool Delaunay::addInside(const CGeom2d_XY& point, double least) {
  const GridPoint p = gridPoint(point);
  const int triangle = locate(p);
  if (triangle < 0) return false;
  const Triangle& t = triangles_[triangle];
  if (!t.isInside || isTooNear(t, p, least)) return true;
  return addPoint(p) >= 0;
}

UvMesh Delaunay::mesh() const {
  UvMesh out;
  std::vector<int> index(points_.size(), -1);
  for (const Triangle& t : triangles_) {
    if (!t.isInside) continue;
    out.triangles.push_back(t.corners);
    for (int& corner : out.triangles.back()) {
      int& at = index[corner];
      if (at < 0) {
        at = static_cast<int>(out.points.size());
        out.points.push_back(unitOf(points_[corner]));
      }
      corner = at;
    }
  }
  return out;
}

}  // namespace solidra
