#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <numbers>
#include <random>

#include "tests/solidra/Faces.h"

namespace korvo::test {
namespace {

constexpr double kPi = std::numbers::pi;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

template <class... Curve>
std::vector<CurvePtr> list(Curve... curves) {
  std::vector<CurvePtr> out;
  (out.push_back(std::move(curves)), ...);
  return out;
}

template <class Row>
std::string rowName(const testing::TestParamInfo<Row>& info) {
  return info.param.name;
}

#if defined(KORVO_SOLIDRA_none)

TEST(SolidraNone, NoFaceEverHasAMesh) {
  const auto f = face(plane(100, 80));
  EXPECT_FALSE(f->ValidateMesh(0.01, 0.01));
  EXPECT_FALSE(f->HasMesh());
}

#else

// --- Exact surfaces: distance and area in closed form

struct Exact {
  std::string name;
  Patch patch;
  std::function<double(const CGeom_XYZ&)>
      distance;  ///< From the whole surface the patch is part of.
  double area;
  double size;
};

double radius(const CGeom_XYZ& p) { return std::hypot(p.x, p.y); }

std::vector<Exact> exactSurfaces() {
  const double slant = std::hypot(50.0, 80.0);
  return {{"Plane", plane(100, 80), [](const CGeom_XYZ& p) { return p.z; }, 8000, 128},
          {"QuarterCylinder", cylinder(50, 80, 1),
           [](const CGeom_XYZ& p) { return radius(p) - 50; }, kPi / 2 * 50 * 80, 107},
          {"FullCylinder", cylinder(50, 80, 4), [](const CGeom_XYZ& p) { return radius(p) - 50; },
           2 * kPi * 50 * 80, 162},
          {"HalfCone", cone(50, 80, 2),
           [=](const CGeom_XYZ& p) { return ((radius(p) - 50) * 80 + p.z * 50) / slant; },
           kPi * 50 * slant / 2, 137},
          {"Hemisphere", sphere(50, 0, 90, 4),
           [](const CGeom_XYZ& p) { return std::hypot(p.x, p.y, p.z) - 50; }, 2 * kPi * 2500, 150},
          {"SphereZone", sphere(50, -30, 30, 2),
           [](const CGeom_XYZ& p) { return std::hypot(p.x, p.y, p.z) - 50; },
           kPi * 50 * 50 /* zone: 2 pi r h, half of it, h = r */, 122},
          // Pappus: the arc of 120 degrees, R + r * (mean of cos) from the axis, half a turn.
          {"TorusPatch", torus(50, 10, -60, 60, 2),
           [](const CGeom_XYZ& p) { return std::hypot(radius(p) - 50, p.z) - 10; },
           kPi * (50 * 10 * 2 * kPi / 3 + 100 * std::sqrt(3.0)), 136}};
}

class SolidraExact : public testing::TestWithParam<Exact> {};

TEST_P(SolidraExact, VerticesLieOnTheSurface) {
  const auto f = face(GetParam().patch);
  ASSERT_TRUE(f->ValidateMesh(0.05, 0.05));
  EXPECT_LE(largestAtVertices(meshOf(*f), GetParam().distance), 1e-6 * GetParam().size);
}

TEST_P(SolidraExact, TrianglesKeepTheTolerance) {
  for (const double tolerance : {5.0, 0.5, 0.05, 0.01}) {
    const auto f = face(GetParam().patch);
    ASSERT_TRUE(f->ValidateMesh(tolerance, tolerance)) << tolerance;
    EXPECT_LE(largest(meshOf(*f), GetParam().distance), tolerance * 1.001);
    EXPECT_LE(f->GetMeshStats().reached, tolerance);
  }
}

TEST_P(SolidraExact, AreaConvergesToTheClosedForm) {
  for (const double tolerance : {0.5, 0.05, 0.005}) {
    const auto f = face(GetParam().patch);
    ASSERT_TRUE(f->ValidateMesh(tolerance, tolerance));
    EXPECT_NEAR(areaOf(meshOf(*f)), GetParam().area, 0.02 * std::sqrt(tolerance) * GetParam().area)
        << tolerance;
  }
}

TEST_P(SolidraExact, NoTriangleIsFlat) {
  const auto f = face(GetParam().patch);
  ASSERT_TRUE(f->ValidateMesh(0.05, 0.05));
  const Mesh mesh = meshOf(*f);
  for (const CMesh_Index& t : mesh.triangles)
    EXPECT_GT(areaOf(mesh, t), 0) << t.i0 << " " << t.i1 << " " << t.i2;
}

INSTANTIATE_TEST_SUITE_P(Surfaces, SolidraExact, testing::ValuesIn(exactSurfaces()),
                         rowName<Exact>);

// --- Trims: a plane of 100 by 80, so that the area is that of the parameter plane times 8000

struct Trimmed {
  std::string name;
  std::function<std::vector<CurvePtr>()> curves;
  double share;  ///< Of the plane.
};

std::vector<CurvePtr> brokenCircle(bool shuffled, double gap) {
  std::vector<CurvePtr> out;
  for (const int i : {0, 2, 1, 3})
    out.push_back(quarter(.5 + gap * i, .5, .3, .3,
                          shuffled ? i
                                   : (i == 2   ? 1
                                      : i == 1 ? 2
                                               : i),
                          shuffled && i % 2 == 1));
  return out;
}

// A rectangle of a grid of sixteenths, the grid turned by 0.3 radians and shrunk by 2 / 3: corners
// on sides of others lie there only as nearly as doubles can.
CurvePtr slanted(int x0, int y0, int x1, int y1) {
  const auto at = [](int x, int y) {
    const double a = (x - 8) / 24.;
    const double b = (y - 8) / 24.;
    return CGeom2d_XY{.5 + a * std::cos(.3) - b * std::sin(.3),
                      .5 + a * std::sin(.3) + b * std::cos(.3)};
  };
  return polygon({at(x0, y0), at(x1, y0), at(x1, y1), at(x0, y1), at(x0, y0)});
}

CurvePtr frame(bool clockwise = false) { return rectangle(.1, .1, .9, .9, clockwise); }
CurvePtr hole(bool clockwise = false) { return circle(.5, .5, .3, .3, clockwise); }
CurvePtr island(bool clockwise = false) { return circle(.5, .5, .1, .1, clockwise); }

const Trimmed kTrims[] = {
    {"Rectangle", [] { return list(frame()); }, .64},
    {"RectangleClockwise", [] { return list(frame(true)); }, .64},
    {"Circle", [] { return list(hole()); }, kPi * .09},
    {"CircleClockwise", [] { return list(hole(true)); }, kPi * .09},
    {"Hole", [] { return list(frame(), hole()); }, .64 - kPi * .09},
    {"HoleClockwise", [] { return list(frame(), hole(true)); }, .64 - kPi * .09},
    {"OuterClockwise", [] { return list(frame(true), hole()); }, .64 - kPi * .09},
    {"BothClockwise", [] { return list(frame(true), hole(true)); }, .64 - kPi * .09},
    {"HoleFirst", [] { return list(hole(), frame()); }, .64 - kPi * .09},
    {"HoleFirstClockwise", [] { return list(hole(true), frame(true)); }, .64 - kPi * .09},
    {"Island", [] { return list(frame(), hole(), island()); }, .64 - kPi * .08},
    {"IslandFirst", [] { return list(island(true), hole(), frame()); }, .64 - kPi * .08},
    {"TwoApart", [] { return list(rectangle(.1, .1, .4, .4), rectangle(.6, .6, .9, .9, true)); },
     .18},
    {"HolesThatShareSides",
     [] {
       return list(slanted(0, 0, 16, 16), slanted(2, 2, 5, 7), slanted(5, 3, 9, 6),
                   slanted(3, 7, 8, 9), slanted(9, 4, 13, 5));
     },
     (256 - 15 - 12 - 10 - 4) / 576.},
    {"HolesAlongTheOuter",
     [] {
       return list(slanted(0, 0, 16, 16), slanted(0, 3, 4, 7), slanted(5, 0, 7, 7),
                   slanted(7, 0, 9, 3));
     },
     (256 - 16 - 14 - 6) / 576.},
    {"QuartersInOrder", [] { return brokenCircle(false, 0); }, kPi * .09},
    {"QuartersInDisorder", [] { return brokenCircle(true, 0); }, kPi * .09},
    {"QuartersWithGaps", [] { return brokenCircle(false, 2e-5); }, kPi * .09},
    {"OpenChainIsClosedStraight", [] { return list(quarter(.2, .2, .6, .6, 0)); },
     .36 * (kPi / 4 - .5)},
    {"BeyondTheRangeIsCut", [] { return list(rectangle(-.5, .25, 1.5, .75)); }, .5},
    {"CircleOverTheCorner", [] { return list(circle(0, 0, .5, .5)); }, kPi / 16},
    {"HoleOverTheSide", [] { return list(rectangle(0, 0, 1, 1), circle(1, .5, .2, .2)); },
     1 - kPi * .02},
    {"NotchedBeyondTheSide",
     [] {
       return list(polygon({{.5, .1},
                            {1.5, .1},
                            {1.5, .3},
                            {.8, .3},
                            {.8, .6},
                            {1.5, .6},
                            {1.5, .9},
                            {.5, .9},
                            {.5, .1}}));
     },
     .5 * .8 - .2 * .3},
    {"WholeRectangle", [] { return list(rectangle(0, 0, 1, 1, true)); }, 1},
    {"NoAreaIsNoTrim", [] { return list(polygon({{.1, .1}, {.9, .9}, {.1, .1}})); }, 1},
    {"RefusedCurveIsLeftOut", [] { return list(frame(), polygon({{.2, .2}, {kNaN, .5}})); }, .64}};

class SolidraTrim : public testing::TestWithParam<Trimmed> {};

TEST_P(SolidraTrim, KeepsWhatAnOddNumberOfLoopsSurround) {
  for (const double tolerance : {0.05, 0.01}) {
    const auto f = face(plane(100, 80), GetParam().curves());
    ASSERT_TRUE(f->ValidateMesh(tolerance, tolerance));
    EXPECT_NEAR(areaOf(meshOf(*f)), GetParam().share * 8000, 0.005 * GetParam().share * 8000);
  }
}

TEST_P(SolidraTrim, StaysOnACylinder) {
  const auto f = face(cylinder(50, 80, 1), GetParam().curves());
  ASSERT_TRUE(f->ValidateMesh(0.01, 0.01));
  EXPECT_LE(largest(meshOf(*f), [](const CGeom_XYZ& p) { return radius(p) - 50; }), 0.01001);
}

INSTANTIATE_TEST_SUITE_P(Loops, SolidraTrim, testing::ValuesIn(kTrims), rowName<Trimmed>);

TEST(SolidraTrim, AWindowOfACylinderHasTheAreaOfItsAngle) {
  const auto f = face(cylinder(50, 80, 4), list(rectangle(.25, .25, .75, .75)));
  ASSERT_TRUE(f->ValidateMesh(0.01, 0.01));
  EXPECT_NEAR(areaOf(meshOf(*f)), kPi * 50 * 40, 0.001 * kPi * 50 * 40);
}

TEST(SolidraTrim, AWireWithoutPiecesTrimsNothing) {
  CTopo_Face f(plane(100, 80).make().release(), 0);
  f.AddWire(new CTopo_Wire);
  ASSERT_TRUE(f.ValidateMesh(0.01, 0.01));
  EXPECT_NEAR(areaOf(meshOf(f)), 8000, 0.01);
}

TEST(SolidraTrim, AnIntervalRestrictsTheSurface) {
  Patch p = plane(100, 80);
  p.startU = .75;
  p.endU = .25;
  const auto f = face(p);
  ASSERT_TRUE(f->ValidateMesh(0.01, 0.01));
  EXPECT_NEAR(areaOf(meshOf(*f)), 4000, 0.01);
}

TEST(SolidraTrim, ThousandsOfPointsOnARimTakeNoTime) {
  std::vector<CGeom2d_XY> points;
  for (int i = 0; i <= 5000; ++i)
    points.push_back(
        {.5 + .3 * std::cos(2 * kPi * i / 5000), .5 + .3 * std::sin(2 * kPi * i / 5000)});
  const auto f = face(plane(100, 80), list(polygon(points)));
  ASSERT_TRUE(f->ValidateMesh(0.01, 0.01));
  EXPECT_NEAR(areaOf(meshOf(*f)), kPi * .09 * 8000, 1);
}

// --- What is refused has no mesh

struct Refused {
  std::string name;
  std::function<void(Patch&)> spoil;
};

const Refused kRefused[] = {
    {"NoOrder", [](Patch& p) { p.orderU = 0; }},
    {"OrderOne", [](Patch& p) { p.orderV = 1; }},
    {"OrderAboveCount", [](Patch& p) { p.orderU = 4; }},
    {"HugeOrder", [](Patch& p) { p.orderU = std::numeric_limits<int>::max(); }},
    {"SmallestOrder", [](Patch& p) { p.orderU = std::numeric_limits<int>::min(); }},
    {"NegativeCount", [](Patch& p) { p.countU = -3; }},
    {"HugeCount", [](Patch& p) { p.countV = std::numeric_limits<int>::max(); }},
    {"PoleMissing", [](Patch& p) { p.poles.pop_back(); }},
    {"NoPoles", [](Patch& p) { p.poles.clear(); }},
    {"PoleNaN", [](Patch& p) { p.poles[1].y = kNaN; }},
    {"PoleInfinite", [](Patch& p) { p.poles[1].z = kInf; }},
    {"PoleHuge", [](Patch& p) { p.poles[1].x = 1e300; }},
    {"KnotMissing", [](Patch& p) { p.knotsU.pop_back(); }},
    {"NoKnots", [](Patch& p) { p.knotsV.clear(); }},
    {"KnotsDecrease", [](Patch& p) { p.knotsU[3] = -1; }},
    {"KnotNaN", [](Patch& p) { p.knotsU[2] = kNaN; }},
    {"KnotInfinite", [](Patch& p) { p.knotsU.back() = kInf; }},
    {"KnotsOverflow", [](Patch& p) { p.knotsV = {-1e308, -1e308, 1e308, 1e308}; }},
    {"AllKnotsEqual", [](Patch& p) { p.knotsV = {1, 1, 1, 1}; }},
    {"KnotTooOften", [](Patch& p) { p.knotsV = {0, 1, 1, 1}; }},
    {"WeightZero", [](Patch& p) { p.weights[0] = 0; }},
    {"WeightNegative", [](Patch& p) { p.weights[0] = -1; }},
    {"WeightNaN", [](Patch& p) { p.weights[0] = kNaN; }},
    {"WeightInfinite", [](Patch& p) { p.weights[0] = kInf; }},
    {"WeightsTooUnlike", [](Patch& p) { p.weights[0] = 1e9; }},
    {"WeightMissing", [](Patch& p) { p.weights.pop_back(); }},
    {"Periodic", [](Patch& p) { p.periodicU = true; }},
    {"Closed", [](Patch& p) { p.closedV = true; }}};

class SolidraRefused : public testing::TestWithParam<Refused> {};

TEST_P(SolidraRefused, SurfaceHasNeitherMeshNorBound) {
  Patch p = cylinder(50, 80, 1);
  ASSERT_TRUE(p.make()->IsValid());
  GetParam().spoil(p);
  const auto f = face(p);
  CGeom_Bound bound({1, 2, 3}, {4, 5, 6});
  EXPECT_FALSE(f->GetSurface()->Get3DBound(bound));
  EXPECT_EQ(bound.GetHigh().z, 6);
  EXPECT_FALSE(f->ValidateMesh(0.01, 0.01));
  EXPECT_TRUE(meshOf(*f).vertices.empty());
}

INSTANTIATE_TEST_SUITE_P(Data, SolidraRefused, testing::ValuesIn(kRefused), rowName<Refused>);

const Trimmed kNoRegion[] = {
    {"FigureEight",
     [] { return list(polygon({{.1, .1}, {.9, .9}, {.9, .1}, {.1, .8}, {.1, .1}})); }, 0},
    {"BowTieWhoseHalvesCancel",
     [] { return list(polygon({{.1, .1}, {.9, .9}, {.9, .1}, {.1, .9}, {.1, .1}})); }, 0},
    {"HoleAcrossTheOuter", [] { return list(frame(), circle(.9, .5, .05, .05)); }, 0},
    {"SameLoopTwice", [] { return list(frame(), frame(true)); }, 0},
    {"AllOutside", [] { return list(rectangle(2, 2, 3, 3)); }, 0}};

class SolidraNoRegion : public testing::TestWithParam<Trimmed> {};

// Half of the plane, however far its other side lies outside.
TEST(SolidraClipped, LoopsFarOutsideAreCutOff) {
  for (const double far : {2., 1e3, 1e5, 1e7, 9e8}) {
    const auto f = face(plane(100, 80), list(rectangle(.5, -far, far, far)));
    ASSERT_TRUE(f->ValidateMesh(0.01, 0.01)) << far;
    EXPECT_NEAR(areaOf(meshOf(*f)), 4000, 1e-2) << far;
  }
}

TEST(SolidraClipped, LoopsTooFarOutsideToBeCutOffGiveNoMesh) {
  EXPECT_FALSE(face(plane(100, 80), list(rectangle(.5, 0, 1e10, 1)))->ValidateMesh(0.01, 0.01));
}

TEST_P(SolidraNoRegion, HasNoMesh) {
  EXPECT_FALSE(face(plane(100, 80), GetParam().curves())->ValidateMesh(0.01, 0.01));
}

INSTANTIATE_TEST_SUITE_P(Loops, SolidraNoRegion, testing::ValuesIn(kNoRegion), rowName<Trimmed>);

TEST(SolidraRefused, AToleranceThatIsNoneGivesNoMesh) {
  for (const double tolerance : {0.0, -1.0, kNaN, kInf}) {
    EXPECT_FALSE(face(plane(100, 80))->ValidateMesh(tolerance, tolerance)) << tolerance;
  }
}

TEST(SolidraRefused, ASurfaceInOnePointGivesNoMesh) {
  EXPECT_FALSE(face(plane(0, 0))->ValidateMesh(0.01, 0.01));
}

TEST(SolidraRefused, NullsAreTaken) {
  CTopo_Face f(nullptr, 0);
  EXPECT_FALSE(f.AddWire(nullptr));
  EXPECT_FALSE(f.ValidateMesh(0.01, 0.01));
  CTopo_Wire wire;
  CTopo_Edge* edge = nullptr;
  EXPECT_FALSE(wire.AddCoEdge(nullptr, 1, 8, edge, 0.001));
  EXPECT_TRUE(wire.AddCoEdge(new CTopo_CoEdge(nullptr, nullptr), 1, 8, edge, 0.001));
  EXPECT_EQ(wire.MakeEdgeFromCoEdge(8, 0.001), 0);
  CTopo_Solid solid;
  EXPECT_FALSE(solid.AddFace(nullptr));
}

// --- The mesh as a whole

TEST(SolidraMesh, IsTheSameEveryTime) {
  const auto make = [] {
    auto f = face(hill(100, 30), list(frame(), hole()));
    f->ValidateMesh(0.05, 0.05);
    return meshOf(*f);
  };
  const Mesh a = make();
  const Mesh b = make();
  ASSERT_FALSE(a.triangles.empty());
  const auto samePoint = [](const CGeom_XYZ& p, const CGeom_XYZ& q) {
    return p.x == q.x && p.y == q.y && p.z == q.z;
  };
  const auto sameIndex = [](const CMesh_Index& p, const CMesh_Index& q) {
    return p.i0 == q.i0 && p.i1 == q.i1 && p.i2 == q.i2;
  };
  EXPECT_TRUE(std::ranges::equal(a.vertices, b.vertices, samePoint));
  EXPECT_TRUE(std::ranges::equal(a.triangles, b.triangles, sameIndex));
}

TEST(SolidraMesh, TurnsFromUToV) {
  const auto f = face(plane(100, 80), list(frame(true), hole()));
  ASSERT_TRUE(f->ValidateMesh(0.05, 0.05));
  const Mesh m = meshOf(*f);
  for (const CMesh_Index& t : m.triangles) {
    const CGeom_XYZ &a = m.vertices[t.i0], &b = m.vertices[t.i1], &c = m.vertices[t.i2];
    EXPECT_GT((b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x), 0);
  }
}

TEST(SolidraMesh, StartsNoThread) {
  const auto f = face(sphere(50, 0, 90, 4));
  ASSERT_TRUE(f->ValidateMesh(0.05, 0.05));
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  EXPECT_EQ(std::distance(begin(tasks), end(tasks)), 1);
}

TEST(SolidraMesh, FarFromTheOriginTheToleranceIsWhatSinglePrecisionGives) {
  Patch p = sphere(50, -30, 30, 1);
  for (CGeom_XYZ& pole : p.poles) pole.x += 1e6;
  const auto f = face(p);
  ASSERT_TRUE(f->ValidateMesh(0.01, 0.01));
  EXPECT_LE(f->GetMeshStats().reached, 0.26);
}

TEST(SolidraMesh, ANewWireTakesTheMeshAway) {
  const auto f = face(plane(100, 80));
  ASSERT_TRUE(f->ValidateMesh(1, 1));
  EXPECT_TRUE(f->AddWire(new CTopo_Wire));
  EXPECT_FALSE(f->HasMesh());
}

#endif

// --- Bounds and pieces: the same with every mesher

TEST(SolidraBound, IsTight) {
  CGeom_Bound bound;
  ASSERT_TRUE(sphere(50, 0, 90, 4).make()->Get3DBound(bound));
  EXPECT_NEAR(bound.GetLow().x, -50, 1e-4);
  EXPECT_NEAR(bound.GetHigh().y, 50, 1e-4);
  EXPECT_NEAR(bound.GetDiag(), 150, 1e-4);  // 100, 100 and 50
}

/// A strip over x from 0 to `degree`, y from 0 to 1: one span of poles of these heights.
Patch wave(const std::vector<double>& heights) {
  const int degree = static_cast<int>(heights.size()) - 1;
  Patch p;
  p.countU = p.orderU = degree + 1;
  p.countV = p.orderV = 2;
  p.knotsU.assign(heights.size(), 0);
  p.knotsU.insert(p.knotsU.end(), heights.size(), 1);
  p.knotsV = {0, 0, 1, 1};
  for (const double y : {0., 1.})
    for (int i = 0; i <= degree; ++i)
      p.poles.push_back({double(i), y, heights[static_cast<std::size_t>(i)]});
  return p;
}

/// The polynomial of these poles by repeated halfway points.
double heightAt(std::vector<double> heights, double t) {
  for (std::size_t n = heights.size() - 1; n > 0; --n)
    for (std::size_t i = 0; i < n; ++i) heights[i] += t * (heights[i + 1] - heights[i]);
  return heights[0];
}

// Heights at random make waves of nearly equal peaks, of which the highest is not the one nearest
// to a coarse sample. Ten thousand samples miss a peak by 3e-4 at
// most: the second derivative is at most 25 * 24 * 400, and a peak half a step, 5e-5, away.
TEST(SolidraBound, FindsTheHighestOfManyPeaks) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> height(-100, 100);
  for (const std::size_t count : {6u, 10u, 16u, 26u})
    for (int row = 0; row < 40; ++row) {
      std::vector<double> heights(count);
      for (double& h : heights) h = height(random);
      double low = HUGE_VAL, high = -HUGE_VAL;
      for (int i = 0; i <= 10000; ++i) {
        const double h = heightAt(heights, i / 1e4);
        low = std::min(low, h);
        high = std::max(high, h);
      }
      CGeom_Bound bound;
      ASSERT_TRUE(wave(heights).make()->Get3DBound(bound));
      EXPECT_NEAR(bound.GetLow().z, low, 1e-3) << count << " poles, row " << row;
      EXPECT_NEAR(bound.GetHigh().z, high, 1e-3) << count << " poles, row " << row;
    }
}

TEST(SolidraBound, AddsBoxes) {
  CGeom_Bound sum = CGeom_Bound::Empty();
  EXPECT_TRUE(sum.IsEmpty());
  EXPECT_EQ(sum.GetDiag(), 0);
  sum.Add(CGeom_Bound({1, 2, 3}, {2, 4, 5}));
  sum.Add(CGeom_Bound::Empty());
  EXPECT_EQ(sum.GetDiag(), 3);
  sum.Add(CGeom_Bound());  // the origin
  EXPECT_EQ(sum.GetLow().z, 0);
}

TEST(SolidraPieces, ACircleOfFourQuartersIsCutInFour) {
  CStd_Array1<CGeom2d_Curve*> pieces;
  EXPECT_EQ(circle(0, 0, 1, 1)->ExtractC2Curves(pieces, 20.0), 4);
  for (CGeom2d_Curve* piece : pieces) delete piece;
  EXPECT_EQ(pieces.GetCount(), 4);
}

TEST(SolidraPieces, APolygonIsCutAtItsSharpCorners) {
  CStd_Array1<CGeom2d_Curve*> pieces;
  EXPECT_EQ(polygon({{0, 0}, {1, 0}, {2, 0.01}, {2, 1}})->ExtractC2Curves(pieces, 10.0), 2);
  for (CGeom2d_Curve* piece : pieces) delete piece;
}

TEST(SolidraPieces, ARefusedCurveHasNone) {
  CStd_Array1<CGeom2d_Curve*> pieces;
  EXPECT_EQ(polygon({{0, 0}})->ExtractC2Curves(pieces, 10.0), 0);
  EXPECT_EQ(CGeom2d_Polygon(3, nullptr, 3).ExtractC2Curves(pieces, 10.0), 0);
}

}  // namespace
}  // namespace korvo::test
