#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "platform/solidra/Delaunay.h"
#include "platform/solidra/FaceMesh.h"

namespace solidra {

namespace {

// Pieces that a direction is cut into at first, at the ends of knot spans, so that no wave of the
// surface hides between samples; not more, so that many knots cost no more than they bend.
constexpr std::size_t kMaxBreaks = 64;

// How often a cell is cut in half in all.
constexpr int kMaxHalvings = 24;

// How often a straight part of the rim is.
constexpr int kMaxRimHalvings = 8;

// Cells looked at: more triangles than a face may have would come of more.
constexpr int kMaxCells = 500'000;

// A point nearer to others than this share of its cell's side would give slivers.
constexpr double kApart = 0.4;

CGeom_XYZ middle(const CGeom_XYZ& a, const CGeom_XYZ& b) {
  return {(a.x + b.x) / 2, (a.y + b.y) / 2, (a.z + b.z) / 2};
}

double distance(const CGeom_XYZ& a, const CGeom_XYZ& b) {
  return std::hypot(a.x - b.x, a.y - b.y, a.z - b.z);
}

// How far the middle of three points in a row lies from the straight way between the others.
double sag(const CGeom_XYZ& a, const CGeom_XYZ& m, const CGeom_XYZ& b) {
  return distance(m, middle(a, b));
}

/// A rectangle of the parameter plane.
struct Cell {
  CGeom2d_XY low;
  CGeom2d_XY high;
  int halvings = 0;

  CGeom2d_XY at(int i, int j) const {
    return {low.x + (high.x - low.x) * i / 2, low.y + (high.y - low.y) * j / 2};
  }
};

/// What the surface does in a cell: how far it bends along each direction and across, in mm, and
/// how long it is.
struct Shape {
  double bendU = 0;
  double bendV = 0;
  double twist = 0;
  double lengthU = 0;
  double lengthV = 0;
};

Shape shapeOf(const Surface& surface, const Cell& cell) {
  std::array<std::array<CGeom_XYZ, 3>, 3> p;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) p[i][j] = surface.unitPoint(cell.at(i, j));
  Shape s;
  for (int k = 0; k < 3; ++k) {
    s.bendU = std::max(s.bendU, sag(p[0][k], p[1][k], p[2][k]));
    s.bendV = std::max(s.bendV, sag(p[k][0], p[k][1], p[k][2]));
    s.lengthU = std::max(s.lengthU, distance(p[0][k], p[2][k]));
    s.lengthV = std::max(s.lengthV, distance(p[k][0], p[k][2]));
  }
  s.twist = distance(middle(p[0][0], p[2][2]), middle(p[0][2], p[2][0])) / 2;
  return s;
}

// 0, 1 and ends of knot spans between them.
std::vector<double> breaks(const Knots& knots, double start, double end) {
  const std::vector<double> all = knots.breaks(start, end);
  const std::size_t step = (all.size() + kMaxBreaks - 1) / kMaxBreaks;
  std::vector<double> out;
  for (std::size_t i = 0; i + 1 < all.size(); i += step)
    out.push_back((all[i] - start) / (end - start));
  out.push_back(1);
  return out;
}

/// Samples of a surface, denser where it bends.
class Sampler {
 public:
  Sampler(const Surface& surface, double tolerance) : surface_(surface), tolerance_(tolerance) {
    const std::vector<double> us = breaks(surface.u, surface.start.x, surface.end.x);
    const std::vector<double> vs = breaks(surface.v, surface.start.y, surface.end.y);
    for (std::size_t j = 0; j + 1 < vs.size(); ++j)
      for (std::size_t i = 0; i + 1 < us.size(); ++i)
        open_.push_back({{us[i], vs[j]}, {us[i + 1], vs[j + 1]}});
    setMetric();
  }

  const Metric& metric() const { return metric_; }

