// The only file that sees OpenCASCADE: a module of its own, which uses nothing of the library but
// what stands in headers. Which calls, and in which order, was found by measuring:
// faces and wires are built edge by edge with BRep_Builder, as the algorithms that build them from
// curves keep wrong orientations and turn gaps into tolerances without a word.
#include "platform/solidra/Mesher.h"

#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Geom2d_Line.hxx>
#include <Geom_BSplineSurface.hxx>
#include <IMeshData_Status.hxx>
#include <IMeshTools_Parameters.hxx>
#include <Message_ProgressIndicator.hxx>
#include <Poly_Triangulation.hxx>
#include <Standard_Failure.hxx>
#include <Standard_Handle.hxx>
#include <Standard_TypeDef.hxx>
#include <TColStd_Array1OfInteger.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <TColStd_Array2OfReal.hxx>
#include <TColgp_Array2OfPnt.hxx>
#include <TopAbs_Orientation.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Vertex.hxx>
#include <TopoDS_Wire.hxx>
#include <algorithm>
#include <cmath>

#if defined(_WIN32)
#define SOLIDRA_MODULE_API __declspec(dllexport)
#else
#define SOLIDRA_MODULE_API __attribute__((visibility("default")))
#endif

namespace solidra {

namespace {

// OpenCASCADE works with absolute tolerances (1e-7): it is given surfaces of this size (their
// diagonal) about the origin, over the unit square, whatever their size and place.
constexpr double kSize = 100;

// Vertices and edges are exact but for rounding.
constexpr double kExact = 1e-7;

// How often the mesher may ask whether to go on.
constexpr int kMaxAsked = 1'000'000;

// Largest turn in radians from one piece of an edge to the next.
constexpr double kAngle = 0.5;

/// What carries mm to OpenCASCADE's own size and back.
struct Scale {
  CGeom_XYZ centre;
  double factor;

  explicit Scale(const Surface& surface) {
    CGeom_XYZ low = surface.poles.front();
    CGeom_XYZ high = low;
    for (const CGeom_XYZ& p : surface.poles) {
      low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
      high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    centre = {(low.x + high.x) / 2, (low.y + high.y) / 2, (low.z + high.z) / 2};
    factor = kSize / std::hypot(high.x - low.x, high.y - low.y, high.z - low.z);
  }

  gp_Pnt operator()(const CGeom_XYZ& p) const {
    return {(p.x - centre.x) * factor, (p.y - centre.y) * factor, (p.z - centre.z) * factor};
  }
};

/// Distinct knots and how often each stands, with `start` .. `end` carried to 0 .. 1.
struct KnotTable {
  TColStd_Array1OfReal values;
  TColStd_Array1OfInteger counts;
};

int distinct(const std::vector<double>& knots) {
  int count = 1;
  for (std::size_t i = 1; i < knots.size(); ++i) count += knots[i] != knots[i - 1];
  return count;
}

KnotTable tableOf(const Knots& knots, double start, double end) {
  const int size = distinct(knots.values);
  KnotTable table{{1, size}, {1, size}};
  table.counts.Init(0);
  int at = 0;
  for (std::size_t i = 0; i < knots.values.size(); ++i) {
    if (i == 0 || knots.values[i] != knots.values[i - 1])
      table.values(++at) = (knots.values[i] - start) / (end - start);
    ++table.counts(at);
  }
  return table;
}

Handle(Geom_BSplineSurface) splineOf(const Surface& s, const Scale& scale) {
  TColgp_Array2OfPnt poles(1, s.u.count, 1, s.v.count);
  TColStd_Array2OfReal weights(1, s.u.count, 1, s.v.count);
  for (int j = 0; j < s.v.count; ++j)
    for (int i = 0; i < s.u.count; ++i) {
      const std::size_t at = static_cast<std::size_t>(j) * s.u.count + i;
      poles(i + 1, j + 1) = scale(s.poles[at]);
      weights(i + 1, j + 1) = s.weights.empty() ? 1 : s.weights[at];
    }
  const KnotTable u = tableOf(s.u, s.start.x, s.end.x);
  const KnotTable v = tableOf(s.v, s.start.y, s.end.y);
  if (s.weights.empty())
    return new Geom_BSplineSurface(poles, u.values, v.values, u.counts, v.counts, s.u.degree,
                                   s.v.degree, false, false);
  return new Geom_BSplineSurface(poles, weights, u.values, v.values, u.counts, v.counts, s.u.degree,
                                 s.v.degree, false, false);
}

/// Builds a face from loops.
class FaceBuilder {
 public:
  explicit FaceBuilder(const Handle(Geom_BSplineSurface) & surface) : surface_(surface) {}

  TopoDS_Face face(const Region& region) const {
    if (region.isWhole) return BRepBuilderAPI_MakeFace(surface_, 0, 1, 0, 1, kExact).Face();
    TopoDS_Face face;
    builder_.MakeFace(face, surface_, kExact);
    addLoop(region.outer, face);
    for (const Loop& hole : region.holes) addLoop(hole, face);
    return face;
  }

