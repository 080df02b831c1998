#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "platform/zgeo/UTri.h"
#include "tests/support/InCLocale.h"
#include "tests/support/TempFile.h"

/// What the tests of STL files share: writers of both forms, and what loading gave.
namespace zgeo::test {

struct Loaded {
  int code = 0;
  std::vector<UTri> triangles;
  bool operator==(const Loaded&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Loaded& loaded) {
  return out << "code " << loaded.code << ", " << loaded.triangles.size() << " triangles";
}

inline std::wstring wide(const std::filesystem::path& path) {
  return std::wstring(path.native().begin(), path.native().end());  // plain ASCII in these tests
}

/// Loads into a list that holds something already, as a caller's scratch list does.
inline Loaded loadPath(const std::wstring& path) {
  Loaded loaded{77, {UTri(), UTri()}};
  loaded.code = UTri::_loadSTL(path, loaded.triangles);
  return loaded;
}

inline Loaded load(const std::string& bytes) {
  const korvo::test::TempDir folder;
  return loadPath(wide(folder.write("part.stl", bytes)));
}

template <class Value>
std::string bytesOf(const Value& value) {
  std::string bytes(sizeof value, '\0');
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

/// One record: the normal is a NaN and the attribute is not zero, which must not matter.
inline std::string record(const UTri& triangle, std::uint16_t attribute = 0x7BCD) {
  std::string bytes = bytesOf(0x7FC00000u) + bytesOf(0x7FC00000u) + bytesOf(0x7FC00000u);
  for (const UVec3d& p : triangle.p) {
    for (const double x : {p.x, p.y, p.z}) bytes += bytesOf(static_cast<float>(x));
  }
  return bytes + bytesOf(attribute);
}

/// A binary file whose count says what it is told to say.
inline std::string binary(const std::vector<UTri>& triangles, std::uint32_t count,
                          std::string header = "") {
  header.resize(80, ' ');
  std::string bytes = header + bytesOf(count);
  for (const UTri& triangle : triangles) bytes += record(triangle);
  return bytes;
}

inline std::string binary(const std::vector<UTri>& triangles) {
  return binary(triangles, static_cast<std::uint32_t>(triangles.size()));
}

/// As many digits as bring every double back.
inline std::string number(double x) {
  const korvo::test::InCLocale scope;
  char text[40];
  std::snprintf(text, sizeof text, "%.17g", x);
  return text;
}

inline std::string vertex(const UVec3d& p) {
  return "vertex " + number(p.x) + " " + number(p.y) + " " + number(p.z) + "\n";
}

inline std::string facet(const UTri& t) {
  return "facet normal 0 0 1\nouter loop\n" + vertex(t.p[0]) + vertex(t.p[1]) + vertex(t.p[2]) +
         "endloop\nendfacet\n";
}

inline std::string solid(const std::string& facets) {
  return "solid part\n" + facets + "endsolid part\n";
}

/// Three triangles without a common number, all of them floats.
inline const UTri kA({1, 2, 3}, {4, 5, 6}, {7, 8, 9.5});
inline const UTri kB({-1, -2.25, 10}, {0.5, 11, 12}, {13, 14, 15});
inline const UTri kC({100, 200, 300}, {0, 0, 0}, {-0.125, 16, 17});

}  // namespace zgeo::test
