#include "tests/solidra/Faces.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace korvo::test {

namespace {

constexpr double kPi = std::numbers::pi;

template <class T>
CStd_Array1<T> array(const std::vector<T>& items) {
  return {items.data(), static_cast<int>(items.size())};
}

// A rational quadratic in quarters: 0 0 0 1/n 1/n .. 1 1 1, or a line, or a single quadratic.
std::vector<double> knots(int degree, int spans) {
  std::vector<double> out(static_cast<std::size_t>(degree) + 1, 0.0);
  for (int i = 1; i < spans; ++i) out.insert(out.end(), 2, static_cast<double>(i) / spans);
  out.insert(out.end(), static_cast<std::size_t>(degree) + 1, 1.0);
  return out;
}

// The poles of a unit circle's quarters: on the circle and at the corners of the square in turn.
CGeom2d_XY squarePole(int i) {
  const double angle = i * kPi / 4;
  const double reach = i % 2 == 0 ? 1 : std::sqrt(2.0);
  return {std::round(reach * std::cos(angle)), std::round(reach * std::sin(angle))};
}

double squareWeight(int i) { return i % 2 == 0 ? 1 : std::sqrt(0.5); }

CurvePtr nurbs(const std::vector<CGeom2d_XY>& poles, const std::vector<double>& weights,
               int spans) {
  return std::make_unique<CGeom2d_CNurbs>(static_cast<int>(poles.size()), 3, false, false,
                                          array(poles), array(knots(2, spans)), array(weights));
}

// `count` quarters from `first` on; poles are counted in eighths of a turn.
CurvePtr quarters(double u, double v, double ru, double rv, int first, int count, bool clockwise) {
  std::vector<CGeom2d_XY> poles;
  std::vector<double> weights;
  for (int i = 2 * first; i <= 2 * (first + count); ++i) {
    poles.push_back({u + ru * squarePole(i).x, v + rv * squarePole(i).y});
    weights.push_back(squareWeight(i));
  }
  if (clockwise) std::reverse(poles.begin(), poles.end());
  return nurbs(poles, weights, count);
}

CGeom_XYZ between(const CGeom_XYZ& a, const CGeom_XYZ& b, const CGeom_XYZ& c, double s, double t) {
  const double r = 1 - s - t;
  return {r * a.x + s * b.x + t * c.x, r * a.y + s * b.y + t * c.y, r * a.z + s * b.z + t * c.z};
}

}  // namespace

std::unique_ptr<CGeom_Surf> Patch::make() const {
  auto ku = array(knotsU);
  auto kv = array(knotsV);
  auto p = array(poles);
  auto w = array(weights);
  return std::make_unique<CGeom_SNurbs>(countU, orderU, periodicU, closedU, ku, countV, orderV,
                                        periodicV, closedV, kv, p, w, startU, endU, startV, endV);
}

std::vector<ProfilePole> arc(double radius, double height, double r, double from, double to) {
  const double a = from * kPi / 180;
  const double b = to * kPi / 180;
  const double half = std::cos((b - a) / 2);
  const double m = (a + b) / 2;
  return {{radius + r * std::cos(a), height + r * std::sin(a), 1},
          {radius + r / half * std::cos(m), height + r / half * std::sin(m), half},
          {radius + r * std::cos(b), height + r * std::sin(b), 1}};
}

Patch turned(const std::vector<ProfilePole>& profile, int quarters) {
  Patch p;
  p.countU = 2 * quarters + 1;
  p.orderU = 3;
  p.countV = p.orderV = static_cast<int>(profile.size());
  p.knotsU = knots(2, quarters);
  p.knotsV = knots(p.orderV - 1, 1);
  for (const ProfilePole& pole : profile)
    for (int i = 0; i < p.countU; ++i) {
      p.poles.push_back(
          {pole.radius * squarePole(i).x, pole.radius * squarePole(i).y, pole.height});
      p.weights.push_back(pole.weight * squareWeight(i));
    }
  return p;
}

Patch plane(double width, double height) {
  Patch p;
  p.countU = p.orderU = p.countV = p.orderV = 2;
  p.knotsU = p.knotsV = {0, 0, 1, 1};
  p.poles = {{0, 0, 0}, {width, 0, 0}, {0, height, 0}, {width, height, 0}};
  return p;
}

Patch cylinder(double radius, double height, int quarters) {
  return turned({{radius, 0, 1}, {radius, height, 1}}, quarters);
}

Patch cone(double radius, double height, int quarters) {
  return turned({{radius, 0, 1}, {0, height, 1}}, quarters);
}

Patch sphere(double radius, double from, double to, int quarters) {
  return turned(arc(0, 0, radius, from, to), quarters);
}