 private:
  TopoDS_Vertex vertex(const CGeom2d_XY& p) const {
    TopoDS_Vertex vertex;
    builder_.MakeVertex(vertex, surface_->Value(p.x, p.y), kExact);
    return vertex;
  }

  // A straight edge of the parameter plane. Where a whole stretch of it is one point in space (a
  // pole, an apex) it has no curve there, and says so.
  TopoDS_Edge edge(const CGeom2d_XY& a, const CGeom2d_XY& b, const TopoDS_Vertex& from,
                   const TopoDS_Vertex& to) const {
    const gp_Vec2d way(b.x - a.x, b.y - a.y);
    TopoDS_Edge edge;
    builder_.MakeEdge(edge);
    builder_.UpdateEdge(edge, new Geom2d_Line({a.x, a.y}, way), surface_, TopLoc_Location(),
                        kExact);
    builder_.Range(edge, 0, way.Magnitude());
    builder_.Add(edge, from.Oriented(TopAbs_FORWARD));
    builder_.Add(edge, to.Oriented(TopAbs_REVERSED));
    if (isCollapsed(a, b))
      builder_.Degenerated(edge, true);
    else
      BRepLib::BuildCurve3d(edge, 1e-5);  // without it the mesher loses the edge, or the whole hole
    return edge;
  }

  bool isCollapsed(const CGeom2d_XY& a, const CGeom2d_XY& b) const {
    const gp_Pnt from = surface_->Value(a.x, a.y);
    return from.Distance(surface_->Value(b.x, b.y)) < kExact &&
           from.Distance(surface_->Value((a.x + b.x) / 2, (a.y + b.y) / 2)) < kExact;
  }

  void addLoop(const Loop& loop, TopoDS_Face& face) const {
    TopoDS_Wire wire;
    builder_.MakeWire(wire);
    const TopoDS_Vertex first = vertex(loop.front());
    TopoDS_Vertex from = first;
    for (std::size_t i = 0; i < loop.size(); ++i) {
      const bool isLast = i + 1 == loop.size();
      const CGeom2d_XY& end = loop[isLast ? 0 : i + 1];
      const TopoDS_Vertex to = isLast ? first : isCollapsed(loop[i], end) ? from : vertex(end);
      builder_.Add(wire, edge(loop[i], end, from, to));
      from = to;
    }
    wire.Closed(true);
    builder_.Add(face, wire);
  }

  BRep_Builder builder_;
  Handle(Geom_BSplineSurface) surface_;
};

/// Stops the mesher when it has asked too often whether it may go on; shows nothing.
class Watch : public Message_ProgressIndicator {
 public:
  Standard_Boolean UserBreak() override { return ++asked_ > kMaxAsked; }
  void Show(const Message_ProgressScope&, const Standard_Boolean) override {}

 private:
  int asked_ = 0;
};

// Every other status bit means a mesh that is missing or wrong, even where there is one.
bool isGood(int status) {
  return (status & ~(IMeshData_ReMesh | IMeshData_Outdated | IMeshData_Reused)) == 0;
}

bool mesh(const TopoDS_Face& face, double deflection) {
  IMeshTools_Parameters parameters;
  parameters.Deflection = deflection;
  parameters.Angle = kAngle;
  parameters.InParallel = false;
  parameters.Relative = false;
  BRepMesh_IncrementalMesh mesher;
  mesher.SetShape(face);
  mesher.ChangeParameters() = parameters;
  const Handle(Watch) watch = new Watch;
  mesher.Perform(watch->Start());
  return isGood(mesher.GetStatusFlags());
}

bool read(const TopoDS_Face& face, UvMesh& out) {
  TopLoc_Location place;
  const Handle(Poly_Triangulation) found = BRep_Tool::Triangulation(face, place);
  if (found.IsNull() || !found->HasUVNodes()) return false;
  for (int i = 1; i <= found->NbNodes(); ++i) {
    const gp_Pnt2d p = found->UVNode(i);
    out.points.push_back({std::clamp(p.X(), 0.0, 1.0), std::clamp(p.Y(), 0.0, 1.0)});
  }
  for (int i = 1; i <= found->NbTriangles(); ++i) {
    int a = 0;
    int b = 0;
    int c = 0;
    found->Triangle(i).Get(a, b, c);
    out.triangles.push_back({a - 1, b - 1, c - 1});
  }
  return !out.triangles.empty();
}

}  // namespace

}  // namespace solidra

// The module's one symbol, a solidra::Mesher.
extern "C" SOLIDRA_MODULE_API bool solidra_triangulate(const solidra::Surface& surface,
                                                       const solidra::Region& region,
                                                       double deflection,
                                                       solidra::UvMesh& out) try {
  using namespace solidra;
  const Scale scale(surface);
  const TopoDS_Face face = FaceBuilder(splineOf(surface, scale)).face(region);
  return mesh(face, deflection * scale.factor) && read(face, out);
} catch (const Standard_Failure&) {  // not a std::exception
  return false;
}
