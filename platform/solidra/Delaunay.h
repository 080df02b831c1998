#pragma once

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "platform/solidra/Mesher.h"
#include "platform/solidra/Region.h"

/// A constrained Delaunay triangulation of what loops surround. It is exact: points lie on a grid,
/// so that no rounding turns a triangle over, however thin it is.
namespace solidra {

/// What makes lengths in the two parameters comparable: equal errors are equally long.
struct Metric {
  double u = 1;
  double v = 1;
};

/// Triangulates the unit square, then the rim of a region in it, then points inside the region.
class Delaunay {
 public:
  Delaunay(const Metric& metric, Work& work);

  /// Adds the region's loops, whose points must lie on the grid. False when they cross, or when the
  /// work is used up. To be called once.
  bool addRim(const Region& region);

  /// Adds a point of the grid unless it lies outside the region or nearer than `least` (in the
  /// metric) to a corner of the triangle around it or to the rim. False when the work is used up.
  bool addInside(const CGeom2d_XY& point, double least);

  /// The triangles inside the region, counter-clockwise, with their points.
  UvMesh mesh() const;

 private:
  // Side i goes from corner i to the next one; `across` has the triangle on its other side, -1 for
  // none.
  struct Triangle {
    std::array<int, 3> corners;
    std::array<int, 3> across;
    std::array<bool, 3> isRim{};
    bool isInside = false;
  };

  struct Side {
    int triangle = -1;
    int side = 0;
  };

  // Two points joined by a side.
  using Pair = std::array<int, 2>;

  std::int64_t turnOf(int a, int b, int c) const;
  int from(Side s) const { return triangles_[s.triangle].corners[s.side]; }
  int to(Side s) const { return triangles_[s.triangle].corners[(s.side + 1) % 3]; }
  int apex(Side s) const { return triangles_[s.triangle].corners[(s.side + 2) % 3]; }
  Side opposite(Side s) const;
  Side next(Side s) const { return {s.triangle, (s.side + 1) % 3}; }
  Side turned(Side s) const;  // the next side from the same point, counter-clockwise
  Side sideFrom(int point) const;
  Side sideBetween(int a, int b) const;
  bool isRim(Side s) const { return triangles_[s.triangle].isRim[s.side]; }
  bool isInCircle(Side s, int point) const;
  bool isTooNear(const Triangle& t, const GridPoint& p, double least) const;

  void join(Side s, Side other, bool isRim);
  int locate(const GridPoint& p);
  int addPoint(const GridPoint& p);
  bool insert(int point, int triangle);
  bool canFlip(Side s) const;
  Side flip(Side s);
  bool legalize(std::vector<Side> sides);

  bool addPoints(const Loop& loop);
  bool addWay(const Loop& loop);
  bool constrain(int a, int b);
  Side firstOnWay(int a, int b) const;
  bool touches(int a, int b, int p) const;
  int cross(int a, int b, Side first, std::vector<Pair>& crossed, int& round) const;
  bool clear(int a, int b, const std::vector<Pair>& crossed);
  void markInside();

  Metric metric_;
  Work& work_;
  std::vector<GridPoint> points_;
  std::vector<int> around_;  // of each point, a triangle that has it as a corner
  std::vector<Triangle> triangles_;
  std::unordered_map<std::uint64_t, int> known_;
  int last_ = 0;  // where the search for a point's triangle starts
};

}  // namespace solidra
