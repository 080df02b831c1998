#include "toolkit/geometry/Measure.h"

#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>
#include <utility>
#include <vector>

using korvo::measure;
using korvo::Measures;
using zgeo::UTri;
using zgeo::UVec3d;

namespace {

using Triangles = std::vector<UTri>;

UTri reversed(const UTri& t) { return {t.p[0], t.p[2], t.p[1]}; }

Triangles insideOut(Triangles triangles) {
  for (UTri& t : triangles) t = reversed(t);
  return triangles;
}

Triangles operator+(Triangles a, const Triangles& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

/// Two triangles of a parallelogram from `corner`; the outside is where u x v points.
Triangles sheet(const UVec3d& corner, const UVec3d& u, const UVec3d& v) {
  return {{corner, corner + u, corner + u + v}, {corner, corner + u + v, corner + v}};
}

/// The twelve triangles of a cube of side `a`, its outside outwards.
Triangles cube(const UVec3d& corner, double a) {
  const UVec3d x(a, 0, 0), y(0, a, 0), z(0, 0, a);
  return sheet(corner, y, x) + sheet(corner, x, z) + sheet(corner, z, y) + sheet(corner + z, x, y) +
         sheet(corner + y, z, x) + sheet(corner + x, y, z);
}

/// Each triangle cut into four, the middle one of them turned the other way.
Triangles cutUp(const Triangles& triangles) {
  Triangles pieces;
  for (const UTri& t : triangles) {
    const UVec3d m01 = (t.p[0] + t.p[1]) / 2, m02 = (t.p[0] + t.p[2]) / 2,
                 m12 = (t.p[1] + t.p[2]) / 2;
    pieces.insert(pieces.end(), {UTri(m12, m01, m02), UTri(m01, m02, t.p[0]),
                                 UTri(m12, m01, t.p[1]), UTri(m02, m12, t.p[2])});
  }
  return pieces;
}

TEST(Measure, OfNothingIsZero) {
  const Measures m = measure({});
  EXPECT_EQ(m.count, 0u);
  EXPECT_EQ(m.min, UVec3d(0, 0, 0));
  EXPECT_EQ(m.max, UVec3d(0, 0, 0));
  EXPECT_EQ(m.area, 0.0);
  EXPECT_EQ(m.volume, 0.0);
  EXPECT_EQ(m.openEdges, 0u);
}

TEST(Measure, OneTriangleHasThreeOpenEdges) {
  const Measures m = measure({{{1, 1, 5}, {4, 1, 5}, {1, 5, 5}}});
  EXPECT_EQ(m.count, 1u);
  EXPECT_EQ(m.min, UVec3d(1, 1, 5));
  EXPECT_EQ(m.max, UVec3d(4, 5, 5));
  EXPECT_EQ(m.area, 6.0);    // half of 3 times 4
  EXPECT_EQ(m.volume, 0.0);  // the middle of its box lies in it
  EXPECT_EQ(m.openEdges, 3u);
}

TEST(Measure, ACubeIsClosedAndFull) {
  const Measures m = measure(cube({-1, 2, 3}, 4));
  EXPECT_EQ(m.count, 12u);
  EXPECT_EQ(m.min, UVec3d(-1, 2, 3));
  EXPECT_EQ(m.max, UVec3d(3, 6, 7));
  EXPECT_EQ(m.area, 6 * 16.0);
  EXPECT_EQ(m.volume, 64.0);
  EXPECT_EQ(m.openEdges, 0u);
}

TEST(Measure, ACubeFarFromTheOriginKeepsItsVolume) {
  EXPECT_EQ(measure(cube({1e9, -1e9, 1e9}, 4)).volume, 64.0);
}

TEST(Measure, EachMissingTriangleOfACubeLeavesThreeOpenEdges) {
  Triangles triangles = cube({0, 0, 0}, 2);
  triangles.erase(triangles.begin() + 5);
  EXPECT_EQ(measure(triangles).openEdges, 3u);
  triangles.erase(triangles.begin() + 5);  // of the lid: no edge of the first one
  EXPECT_EQ(measure(triangles).openEdges, 6u);
}

TEST(Measure, WithoutALidTheBorderIsOpen) {
  Triangles triangles = cube({0, 0, 0}, 2);
  triangles.erase(triangles.begin(), triangles.begin() + 2);
  const Measures m = measure(triangles);
  EXPECT_EQ(m.openEdges, 4u);
  EXPECT_EQ(m.area, 5 * 4.0);
  EXPECT_NEAR(m.volume, 8.0 * 5 / 6, 1e-15 * 8);  // five cones of six over the middle
}

TEST(Measure, InsideOutTheVolumeIsNegative) {
  const Measures m = measure(insideOut(cube({0, 0, 0}, 2)));
  EXPECT_EQ(m.volume, -8.0);
  EXPECT_EQ(m.area, 24.0);
  EXPECT_EQ(m.openEdges, 0u);
}

TEST(Measure, ATriangleTurnedAgainstItsNeighboursCountsAsTheyDo) {
  for (std::size_t i = 0; i < 12; ++i) {
    Triangles triangles = cube({0, 0, 0}, 2);
    triangles[i] = reversed(triangles[i]);
    EXPECT_EQ(measure(triangles).volume, 8.0) << i;
    EXPECT_EQ(measure(triangles).openEdges, 0u) << i;
  }
}

TEST(Measure, CutUpWithTheMiddlePiecesTurnedTheVolumeStays) {
  Triangles triangles = cube({0, 0, 0}, 32);
  for (int level = 1; level <= 5; ++level) {
    triangles = cutUp(triangles);
    const Measures m = measure(triangles);
    EXPECT_EQ(m.area, 6 * 1024.0) << level;
    EXPECT_EQ(m.volume, 32768.0) << level;
    EXPECT_EQ(m.openEdges, 0u) << level;
  }
}

TEST(Measure, PiecesApartAddUp) {
  EXPECT_EQ(measure(cube({0, 0, 0}, 2) + cube({5, 0, 0}, 1)).volume, 9.0);
}

TEST(Measure, AHollowInsideIsTakenAway) {
  const Measures m = measure(cube({0, 0, 0}, 4) + insideOut(cube({1, 1, 1}, 2)));
  EXPECT_EQ(m.volume, 64.0 - 8.0);
  EXPECT_EQ(m.area, 96.0 + 24.0);
}

TEST(Measure, BodiesThatTouchAlongAnEdgeAreClosed) {
  const Measures m = measure(cube({0, 0, 0}, 2) + cube({2, 2, 0}, 2));
  EXPECT_EQ(m.openEdges, 0u);
  EXPECT_EQ(m.volume, 16.0);
}

TEST(Measure, AnEdgeOfThreeTrianglesIsOpen) {
  const UVec3d a(0, 0, 0), b(0, 0, 1);
  // The edge itself and two further ones of each triangle.
  EXPECT_EQ(measure({{a, b, {1, 0, 0}}, {a, b, {0, 1, 0}}, {a, b, {-1, 0, 0}}}).openEdges, 7u);
}

TEST(Measure, NegativeZeroIsZero) {
  Triangles triangles = cube({0, 0, 0}, 2);
  for (UVec3d& p : triangles[3].p) p = {p.x == 0 ? -0.0 : p.x, p.y, p.z == 0 ? -0.0 : p.z};
  EXPECT_EQ(measure(triangles).openEdges, 0u);
}

TEST(Measure, CornersThatDifferAtAllAreTwo) {
  Triangles triangles = cube({1, 1, 1}, 2);
  triangles[0].p[0].x = std::nextafter(triangles[0].p[0].x, 2.0);
  // Two edges of the triangle meet no neighbour, nor do those neighbours.
  EXPECT_EQ(measure(triangles).openEdges, 4u);
}

TEST(Measure, ACornerInTheMiddleOfAnEdgeLeavesItOpen) {
  // One side is cut in the middle of an edge, its neighbour is not: one long and two half edges.
  const UVec3d a(0, 0, 0), b(2, 0, 0), m(1, 0, 0), up(1, 1, 0), down(1, -1, 0);
  EXPECT_EQ(measure({{a, down, b}, {a, m, up}, {m, b, up}}).openEdges, 2u + 2u + 1u + 2u);
}

TEST(Measure, ATriangleOfTwoEqualCornersHasNoEdgeOfItsOwn) {
  const UVec3d a(0, 0, 0), b(2, 0, 0);
  EXPECT_EQ(measure(cube({0, 0, 0}, 2) + Triangles{{a, a, b}}).openEdges, 0u);
  EXPECT_EQ(measure({{a, a, b}, {b, b, b}}).openEdges, 0u);
}

TEST(Measure, AOneSidedStripHasTheBorderThatItHas) {
  // Of n four-sided pieces, the last one joined to the first upside down: one border of 2 n edges.
  constexpr int kPieces = 12;
  const auto point = [](int i, double side) {
    const double turn = 2 * std::numbers::pi * (i % kPieces) / kPieces;
    const double half = turn / 2, s = i < kPieces ? side : -side;
    const double radius = 4 + s * std::cos(half);
    return UVec3d(radius * std::cos(turn), radius * std::sin(turn), s * std::sin(half));
  };
  Triangles strip;
  for (int i = 0; i < kPieces; ++i) {
    strip.emplace_back(point(i, -1), point(i + 1, -1), point(i + 1, 1));
    strip.emplace_back(point(i, -1), point(i + 1, 1), point(i, 1));
  }
  EXPECT_EQ(measure(strip).openEdges, 2u * kPieces);
}

TEST(Measure, WhatIsNoNumberIsSaidAndHurtsNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const Measures m = measure(cube({0, 0, 0}, 2) + Triangles{{{nan, 0, 0}, {1, 0, 0}, {0, 1, 0}}});
  EXPECT_TRUE(std::isnan(m.area));
  EXPECT_TRUE(std::isnan(m.volume));
  EXPECT_EQ(m.count, 13u);
  EXPECT_EQ(m.openEdges, 3u);
}

TEST(Measure, TooLargeCoordinatesGiveInfiniteArea) {
  EXPECT_TRUE(std::isinf(measure(cube({0, 0, 0}, 1e200)).area));
  EXPECT_EQ(measure(cube({0, 0, 0}, 1e200)).openEdges, 0u);
}

TEST(Measure, ASphereConvergesToItsClosedForm) {
  // Rings of n and 2 n; both errors go down by four with each doubling.
  const auto point = [](int i, int j, int n) {
    const double polar = std::numbers::pi * i / n, turn = std::numbers::pi * (j % (2 * n)) / n;
    const double ring = i == 0 || i == n ? 0.0 : 3 * std::sin(polar);
    return UVec3d(ring * std::cos(turn), ring * std::sin(turn), 3 * std::cos(polar));
  };
  double lastArea = 1e300, lastVolume = 1e300;
  for (const int n : {8, 16, 32, 64}) {
    Triangles sphere;
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < 2 * n; ++j) {
        const UVec3d a = point(i, j, n), b = point(i + 1, j, n), c = point(i + 1, j + 1, n),
                     d = point(i, j + 1, n);
        if (i < n - 1) sphere.emplace_back(a, b, c);
        if (i > 0) sphere.emplace_back(a, c, d);
      }
    }
    const Measures m = measure(sphere);
    const double areaError = 36 * std::numbers::pi - m.area;
    const double volumeError = 36 * std::numbers::pi - m.volume;  // r is 3: both are 36 pi
    EXPECT_EQ(m.openEdges, 0u) << n;
    EXPECT_GT(areaError, 0.0) << n;
    EXPECT_GT(volumeError, 0.0) << n;
    EXPECT_LT(areaError, lastArea / 3.5) << n;
    EXPECT_LT(volumeError, lastVolume / 3.5) << n;
    lastArea = areaError;
    lastVolume = volumeError;
  }
  EXPECT_LT(lastVolume, 36 * std::numbers::pi * 0.003);
}

