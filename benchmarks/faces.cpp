// Meshing trimmed surfaces: Solidra against bare OpenCASCADE on the faces on which that keeps the
// tolerance, measured; and whole geometry files by their number of faces.
#include <cmath>
#include <memory>
#include <vector>

#include "benchmarks/Bench.h"
#include "benchmarks/FaceModels.h"
#include "benchmarks/Scratch.h"
#include "benchmarks/peers/BareFaces.h"
#include "geometry/ZrnTriangles.h"

namespace korvo::bench {
namespace {

using test::CurvePtr;

constexpr double kTolerance = 0.01;  // mm

CurvePtr curveOf(const Trim& trim) {
  const int count = static_cast<int>(trim.poles.size());
  if (trim.degree == 1) return std::make_unique<CGeom2d_Polygon>(count, trim.poles.data(), count);
  const std::vector<double> knots = trim.flatKnots();
  return std::make_unique<CGeom2d_CNurbs>(
      count, trim.degree + 1, false, false, CStd_Array1<CGeom2d_XY>(trim.poles.data(), count),
      CStd_Array1<double>(knots.data(), static_cast<int>(knots.size())),
      CStd_Array1<double>(trim.weights.data(), count));
}

/// @return  The deviation that the mesh says it has; infinite without one.
double meshOurs(const FaceModel& f) {
  std::vector<CurvePtr> curves;
  for (const Loop& loop : f.loops) {
    for (const Trim& trim : loop) curves.push_back(curveOf(trim));
  }
  const auto face = test::face(f.patch, std::move(curves));
  if (!face->ValidateMesh(kTolerance, kTolerance)) return HUGE_VAL;
  CStd_Array1<CMesh_Vertex> vertices;
  CStd_Array1<CMesh_Index> triangles;
  face->GetMeshVertex(vertices);
  use(static_cast<double>(face->GetVTriangles(triangles)));
  return face->GetMeshStats().reached;
}

// Ours must keep the tolerance on every face, also on those that the comparison leaves out.
Pair meshes() {
  const auto kept = std::make_shared<std::vector<FaceModel>>();
  Pair pair;
  for (const FaceModel& f : faceModels(amount(4, 1))) {
    if (const double by = meshOurs(f); by > kTolerance)
      pair.disagreement = disagree("our mesh and the surface", by);
    if (measuredBare(f, kTolerance).deviation <= kTolerance) kept->push_back(f);
  }
  if (kept->empty())
    pair.disagreement = "results disagree: OpenCASCADE keeps the tolerance nowhere";
  pair.calls = static_cast<double>(kept->size());
  pair.ours = [kept] {
    for (const FaceModel& f : *kept) meshOurs(f);
  };
  pair.peer = [kept] {
    for (const FaceModel& f : *kept) meshBare(f, kTolerance);
  };
  return pair;
}

// --- Growth: a body of many faces, each a small hill beside the others

void appendRecord(std::string& text, std::initializer_list<double> values) {
  char word[32];
  for (const double value : values) {
    text.append(word, static_cast<std::size_t>(std::snprintf(word, sizeof word, "%.9g ", value)));
  }
  text.back() = '\n';
}

void appendHill(std::string& text, double x, double y) {
  const test::Patch hill = test::hill(20, 0.5);
  text += "7 7 9 0 hill\n";
  for (const CGeom_XYZ& p : hill.poles) appendRecord(text, {p.x + x, p.y + y, p.z, 1});
  text += "3 3\n0 0\n0 1\n0 1\n";
  for (const std::vector<double>& knots : {hill.knotsU, hill.knotsV}) {
    appendRecord(text, {static_cast<double>(knots.size())});
    for (const double knot : knots) appendRecord(text, {knot});
  }
}

Pair fileOf(int faces) {
  const auto file = std::make_shared<Scratch>(".zrn");
  std::string text;
  for (int i = 0; i < faces; ++i) appendHill(text, 20 * (i % 32), 20 * (i / 32));
  file->write(text);
  const auto load = [file] {
    std::vector<zgeo::UTri> triangles;
    return zkin::ZRN_FileToTriangles(file->path().c_str(), kTolerance, triangles);
  };
  Pair pair;
  if (load() < faces) pair.disagreement = "results disagree: too few triangles";
  pair.calls = 1;
  pair.ours = [load] { use(load()); };
  return pair;
}

}  // namespace

void addFaces() {
  add(Row{"faces/mesh", "trimmed NURBS faces to triangles within 0.01 mm",
          "bare OpenCASCADE, where it keeps 0.01 mm", atMost(1.1, 0.3333), meshes, 9});
  add(Curve{"growth/faces",
            "geometry file to triangles by faces",
            "",
            kLinear,
            {10, 30, 100, 300, amount(1000, 600)},
            fileOf,
            3});
}

}  // namespace korvo::bench
