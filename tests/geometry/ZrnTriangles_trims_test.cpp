// Trimmed faces: which part of the surface they are.

#include <algorithm>
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "tests/geometry/ZrnFaces.h"

namespace {

using namespace korvo::test;  // NOLINT: the helpers of this folder
using zgeo::UTri;
using zgeo::UVec3d;

constexpr double kPi = std::numbers::pi;

/// A plane of 100 by 80: the area is that of the parameter plane times 8000.
const ZrnSurface kPlane = rectangle(100, 80);

Triangles trimmed(const std::string& trims, const ZrnSurface& surface = kPlane) {
  return trianglesOf(surface.text() + trims);
}

struct Trimmed {
  const char* name;
  std::string trims;
  double share;  ///< Of the parameter plane.
};

std::string frame(bool clockwise = false) { return uvRectangle(.1, .1, .9, .9, clockwise); }
std::string hole(bool clockwise = false) { return uvEllipse(.5, .5, .3, .3, clockwise); }
std::string island(bool clockwise = false) { return uvEllipse(.5, .5, .1, .1, clockwise); }

/// A closed square whose sides are polylines of their own, the k-th turned round when `turned` has
/// bit k, each cut short by `gap` at its end.
std::string brokenSquare(std::initializer_list<int> order, unsigned turned, double gap) {
  const Uv corners[] = {{.2, .2}, {.8, .2}, {.8, .8}, {.2, .8}, {.2, .2}};
  std::string out;
  for (const int k : order) {
    const Uv a = corners[k];
    const Uv b = corners[k + 1];
    const Uv end{b.x - gap * (b.x - a.x), b.y - gap * (b.y - a.y)};
    out += turned >> k & 1 ? uvPolyline({end, a}) : uvPolyline({a, end});
  }
  return out;
}

const Trimmed kTrims[] = {
    {"Rectangle", frame(), .64},
    {"RectangleClockwise", frame(true), .64},
    {"Triangle", uvPolyline({{.1, .1}, {.9, .1}, {.1, .9}, {.1, .1}}), .32},
    {"OpenTriangleIsClosed", uvPolyline({{.1, .1}, {.9, .1}, {.1, .9}}), .32},
    {"NurbsCircle", hole(), kPi * .09},
    {"NurbsCircleClockwise", hole(true), kPi * .09},
    {"NurbsCircleInPlanarForm",
     [] {
       NurbsTrim circle = ellipse(.5, .5, .3, .3);
       circle.isPlanarForm = true;
       return circle.text();
     }(),
     kPi * .09},
    {"NurbsOfDegreeOne", linear({{.1, .1}, {.9, .1}, {.9, .5}, {.1, .5}, {.1, .1}}).text(), .32},
    {"Hole", frame() + hole(), .64 - kPi * .09},
    {"HoleFirst", hole() + frame(), .64 - kPi * .09},
    {"HoleTouchingNothing", uvRectangle(0, 0, 1, 1) + hole(), 1 - kPi * .09},
    {"TwoHoles", frame() + uvEllipse(.3, .3, .1, .1) + uvEllipse(.7, .7, .1, .15),
     .64 - kPi * .01 - kPi * .015},
    {"IslandInHole", frame() + hole() + island(), .64 - kPi * .09 + kPi * .01},
    {"TwoOuters", uvRectangle(.1, .1, .4, .9) + uvRectangle(.6, .1, .9, .9), .48},
    {"FourPieces", brokenSquare({0, 1, 2, 3}, 0, 0), .36},
    {"FourPiecesInAnyOrder", brokenSquare({2, 0, 3, 1}, 0, 0), .36},
    {"FourPiecesSomeTurnedRound", brokenSquare({2, 0, 3, 1}, 5, 0), .36},
    {"FourPiecesWithGaps", brokenSquare({0, 1, 2, 3}, 0, 1.5e-5), .36},
    {"FourPiecesWithGapsSomeTurnedRound", brokenSquare({1, 3, 0, 2}, 10, 1.5e-5), .36},
    {"PartlyOutside", uvRectangle(.5, .5, 1.5, 1.5), .25},
    {"AllAround", uvRectangle(-1, -1, 2, 2), 1},
    {"NoAreaLeavesTheFaceWhole", uvPolyline({{.2, .2}, {.8, .8}}), 1},
    {"OtherCurvesBetween", frame() + "2 2 1\n0 0 0\n5 5 5\n" + hole(), .64 - kPi * .09},
};

class ZrnTrims : public testing::TestWithParam<Trimmed> {};

TEST_P(ZrnTrims, AreaIsThatOfTheRegion) {
  EXPECT_NEAR(areaOf(trimmed(GetParam().trims)), GetParam().share * 8000,
              .005 * GetParam().share * 8000);
}

TEST_P(ZrnTrims, TrianglesStayOnThePlane) {
  EXPECT_LE(largestAtCorners(trimmed(GetParam().trims), [](const UVec3d& p) { return p.z; }), 0);
}

INSTANTIATE_TEST_SUITE_P(Plane, ZrnTrims, testing::ValuesIn(kTrims), korvo::test::rowName<Trimmed>);

// Three nested loops in every order and every orientation: always the same region.
TEST(ZrnTrimOrders, RegionIsTheSameHoweverLoopsStandAndTurn) {
  int order[] = {0, 1, 2};
  do {
    for (unsigned turned = 0; turned < 8; ++turned) {
      const std::string loops[] = {frame(turned & 1), hole((turned & 2) != 0),
                                   island((turned & 4) != 0)};
      const double area = areaOf(trimmed(loops[order[0]] + loops[order[1]] + loops[order[2]]));
      const double expected = (.64 - kPi * .09 + kPi * .01) * 8000;
      EXPECT_NEAR(area, expected, .005 * expected)
          << order[0] << order[1] << order[2] << " turned " << turned;
    }
  } while (std::next_permutation(std::begin(order), std::end(order)));
}

// --- an eight by eight grid of holes, as machined plates have: of any width up to thin bridges

struct Plate {
  const char* name;
  double radius;  ///< Of the parameter plane, where holes stand an eighth apart.
};

class ZrnTrimPlate : public testing::TestWithParam<Plate> {};

TEST_P(ZrnTrimPlate, AreaIsThatOfThePlateWithoutItsHoles) {
  const double r = GetParam().radius;
  std::string trims = uvRectangle(.005, .005, .995, .995);
  for (int k = 0; k < 64; ++k)
    trims += uvEllipse((k % 8 + .5) / 8.0, (k / 8 + .5) / 8.0, r, r, k % 3 == 0);
  const double share = .99 * .99 - 64 * kPi * r * r;
  const Triangles triangles = trimmed(trims);
  EXPECT_NEAR(areaOf(triangles), share * 8000, .005 * share * 8000);
}

INSTANTIATE_TEST_SUITE_P(Holes, ZrnTrimPlate,
                         testing::Values(Plate{"Small", .01}, Plate{"Middling", .03},
                                         Plate{"Large", .05}, Plate{"ThinBridges", .056}),
                         korvo::test::rowName<Plate>);

// --- on a quarter of a cylinder: u is no angle, but u = const are straight lines

/// The angle that u stands for: of the arc with the poles (1, 0) (1, 1) (0, 1), weights 1 s 1.
double angleOf(double u) {
  const double s = std::sqrt(0.5);
  const double a = (1 - u) * (1 - u);
  const double b = 2 * s * u * (1 - u);
  const double c = u * u;
  return std::atan2(b + c, a + b);
}

double cylinderArea(double u0, double v0, double u1, double v1) {
  return 50 * (angleOf(u1) - angleOf(u0)) * 80 * (v1 - v0);
}

TEST(ZrnTrimCylinder, RectangleWithRectangularHole) {
  const Triangles triangles =
      trimmed(uvRectangle(.1, .2, .8, .9) + uvRectangle(.3, .4, .5, .7), cylinder(50, 80, 1));
  const double area = cylinderArea(.1, .2, .8, .9) - cylinderArea(.3, .4, .5, .7);
  EXPECT_NEAR(areaOf(triangles), area, .005 * area);
  EXPECT_LE(largest(triangles, [](const UVec3d& p) { return std::hypot(p.x, p.y) - 50; }), .0101);
}

// --- another triangulation of the same faces: a uniform grid in (u, v), each cell in or out by the
// number of loops around its middle

struct Oval {
  double u, v, ru, rv;
  bool surrounds(double x, double y) const {
    return (x - u) * (x - u) / (ru * ru) + (y - v) * (y - v) / (rv * rv) < 1;
  }
  /// How far outside (above 1) or inside it lies.
  double reach(double x, double y) const { return std::hypot((x - u) / ru, (y - v) / rv); }
};

struct Compared {
  const char* name;
  ZrnSurface surface;
};

const Oval kOvals[] = {
    {.5, .5, .45, .4}, {.45, .5, .25, .2}, {.45, .5, .1, .1}, {.75, .6, .04, .05}};

class ZrnCompared : public testing::TestWithParam<Compared> {
 protected:
  static constexpr int kCells = 240;

