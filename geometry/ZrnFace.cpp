#include "geometry/ZrnFace.h"

#include <limits>
#include <new>
#include <utility>

#include "platform/solidra/CGeom2d_CNurbs.h"
#include "platform/solidra/CGeom2d_Polygon.h"
#include "platform/solidra/CGeom_CNurbs.h"
#include "platform/solidra/CStd_Precision.h"
#include "platform/solidra/CTopo_Face.h"
#include "platform/solidra/CTopo_Solid.h"

using zgeo::UTri;
using zgeo::UVec2d;
using zgeo::UVec3d;

namespace zkin::zrn {
namespace {

// --- from the file's numbers to Solidra's objects, which check all that is not checked here

/// Angle in degrees at whose corners a curve is cut into pieces.
constexpr double kNurbsAngle = 20.0;
constexpr double kPolygonAngle = 10.0;

/// Whether an array with `int` indices holds that many.
bool fits(std::size_t count) { return count <= std::size_t{std::numeric_limits<int>::max()}; }

template <class T>
CStd_Array1<T> arrayOf(const std::vector<T>& values, std::size_t count) {
  return CStd_Array1<T>(values.data(), static_cast<int>(count));
}

/// Knots that `count` poles of a degree need; 0 when there is no such curve.
std::size_t knotsNeeded(long long count, long long degree) {
  const bool isDegree = degree >= 1 && degree < count;
  return isDegree ? static_cast<std::size_t>(count + degree + 1) : 0;
}

/// Whether the list has the knots, and `int` their number. Those beyond are not looked at.
bool hasKnots(const std::vector<double>& knots, long long count, long long degree) {
  const std::size_t needed = knotsNeeded(count, degree);
  return needed > 0 && needed <= knots.size() && fits(needed);
}

CStd_Array1<double> knotArray(const std::vector<double>& knots, long long count, long long degree) {
  return arrayOf(knots, knotsNeeded(count, degree));
}

CStd_Array1<CGeom_XYZ> poleArray(const std::vector<UVec3d>& poles) {
  CStd_Array1<CGeom_XYZ> out(static_cast<int>(poles.size()));
  for (int i = 0; i < out.GetCount(); ++i) out[i] = {poles[i].x, poles[i].y, poles[i].z};
  return out;
}

/// Weights count in both directions as soon as one is rational; else they are not looked at.
CStd_Array1<double> weightArray(const CGeomFilePrivateNurbsSurface& s) {
  const bool isRational = s.isRationalU || s.isRationalV;
  return arrayOf(s.weights, isRational ? s.weights.size() : 0);
}

int orderOf(long long degree) { return static_cast<int>(degree) + 1; }

std::unique_ptr<CGeom_SNurbs> makeSurface(const CGeomFilePrivateNurbsSurface& s) {
  if (!hasKnots(s.knotsU, s.a, s.degreeU) || !hasKnots(s.knotsV, s.b, s.degreeV)) return nullptr;
  if (!fits(s.poles.size())) return nullptr;
  CStd_Array1<double> knotsU = knotArray(s.knotsU, s.a, s.degreeU);
  CStd_Array1<double> knotsV = knotArray(s.knotsV, s.b, s.degreeV);
  CStd_Array1<CGeom_XYZ> poles = poleArray(s.poles);
  CStd_Array1<double> weights = weightArray(s);
  auto surface = std::make_unique<CGeom_SNurbs>(
      static_cast<int>(s.a), orderOf(s.degreeU), false, false, knotsU, static_cast<int>(s.b),
      orderOf(s.degreeV), false, false, knotsV, poles, weights, s.intervalU.start, s.intervalU.end,
      s.intervalV.start, s.intervalV.end);
  if (!surface->IsValid()) surface.reset();
  return surface;
}

std::unique_ptr<CGeom2d_Curve> makePolygon(const CGeomFilePrivatePolylineUVCurve& c) {
  if (!fits(c.points.size())) return nullptr;
  std::vector<CGeom2d_XY> points;
  for (const UVec2d& p : c.points) points.push_back({p.x, p.y});
  const int count = static_cast<int>(points.size());
  return std::make_unique<CGeom2d_Polygon>(count, points.data(), count);
}

/// Deliberate: the poles of a NURBS curve are (v, u), unlike the points of a polyline. Test:
/// ZrnTriangles.PolesOfNurbsTrimsAreExchangedAndPointsOfPolylinesAreNot.
CStd_Array1<CGeom2d_XY> exchangedPoles(const std::vector<UVec3d>& poles) {
  CStd_Array1<CGeom2d_XY> out(static_cast<int>(poles.size()));
  for (int i = 0; i < out.GetCount(); ++i) out[i] = {poles[i].y, poles[i].x};
  return out;
}

std::unique_ptr<CGeom2d_Curve> makeNurbs(const CGeomFilePrivateNurbsCurve& c) {
  if (!hasKnots(c.knots, c.n, c.degree) || !fits(c.knots.size())) return nullptr;
  return std::make_unique<CGeom2d_CNurbs>(static_cast<int>(c.n), orderOf(c.degree), false, false,
                                          exchangedPoles(c.poles), arrayOf(c.knots, c.knots.size()),
                                          arrayOf(c.weights, c.weights.size()));
}

TrimmingCurve makeTrim(const CGeomFileEntity& e) {
  if (e.GetKind() == ZRN_KIND_POLYLINE_UV_CURVE)
    return {makePolygon(static_cast<const CGeomFilePrivatePolylineUVCurve&>(*e.GetGeom())), true};
  if (e.GetKind() == ZRN_KIND_NURBS_CURVE)
    return {makeNurbs(static_cast<const CGeomFilePrivateNurbsCurve&>(*e.GetGeom())), false};
  return {};
}

// --- from the objects to a mesh

/// What bounds the parameter plane's curves: flags of wires and polygons, how far apart pieces may
/// end (mm) and how sharply they may turn, in the terms of Solidra's operations.
constexpr int kWireFlags = 0x11;
constexpr int kPolygonFlag = 2;
constexpr int kForward = 1;
constexpr int kEdgeKind = 8;
constexpr double kGap = 0.001;
constexpr double kAngle = 1e-5;

/// Share of the diagonal of a surface's box that its mesh may be off when a fine one fails.
constexpr double kCoarse = 0.1;

/// The pieces of a curve, as Solidra hands them out; deletes those that nobody took.
struct Pieces {
  Pieces() = default;
  Pieces(const Pieces&) = delete;
  Pieces& operator=(const Pieces&) = delete;
  ~Pieces() {
    for (const CGeom2d_Curve* curve : curves) delete curve;
  }
  std::unique_ptr<CGeom2d_Curve> take(int i) {
    return std::unique_ptr<CGeom2d_Curve>(std::exchange(curves[i], nullptr));
  }