// --- laws

rc::Gen<UVec3d> gridPoint() {
  return rc::gen::map(rc::gen::container<std::vector<int>>(3, rc::gen::inRange(-9, 10)),
                      [](const std::vector<int>& c) { return UVec3d(c[0], c[1], c[2]); });
}

Triangles tetrahedron(const std::vector<UVec3d>& p) {
  return {{p[0], p[2], p[1]}, {p[0], p[1], p[3]}, {p[1], p[2], p[3]}, {p[2], p[0], p[3]}};
}

RC_GTEST_PROP(MeasureLaws, ATetrahedronHasASixthOfItsDeterminant, ()) {
  const auto p = *rc::gen::container<std::vector<UVec3d>>(4, gridPoint());
  const UVec3d a = p[1] - p[0], b = p[2] - p[0], c = p[3] - p[0];
  const double volume = ((a ^ b) * c) / 6;
  RC_PRE(volume != 0.0);
  const Measures m = measure(tetrahedron(p));
  RC_ASSERT(std::abs(m.volume - volume) < 1e-12 * 6000);
  RC_ASSERT(m.openEdges == 0u);
}

RC_GTEST_PROP(MeasureLaws, NeitherOrderNorStartOfTrianglesMatters, ()) {
  Triangles triangles = cutUp(cube({0, 0, 0}, 8));
  const auto swaps = *rc::gen::container<std::vector<std::pair<int, int>>>(
      rc::gen::pair(rc::gen::inRange(0, 48), rc::gen::inRange(0, 48)));
  for (const auto& [i, j] : swaps) {
    UTri& t = triangles[static_cast<std::size_t>(i)];
    t = {t.p[1], t.p[2], t.p[0]};
    std::swap(t, triangles[static_cast<std::size_t>(j)]);
  }
  const Measures m = measure(triangles);
  RC_ASSERT(m.volume == 512.0);
  RC_ASSERT(m.area == 384.0);
  RC_ASSERT(m.openEdges == 0u);
}

RC_GTEST_PROP(MeasureLaws, OpenEdgesAreThoseOfAnOddNumberOfTriangles, ()) {
  // Four points on a line have six edges; each triangle has three of them, whatever its shape.
  const auto corners = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 4));
  int uses[4][4] = {};
  Triangles triangles;
  for (std::size_t i = 0; i + 2 < corners.size(); i += 3) {
    const int a = corners[i], b = corners[i + 1], c = corners[i + 2];
    triangles.emplace_back(UVec3d(a, 0, 0), UVec3d(b, 0, 0), UVec3d(c, 0, 0));
    for (const auto& [from, to] : {std::pair(a, b), std::pair(b, c), std::pair(c, a)}) {
      ++uses[std::min(from, to)][std::max(from, to)];
    }
  }
  std::size_t open = 0;
  for (int low = 0; low < 4; ++low) {
    for (int high = low + 1; high < 4; ++high) open += uses[low][high] % 2;
  }
  RC_ASSERT(measure(triangles).openEdges == open);
}

}  // namespace
