#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/TempFile.h"
#include "tests/toolkit/ExportBodies.h"
#include "toolkit/export/Write.h"

using korvo::Body;
using korvo::test::boxBody;
using korvo::test::bytesOf;
using korvo::test::TempDir;
using zgeo::UMatrix;
using zgeo::UTri;
using zgeo::UVec3d;

namespace {

std::string written(const std::vector<Body>& bodies) {
  const TempDir folder;
  writeStl(folder.path() / "a.stl", bodies);
  return bytesOf(folder.path() / "a.stl");
}

std::vector<UTri> readBack(const std::vector<Body>& bodies) {
  const TempDir folder;
  writeStl(folder.path() / "a.stl", bodies);
  std::vector<UTri> triangles;
  EXPECT_EQ(UTri::_loadSTL((folder.path() / "a.stl").wstring(), triangles), UTri::STL_LOADED);
  return triangles;
}

UVec3d asFloats(const UVec3d& p) {
  return {double{static_cast<float>(p.x)}, double{static_cast<float>(p.y)},
          double{static_cast<float>(p.z)}};
}

UVec3d normalInFile(const std::string& bytes, std::size_t triangle) {
  float n[3];
  std::memcpy(n, bytes.data() + 84 + 50 * triangle, sizeof n);
  return {double{n[0]}, double{n[1]}, double{n[2]}};
}

TEST(ExportStl, ReadBackIsWhatStandsThereInSinglePrecision) {
  const UMatrix motion = UMatrix::_translation({100, -7, 0.1}) * UMatrix::_rotation({1, 1, 0}, 0.7);
  const std::vector<Body> bodies = {boxBody("a", {}, {0, 0, 0}, {1.1, 2.2, 3.3}),
                                    boxBody("b", {}, {-5, -5, -5}, {5, 5, 5}, motion)};
  std::vector<UTri> wanted;
  for (const Body& body : bodies) {
    for (const UTri& t : body.triangles) {
      wanted.emplace_back(asFloats(body.motion * t.p[0]), asFloats(body.motion * t.p[1]),
                          asFloats(body.motion * t.p[2]));
    }
  }
  EXPECT_EQ(readBack(bodies), wanted);
}

TEST(ExportStl, IsBinaryAndDoesNotBeginWithSolid) {
  const std::string bytes = written({boxBody("a", {}, {0, 0, 0}, {1, 1, 1})});
  EXPECT_EQ(bytes.size(), 84u + 12u * 50u);
  EXPECT_NE(bytes.substr(0, 5), "solid");
  EXPECT_EQ(bytes.substr(80, 4), std::string("\x0c\0\0\0", 4));
}

// A box turns outward: the normals point away from its middle, along one axis.
TEST(ExportStl, NormalsPointOutward) {
  const Body body = boxBody("a", {}, {-1, -1, -1}, {1, 1, 1});
  const std::string bytes = written({body});
  for (std::size_t i = 0; i < 12; ++i) {
    const UVec3d n = normalInFile(bytes, i);
    EXPECT_EQ(n.norm2(), 1.0);
    const UTri& t = body.triangles[i];
    EXPECT_EQ(n * t.p[0], 1.0);
    EXPECT_EQ(n * t.p[1], 1.0);
    EXPECT_EQ(n * t.p[2], 1.0);
  }
}

TEST(ExportStl, NormalsAreTurnedWithTheBody) {
  const UMatrix upright = UMatrix::_rotation({1, 0, 0}, std::acos(0.0));  // Z comes to -Y
  const std::string bytes = written({{0, "a", {}, upright, {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}}}});
  const UVec3d n = normalInFile(bytes, 0);
  EXPECT_NEAR(n.y, -1, 1e-7);
  EXPECT_NEAR(n.z, 0, 1e-7);
}

TEST(ExportStl, TrianglesWithoutAnAreaStayAndHaveNoNormal) {
  const Body body{0, "a", {}, {}, {{{1, 2, 3}, {1, 2, 3}, {4, 5, 6}}}};
  EXPECT_EQ(readBack({body}), body.triangles);
  EXPECT_EQ(normalInFile(written({body}), 0), UVec3d());
}

TEST(ExportStl, TinyAndHugeTrianglesHaveANormal) {
  for (const double size : {1e-30, 1e-15, 1.0, 1e15, 3e38}) {
    const std::string bytes =
        written({{0, "a", {}, {}, {{{0, 0, 0}, {size, 0, 0}, {0, size, 0}}}}});
    EXPECT_EQ(normalInFile(bytes, 0), UVec3d(0, 0, 1)) << size;
  }
}

TEST(ExportStl, LeavesOutCornersThatAreNoNumbers) {
  Body body = boxBody("a", {}, {0, 0, 0}, {1, 1, 1});
  const std::vector<UTri> wanted = body.triangles;
  for (const double bad : {std::nan(""), std::numeric_limits<double>::infinity(), 1e300}) {
    body.triangles.insert(body.triangles.begin(), {{0, bad, 0}, {1, 0, 0}, {0, 1, 0}});
  }
  EXPECT_EQ(readBack({body}), wanted);
}

TEST(ExportStl, OfNothingIsAFileWithoutTriangles) {
  EXPECT_EQ(written({}).size(), 84u);
  EXPECT_TRUE(readBack({}).empty());
}

// More than are written in one go.
TEST(ExportStl, ManyTrianglesComeInOrder) {
  Body body;
  for (int i = 0; i < 50000; ++i) {
    body.triangles.push_back({{0, 0, 0}, {1, 0, 0}, {0, 1, double(i)}});
  }
  EXPECT_EQ(readBack({body}), body.triangles);
}

RC_GTEST_PROP(ExportStlLaws, AnySoundTriangleIsReadBack, ()) {
  const auto numbers = *rc::gen::container<std::vector<int>>(9, rc::gen::arbitrary<int>());
  UTri t;
  for (std::size_t i = 0; i < 3; ++i) {
    t.p[i] = {numbers[3 * i] * 0.5, numbers[3 * i + 1] * 1e-3, numbers[3 * i + 2] * 1e20};
  }
  const UTri wanted(asFloats(t.p[0]), asFloats(t.p[1]), asFloats(t.p[2]));
  RC_ASSERT(readBack({Body{0, "a", {}, {}, {t}}}) == std::vector<UTri>{wanted});
}

}  // namespace
