#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/solidra/Region.h"

namespace solidra {

namespace {

// Ends nearer than this in both unit parameters follow one another.
constexpr double kJoin = 1e-4;

// Points nearer than this in both unit parameters are one.
constexpr double kSamePoint = 1e-12;

// A loop that encloses less of the unit square encloses nothing.
constexpr double kNoArea = 1e-12;

// Unit parameters beyond this cost the clipping its digits: such a curve leaves the face without a
// mesh. Below, what is clipped is off by 1e-7 of the range at most.
constexpr double kFarOutside = 1e9;

// A curved span is cut into this many pieces before its deviation is looked at, so that no
// symmetric shape hides from it, and at most 2^kMaxHalvings times as many.
constexpr int kPieces = 8;
constexpr int kMaxHalvings = 6;

double distance(const CGeom_XYZ& a, const CGeom_XYZ& b) {
  return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

CGeom2d_XY middle(const CGeom2d_XY& a, const CGeom2d_XY& b) {
  return {(a.x + b.x) / 2, (a.y + b.y) / 2};
}

bool isNear(const CGeom2d_XY& a, const CGeom2d_XY& b, double limit) {
  return std::abs(a.x - b.x) <= limit && std::abs(a.y - b.y) <= limit;
}

void append(Loop& points, const CGeom2d_XY& p) {
  if (points.empty() || !isNear(points.back(), p, kSamePoint)) points.push_back(p);
}

/// Cuts curves into points.
class Flattener {
 public:
  Flattener(const Surface& surface, double tolerance) : surface_(surface), tolerance_(tolerance) {}

  Loop flatten(const Curve& curve) const {
    Loop points;
    if (curve.isPolygon()) {
      for (auto i = static_cast<std::size_t>(curve.start); i <= static_cast<std::size_t>(curve.end);
           ++i)
        append(points, unit(curve.shape->poles[i]));
      return points;
    }
    const std::vector<double> breaks = curve.shape->knots.breaks(curve.start, curve.end);
    append(points, at(curve, breaks.front()));
    for (std::size_t i = 1; i < breaks.size(); ++i)
      addSpan(curve, breaks[i - 1], breaks[i], points);
    return points;
  }

 private:
  CGeom2d_XY unit(const CGeom2d_XY& p) const {
    return {(p.x - surface_.start.x) / (surface_.end.x - surface_.start.x),
            (p.y - surface_.start.y) / (surface_.end.y - surface_.start.y)};
  }

  CGeom2d_XY at(const Curve& curve, double t) const { return unit(curve.point(t)); }

  void addSpan(const Curve& curve, double from, double to, Loop& points) const {
    const int pieces = curve.shape->knots.degree == 1 ? 1 : kPieces;
    for (int i = 0; i < pieces; ++i)
      addPiece(curve, from + (to - from) * i / pieces, from + (to - from) * (i + 1) / pieces, 0,
               points);
  }

  // The curve against its chord, both on the surface: how the surface bends is the mesher's affair.
  void addPiece(const Curve& curve, double from, double to, int halvings, Loop& points) const {
    const CGeom2d_XY end = at(curve, to);
    const double half = (from + to) / 2;
    if (curve.shape->knots.degree > 1 && halvings < kMaxHalvings && points.size() <= kMaxBoundary &&
        distance(surface_.unitPoint(at(curve, half)),
                 surface_.unitPoint(middle(at(curve, from), end))) > tolerance_) {
      addPiece(curve, from, half, halvings + 1, points);
      addPiece(curve, half, to, halvings + 1, points);
      return;
    }
    append(points, end);
  }

  const Surface& surface_;
  double tolerance_;
};

/// Joins pieces end to end into loops.
class Chains {
 public:
  Chains(const Surface& surface, std::vector<Loop> pieces, double gap, Work& work)
      : surface_(surface), pieces_(std::move(pieces)), gap_(gap), work_(work) {
    used_.resize(pieces_.size());
  }

  // False when the work is used up.
  bool join(std::vector<Loop>& loops) {
    for (std::size_t i = 0; i < pieces_.size(); ++i) {
      if (used_[i]) continue;
      Loop chain;
      take(i, false, chain);
      if (!extend(i, chain)) return false;
      // The closing segment is the step from the last point to the first.
      if (chain.size() > 3 && isNear(chain.front(), chain.back(), kJoin))
        meet(chain.front(), chain.back());
      if (isNear(chain.front(), chain.back(), kSamePoint)) chain.pop_back();
      if (chain.size() > 2) loops.push_back(std::move(chain));
    }
    return true;
  }

 private:
  // Ends that nearly meet do so halfway: pieces may also reach too far, and then a step back from
  // the one to the other would cross them.
  static void meet(CGeom2d_XY& a, CGeom2d_XY& b) { a = b = middle(a, b); }

  void take(std::size_t piece, bool reversed, Loop& chain) {
    used_[piece] = true;
    Loop& points = pieces_[piece];
    if (reversed) std::reverse(points.begin(), points.end());
    if (!chain.empty() && isNear(chain.back(), points.front(), kJoin))
      meet(chain.back(), points.front());
    for (const CGeom2d_XY& p : points) append(chain, p);
  }

  // In the parameters, or in space where the straight way across is short there too: the two sides
  // of a seam meet in space only, the ends of a collapsed side wherever they lie on it.
  bool follows(const CGeom2d_XY& a, const CGeom2d_XY& b) const {
    if (isNear(a, b, kJoin)) return true;
    const CGeom_XYZ from = surface_.unitPoint(a);
    return distance(from, surface_.unitPoint(b)) <= gap_ &&
           distance(from, surface_.unitPoint(middle(a, b))) <= gap_;
  }

  // A chain may close once it has been away from its start: pieces shorter than the gap go on.
  bool isClosed(const Loop& chain) const {
    if (!follows(chain.back(), chain.front())) return false;
    work_.spend(10 * static_cast<long long>(chain.size()));
    return std::any_of(chain.begin(), chain.end(),
                       [&](const CGeom2d_XY& p) { return !follows(p, chain.front()); });
  }

  // Tries the next piece of the list first: mostly it is the one, and then many pieces cost little.
  bool extend(std::size_t last, Loop& chain) {
    while (!isClosed(chain)) {
      if (!work_.spend(10)) return false;
      std::size_t steps = 0;
      std::size_t next = pieces_.size();
      bool reversed = false;
      for (; steps < pieces_.size(); ++steps) {
        const std::size_t i = (last + 1 + steps) % pieces_.size();
        if (used_[i]) continue;
        reversed = !follows(chain.back(), pieces_[i].front());
        if (reversed && !follows(chain.back(), pieces_[i].back())) continue;
        next = i;
        break;
      }
      if (!work_.spend(static_cast<long long>(steps) * 10)) return false;
      if (next == pieces_.size()) return true;  // left open
      take(next, reversed, chain);
      last = next;
    }
    return true;
  }

  const Surface& surface_;
  std::vector<Loop> pieces_;
  std::vector<bool> used_;
  double gap_;
  Work& work_;
};

bool isFarOutside(const CGeom2d_XY& p) {
  return !(std::abs(p.x) <= kFarOutside && std::abs(p.y) <= kFarOutside);
}

bool hasArea(const Loop& loop) { return std::abs(signedArea(loop)) > kNoArea; }

}  // namespace

double signedArea(const Loop& loop) {
  double twice = 0;
  for (std::size_t i = 0; i < loop.size(); ++i) {
    const CGeom2d_XY& a = loop[i];
    const CGeom2d_XY& b = loop[(i + 1) % loop.size()];
    twice += (a.x - loop[0].x) * (b.y - loop[0].y) - (b.x - loop[0].x) * (a.y - loop[0].y);
  }
  return twice / 2;
}

bool makeLoops(const Surface& surface, const Trim& trim, double tolerance, Work& work, Loops& out) {
  const Flattener flattener(surface, tolerance);
  std::vector<Loop> pieces;
  std::size_t points = 0;
  for (const Curve& curve : trim.curves) {
    Loop piece = flattener.flatten(curve);
    if (piece.size() < 2) continue;
    if (std::any_of(piece.begin(), piece.end(), isFarOutside)) return false;
    points += piece.size();
    if (points > kMaxBoundary) return false;
    pieces.push_back(std::move(piece));
  }
  if (!Chains(surface, std::move(pieces), trim.gap, work).join(out.loops)) return false;
  out.isTrimmed = std::any_of(out.loops.begin(), out.loops.end(), hasArea);
  out.loops = clipToUnit(std::move(out.loops));
  // A way there and back encloses nothing; a loop with two halves that cancel does.
  for (const Loop& loop : out.loops)
    if (!hasArea(loop) && !areFreeOfCrossings({loop}, work)) return false;
  std::erase_if(out.loops, [](const Loop& loop) { return !hasArea(loop); });
  return true;
}

}  // namespace solidra
