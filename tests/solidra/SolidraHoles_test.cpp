// Faces as parts have them: many large holes, slots, rims of many points, on every kind of surface.
#if !defined(KORVO_SOLIDRA_none)

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <random>

#include "tests/solidra/Faces.h"

namespace korvo::test {
namespace {

constexpr double kPi = std::numbers::pi;

// Sanitizers take twenty times as long: they see as much in fewer triangles.
#if defined(KORVO_SANITIZED)
constexpr double kFine = 0.2;
constexpr int kTries = 60;
#else
constexpr double kFine = 0.01;
constexpr int kTries = 400;
#endif

template <class Row>
std::string rowName(const testing::TestParamInfo<Row>& info) {
  return info.param.name;
}

// --- Surfaces in closed form: the way back to (u, v), the distance, and the area below any v

/// Smallest t of 0 .. 1 at which an increasing function reaches a value.
double reachedAt(const std::function<double(double)>& f, double value) {
  double low = 0, high = 1;
  for (int i = 0; i < 32; ++i) (f((low + high) / 2) < value ? low : high) = (low + high) / 2;
  return (low + high) / 2;
}

/// The angle in the rational quadratic quarters of a turned surface.
double angleAt(double u, int quarters) {
  const double whole = std::min(std::floor(u * quarters), quarters - 1.0);
  const double t = u * quarters - whole;
  const double w = 2 * std::sqrt(.5) * t * (1 - t);
  return (whole + std::atan2(w + t * t, w + (1 - t) * (1 - t)) / (kPi / 2)) * kPi / 2;
}

/// The angle on an arc of `degrees` (a rational quadratic), from its middle.
double arcAt(double v, double degrees) {
  const double half = degrees / 2 * kPi / 180;
  const double middle = 2 * v * (1 - v);  // the pole's weight cos(half) times its reach 1 / cos
  const double ends = (1 - v) * (1 - v) + v * v;
  return std::atan2((v * v - (1 - v) * (1 - v)) * std::sin(half), ends * std::cos(half) + middle);
}

struct Exact {
  std::string name;
  Patch patch;
  int quarters;  ///< Of the turn along u; 0 for the plane.
  std::function<double(const CGeom_XYZ&)> distance;
  std::function<double(const CGeom_XYZ&)> heightOf;  ///< Grows along v.
  std::function<double(double)> heightAt;            ///< The same at v.
  std::function<double(double)> areaBelow;           ///< For each radian (or u) of u.

  double turnAt(double u) const { return quarters == 0 ? u : angleAt(u, quarters); }

  CGeom2d_XY unitOf(const CGeom_XYZ& p) const {
    double turn = quarters == 0 ? p.x / 100 : std::atan2(p.y, p.x);
    if (quarters > 0 && turn < -0.1) turn += 2 * kPi;
    return {reachedAt([&](double u) { return turnAt(u); }, turn), reachedAt(heightAt, heightOf(p))};
  }
};

double radius(const CGeom_XYZ& p) { return std::hypot(p.x, p.y); }

const Exact kExact[] = {
    {"Plane", plane(100, 75), 0, [](const CGeom_XYZ& p) { return p.z; },
     [](const CGeom_XYZ& p) { return p.y; }, [](double v) { return 75 * v; },
     [](double v) { return 100 * 75 * v; }},
    {"Cylinder", cylinder(25, 75, 2), 2, [](const CGeom_XYZ& p) { return radius(p) - 25; },
     [](const CGeom_XYZ& p) { return p.z; }, [](double v) { return 75 * v; },
     [](double v) { return 25 * 75 * v; }},
    {"Cone", cone(30, 40, 2), 2,
     [](const CGeom_XYZ& p) { return ((radius(p) - 30) * 40 + p.z * 30) / 50; },
     [](const CGeom_XYZ& p) { return p.z; }, [](double v) { return 40 * v; },
     [](double v) { return 50 * 30 * (v - v * v / 2); }},
    {"Sphere", sphere(25, -60, 60, 2), 2,
     [](const CGeom_XYZ& p) { return std::hypot(p.x, p.y, p.z) - 25; },
     [](const CGeom_XYZ& p) { return std::atan2(p.z, radius(p)); },
     [](double v) { return arcAt(v, 120); },
     [](double v) { return 25 * 25 * std::sin(arcAt(v, 120)); }},
    {"Torus", torus(30, 10, -60, 60, 2), 2,
     [](const CGeom_XYZ& p) { return std::hypot(radius(p) - 30, p.z) - 10; },
     [](const CGeom_XYZ& p) { return std::atan2(p.z, radius(p) - 30); },
     [](double v) { return arcAt(v, 120); },
     [](double v) { return 10 * (30 * arcAt(v, 120) + 10 * std::sin(arcAt(v, 120))); }}};

// --- Holes: for each v that they reach, a stretch of u

struct Hole {
  double u, v, ru, rv;
  int corners;  ///< 0: an ellipse of four rational quarters; else a polygon on it.

  CurvePtr make(bool clockwise) const {
    if (corners == 0) return circle(u, v, ru, rv, clockwise);
    std::vector<CGeom2d_XY> points;
    for (int i = 0; i < corners; ++i) points.push_back(corner(clockwise ? -i : i));
    points.push_back(points.front());
    return polygon(points);
  }

