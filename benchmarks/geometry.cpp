// Reading a geometry file against a plain fgets and sscanf reader of the same kinds.
#include <cmath>
#include <memory>
#include <vector>

#include "benchmarks/Bench.h"
#include "benchmarks/Scratch.h"
#include "benchmarks/peers/PlainZrn.h"
#include "geometry/ZrnFile.h"

namespace korvo::bench {
namespace {

using zkin::CGeomFileNode, zkin::CGeomFileNodeList;

void print(std::string& text, const char* format, auto... values) {
  char line[256];
  text.append(line, static_cast<std::size_t>(std::snprintf(line, sizeof line, format, values...)));
}

void appendKnots(std::string& text, int poles) {
  print(text, "%d\n0\n0\n0\n", poles + 4);
  for (int i = 0; i <= poles - 3; ++i) print(text, "%d\n", i);
  print(text, "%d\n%d\n%d\n", poles - 3, poles - 3, poles - 3);
}

/// A bicubic surface of 20 x 20 poles with a rim of 100 points, then nothing: about 24 kB.
void appendSurface(std::string& text) {
  constexpr int kPoles = 20;
  print(text, "%d %d 9 0 surface\n", kPoles, kPoles);
  for (int i = 0; i < kPoles * kPoles; ++i) {
    print(text, "%.9g %.9g %.9g 1\n", drawn(-500, 500), drawn(-500, 500), drawn(-500, 500));
  }
  print(text, "3 3\n0 0\n0 %d\n0 %d\n", kPoles - 3, kPoles - 3);
  appendKnots(text, kPoles);
  appendKnots(text, kPoles);
  text += "100 1 2 0 rim\n";
  for (int i = 0; i < 100; ++i) print(text, "%.9g %.9g\n", drawn(0, 17), drawn(0, 17));
}

void appendPolyline(std::string& text) {
  text += "2 200 1 0 line\n";
  for (int i = 0; i < 200; ++i) {
    print(text, "%.9g %.9g %.9g\n", drawn(-500, 500), drawn(-500, 500), drawn(-500, 500));
  }
}

// Curves first: behind a surface they would be its own.
std::string fileText(double megabytes) {
  std::string text;
  const auto bytes = static_cast<std::size_t>(megabytes * 1e6);
  while (text.size() < bytes / 3) appendPolyline(text);
  while (text.size() < bytes) appendSurface(text);
  return text;
}

CGeomFileNodeList load(const std::string& path) {
  CGeomFileNodeList nodes;
  double scale = 1;
  zkin::ZRN_LoadFile(path.c_str(), nodes, scale);
  return nodes;
}

bool isSame(const CGeomFileNode& ours, const PlainEntity& plain) {
  using namespace zkin;
  const CGeomFilePrivateGeom* geom = ours.entity.GetGeom();
  if (const auto* line = dynamic_cast<const CGeomFilePrivatePolylineCurve*>(geom)) {
    return line->points == plain.points;
  }
  const auto* surface = dynamic_cast<const CGeomFilePrivateNurbsSurface*>(geom);
  if (!surface || ours.trimmingCurves.size() != 1) return false;
  const auto* rim = dynamic_cast<const CGeomFilePrivatePolylineUVCurve*>(
      ours.trimmingCurves[0]->entity.GetGeom());
  return rim && surface->poles == plain.points && surface->weights == plain.weights &&
         surface->knotsU == plain.knotsU && surface->knotsV == plain.knotsV &&
         surface->degreeU == plain.degreeU && surface->degreeV == plain.degreeV &&
         rim->points == plain.rim;
}

bool isSame(const CGeomFileNodeList& ours, const std::vector<PlainEntity>& plain) {
  if (ours.size() != plain.size()) return false;
  for (std::size_t i = 0; i < plain.size(); ++i) {
    if (!isSame(*ours[i], plain[i])) return false;
  }
  return true;
}

Pair read(double megabytes) {
  const auto file = std::make_shared<Scratch>(".zrn");
  file->write(fileText(megabytes));
  Pair pair;
  if (!isSame(load(file->path()), plainZrn(file->path()))) {
    pair.disagreement = "results disagree: other entities than the plain reader's";
  }
  pair.ours = [file] { use(static_cast<double>(load(file->path()).size())); };
  pair.peer = [file] { use(static_cast<double>(plainZrn(file->path()).size())); };
  return pair;
}

}  // namespace

void addGeometry() {
  const int megabytes = amount(50, 1);
  add(Row{"geometry/read", "geometry file, " + std::to_string(megabytes) + " MB",
          "a plain fgets and sscanf reader", atLeast(4, 5), [=] { return read(megabytes); }, 7});
}

}  // namespace korvo::bench
