// From a geometry file to triangles: which entities give some, how their numbers are taken, and
// what a file can spoil.

#include "geometry/ZrnTriangles.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <thread>

#include <gtest/gtest.h>

#include "geometry/ZrnFace.h"
#include "platform/solidra/CGeom_CNurbs.h"
#include "tests/geometry/ZrnFaces.h"
#include "tests/support/TempFile.h"

namespace {

using namespace korvo::test;  // NOLINT: the helpers of this folder
using zgeo::UTri;
using zgeo::UVec3d;
using zkin::ZRN_FileToTriangles;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr long long kHuge = 2147483647;

const std::string kPlanar = "2 2 10\n0 0 .5\n";
const std::string kPolynomial = "2 2 4\n.5 0 0\n.5 1 0\n.5 0 1\n.5 1 1\n";
const std::string kMultipatch = "1 1 8\n1\n.5\n1\n1.5\n" + kPolynomial;
const std::string kPolyline3d = "2 3 1\n.5 0 0\n.5 1 0\n.5 1 1\n";
const std::string kArc = "1 1 14\n0 1\n5\n.5 0 0\n.5 0 0\n0 .5 0\n0 0 .5\n.5 0 0\n";
const std::string kPolynomialCurve = "2 1 4\n.5 0 0\n.5 1 1\n";
const std::string kTrimmedPolynomial = "2 0 5\n0 1\n.5 0 0\n.5 1 1\n";
const std::string kScale2 = "2 2 100\n2\n";

const ZrnSurface kPlane = rectangle(100, 80);

/// The box of the triangles' corners: low x, high x, low y, high y.
struct Box {
  double x0 = kInf, x1 = -kInf, y0 = kInf, y1 = -kInf;
};

Box boxOf(const Triangles& triangles) {
  Box box;
  for (const UTri& t : triangles)
    for (const UVec3d& p : t.p) {
      box = {std::min(box.x0, p.x), std::max(box.x1, p.x), std::min(box.y0, p.y),
             std::max(box.y1, p.y)};
    }
  return box;
}

void expectBox(const Triangles& triangles, double x0, double x1, double y0, double y1) {
  const Box box = boxOf(triangles);
  EXPECT_NEAR(box.x0, x0, 1e-4);
  EXPECT_NEAR(box.x1, x1, 1e-4);
  EXPECT_NEAR(box.y0, y0, 1e-4);
  EXPECT_NEAR(box.y1, y1, 1e-4);
}

// --- results

struct Unloaded {
  const char* name;
  const char* path;
};

class ZrnUnloaded : public testing::TestWithParam<Unloaded> {};

TEST_P(ZrnUnloaded, GivesMinusOneAndAnEmptyList) {
  Triangles triangles(3);
  EXPECT_EQ(ZRN_FileToTriangles(GetParam().path, 0.01, triangles), -1);
  EXPECT_TRUE(triangles.empty());
}

INSTANTIATE_TEST_SUITE_P(Files, ZrnUnloaded,
                         testing::Values(Unloaded{"Null", nullptr}, Unloaded{"NoName", ""},
                                         Unloaded{"Missing", "/no/such/file.zrn"},
                                         Unloaded{"Folder", "/"}, Unloaded{"Empty", "/dev/null"}),
                         korvo::test::rowName<Unloaded>);

TEST(ZrnTriangles, EmptyFileIsNotLoaded) {
  int count = 0;
  EXPECT_TRUE(trianglesOf("", 0.01, &count).empty());
  EXPECT_EQ(count, -1);
}

struct Nothing {
  const char* name;
  std::string bytes;
};

class ZrnNothing : public testing::TestWithParam<Nothing> {};

TEST_P(ZrnNothing, GivesZeroTrianglesAndAnEmptyList) {
  int count = -1;
  EXPECT_TRUE(trianglesOf(GetParam().bytes, 0.01, &count).empty());
  EXPECT_EQ(count, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Files, ZrnNothing,
    testing::Values(Nothing{"PlanarSurface", kPlanar}, Nothing{"PolynomialSurface", kPolynomial},
                    Nothing{"MultipatchSurface", kMultipatch},
                    Nothing{"AllOtherSurfaces", kPlanar + kMultipatch + kPlanar},
                    Nothing{"CurvesAlone",
                            kPolyline3d + kArc + kPolynomialCurve + uvPolyline({{0, 0}})},
                    Nothing{"ScaleAlone", kScale2}, Nothing{"OtherText", "not a geometry file\n"}),
    korvo::test::rowName<Nothing>);

TEST(ZrnTriangles, CountIsThatOfTheList) {
  int count = 0;
  const Triangles triangles = trianglesOf(kPlane.text() + cylinder(50, 80, 4).text(), 0.01, &count);
  EXPECT_GT(count, 100);
  EXPECT_EQ(static_cast<std::size_t>(count), triangles.size());
}

TEST(ZrnTriangles, SameFileGivesTheSameTriangles) {
  const std::string bytes = torus(50, 10, 0, 360, 4, 4).text() + uvEllipse(.5, .5, .3, .3);
  EXPECT_EQ(trianglesOf(bytes, 0.1), trianglesOf(bytes, 0.1));
}

TEST(ZrnTriangles, TwoThreadsConvertAtOnce) {
  const std::string a = torus(50, 10, 0, 360, 4, 4).text();
  const std::string b = kPlane.text() + uvRectangle(.1, .1, .9, .9) + uvEllipse(.5, .5, .3, .3);
  const Triangles aloneA = trianglesOf(a, 0.1);
  const Triangles aloneB = trianglesOf(b, 0.1);
  Triangles together;
  std::thread other([&] { together = trianglesOf(a, 0.1); });
  EXPECT_EQ(trianglesOf(b, 0.1), aloneB);
  other.join();
  EXPECT_EQ(together, aloneA);
}

// --- faces

TEST(ZrnTriangles, WithoutTrimsTheFaceIsTheWholeRange) {
  const Triangles triangles = trianglesOf(kPlane.text());
  EXPECT_NEAR(areaOf(triangles), 8000, 1e-6);
  expectBox(triangles, 0, 100, 0, 80);
}

TEST(ZrnTriangles, TrimsThatAreNoCurvesOfThePlaneAreLeftOut) {
  const std::string surface = kPlane.text();
  const Triangles whole = trianglesOf(surface);
  ASSERT_FALSE(whole.empty());
  for (const std::string& trim : {kPolyline3d, kArc, kPolynomialCurve, kTrimmedPolynomial})
    EXPECT_EQ(trianglesOf(surface + trim), whole) << trim;
  EXPECT_EQ(trianglesOf(surface + kPolyline3d + kArc), whole);
}

TEST(ZrnTriangles, FacesComeInFileOrder) {
  const Triangles triangles =
      trianglesOf(rectangle(9, 9, {0, 0, 2}).text() + kPlanar + rectangle(9, 9, {0, 0, 1}).text());
  const auto isUpper = [](const UTri& t) { return t.p[0].z == 2; };
  EXPECT_TRUE(std::is_partitioned(triangles.begin(), triangles.end(), isUpper));
  EXPECT_TRUE(isUpper(triangles.front()));
  EXPECT_FALSE(isUpper(triangles.back()));
}

// u runs fastest in the file's list of poles: along x here, with three poles against two.
TEST(ZrnTriangles, FirstCountIsThatOfU) {
  ZrnSurface s = rectangle(100, 80);
  s.countU = 3;
  s.poles = {{0, 0, 0}, {50, 0, 0}, {100, 0, 0}, {0, 80, 0}, {50, 80, 0}, {100, 80, 0}};
  s.weights.assign(6, 1.0);
  s.knotsU = {0, 0, .5, 1, 1};
  EXPECT_NEAR(areaOf(trianglesOf(s.text())), 8000, 1e-6);
  expectBox(trianglesOf(s.text() + uvRectangle(0, 0, .5, 1)), 0, 50, 0, 80);
}

// Over a plane whose parameters are 0 to 4 in both directions and 10 mm each.
ZrnSurface widePlane() {
  ZrnSurface s = rectangle(40, 40);
  s.knotsU = s.knotsV = {0, 0, 4, 4};
  s.intervalU = s.intervalV = {0, 4};
  return s;
}

TEST(ZrnTriangles, PolesOfNurbsTrimsAreExchangedAndPointsOfPolylinesAreNot) {
  const std::string polyline = "4 1 2\n1 2\n3 2\n3 4\n1 2\n";
  expectBox(trianglesOf(widePlane().text() + polyline), 10, 30, 20, 40);
  const std::string ends = "1 0\n0 0\n0 1\n0 1\n6\n0\n0\n1\n2\n3\n3\n0\n";
  const std::string poles = "4 1 9\n1 2 0 1\n3 2 0 1\n3 4 0 1\n1 2 0 1\n";
  expectBox(trianglesOf(widePlane().text() + poles + ends), 20, 40, 10, 30);
  const std::string planar = "4 1 9\n1 2 1\n3 2 1\n3 4 1\n1 2 1\n";
  expectBox(trianglesOf(widePlane().text() + planar + ends), 20, 40, 10, 30);
}

// The third coordinate of a trimming curve's poles means nothing.
TEST(ZrnTriangles, HeightOfNurbsTrimsIsNotLookedAt) {
  const std::string ends = "1 0\n0 0\n0 1\n0 1\n6\n0\n0\n1\n2\n3\n3\n0\n";
  const std::string flat = "4 1 9\n1 2 0 1\n3 2 0 1\n3 4 0 1\n1 2 0 1\n";
  const std::string high = "4 1 9\n1 2 7 1\n3 2 nan 1\n3 4 1 1\n1 2 -9 1\n";
  EXPECT_EQ(trianglesOf(widePlane().text() + high + ends),
            trianglesOf(widePlane().text() + flat + ends));
}

// A quarter of a circle as the middle weight makes it; with weight 1 it is a parabola.
TEST(ZrnTriangles, WeightsOfNurbsTrimsCount) {
  NurbsTrim circle = ellipse(.5, .5, .4, .4);
  NurbsTrim parabolas = circle;
  parabolas.weights.assign(9, 1.0);
  // A parabola's arc fills two thirds of the triangle between its chord and its corner pole.
  const double square = 2 * .4 * .4 * 8000;
  const double corners = 4 * (.4 * .4 / 2) * 8000;
  EXPECT_NEAR(areaOf(trianglesOf(kPlane.text() + parabolas.text())), square + corners * 2 / 3, 10);
  EXPECT_NEAR(areaOf(trianglesOf(kPlane.text() + circle.text())), 3.14159265 * .16 * 8000, 10);
}

// --- rational or not

/// A quarter of a cylinder that says so by flags of its own.
ZrnSurface flagged(bool u, bool v) {
  ZrnSurface s = cylinder(50, 80, 1);
  s.isRationalU = u;
  s.isRationalV = v;
  return s;
}

TEST(ZrnTriangles, EitherFlagMakesWeightsCountInBothDirections) {
  const Triangles both = trianglesOf(flagged(true, true).text(), 0.1);
  ASSERT_FALSE(both.empty());
  EXPECT_EQ(trianglesOf(flagged(true, false).text(), 0.1), both);
  EXPECT_EQ(trianglesOf(flagged(false, true).text(), 0.1), both);
  EXPECT_NE(trianglesOf(flagged(false, false).text(), 0.1), both);
}

TEST(ZrnTriangles, WithoutAFlagWeightsAreNotLookedAt) {
  ZrnSurface plain = flagged(false, false);
  plain.weights.assign(6, 1.0);
  const Triangles expected = trianglesOf(plain.text(), 0.1);
  ASSERT_FALSE(expected.empty());
  for (const double weight : {2.0, 0.0, -1.0, kNan, kInf}) {
    plain.weights[2] = weight;
    EXPECT_EQ(trianglesOf(plain.text(), 0.1), expected) << weight;
  }
}

// The poles are points, not points multiplied by their weights: doubling all weights changes
// nothing.
TEST(ZrnTriangles, PolesAreNotMultipliedByTheirWeights) {
  ZrnSurface doubled = flagged(true, true);
  for (double& weight : doubled.weights) weight *= 2;
  EXPECT_NEAR(areaOf(trianglesOf(doubled.text(), 0.01)),
              areaOf(trianglesOf(flagged(true, true).text(), 0.01)), 1e-3);
}

// --- intervals

struct Interval {
  const char* name;
  zkin::ZRN_INTERVAL u;
  double x0, x1;
};

class ZrnInterval : public testing::TestWithParam<Interval> {};

TEST_P(ZrnInterval, RestrictsTheSurface) {
  ZrnSurface s = kPlane;
  s.intervalU = GetParam().u;
  expectBox(trianglesOf(s.text()), GetParam().x0, GetParam().x1, 0, 80);
}

INSTANTIATE_TEST_SUITE_P(Ends, ZrnInterval,
                         testing::Values(Interval{"Part", {.25, .75}, 25, 75},
                                         Interval{"PartReversed", {.75, .25}, 25, 75},
                                         Interval{"BeyondTheStart", {-5, .5}, 0, 50},
                                         Interval{"BeyondTheEnd", {.5, 5}, 50, 100},
                                         Interval{"Empty", {.5, .5}, 0, 100},
                                         Interval{"Elsewhere", {2, 3}, 0, 100},
                                         Interval{"NaN", {kNan, .5}, 0, 100},
                                         Interval{"Infinite", {0, kInf}, 0, 100}),
                         korvo::test::rowName<Interval>);

TEST(ZrnTriangles, IntervalOfVRestrictsTheOtherDirection) {
  ZrnSurface s = kPlane;
  s.intervalV = {.5, 1};
  expectBox(trianglesOf(s.text()), 0, 100, 40, 80);
}

// --- what is no surface

struct Spoilt {
  const char* name;
  std::function<void(ZrnSurface&)> spoil;
};

class ZrnSpoilt : public testing::TestWithParam<Spoilt> {};

// Far from the good face: it would lengthen the longest edge that stays if it counted.
TEST_P(ZrnSpoilt, SurfaceIsLeftOutAndTheRestGoesOn) {
  ZrnSurface bad = cylinder(50, 80, 1);
  for (UVec3d& pole : bad.poles) pole += {5000, 0, 0};
  const std::string good = rectangle(150, 10, {0, 0, 3}).text();
  ASSERT_GT(trianglesOf(bad.text(), 1).size(), 1u);
  GetParam().spoil(bad);
  const Triangles alone = trianglesOf(good);
  EXPECT_EQ(trianglesOf(bad.text() + good), alone);
  EXPECT_EQ(trianglesOf(good + bad.text()), alone);
  int count = -1;
  trianglesOf(bad.text(), 0.01, &count);
  EXPECT_EQ(count, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Surfaces, ZrnSpoilt,
    testing::Values(
        Spoilt{"DegreeZero", [](ZrnSurface& s) { s.degreeU = 0; }},
        Spoilt{"DegreeNegative", [](ZrnSurface& s) { s.degreeV = -1; }},
        Spoilt{"DegreeAsManyAsPoles", [](ZrnSurface& s) { s.degreeU = 3; }},
        Spoilt{"DegreeWhoseOrderOverflows", [](ZrnSurface& s) { s.degreeU = kHuge; }},
        Spoilt{"DegreeBeyondInt", [](ZrnSurface& s) { s.degreeV = 4294967297; }},
        Spoilt{"DegreeLargest",
               [](ZrnSurface& s) { s.degreeV = std::numeric_limits<long long>::max(); }},
        Spoilt{"DegreeSmallest",
               [](ZrnSurface& s) { s.degreeV = std::numeric_limits<long long>::min(); }},
        Spoilt{"OneKnotTooFewInU", [](ZrnSurface& s) { s.knotsU.pop_back(); }},
        Spoilt{"OneKnotTooFewInV", [](ZrnSurface& s) { s.knotsV.pop_back(); }},
        Spoilt{"NoKnots", [](ZrnSurface& s) { s.knotsU.clear(); }},
        Spoilt{"KnotsDecrease", [](ZrnSurface& s) { s.knotsU = {0, 0, 1, 0, 1, 1}; }},
        Spoilt{"KnotsAllEqual", [](ZrnSurface& s) { s.knotsV = {1, 1, 1, 1}; }},
        Spoilt{"KnotNan", [](ZrnSurface& s) { s.knotsU[1] = kNan; }},
        Spoilt{"KnotInfinite", [](ZrnSurface& s) { s.knotsV[3] = kInf; }},
        Spoilt{"PoleNan", [](ZrnSurface& s) { s.poles[4].y = kNan; }},
        Spoilt{"PoleInfinite", [](ZrnSurface& s) { s.poles[0].z = -kInf; }},
        Spoilt{"WeightZero", [](ZrnSurface& s) { s.weights[1] = 0; }},
        Spoilt{"WeightNegative", [](ZrnSurface& s) { s.weights[5] = -1; }},
        Spoilt{"WeightNan", [](ZrnSurface& s) { s.weights[0] = kNan; }},
        Spoilt{"WeightInfinite", [](ZrnSurface& s) { s.weights[0] = kInf; }}),
    korvo::test::rowName<Spoilt>);

TEST(ZrnTriangles, SurplusKnotsAreNotLookedAt) {
  ZrnSurface s = cylinder(50, 80, 1);
  const Triangles expected = trianglesOf(s.text(), 0.1);
  s.knotsU.insert(s.knotsU.end(), {-5, kNan, 7});
  s.knotsV.push_back(0);
  EXPECT_EQ(trianglesOf(s.text(), 0.1), expected);
}

struct SpoiltTrim {
  const char* name;
  std::string text;
};

std::string spoiltCircle(const std::function<void(NurbsTrim&)>& spoil) {
  NurbsTrim circle = ellipse(.5, .5, .3, .3);
  spoil(circle);
  return circle.text();
}

class ZrnSpoiltTrim : public testing::TestWithParam<SpoiltTrim> {};

TEST_P(ZrnSpoiltTrim, IsLeftOut) {
  const std::string surface = kPlane.text();
  EXPECT_EQ(trianglesOf(surface + GetParam().text), trianglesOf(surface));
  const std::string frame = uvRectangle(.1, .1, .9, .9);
  EXPECT_EQ(trianglesOf(surface + frame + GetParam().text), trianglesOf(surface + frame));
}

INSTANTIATE_TEST_SUITE_P(
    Curves, ZrnSpoiltTrim,
    testing::Values(
        SpoiltTrim{"DegreeZero", spoiltCircle([](NurbsTrim& c) { c.degree = 0; })},
        SpoiltTrim{"DegreeAsManyAsPoles", spoiltCircle([](NurbsTrim& c) { c.degree = 9; })},
        SpoiltTrim{"DegreeWhoseOrderOverflows",
                   spoiltCircle([](NurbsTrim& c) { c.degree = kHuge; })},
        SpoiltTrim{"DegreeLargest", spoiltCircle([](NurbsTrim& c) {
                     c.degree = std::numeric_limits<long long>::max();
                   })},
        SpoiltTrim{"KnotsTooFew", spoiltCircle([](NurbsTrim& c) { c.knots.pop_back(); })},
        SpoiltTrim{"KnotsDecrease", spoiltCircle([](NurbsTrim& c) { c.knots[4] = -1; })},
        SpoiltTrim{"KnotNan", spoiltCircle([](NurbsTrim& c) { c.knots[4] = kNan; })},
        SpoiltTrim{"PoleNan", spoiltCircle([](NurbsTrim& c) { c.poles[4].x = kNan; })},
        SpoiltTrim{"PoleInfinite", spoiltCircle([](NurbsTrim& c) { c.poles[2].y = kInf; })},
        SpoiltTrim{"WeightZero", spoiltCircle([](NurbsTrim& c) { c.weights[3] = 0; })},
        SpoiltTrim{"WeightNan", spoiltCircle([](NurbsTrim& c) { c.weights[3] = kNan; })},
        SpoiltTrim{"PolylineWithNan", uvPolyline({{.2, .2}, {.8, kNan}, {.8, .8}, {.2, .2}})},
        SpoiltTrim{"PolylineWithInfinity", uvPolyline({{.2, .2}, {kInf, .2}, {.8, .8}, {.2, .2}})},
        SpoiltTrim{"PolylineOfOnePoint", uvPolyline({{.2, .2}})},
        SpoiltTrim{"PolylineOfNone", "0 1 2\n"}),
    korvo::test::rowName<SpoiltTrim>);

TEST(ZrnTriangles, SurplusKnotsOfATrimAreNotLookedAt) {
  NurbsTrim circle = ellipse(.5, .5, .3, .3);
  const Triangles expected = trianglesOf(kPlane.text() + circle.text());
  circle.knots.push_back(7);
  EXPECT_EQ(trianglesOf(kPlane.text() + circle.text()), expected);
}

// --- the scale

TEST(ZrnTriangles, ScaleOfTheFileIsNotApplied) {
  const std::string surface = kPlane.text();
  const Triangles plain = trianglesOf(surface);
  ASSERT_FALSE(plain.empty());
  EXPECT_EQ(trianglesOf(kScale2 + surface), plain);
  EXPECT_EQ(trianglesOf(surface + kScale2), plain);
}

// --- the longest edge

/// A part of 150 x 10 x 10: four sides and the floor.
std::string part() {
  ZrnSurface side = rectangle(150, 10);
  side.poles = {{0, 0, 0}, {150, 0, 0}, {0, 0, 10}, {150, 0, 10}};
  return rectangle(150, 10).text() + side.text();
}

TEST(ZrnTriangles, NoEdgeIsLongerThanAFifteenthOfThePart) {
  const Triangles triangles = trianglesOf(part());
  EXPECT_NEAR(areaOf(triangles), 3000, 1e-6);
  EXPECT_LE(longestEdgeOf(triangles), 10.0);
}

TEST(ZrnTriangles, SubdivisionCanBeSwitchedOff) {
  EXPECT_TRUE(zkin::ZRN_GetSubdivision());
  const AsMeshed off;
  EXPECT_FALSE(zkin::ZRN_GetSubdivision());
  EXPECT_GT(longestEdgeOf(trianglesOf(part())), 10.0);
}

// L = 10 although the face is a thousand from the origin: the box starts with the first surface.
TEST(ZrnTriangles, OriginAloneDoesNotCount) {
  EXPECT_LE(longestEdgeOf(trianglesOf(rectangle(150, 10, {1000, 0, 0}).text())), 10.0);
}

// With one the box goes from 0 to 1150, so L = 76.7; the triangles' longest edges are 150 or so and
// are cut once.
TEST(ZrnTriangles, SurfaceOfAnotherKindCountsAsTheOrigin) {
  const std::string face = rectangle(150, 10, {1000, 0, 0}).text();
  for (const std::string& other : {kPlanar, kMultipatch}) {
    const double longest = longestEdgeOf(trianglesOf(face + other));
    EXPECT_LE(longest, 1150 / 15.0);
    EXPECT_GT(longest, 10.0);
    EXPECT_EQ(trianglesOf(other + face), trianglesOf(face + other));
  }
}

TEST(ZrnTriangles, CurvesDoNotCount) {
  const std::string face = rectangle(150, 10, {1000, 0, 0}).text();
  EXPECT_EQ(trianglesOf(kPolyline3d + face), trianglesOf(face));
}

// The face is 15 x 10, its surface 150 x 10.
TEST(ZrnTriangles, UntrimmedSurfacesCount) {
  const Triangles triangles = trianglesOf(rectangle(150, 10).text() + uvRectangle(0, 0, .1, 1));
  EXPECT_NEAR(areaOf(triangles), 150, 1e-6);
  EXPECT_GT(longestEdgeOf(triangles), 1.0);
  EXPECT_LE(longestEdgeOf(triangles), 10.0);
}

TEST(ZrnTriangles, AllSurfacesShareOneLength) {
  const Triangles triangles =
      trianglesOf(rectangle(15, 10).text() + rectangle(150, 10, {0, 100, 0}).text());
  EXPECT_LE(longestEdgeOf(triangles), 10.0);
  EXPECT_GT(longestEdgeOf(triangles), 1.0);
}

// --- the tolerance

TEST(ZrnTriangles, FinerTolerancesGiveMoreTriangles) {
  const std::string bytes = sphere(50, -30, 60, 1, 4).text();
  EXPECT_GT(trianglesOf(bytes, 0.01).size(), 2 * trianglesOf(bytes, 0.1).size());
}

struct Tolerance {
  const char* name;
  double value;
};

class ZrnTolerance : public testing::TestWithParam<Tolerance> {};

// The diagonal of the box of this half of a sphere is 150: the second try is within 15.
TEST_P(ZrnTolerance, ThatCannotBeMetIsTriedAgainAtATenthOfTheDiagonal) {
  const AsMeshed off;
  const std::string bytes = sphere(50, 0, 90, 1, 4).text();
  const Triangles triangles = trianglesOf(bytes, GetParam().value);
  EXPECT_EQ(triangles, trianglesOf(bytes, 15.0));
  ASSERT_FALSE(triangles.empty());
  EXPECT_LE(largest(triangles, [](const UVec3d& p) { return p.norm() - 50; }), 15.0001);
}

INSTANTIATE_TEST_SUITE_P(Values, ZrnTolerance,
                         testing::Values(Tolerance{"Zero", 0}, Tolerance{"Negative", -1},
                                         Tolerance{"NaN", kNan}),
                         korvo::test::rowName<Tolerance>);

// A ball of 20 m: a hundredth would take some ten million triangles, more than a face may have.
TEST(ZrnTriangles, FaceTooLargeForTheToleranceIsMeshedCoarsely) {
  const AsMeshed off;
  const Triangles triangles = trianglesOf(sphere(20000, -60, 60, 2, 4).text());
  ASSERT_FALSE(triangles.empty());
  EXPECT_LT(triangles.size(), 10000u);
  const double diagonal = std::hypot(40000, 40000, 40000 * std::sin(1.0471975511965976));
  EXPECT_LE(largest(triangles, [](const UVec3d& p) { return p.norm() - 20000; }), .1 * diagonal);
}

// --- faces alone

zkin::zrn::FaceRecord recordOf(const std::string& bytes) {
  const MemoryFile file(bytes);
  zkin::CGeomFileNodeList nodes;
  double scale = 0;
  EXPECT_EQ(zkin::ZRN_LoadFile(file.path().c_str(), nodes, scale), 0);
  return zkin::zrn::makeFaceRecord(*nodes.at(0));
}

TEST(ZrnFace, RecordHoldsTheSurfaceAndThePlanesCurvesInOrder) {
  const zkin::zrn::FaceRecord record = recordOf(kPlane.text() + uvRectangle(.1, .1, .9, .9) + kArc +
                                                uvEllipse(.5, .5, .3, .3) + kPolyline3d);
  EXPECT_TRUE(record.surface);
  ASSERT_EQ(record.trims.size(), 2u);
  EXPECT_TRUE(record.trims[0].isPolygon);
  EXPECT_FALSE(record.trims[1].isPolygon);
}

TEST(ZrnFace, WithoutASurfaceIsMinusOne) {
  zkin::zrn::FaceRecord record;
  Triangles triangles(2);
  EXPECT_EQ(zkin::zrn::faceToTriangles(record, 0.01, triangles), -1);
  EXPECT_TRUE(triangles.empty());
}

TEST(ZrnFace, GivesItsSurfaceAway) {
  zkin::zrn::FaceRecord record = recordOf(kPlane.text());
  Triangles triangles;
  const int count = zkin::zrn::faceToTriangles(record, 0.01, triangles);
  EXPECT_GE(count, 2);
  EXPECT_EQ(triangles.size(), static_cast<std::size_t>(count));
  EXPECT_EQ(zkin::zrn::faceToTriangles(record, 0.01, triangles), -1);
}

/// Two loops that cross: there is no telling what is inside.
std::string crossing() { return uvRectangle(.1, .1, .6, .6) + uvRectangle(.4, .4, .9, .9); }

TEST(ZrnFace, ThatCannotBeMeshedIsZero) {
  zkin::zrn::FaceRecord record = recordOf(kPlane.text() + crossing());
  Triangles triangles(2);
  EXPECT_EQ(zkin::zrn::faceToTriangles(record, 0.01, triangles), 0);
  EXPECT_TRUE(triangles.empty());
}

TEST(ZrnTriangles, OtherFacesGoOnWhenOneCannotBeMeshed) {
  const Triangles triangles =
      trianglesOf(kPlane.text() + crossing() + rectangle(100, 80, {0, 0, 5}).text());
  EXPECT_NEAR(areaOf(triangles), 8000, 1e-6);
  for (const UTri& t : triangles) ASSERT_EQ(t.p[0].z, 5);
}

TEST(ZrnFace, LeavesTheFittingSwitchAsItWas) {
  const bool before = CGeom_CNurbs::m_useFitting;
  for (const bool value : {true, false}) {
    CGeom_CNurbs::m_useFitting = value;
    zkin::zrn::FaceRecord record = recordOf(kPlane.text() + uvRectangle(.1, .1, .9, .9));
    Triangles triangles;
    EXPECT_GT(zkin::zrn::faceToTriangles(record, 0.01, triangles), 0);
    EXPECT_EQ(CGeom_CNurbs::m_useFitting, value);
  }
  CGeom_CNurbs::m_useFitting = before;
}

}  // namespace