  static bool isInside(double u, double v) {
    int around = 0;
    for (const Oval& oval : kOvals) around += oval.surrounds(u, v);
    return around % 2 == 1;
  }
  static bool isNearARim(double u, double v) {
    return std::ranges::any_of(
        kOvals, [&](const Oval& oval) { return std::abs(oval.reach(u, v) - 1) < .05; });
  }
  static std::string trims() {
    std::string out;
    for (const Oval& oval : kOvals) out += uvEllipse(oval.u, oval.v, oval.ru, oval.rv);
    return out;
  }
  static UVec3d at(double u, double v) { return GetParam().surface.point(u, v); }

  /// The grid's triangles whose cells lie inside.
  static Triangles grid(int cells) {
    std::vector<UVec3d> points;
    for (int j = 0; j <= cells; ++j)
      for (int i = 0; i <= cells; ++i)
        points.push_back(at(static_cast<double>(i) / cells, static_cast<double>(j) / cells));
    Triangles out;
    for (int j = 0; j < cells; ++j)
      for (int i = 0; i < cells; ++i) {
        if (!isInside((i + .5) / cells, (j + .5) / cells)) continue;
        const UVec3d* p = points.data() + j * (cells + 1) + i;
        out.emplace_back(p[0], p[1], p[cells + 2]);
        out.emplace_back(p[0], p[cells + 2], p[cells + 1]);
      }
    return out;
  }
};

TEST_P(ZrnCompared, AreasAgree) {
  const double area = areaOf(grid(kCells));
  EXPECT_NEAR(areaOf(trimmed(trims(), GetParam().surface)), area, .005 * area);
}

TEST_P(ZrnCompared, EveryPointOfTheFaceIsNearATriangleAndNoPointOfAHoleIs) {
  const Triangles triangles = trimmed(trims(), GetParam().surface);
  ASSERT_FALSE(triangles.empty());
  for (double u = .03; u < 1; u += .06)
    for (double v = .03; v < 1; v += .06) {
      if (isNearARim(u, v)) continue;
      const double distance = distanceTo(triangles, at(u, v));
      if (isInside(u, v)) {
        EXPECT_LE(distance, .0101) << u << " " << v;
      } else {
        EXPECT_GT(distance, .05) << u << " " << v;
      }
    }
}

TEST_P(ZrnCompared, EveryTriangleIsNearTheGrid) {
  const Triangles triangles = trimmed(trims(), GetParam().surface);
  const Triangles cells = grid(80);
  const std::size_t step = triangles.size() / 100 + 1;
  for (std::size_t i = 0; i < triangles.size(); i += step) {
    const UTri& t = triangles[i];
    // Cells are some mm wide: they stand for their surface within .1, and for the rim within one.
    EXPECT_LE(distanceTo(cells, (t.p[0] + t.p[1] + t.p[2]) / 3.0), 1.5) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Surfaces, ZrnCompared,
                         testing::Values(Compared{"Plane", kPlane},
                                         Compared{"QuarterCylinder", cylinder(50, 80, 1)},
                                         Compared{"HalfCone", cone(50, 40, 2)},
                                         Compared{"SphereZone", sphere(50, -30, 60, 1, 1)},
                                         Compared{"TorusPatch", torus(50, 20, -60, 60, 1, 1)},
                                         Compared{"Hill", hill(100, 15)}),
                         korvo::test::rowName<Compared>);

}  // namespace