  CStd_Array1<CGeom2d_Curve*> curves;
};

void addPiece(CTopo_Wire& wire, std::unique_ptr<CGeom2d_Curve> piece, bool isPolygon) {
  if (isPolygon) piece->SetFlags(kPolygonFlag);
  CTopo_Edge* edge = nullptr;
  wire.AddCoEdge(new CTopo_CoEdge(nullptr, piece.release()), kForward, kEdgeKind, edge, kGap);
}

/// Adds the smooth pieces of a curve, or itself where it cannot be cut.
void addCurve(CTopo_Wire& wire, TrimmingCurve& trim) {
  if (trim.isPolygon) trim.curve->SetFlags(kPolygonFlag);
  Pieces pieces;
  const double angle = trim.isPolygon ? kPolygonAngle : kNurbsAngle;
  const int count = trim.curve->ExtractC2Curves(pieces.curves, angle);
  if (count < 1) addPiece(wire, std::move(trim.curve), trim.isPolygon);
  for (int i = 0; i < count; ++i) addPiece(wire, pieces.take(i), trim.isPolygon);
}

void makeEdges(CTopo_Wire& wire) {
  const bool useFitting = std::exchange(CGeom_CNurbs::m_useFitting, false);
  wire.MakeEdgeFromCoEdge(kEdgeKind, CStd_Precision::deviation);
  CGeom_CNurbs::m_useFitting = useFitting;
}

/// Bounds the face by the curves, which are given away.
void trimFace(CTopo_Face& face, std::vector<TrimmingCurve>& trims) {
  auto* wire = new CTopo_Wire;
  wire->SetFlags(kWireFlags);
  if (!face.AddWire(wire)) throw std::bad_alloc();
  for (TrimmingCurve& trim : trims) addCurve(*wire, trim);
  if (wire->GetCoEdgeCount() > 0) makeEdges(*wire);
  face.Regen(0, kGap);
  face.RepearOrderedWire(CStd_Precision::deviation * 0.5, kAngle, kGap);
}

bool meshCoarsely(CTopo_Face& face) {
  CGeom_Bound bound;
  if (!face.GetSurface()->Get3DBound(bound)) return false;
  const double d = kCoarse * bound.GetDiag();
  return face.ValidateMesh(d, d);
}

UVec3d widened(const CMesh_Vertex& v) { return {v.x, v.y, v.z}; }

int readMesh(const CTopo_Face& face, std::vector<UTri>& triangles) {
  CStd_Array1<CMesh_Vertex> vertices;
  CStd_Array1<CMesh_Index> indices;
  face.GetMeshVertex(vertices);
  face.GetVTriangles(indices);
  for (const auto& [i0, i1, i2] : indices)
    triangles.emplace_back(widened(vertices[i0]), widened(vertices[i1]), widened(vertices[i2]));
  return indices.GetCount();
}

}  // namespace

FaceRecord makeFaceRecord(const CGeomFileNode& node) {
  FaceRecord record;
  const auto& geom = static_cast<const CGeomFilePrivateNurbsSurface&>(*node.entity.GetGeom());
  record.surface = makeSurface(geom);
  for (const auto& child : node.trimmingCurves) {
    TrimmingCurve trim = makeTrim(child->entity);
    if (trim.curve && trim.curve->IsValid()) record.trims.push_back(std::move(trim));
  }
  return record;
}

int faceToTriangles(FaceRecord& record, double tolerance, std::vector<UTri>& triangles) {
  triangles.clear();
  if (!record.surface) return -1;
  auto* face = new CTopo_Face(record.surface.release(), 0);
  CTopo_Solid solid;
  if (!solid.AddFace(face)) throw std::bad_alloc();
  if (record.trims.empty()) {
    face->AddOuterWire(false);
  } else {
    trimFace(*face, record.trims);
  }
  if (!face->ValidateMesh(tolerance, tolerance) && !meshCoarsely(*face)) return 0;
  return readMesh(*face, triangles);
}

}  // namespace zkin::zrn
