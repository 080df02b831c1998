#include "benchmarks/peers/BareFaces.h"

#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Geom2d_BSplineCurve.hxx>
#include <Geom_BSplineSurface.hxx>
#include <Poly_Triangulation.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Vertex.hxx>
#include <TopoDS_Wire.hxx>
#include <algorithm>
#include <cmath>

namespace korvo::bench {
namespace {

using test::Patch;

constexpr int kSteps = 6;  // samples along a triangle's side

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
  const KnotTable k = tableOf(trim.flatKnots());
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

TopoDS_Face meshed(const FaceModel& f, double tolerance) {
  const Handle(Geom_BSplineSurface) surface = surfaceOf(f.patch);
  TopoDS_Face face;
  if (f.loops.empty()) {
    face = BRepBuilderAPI_MakeFace(surface, 1e-7).Face();
  } else {
    BareFace bare(surface);
    for (const Loop& loop : f.loops) bare.addLoop(loop);
    face = bare.face();
  }
  BRepMesh_IncrementalMesh mesher(face, tolerance, false, 0.5, false);
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

}  // namespace

void meshBare(const FaceModel& f, double tolerance) { meshed(f, tolerance); }

BareMesh measuredBare(const FaceModel& f, double tolerance) {
  const TopoDS_Face face = meshed(f, tolerance);
  TopLoc_Location place;
  const Handle(Poly_Triangulation) mesh = BRep_Tool::Triangulation(face, place);
  if (mesh.IsNull()) return {HUGE_VAL, 0};
  const Handle(Geom_Surface) surface = BRep_Tool::Surface(face);
  BareMesh out{0, static_cast<std::size_t>(mesh->NbTriangles())};
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

}  // namespace korvo::bench
