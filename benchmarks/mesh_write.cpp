// Writers of bodies against a plain fwrite of as many bytes: 2 million triangles of a sphere.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include "toolkit/export/Write.h"

using korvo::Body;
using zgeo::UVec3d;

namespace {

constexpr int kRounds = 5;

UVec3d onSphere(int i, int j, int n) {
  const double u = 2 * std::numbers::pi * i / n, v = std::numbers::pi * j / n;
  return UVec3d(std::cos(u) * std::sin(v), std::sin(u) * std::sin(v), std::cos(v)) * 500.0;
}

Body sphere(int n) {
  Body body{0, "sphere", {180, 190, 200}, zgeo::UMatrix::_rotation({1, 2, 3}, 1.0), {}};
  body.triangles.reserve(2 * static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
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

// The best of some rounds, in seconds.
double timeOf(const std::function<void()>& work) {
  double best = 1e9;
  for (int i = 0; i < kRounds; ++i) {
    const auto start = std::chrono::steady_clock::now();
    work();
    best = std::min(
        best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return best;
}

void writePlain(const std::filesystem::path& path, const std::string& bytes) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return;
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
}

void report(const char* name, double seconds, const std::filesystem::path& path) {
  const double megabytes = static_cast<double>(std::filesystem::file_size(path)) / 1e6;
  std::printf("%-12s %8.3f s  %7.1f MB\n", name, seconds, megabytes);
}

}  // namespace

int main() {
  const std::filesystem::path path = std::filesystem::temp_directory_path() / "korvo-mesh-write";
  const std::vector<Body> bodies = {sphere(1000)};
  const double stl = timeOf([&] { writeStl(path, bodies); });
  report("STL", stl, path);
  const std::string bytes(std::filesystem::file_size(path), 'x');
  const double plain = timeOf([&] { writePlain(path, bytes); });
  report("fwrite", plain, path);
  std::printf("STL / fwrite %8.2f\n", stl / plain);
  report("GLB", timeOf([&] { writeGlb(path, bodies); }), path);
  report("PNG", timeOf([&] { writePng(path, bodies); }), path);
  const std::filesystem::path obj = path.string() + ".obj";
  report("OBJ", timeOf([&] { writeObj(obj, bodies); }), obj);
  for (const char* end : {"", ".obj", ".mtl"}) std::filesystem::remove(path.string() + end);
}