  // The next cell that is flat enough; its lower corner is the sample. False after the last.
  bool next(Cell& out) {
    while (!open_.empty()) {
      out = open_.back();
      open_.pop_back();
      const Shape s = shapeOf(surface_, out);
      const bool isFlat = s.bendU + s.bendV + s.twist <= tolerance_;
      if (isFlat || out.halvings >= kMaxHalvings || ++cells_ > kMaxCells) return true;
      Cell rest = out;
      const bool isU = s.bendU == s.bendV ? s.lengthU >= s.lengthV : s.bendU > s.bendV;
      if (isU)
        out.high.x = rest.low.x = (out.low.x + out.high.x) / 2;
      else
        out.high.y = rest.low.y = (out.low.y + out.high.y) / 2;
      out.halvings = ++rest.halvings;
      open_.push_back(rest);
      open_.push_back(out);
    }
    return false;
  }

 private:
  // The error of a chord grows with the square of its length: so does the bend of a cell. A little
  // of the true length keeps directions that do not bend from being nothing.
  void setMetric() {
    double u = 0;
    double v = 0;
    const double size = surface_.poleBound().GetDiag();
    for (const Cell& cell : open_) {
      const Shape s = shapeOf(surface_, cell);
      const double du = cell.high.x - cell.low.x;
      const double dv = cell.high.y - cell.low.y;
      u = std::max(u, (s.bendU + tolerance_ * std::pow(s.lengthU / size, 2)) / (du * du));
      v = std::max(v, (s.bendV + tolerance_ * std::pow(s.lengthV / size, 2)) / (dv * dv));
    }
    metric_ = {std::sqrt(u), std::sqrt(v)};
  }

  const Surface& surface_;
  double tolerance_;
  Metric metric_;
  std::vector<Cell> open_;
  int cells_ = 0;
};

/// The rim with points where the surface bends below its straight parts.
class RimSampler {
 public:
  RimSampler(const Surface& surface, double tolerance) : surface_(surface), tolerance_(tolerance) {}

  Loop sampled(const Loop& loop) const {
    Loop out;
    for (std::size_t i = 0; i < loop.size(); ++i) {
      out.push_back(loop[i]);
      addBetween(loop[i], loop[(i + 1) % loop.size()], 0, out);
    }
    return out;
  }

 private:
  void addBetween(const CGeom2d_XY& a, const CGeom2d_XY& b, int halvings, Loop& out) const {
    const CGeom2d_XY m = unitOf(gridPoint({(a.x + b.x) / 2, (a.y + b.y) / 2}));
    if (halvings >= kMaxRimHalvings || !isBent(a, m, b)) return;
    addBetween(a, m, halvings + 1, out);
    out.push_back(m);
    addBetween(m, b, halvings + 1, out);
  }

  bool isBent(const CGeom2d_XY& a, const CGeom2d_XY& m, const CGeom2d_XY& b) const {
    return sag(surface_.unitPoint(a), surface_.unitPoint(m), surface_.unitPoint(b)) > tolerance_;
  }

  const Surface& surface_;
  double tolerance_;
};

}  // namespace

bool triangulateDensely(const Surface& surface, const Region& region, double tolerance, Work& work,
                        UvMesh& out) {
  Sampler sampler(surface, tolerance);
  const RimSampler rim(surface, tolerance);
  Region dense;
  dense.outer = rim.sampled(region.outer);
  for (const Loop& hole : region.holes) dense.holes.push_back(rim.sampled(hole));
  Delaunay mesh(sampler.metric(), work);
  if (!mesh.addRim(dense)) return false;
  for (Cell cell; sampler.next(cell);) {
    const double u = sampler.metric().u * (cell.high.x - cell.low.x);
    const double v = sampler.metric().v * (cell.high.y - cell.low.y);
    if (!work.spend(10LL * surface.steps())) return false;
    if (!mesh.addInside(cell.low, kApart * std::min(u, v))) return false;
  }
  out = mesh.mesh();
  return !out.triangles.empty();
}

}  // namespace solidra
