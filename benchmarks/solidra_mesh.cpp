// Meshing trimmed surfaces at 0.01 mm: Solidra against bare OpenCASCADE, which gets the same
// surfaces and curves by the calls that were found to mesh them rightly. Each round meshes every
// face both ways, one after the other; a face's time is the median over the rounds. How far
// OpenCASCADE's triangles are from the surface is measured on each of them. Wanted: over the faces
// on which that is within the tolerance, ours takes at most 1.15 times its time.
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Geom2d_BSplineCurve.hxx>
#include <Geom2d_Line.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Poly_Triangulation.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Vertex.hxx>
#include <TopoDS_Wire.hxx>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "tests/solidra/Faces.h"

namespace {

using korvo::test::CurvePtr;
using korvo::test::Patch;

constexpr double kTolerance = 0.01;
constexpr int kVariants = 4;
constexpr int kRounds = 5;
constexpr int kSteps = 6;  // samples along a triangle's side

// --- The faces: five kinds, each in some sizes

/// A curve of a loop: a polyline (degree 1) or a rational one.
struct Trim {
  int degree = 1;
  std::vector<CGeom2d_XY> poles;
  std::vector<double> weights;
};

using Loop = std::vector<Trim>;

struct Face {
  std::string kind;
  Patch patch;
  std::vector<Loop> loops;  ///< The outer one counter-clockwise, the hole clockwise.
};

Trim polyline(const std::vector<CGeom2d_XY>& points) { return {1, points, {}}; }

// A quarter of an ellipse, ends moved apart by `gap`.
Trim quarter(CGeom2d_XY centre, double radius, int index, bool clockwise, double gap) {
  const auto corner = [&](int eighth) {
    const double angle = eighth * std::numbers::pi / 4;
    const double reach = eighth % 2 == 0 ? radius : radius * std::numbers::sqrt2;
    return CGeom2d_XY{centre.x + reach * std::cos(angle) + gap * index,
                      centre.y + reach * std::sin(angle)};
  };
  Trim out{2, {}, {1, std::sqrt(0.5), 1}};
  for (int i = 0; i <= 2; ++i) out.poles.push_back(corner(2 * index + (clockwise ? 2 - i : i)));
  return out;
}

Loop circle(CGeom2d_XY centre, double radius, bool clockwise, double gap = 0) {
  Loop out;
  for (int i = 0; i < 4; ++i)
    out.push_back(quarter(centre, radius, clockwise ? 3 - i : i, clockwise, gap));
  return out;
}

Loop star(double size) {
  std::vector<CGeom2d_XY> points;
  for (int i = 0; i <= 24; ++i) {
    const double angle = 2 * std::numbers::pi * i / 24;
    const double reach = i % 2 == 0 ? size : 0.8 * size;
    points.push_back({.5 + reach * std::cos(angle), .5 + reach * std::sin(angle)});
  }
  points.back() = points.front();
  return {polyline(points)};
}

std::vector<Face> faces() {
  std::vector<Face> out;
  for (int i = 0; i < kVariants; ++i) {
    const double size = 60 + 20 * i;
    const Patch hill = korvo::test::hill(size, size / 5);
    out.push_back({"bicubic", hill, {}});
    out.push_back(
        {"cylinder and polyline", korvo::test::cylinder(size / 2, size, 1), {star(.3 + .03 * i)}});
    out.push_back({"four curves and a hole",
                   hill,
                   {circle({.5, .5}, .42, false), circle({.45, .5}, .1 + .03 * i, true)}});
    out.push_back({"four curves with gaps", hill, {circle({.5, .5}, .3 + .04 * i, false, 2e-5)}});
    out.push_back({"full cylinder", korvo::test::cylinder(size / 2, size, 4), {}});
  }
  return out;
}

std::vector<double> flatKnots(const Trim& trim) {
  const std::size_t inner = trim.poles.size() - static_cast<std::size_t>(trim.degree) - 1;
  std::vector<double> out(static_cast<std::size_t>(trim.degree) + 1, 0.0);
  for (std::size_t i = 1; i <= inner; ++i) out.push_back(static_cast<double>(i));
  out.insert(out.end(), static_cast<std::size_t>(trim.degree) + 1, static_cast<double>(inner + 1));
  return out;
}

/// What one way of meshing gave.
struct Result {
  double seconds = 0;
  double deviation = 0;  ///< Measured.
  std::size_t triangles = 0;
};

// --- Ours

CurvePtr curveOf(const Trim& trim) {
  const int count = static_cast<int>(trim.poles.size());
  if (trim.degree == 1) return std::make_unique<CGeom2d_Polygon>(count, trim.poles.data(), count);
  const std::vector<double> knots = flatKnots(trim);
  return std::make_unique<CGeom2d_CNurbs>(
      count, trim.degree + 1, false, false, CStd_Array1<CGeom2d_XY>(trim.poles.data(), count),
      CStd_Array1<double>(knots.data(), static_cast<int>(knots.size())),
      CStd_Array1<double>(trim.weights.data(), count));
}

Result meshOurs(const Face& f) {
  std::vector<CurvePtr> curves;
  for (const Loop& loop : f.loops)
    for (const Trim& trim : loop) curves.push_back(curveOf(trim));
  const auto face = korvo::test::face(f.patch, std::move(curves));
  if (!face->ValidateMesh(kTolerance, kTolerance)) return {0, HUGE_VAL, 0};
  CStd_Array1<CMesh_Vertex> vertices;
  CStd_Array1<CMesh_Index> triangles;
  face->GetMeshVertex(vertices);
  return {0, face->GetMeshStats().reached,
          static_cast<std::size_t>(face->GetVTriangles(triangles))};
}

// --- Bare OpenCASCADE

struct KnotTable {
  TColStd_Array1OfReal values;
  TColStd_Array1OfInteger counts;
};

KnotTable tableOf(const std::vector<double>& flat) {
  std::vector<double> values;
  std::vector<int> counts;
  for (const double knot : flat) {
    if (values.empty() || values.back() != knot) {
      values.push_back(knot);
      counts.push_back(0);
    }
    ++counts.back();
  }
  const int size = static_cast<int>(values.size());
  KnotTable table{{1, size}, {1, size}};
  for (int i = 1; i <= size; ++i) {
    table.values(i) = values[static_cast<std::size_t>(i) - 1];
    table.counts(i) = counts[static_cast<std::size_t>(i) - 1];
  }
  return table;
}

Handle(Geom_BSplineSurface) surfaceOf(const Patch& p) {
  TColgp_Array2OfPnt poles(1, p.countU, 1, p.countV);
  TColStd_Array2OfReal weights(1, p.countU, 1, p.countV);
  weights.Init(1);
  for (int j = 0; j < p.countV; ++j)
    for (int i = 0; i < p.countU; ++i) {
      const auto at = static_cast<std::size_t>(j * p.countU + i);
      poles(i + 1, j + 1) = gp_Pnt(p.poles[at].x, p.poles[at].y, p.poles[at].z);
      if (!p.weights.empty()) weights(i + 1, j + 1) = p.weights[at];
    }
  const KnotTable u = tableOf(p.knotsU);
  const KnotTable v = tableOf(p.knotsV);
  if (p.weights.empty())
    return new Geom_BSplineSurface(poles, u.values, v.values, u.counts, v.counts, p.orderU - 1,
                                   p.orderV - 1);
  return new Geom_BSplineSurface(poles, weights, u.values, v.values, u.counts, v.counts,
                                 p.orderU - 1, p.orderV - 1);
}

Handle(Geom2d_Curve) bareCurve(const Trim& trim) {
  const int count = static_cast<int>(trim.poles.size());
  TColgp_Array1OfPnt2d poles(1, count);
  TColStd_Array1OfReal weights(1, count);
  weights.Init(1);
  for (int i = 1; i <= count; ++i) {
    const CGeom2d_XY& p = trim.poles[static_cast<std::size_t>(i) - 1];
    poles(i) = gp_Pnt2d(p.x, p.y);
    if (!trim.weights.empty()) weights(i) = trim.weights[static_cast<std::size_t>(i) - 1];
  }
  const KnotTable k = tableOf(flatKnots(trim));
  if (trim.weights.empty()) return new Geom2d_BSplineCurve(poles, k.values, k.counts, trim.degree);
  return new Geom2d_BSplineCurve(poles, weights, k.values, k.counts, trim.degree);
}

/// Builds one face edge by edge.
class BareFace {
 public:
  explicit BareFace(const Handle(Geom_BSplineSurface) & surface) : surface_(surface) {
    builder_.MakeFace(face_, surface_, 1e-7);
  }

