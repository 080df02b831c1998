#pragma once

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "platform/zgeo/UTri.h"
#include "toolkit/export/Bodies.h"

/// What the tests of the writers write: boxes.
namespace korvo::test {

/// The twelve triangles of an axis-parallel box, turned outward.
inline std::vector<zgeo::UTri> boxTriangles(const zgeo::UVec3d& min, const zgeo::UVec3d& max) {
  // Corner i has max.x, max.y, max.z where bits 0, 1, 2 of i are set. Each face as seen from
  // outside, counter-clockwise.
  constexpr int kFaces[6][4] = {{0, 4, 6, 2}, {1, 3, 7, 5}, {0, 1, 5, 4},
                                {2, 6, 7, 3}, {0, 2, 3, 1}, {4, 5, 7, 6}};
  const auto corner = [&](int i) {
    return zgeo::UVec3d(i & 1 ? max.x : min.x, i & 2 ? max.y : min.y, i & 4 ? max.z : min.z);
  };
  std::vector<zgeo::UTri> triangles;
  for (const auto& f : kFaces) {
    triangles.emplace_back(corner(f[0]), corner(f[1]), corner(f[2]));
    triangles.emplace_back(corner(f[0]), corner(f[2]), corner(f[3]));
  }
  return triangles;
}

inline Body boxBody(const std::string& name, const std::array<int, 3>& rgb, const zgeo::UVec3d& min,
                    const zgeo::UVec3d& max, const zgeo::UMatrix& motion = {}) {
  return {0, name, rgb, motion, boxTriangles(min, max)};
}

/// A binary STL of the triangles, as plain as can be.
inline std::string stlBytes(const std::vector<zgeo::UTri>& triangles) {
  std::string bytes(80, 'x');
  const auto count = static_cast<std::uint32_t>(triangles.size());
  bytes.append(reinterpret_cast<const char*>(&count), 4);
  for (const zgeo::UTri& t : triangles) {
    bytes.append(12, '\0');
    for (const zgeo::UVec3d& p : t.p) {
      for (const double x : {p.x, p.y, p.z}) {
        const auto number = static_cast<float>(x);
        bytes.append(reinterpret_cast<const char*>(&number), 4);
      }
    }
    bytes.append(2, '\0');
  }
  return bytes;
}

inline std::string bytesOf(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

inline std::size_t filesIn(const std::filesystem::path& folder) {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

}  // namespace korvo::test
