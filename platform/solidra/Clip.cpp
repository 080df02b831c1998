#include <algorithm>
#include <tuple>
#include <utility>

#include "platform/solidra/Region.h"

namespace solidra {

namespace {

// A point this near to a side of the unit square lies on it.
constexpr double kOnSide = 1e-6;

/// A side of the unit square, as the half-plane that holds the square.
struct Side {
  bool isX;      ///< Bounds x, otherwise y.
  bool isUpper;  ///< At 1, otherwise at 0.

  double depth(const CGeom2d_XY& p) const {  // positive inside
    const double value = isX ? p.x : p.y;
    return isUpper ? 1 - value : value;
  }

  bool holds(const CGeom2d_XY& p) const { return depth(p) > kOnSide; }

  double along(const CGeom2d_XY& p) const { return isX ? p.y : p.x; }

  CGeom2d_XY at(double along) const {
    const double side = isUpper ? 1 : 0;
    return isX ? CGeom2d_XY{side, along} : CGeom2d_XY{along, side};
  }

  // Where the way from a point inside to one outside ends: on the side.
  CGeom2d_XY crossing(const CGeom2d_XY& in, const CGeom2d_XY& out) const {
    if (depth(out) >= -kOnSide) return at(along(out));
    const double share = depth(in) / (depth(in) - depth(out));
    return at(along(in) + share * (along(out) - along(in)));
  }
};

/// The end of a chain of points inside, on the side itself.
struct End {
  double along;
  std::size_t chain;
  bool isLast;
};

// The runs of points inside, each with its two ends on the side added. The loop has points on both.
void cutLoop(const Loop& loop, const Side& side, std::vector<Loop>& chains) {
  const std::size_t n = loop.size();
  std::size_t first = 0;  // an outside point: no run goes across it
  while (side.holds(loop[first])) ++first;
  for (std::size_t k = 1; k <= n; ++k) {
    const CGeom2d_XY& before = loop[(first + k - 1) % n];
    const CGeom2d_XY& p = loop[(first + k) % n];
    if (side.holds(p)) {
      if (!side.holds(before)) chains.push_back({side.crossing(p, before)});
      chains.back().push_back(p);
    } else if (side.holds(before)) {
      chains.back().push_back(side.crossing(before, p));
    }
  }
}

// Ends of chains along the side in order: every second stretch between neighbours is inside.
std::vector<End> endsInOrder(const std::vector<Loop>& chains, const Side& side) {
  std::vector<End> ends;
  for (std::size_t i = 0; i < chains.size(); ++i) {
    ends.push_back({side.along(chains[i].front()), i, false});
    ends.push_back({side.along(chains[i].back()), i, true});
  }
  std::sort(ends.begin(), ends.end(), [](const End& a, const End& b) {
    return std::tie(a.along, a.chain, a.isLast) < std::tie(b.along, b.chain, b.isLast);
  });
  return ends;
}

// Position of each chain's first (2 i) and last (2 i + 1) end among the ends.
std::vector<std::size_t> placesOf(const std::vector<End>& ends) {
  std::vector<std::size_t> places(ends.size());
  for (std::size_t i = 0; i < ends.size(); ++i)
    places[2 * ends[i].chain + (ends[i].isLast ? 1 : 0)] = i;
  return places;
}

// Joins the chains along the stretches of the side that are inside.
void joinChains(const std::vector<Loop>& chains, const Side& side, std::vector<Loop>& out) {
  const std::vector<End> ends = endsInOrder(chains, side);
  const std::vector<std::size_t> places = placesOf(ends);
  std::vector<bool> used(chains.size());
  for (std::size_t i = 0; i < chains.size(); ++i) {
    Loop loop;
    bool reversed = false;
    for (std::size_t chain = i; !used[chain];) {
      used[chain] = true;
      if (reversed)
        loop.insert(loop.end(), chains[chain].rbegin(), chains[chain].rend());
      else
        loop.insert(loop.end(), chains[chain].begin(), chains[chain].end());
      const End& next = ends[places[2 * chain + (reversed ? 0 : 1)] ^ 1];
      chain = next.chain;
      reversed = next.isLast;
    }
    if (!loop.empty()) out.push_back(std::move(loop));
  }
}

std::vector<Loop> clip(std::vector<Loop> loops, const Side& side) {
  std::vector<Loop> out;
  std::vector<Loop> chains;
  for (Loop& loop : loops) {
    const auto inside =
        std::count_if(loop.begin(), loop.end(), [&](const CGeom2d_XY& p) { return side.holds(p); });
    if (inside == 0) continue;
    if (static_cast<std::size_t>(inside) == loop.size())
      out.push_back(std::move(loop));
    else
      cutLoop(loop, side, chains);
  }
  joinChains(chains, side, out);
  return out;
}

bool isSame(const CGeom2d_XY& a, const CGeom2d_XY& b) { return a.x == b.x && a.y == b.y; }

// Points inside the square, on the grid, and none twice in a row.
void tidy(Loop& loop) {
  for (CGeom2d_XY& p : loop)
    p = unitOf(gridPoint({std::clamp(p.x, 0.0, 1.0), std::clamp(p.y, 0.0, 1.0)}));
  loop.erase(std::unique(loop.begin(), loop.end(), isSame), loop.end());
  while (loop.size() > 1 && isSame(loop.front(), loop.back())) loop.pop_back();
}

}  // namespace

std::vector<Loop> clipToUnit(std::vector<Loop> loops) {
  for (const Side side :
       {Side{true, false}, Side{true, true}, Side{false, false}, Side{false, true}}) {
    const bool isBeyond = std::any_of(loops.begin(), loops.end(), [&](const Loop& loop) {
      return std::any_of(loop.begin(), loop.end(),
                         [&](const CGeom2d_XY& p) { return side.depth(p) < -kOnSide; });
    });
    if (isBeyond) loops = clip(std::move(loops), side);
  }
  for (Loop& loop : loops) tidy(loop);
  return loops;
}

}  // namespace solidra
