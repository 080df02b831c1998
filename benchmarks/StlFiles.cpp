#include "benchmarks/StlFiles.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "benchmarks/Bench.h"

namespace korvo::bench {
namespace {

// In mm, within a metre of the origin.
std::array<float, 9> corners() {
  std::array<float, 9> x;
  for (float& value : x) value = static_cast<float>(drawn(-1000, 1000));
  return x;
}

void append(std::string& text, const float* p) {
  char line[128];
  text.append(line,
              static_cast<std::size_t>(std::snprintf(line, sizeof line, "      vertex %e %e %e\n",
                                                     double{p[0]}, double{p[1]}, double{p[2]})));
}

}  // namespace

void writeBinaryStl(const Scratch& file, int triangles) {
  std::string bytes(84 + 50 * static_cast<std::size_t>(triangles), '\0');
  const auto count = static_cast<std::uint32_t>(triangles);
  std::memcpy(bytes.data() + 80, &count, sizeof count);
  char* record = bytes.data() + 84;
  for (int i = 0; i < triangles; ++i, record += 50) {
    const std::array<float, 9> x = corners();
    std::memcpy(record + 12, x.data(), sizeof x);
  }
  file.write(bytes);
}

void writeTextStl(const Scratch& file, int triangles) {
  std::string text = "solid body\n";
  for (int i = 0; i < triangles; ++i) {
    const std::array<float, 9> x = corners();
    text += "  facet normal 0.000000e+00 0.000000e+00 1.000000e+00\n    outer loop\n";
    for (const float* p = x.data(); p != x.data() + 9; p += 3) append(text, p);
    text += "    endloop\n  endfacet\n";
  }
  file.write(text + "endsolid body\n");
}

}  // namespace korvo::bench