  void addLoop(const Loop& loop) {
    std::vector<Handle(Geom2d_Curve)> curves;
    for (std::size_t i = 0; i < loop.size(); ++i) {
      curves.push_back(bareCurve(loop[i]));
      const gp_Pnt2d end = curves.back()->Value(curves.back()->LastParameter());
      const CGeom2d_XY& next = loop[(i + 1) % loop.size()].poles.front();
      const gp_Vec2d gap(end, gp_Pnt2d(next.x, next.y));
      if (gap.Magnitude() > 1e-9) curves.push_back(bareCurve(polyline({{end.X(), end.Y()}, next})));
    }
    TopoDS_Wire wire;
    builder_.MakeWire(wire);
    const TopoDS_Vertex first = vertex(*curves.front());
    TopoDS_Vertex from = first;
    for (std::size_t i = 0; i < curves.size(); ++i) {
      const TopoDS_Vertex to = i + 1 < curves.size() ? vertex(*curves[i + 1]) : first;
      builder_.Add(wire, edge(curves[i], from, to));
      from = to;
    }
    wire.Closed(true);
    builder_.Add(face_, wire);
  }

  const TopoDS_Face& face() const { return face_; }

 private:
  TopoDS_Vertex vertex(const Geom2d_Curve& curve) const {
    const gp_Pnt2d p = curve.Value(curve.FirstParameter());
    TopoDS_Vertex out;
    builder_.MakeVertex(out, surface_->Value(p.X(), p.Y()), 1e-7);
    return out;
  }