  CGeom2d_XY corner(int i) const {
    const double angle = 2 * kPi * i / corners;
    return {u + ru * std::cos(angle), v + rv * std::sin(angle)};
  }
};

// Sums thin strips across an ellipse (polygons here have so many corners that they are one).
double holeArea(const Hole& h, const Exact& e) {
  constexpr int kStrips = 200;
  double area = 0;
  for (int i = 0; i < kStrips; ++i) {
    const auto at = [&](double k) { return -kPi / 2 + kPi * k / kStrips; };
    const double half = h.ru * std::cos(at(i + .5));
    const double from = h.v + h.rv * std::sin(at(i));
    const double to = h.v + h.rv * std::sin(at(i + 1));
    area += (e.areaBelow(to) - e.areaBelow(from)) * (e.turnAt(h.u + half) - e.turnAt(h.u - half));
  }
  return area;
}

struct Pattern {
  std::string name;
  std::vector<Hole> holes;
};

std::vector<Hole> grid(int n, double share, int corners, double flat = 1) {
  std::vector<Hole> out;
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j)
      out.push_back({.02 + .96 * (i + .5) / n, .02 + .96 * (j + .5) / n, .48 * share / n,
                     .48 * share * flat / n, corners});
  return out;
}

// Holes of all sizes at random places, none of which touches another.
std::vector<Hole> scattered(unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> any(0, 1);
  std::vector<Hole> out;
  for (int i = 0; i < kTries; ++i) {
    const double r = .1 * std::pow(any(random), 3) + .001;
    const Hole h{.03 + r + (.94 - 2 * r) * any(random), .03 + r + (.94 - 2 * r) * any(random), r,
                 r * (.1 + .9 * any(random)), i % 3 == 0 ? 200 : 0};
    if (std::none_of(out.begin(), out.end(), [&](const Hole& o) {
          return std::hypot(o.u - h.u, o.v - h.v) < o.ru + h.ru + 1e-6;
        }))
      out.push_back(h);
  }
  return out;
}

const Pattern kPatterns[] = {{"OneLarge", grid(1, .99, 0)},
                             {"EightByEight", grid(8, .9, 0)},
                             {"EightByEightNearlyTouching", grid(8, .9999, 0)},
                             {"TwelveByTwelveSmall", grid(12, .2, 0)},
                             {"Slots", grid(6, .95, 0, .02)},
                             {"HundredsOfCorners", grid(3, .9, 700)},
                             {"Scattered", scattered(1)},
                             {"ScatteredOtherwise", scattered(2)}};

struct Row {
  std::string name;
  Exact exact;
  Pattern pattern;
};

std::vector<Row> rows() {
  std::vector<Row> out;
  for (const Exact& e : kExact)
    for (const Pattern& p : kPatterns) out.push_back({e.name + p.name, e, p});
  return out;
}

// Twice the signed area over the longest side: how high the triangle stands, below 0 when folded.
double height(const std::array<CGeom2d_XY, 3>& p) {
  double longest = 0;
  for (int i = 0; i < 3; ++i)
    longest = std::max(longest, std::hypot(p[i].x - p[(i + 1) % 3].x, p[i].y - p[(i + 1) % 3].y));
  return ((p[1].x - p[0].x) * (p[2].y - p[0].y) - (p[1].y - p[0].y) * (p[2].x - p[0].x)) / longest;
}

class SolidraHoles : public testing::TestWithParam<Row> {
 protected:
  std::unique_ptr<CTopo_Face> make() const {
    std::vector<CurvePtr> curves;
    curves.push_back(rectangle(.01, .01, .99, .99));
    bool clockwise = false;
    for (const Hole& h : GetParam().pattern.holes) curves.push_back(h.make(clockwise ^= true));
    return face(GetParam().exact.patch, std::move(curves));
  }

  double area() const {
    const Exact& e = GetParam().exact;
    double out = (e.areaBelow(.99) - e.areaBelow(.01)) * (e.turnAt(.99) - e.turnAt(.01));
    for (const Hole& h : GetParam().pattern.holes) out -= holeArea(h, e);
    return out;
  }
};

TEST_P(SolidraHoles, AreMeshedWithTheirAreaTheirToleranceAndNoFold) {
  for (const double tolerance : {0.5, kFine}) {
    SCOPED_TRACE(tolerance);
    const auto f = make();
    ASSERT_TRUE(f->ValidateMesh(tolerance, tolerance));
    const Mesh mesh = meshOf(*f);
    if (tolerance < 0.02) {
      EXPECT_NEAR(areaOf(mesh), area(), 0.005 * area());
    }
    EXPECT_LE(largest(mesh, GetParam().exact.distance), tolerance);
    std::vector<CGeom2d_XY> unit;
    for (const CGeom_XYZ& p : mesh.vertices) unit.push_back(GetParam().exact.unitOf(p));
    double lowest = 1;
    double flattest = 1;
    for (const CMesh_Index& t : mesh.triangles) {
      lowest = std::min(lowest, height({unit[t.i0], unit[t.i1], unit[t.i2]}));
      flattest = std::min(flattest, areaOf(mesh, t));
    }
    EXPECT_GT(lowest, -1e-6);  // single precision
    EXPECT_GT(flattest, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Faces, SolidraHoles, testing::ValuesIn(rows()), rowName<Row>);

}  // namespace
}  // namespace korvo::test

#endif
