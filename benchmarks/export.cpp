// Writing bodies: against a plain fwrite of as many bytes.
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <numbers>
#include <vector>

#include "benchmarks/Bench.h"
#include "benchmarks/Scratch.h"
#include "toolkit/export/Write.h"

namespace korvo::bench {
namespace {

using zgeo::UVec3d;

UVec3d onSphere(int i, int j, int n) {
  const double u = 2 * std::numbers::pi * i / n, v = std::numbers::pi * j / n;
  return UVec3d(std::cos(u) * std::sin(v), std::sin(u) * std::sin(v), std::cos(v)) * 500.0;
}

Body sphere(int n) {
  Body body{0, "sphere", {180, 190, 200}, zgeo::UMatrix::_rotation({1, 2, 3}, 1.0), {}};
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      const UVec3d a = onSphere(i, j, n), b = onSphere(i + 1, j, n);
      const UVec3d c = onSphere(i + 1, j + 1, n), d = onSphere(i, j + 1, n);
      body.triangles.emplace_back(a, d, c);
      body.triangles.emplace_back(a, c, b);
    }
  }
  return body;
}

using Write = void (*)(const std::filesystem::path&, std::span<const Body>);

void png(const std::filesystem::path& path, std::span<const Body> bodies) {
  writePng(path, bodies);
}

Pair written(Write write, const char* ending) {
  struct Work {
    explicit Work(const char* end) : file(end) {}
    Scratch file, plain{".bytes"};
    std::vector<Body> bodies = {sphere(amount(700, 70))};
    std::string bytes = {};
  };
  const auto w = std::make_shared<Work>(ending);
  write(w->file.path(), w->bodies);
  w->bytes.assign(std::filesystem::file_size(w->file.path()), 'x');
  Pair pair;
  pair.ours = [w, write] { write(w->file.path(), w->bodies); };
  pair.peer = [w] { w->plain.write(w->bytes); };
  if (w->bytes.empty()) pair.disagreement = "results disagree: nothing was written";
  return pair;
}

}  // namespace

void addExport() {
  const std::string what =
      " of a sphere of " + grouped(2 * amount(700, 70) * amount(700, 70)) + " triangles";
  const std::string peer = "fwrite of as many bytes";
  add(Row{"export/stl", "writeStl" + what, peer, {}, [] { return written(writeStl, ".stl"); }, 9});
  add(Row{"export/glb", "writeGlb" + what, peer, {}, [] { return written(writeGlb, ".glb"); }, 5});
  add(Row{"export/png", "writePng" + what, peer, {}, [] { return written(png, ".png"); }, 5});
}

}  // namespace korvo::bench