  TopoDS_Edge edge(const Handle(Geom2d_Curve) & curve, const TopoDS_Vertex& from,
                   const TopoDS_Vertex& to) const {
    TopoDS_Edge out;
    builder_.MakeEdge(out);
    builder_.UpdateEdge(out, curve, surface_, TopLoc_Location(), 1e-7);
    builder_.Range(out, curve->FirstParameter(), curve->LastParameter());
    builder_.Add(out, from.Oriented(TopAbs_FORWARD));
    builder_.Add(out, to.Oriented(TopAbs_REVERSED));
    BRepLib::BuildCurve3d(out, 1e-5);
    return out;
  }

  BRep_Builder builder_;
  Handle(Geom_BSplineSurface) surface_;
  TopoDS_Face face_;
};

TopoDS_Face meshedBare(const Face& f) {
  const Handle(Geom_BSplineSurface) surface = surfaceOf(f.patch);
  TopoDS_Face face;
  if (f.loops.empty()) {
    face = BRepBuilderAPI_MakeFace(surface, 1e-7).Face();
  } else {
    BareFace bare(surface);
    for (const Loop& loop : f.loops) bare.addLoop(loop);
    face = bare.face();
  }
  BRepMesh_IncrementalMesh mesher(face, kTolerance, false, 0.5, false);
  return face;
}

// Where a point projects into the triangle, its distance from the plane; else from the nearest
// side.
double distance(const gp_Pnt& p, const gp_Pnt& a, const gp_Pnt& b, const gp_Pnt& c) {
  const gp_Vec normal = gp_Vec(a, b).Crossed(gp_Vec(a, c));
  const std::pair<gp_Pnt, gp_Pnt> sides[] = {{a, b}, {b, c}, {c, a}};
  bool isInside = normal.SquareMagnitude() > 0;
  double nearest = HUGE_VAL;
  for (const auto& [from, to] : sides) {
    const gp_Vec side(from, to);
    const gp_Vec way(from, p);
    if (normal.Crossed(side).Dot(way) < 0) isInside = false;
    const double t = std::clamp(way.Dot(side) / std::max(side.SquareMagnitude(), 1e-300), 0., 1.);
    nearest = std::min(nearest, (way - side * t).Magnitude());
  }
  return isInside ? std::abs(gp_Vec(a, p).Dot(normal)) / normal.Magnitude() : nearest;
}

Result measuredBare(const Face& f) {
  const TopoDS_Face face = meshedBare(f);
  TopLoc_Location place;
  const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(face, place);
  if (mesh.IsNull()) return {0, HUGE_VAL, 0};
  const Handle(Geom_Surface) surface = BRep_Tool::Surface(face);
  Result out{0, 0, static_cast<std::size_t>(mesh->NbTriangles())};
  for (int t = 1; t <= mesh->NbTriangles(); ++t) {
    int n[3];
    mesh->Triangle(t).Get(n[0], n[1], n[2]);
    for (int i = 0; i <= kSteps; ++i)
      for (int j = 0; i + j <= kSteps; ++j) {
        const double s[] = {1.0 * i / kSteps, 1.0 * j / kSteps, 1.0 * (kSteps - i - j) / kSteps};
        gp_XY uv(0, 0);
        for (int k = 0; k < 3; ++k) uv += mesh->UVNode(n[k]).XY() * s[k];
        out.deviation =
            std::max(out.deviation, distance(surface->Value(uv.X(), uv.Y()), mesh->Node(n[0]),
                                             mesh->Node(n[1]), mesh->Node(n[2])));
      }
  }
  return out;
}

// --- Both

double secondsOf(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                   values.end());
  return values[values.size() / 2];
}

