// Exact surfaces: their triangles' corners, distance, area and volume against closed forms.

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "tests/geometry/ZrnFaces.h"

namespace {

using namespace korvo::test;  // NOLINT: the helpers of this folder
using zgeo::UTri;
using zgeo::UVec3d;

constexpr double kPi = std::numbers::pi;

double radius(const UVec3d& p) { return std::hypot(p.x, p.y); }

struct Exact {
  const char* name;
  ZrnSurface surface;
  Distance distance;
  double area;
  double volume;     ///< A third of the flux of the position vector.
  double size;       ///< Diagonal of the box.
  double curvature;  ///< Radius of the strongest one; 0 for a plane.
};

std::vector<Exact> exactSurfaces() {
  const double slant = std::hypot(50, 40);
  const auto toSphere = [](const UVec3d& p) { return p.norm() - 50; };
  const auto toTorus = [](const UVec3d& p) { return std::hypot(radius(p) - 50, p.z) - 10; };
  return {
      {"Plane", rectangle(100, 80, {0, 0, 6}), [](const UVec3d& p) { return p.z - 6; }, 8000,
       8000 * 6 / 3., 128, 0},
      {"QuarterCylinder", cylinder(50, 80, 1), [](const UVec3d& p) { return radius(p) - 50; },
       50 * kPi / 2 * 80, 50 * kPi / 2 * 80 * 50 / 3, 107, 50},
      {"FullCylinder", cylinder(50, 80, 4), [](const UVec3d& p) { return radius(p) - 50; },
       100 * kPi * 80, 100 * kPi * 80 * 50 / 3, 162, 50},
      // From the base in z = 0, which has no flux, to the apex: the flux is that of the whole body.
      {"Cone", cone(50, 40, 4),
       [](const UVec3d& p) { return (40 - p.z - radius(p) * 40 / 50) * 50 / std::hypot(50, 40); },
       kPi * 50 * slant, kPi * 2500 * 40 / 3, 147, 50},
      {"Sphere", sphere(50, -90, 90, 2, 4), toSphere, 4 * kPi * 2500, 4 * kPi * 125000 / 3, 173,
       50},
      // A zone of height h = r: area 2 pi r h, here half of it; every normal is radial.
      {"SphereZone", sphere(50, -30, 30, 1, 2), toSphere, kPi * 2500, kPi * 2500 * 50 / 3, 122, 50},
      {"Torus", torus(50, 10, 0, 360, 4, 4), toTorus, 4 * kPi * kPi * 500, 2 * kPi * kPi * 50 * 100,
       171, 10},
      // Pappus: half a turn of an arc of 120 degrees, mean cos = sin(60) / (pi/3).
      {"TorusPatch", torus(50, 10, -60, 60, 1, 2), toTorus,
       kPi * 10 * (2 * kPi / 3) * (50 + 10 * std::sin(kPi / 3) / (kPi / 3)),
       // Of p * n = 10 + 50 cos t over the arc, times (50 + 10 cos t) 10 dt and the half turn:
       // integrals of 1, cos, cos^2 over 120 degrees are a, s, a/2 + s/4 with s = sqrt 3 for the
       // second and sin(120)/2 for the third.
       kPi * 10 / 3 *
           (500 * (2 * kPi / 3) + (100 + 2500) * std::sqrt(3.) +
            500 * (kPi / 3 + std::sqrt(3.) / 4)),
       136, 10},
  };
}

class ZrnExact : public testing::TestWithParam<Exact> {
 protected:
  Triangles meshed(double tolerance) const {
    const AsMeshed off;
    return trianglesOf(GetParam().surface.text(), tolerance);
  }
};

TEST_P(ZrnExact, CornersLieOnTheSurface) {
  const Triangles triangles = meshed(0.05);
  ASSERT_FALSE(triangles.empty());
  EXPECT_LE(largestAtCorners(triangles, GetParam().distance), 1e-6 * GetParam().size);
}

TEST_P(ZrnExact, TrianglesKeepTheTolerance) {
  for (const double tolerance : {1.0, 0.1, 0.01}) {
    const Triangles triangles = meshed(tolerance);
    ASSERT_FALSE(triangles.empty()) << tolerance;
    EXPECT_LE(largest(triangles, GetParam().distance), tolerance + 1e-6 * GetParam().size);
  }
}

// Pieces lie in their triangles, which lie within the tolerance.
TEST_P(ZrnExact, PiecesKeepTheToleranceToo) {
  const Triangles triangles = trianglesOf(GetParam().surface.text(), 1.0);
  ASSERT_FALSE(triangles.empty());
  EXPECT_LE(largest(triangles, GetParam().distance), 1.0 + 1e-6 * GetParam().size);
}

// A triangle that is t away from a surface of curvature radius r leans by about sqrt(2 t / r),
// which costs t / r of the area; triangles of odd shapes several times that.
TEST_P(ZrnExact, AreaConvergesToTheClosedForm) {
  const double r = GetParam().curvature > 0 ? GetParam().curvature : HUGE_VAL;
  for (const double tolerance : {1.0, 0.1, 0.01})
    EXPECT_NEAR(areaOf(meshed(tolerance)), GetParam().area,
                GetParam().area * (4 * tolerance / r + 1e-6))
        << tolerance;
}

// The body between surface and triangles is at most the tolerance thick.
TEST_P(ZrnExact, VolumeConvergesToTheClosedFormAndIsPositive) {
  for (const double tolerance : {1.0, 0.1, 0.01})
    EXPECT_NEAR(volumeOf(meshed(tolerance)), GetParam().volume,
                1.1 * GetParam().area * tolerance + 1e-6 * GetParam().volume)
        << tolerance;
}

TEST_P(ZrnExact, PiecesHaveTheAreaOfTheMesh) {
  const Triangles pieces = trianglesOf(GetParam().surface.text(), 0.1);
  EXPECT_NEAR(areaOf(pieces), areaOf(meshed(0.1)), 1e-9 * GetParam().area);
}

TEST_P(ZrnExact, NoTriangleIsFlat) {
  for (const UTri& t : meshed(0.1)) ASSERT_GT(areaOf(t), 0);
}

// The file's surface, evaluated as the test does it: the patches themselves are what they are
// called.
TEST_P(ZrnExact, SurfaceIsTheOneThatIsMeant) {
  for (int i = 0; i <= 20; ++i)
    for (int j = 0; j <= 20; ++j)
      EXPECT_NEAR(GetParam().distance(GetParam().surface.point(i / 20.0, j / 20.0)), 0,
                  1e-12 * 173);
}

INSTANTIATE_TEST_SUITE_P(Surfaces, ZrnExact, testing::ValuesIn(exactSurfaces()),
                         korvo::test::rowName<Exact>);

}  // namespace
