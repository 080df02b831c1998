#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "geometry/ZrnTriangles.h"
#include "tests/support/MemoryFile.h"
#include "tests/support/ZrnText.h"

/// Exact surfaces and trimming curves as geometry files, and what can be read off triangles.
namespace korvo::test {

/// The name of a row of a table of tests.
template <class Row>
std::string rowName(const testing::TestParamInfo<Row>& info) {
  return info.param.name;
}

/// A NURBS surface as its file says it, so that tests can spoil one thing at a time.
struct ZrnSurface {
  int countU = 2, countV = 2;
  long long degreeU = 1, degreeV = 1;
  std::vector<zgeo::UVec3d> poles;  ///< u runs fastest.
  std::vector<double> weights;
  bool isRationalU = false, isRationalV = false;
  zkin::ZRN_INTERVAL intervalU{0, 1}, intervalV{0, 1};
  std::vector<double> knotsU{0, 0, 1, 1}, knotsV{0, 0, 1, 1};

  std::string text() const;

  /// The point at (u, v) by the recursive definition of B-splines.
  zgeo::UVec3d point(double u, double v) const;
};

/// A row of poles of a curve in the plane of (radius, height), to be turned about z.
struct Profile {
  struct Pole {
    double radius, height, weight;
  };
  std::vector<Pole> poles;
  int degree = 1;
  std::vector<double> knots{0, 0, 1, 1};
};

Profile lineProfile(double r0, double z0, double r1, double z1);

/// The arc of radius `r` about (radius, height), from and to in degrees, in `pieces` below 180
/// each.
Profile arcProfile(double radius, double height, double r, double from, double to, int pieces);

/// A profile along v, turned along u about z by so many quarters of a turn: u = 0 is the x axis.
ZrnSurface turned(const Profile& profile, int quarters);

/// A rectangle, u along x and v along y, from the point (x, y, z).
ZrnSurface rectangle(double width, double height, const zgeo::UVec3d& from = {});

ZrnSurface cylinder(double radius, double height, int quarters);
ZrnSurface cone(double radius, double height, int quarters);  ///< The apex at v = 1.
ZrnSurface sphere(double radius, double from, double to, int pieces, int quarters);
ZrnSurface torus(double ring, double tube, double from, double to, int pieces, int quarters);
ZrnSurface hill(double size, double height);  ///< Bicubic, of seven by seven poles.

/// A point of a parameter plane.
using Uv = zgeo::UVec2d;

std::string uvPolyline(const std::vector<Uv>& points);
std::string uvRectangle(double u0, double v0, double u1, double v1, bool clockwise = false);

/// A NURBS trimming curve; its text has v before u in each pole.
struct NurbsTrim {
  std::vector<Uv> poles;
  std::vector<double> weights;
  long long degree = 2;
  std::vector<double> knots;
  bool isPlanarForm = false;  ///< Three reals a pole instead of four.

  std::string text() const;
};

/// An ellipse as four rational quarters.
NurbsTrim ellipse(double u, double v, double ru, double rv, bool clockwise = false);
std::string uvEllipse(double u, double v, double ru, double rv, bool clockwise = false);

/// A closed chain of straight pieces as one NURBS curve of degree 1.
NurbsTrim linear(const std::vector<Uv>& points);

using Triangles = std::vector<zgeo::UTri>;

/// What a file of these bytes gives; `count`, when asked for, is the result of the conversion.
Triangles trianglesOf(const std::string& bytes, double tolerance = 0.01, int* count = nullptr);

/// No cutting up of long triangles while it lives: the mesh as it is.
class AsMeshed {
 public:
  AsMeshed() { zkin::ZRN_SetSubdivision(false); }
  ~AsMeshed() { zkin::ZRN_SetSubdivision(true); }
  AsMeshed(const AsMeshed&) = delete;
  AsMeshed& operator=(const AsMeshed&) = delete;
};

double areaOf(const zgeo::UTri& t);
double areaOf(const Triangles& triangles);

/// The volume of a closed body, outside where corners run counter-clockwise. Of an open one, a
/// third of the flux of the position vector.
double volumeOf(const Triangles& triangles);

double longestEdgeOf(const Triangles& triangles);

using Distance = std::function<double(const zgeo::UVec3d&)>;
double largestAtCorners(const Triangles& triangles, const Distance& distance);

/// The same over a grid of points on every triangle.
double largest(const Triangles& triangles, const Distance& distance);

double distanceTo(const zgeo::UTri& t, const zgeo::UVec3d& p);
double distanceTo(const Triangles& triangles, const zgeo::UVec3d& p);

}  // namespace korvo::test