/// Sums over faces.
struct Sum {
  std::size_t faces = 0;
  double triangles = 0;
  double seconds = 0;

  void add(const Result& r) {
    ++faces;
    triangles += static_cast<double>(r.triangles);
    seconds += r.seconds;
  }
};

void print(const std::string& what, const Sum& ours, const Sum& bare) {
  if (ours.faces == 0) return;
  std::printf(
      "%-24s %3zu faces: ours %7.1f faces/s %7.0f triangles/s, bare %7.1f faces/s %7.0f "
      "triangles/s; our time over its %.3f, our triangles over its %.2f\n",
      what.c_str(), ours.faces, static_cast<double>(ours.faces) / ours.seconds,
      ours.triangles / ours.seconds, static_cast<double>(bare.faces) / bare.seconds,
      bare.triangles / bare.seconds, ours.seconds / bare.seconds, ours.triangles / bare.triangles);
}

}  // namespace

int main() {
  const std::vector<Face> all = faces();
  std::vector<std::vector<double>> oursTimes(all.size()), bareTimes(all.size());
  for (int round = 0; round < kRounds; ++round)
    for (std::size_t i = 0; i < all.size(); ++i) {
      oursTimes[i].push_back(secondsOf([&] { meshOurs(all[i]); }));
      bareTimes[i].push_back(secondsOf([&] { meshedBare(all[i]); }));
    }
  Sum ours, bare, oursWhere, bareWhere;
  Sum oursKind[5], bareKind[5];
  double worst = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    Result a = meshOurs(all[i]);
    Result b = measuredBare(all[i]);
    a.seconds = median(oursTimes[i]);
    b.seconds = median(bareTimes[i]);
    worst = std::max(worst, a.deviation);
    ours.add(a);
    bare.add(b);
    oursKind[i % 5].add(a);
    bareKind[i % 5].add(b);
    if (b.deviation > kTolerance) continue;
    oursWhere.add(a);
    bareWhere.add(b);
  }
  for (std::size_t k = 0; k < 5; ++k) print(all[k].kind, oursKind[k], bareKind[k]);
  print("all", ours, bare);
  print("where bare keeps 0.01", oursWhere, bareWhere);
  std::printf("Largest deviation of ours: %.4f mm (%.4f wanted)\n", worst, kTolerance);
  return oursWhere.seconds <= 1.15 * bareWhere.seconds && worst <= kTolerance ? 0 : 1;
}