Patch torus(double ring, double tube, double from, double to, int quarters) {
  return turned(arc(ring, 0, tube, from, to), quarters);
}

Patch hill(double size, double height) {
  Patch p;
  p.countU = p.countV = 7;
  p.orderU = p.orderV = 4;
  p.knotsU = p.knotsV = {0, 0, 0, 0, .25, .5, .75, 1, 1, 1, 1};
  for (int j = 0; j < 7; ++j)
    for (int i = 0; i < 7; ++i)
      p.poles.push_back(
          {size * i / 6, size * j / 6, height * std::sin(kPi * i / 6) * std::sin(kPi * j / 6)});
  return p;
}

CurvePtr polygon(const std::vector<CGeom2d_XY>& points) {
  const int count = static_cast<int>(points.size());
  return std::make_unique<CGeom2d_Polygon>(count, points.data(), count);
}

CurvePtr rectangle(double u0, double v0, double u1, double v1, bool clockwise) {
  std::vector<CGeom2d_XY> points = {{u0, v0}, {u1, v0}, {u1, v1}, {u0, v1}, {u0, v0}};
  if (clockwise) std::reverse(points.begin(), points.end());
  return polygon(points);
}

CurvePtr circle(double u, double v, double ru, double rv, bool clockwise) {
  return quarters(u, v, ru, rv, 0, 4, clockwise);
}

CurvePtr quarter(double u, double v, double ru, double rv, int quarter, bool clockwise) {
  return quarters(u, v, ru, rv, quarter, 1, clockwise);
}

std::unique_ptr<CTopo_Face> face(const Patch& patch, std::vector<CurvePtr> curves) {
  auto out = std::make_unique<CTopo_Face>(patch.make().release(), 0);
  if (curves.empty()) {
    out->AddOuterWire(false);
    return out;
  }
  auto* wire = new CTopo_Wire;
  wire->SetFlags(0x11);
  out->AddWire(wire);
  for (const CurvePtr& curve : curves) {
    CStd_Array1<CGeom2d_Curve*> pieces;
    CTopo_Edge* edge = nullptr;
    curve->ExtractC2Curves(pieces, 10.0);
    for (CGeom2d_Curve* piece : pieces)
      wire->AddCoEdge(new CTopo_CoEdge(nullptr, piece), 1, 8, edge, 0.001);
  }
  wire->MakeEdgeFromCoEdge(8, CStd_Precision::deviation);
  out->Regen(0, 0.001);
  out->RepearOrderedWire(CStd_Precision::deviation * 0.5, 1e-5, 0.001);
  return out;
}

Mesh meshOf(const CTopo_Face& face) {
  Mesh out;
  CStd_Array1<CMesh_Vertex> vertices;
  CStd_Array1<CMesh_Index> triangles;
  face.GetMeshVertex(vertices);
  face.GetVTriangles(triangles);
  for (const CMesh_Vertex& v : vertices) out.vertices.push_back({v.x, v.y, v.z});
  out.triangles.assign(triangles.begin(), triangles.end());
  return out;
}

double areaOf(const Mesh& mesh, const CMesh_Index& t) {
  const CGeom_XYZ& a = mesh.vertices[t.i0];
  const CGeom_XYZ& b = mesh.vertices[t.i1];
  const CGeom_XYZ& c = mesh.vertices[t.i2];
  const CGeom_XYZ p{b.x - a.x, b.y - a.y, b.z - a.z};
  const CGeom_XYZ q{c.x - a.x, c.y - a.y, c.z - a.z};
  return std::hypot(p.y * q.z - p.z * q.y, p.z * q.x - p.x * q.z, p.x * q.y - p.y * q.x) / 2;
}

double areaOf(const Mesh& mesh) {
  double area = 0;
  for (const CMesh_Index& t : mesh.triangles) area += areaOf(mesh, t);
  return area;
}

double largest(const Mesh& mesh, const std::function<double(const CGeom_XYZ&)>& distance) {
  constexpr int kSteps = 6;
  double out = 0;
  for (const CMesh_Index& t : mesh.triangles)
    for (int i = 0; i <= kSteps; ++i)
      for (int j = 0; i + j <= kSteps; ++j)
        out = std::max(out, std::abs(distance(between(mesh.vertices[t.i0], mesh.vertices[t.i1],
                                                      mesh.vertices[t.i2], i * 1.0 / kSteps,
                                                      j * 1.0 / kSteps))));
  return out;
}

double largestAtVertices(const Mesh& mesh,
                         const std::function<double(const CGeom_XYZ&)>& distance) {
  double out = 0;
  for (const CGeom_XYZ& v : mesh.vertices) out = std::max(out, std::abs(distance(v)));
  return out;
}

}  // namespace korvo::test
