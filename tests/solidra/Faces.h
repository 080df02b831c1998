#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/solidra/CGeom2d_CNurbs.h"
#include "platform/solidra/CGeom2d_Polygon.h"
#include "platform/solidra/CGeom_CNurbs.h"
#include "platform/solidra/CGeom_SNurbs.h"
#include "platform/solidra/CStd_Precision.h"
#include "platform/solidra/CTopo_Face.h"
#include "platform/solidra/CTopo_Solid.h"

/// Exact surfaces and trimming curves, and what can be read off a mesh.
namespace korvo::test {

/// Everything the constructor of a surface takes, so that tests can spoil one thing at a time.
struct Patch {
  int countU = 0, orderU = 0, countV = 0, orderV = 0;
  bool periodicU = false, closedU = false, periodicV = false, closedV = false;
  std::vector<double> knotsU, knotsV;
  std::vector<CGeom_XYZ> poles;  ///< u runs fastest.
  std::vector<double> weights;
  double startU = 0, endU = 1, startV = 0, endV = 1;

  std::unique_ptr<CGeom_Surf> make() const;
};

/// A row of poles of a curve in the plane of (radius, height), to be turned about z.
struct ProfilePole {
  double radius, height, weight;
};

/// The arc of a circle about (radius, height), from and to in degrees, less than 180 apart.
std::vector<ProfilePole> arc(double radius, double height, double r, double from, double to);

/// A profile (a line of two poles or an arc of three) along v, turned along u about the z axis by
/// `quarters` quarters of a turn, exactly: u = 0 is the x axis, each quarter one knot span.
Patch turned(const std::vector<ProfilePole>& profile, int quarters);

/// A rectangle of the xy plane: u along x, v along y, both from 0 to 1.
Patch plane(double width, double height);

Patch cylinder(double radius, double height, int quarters);
Patch cone(double radius, double height, int quarters);  ///< The apex at v = 1.
Patch sphere(double radius, double from, double to, int quarters);
Patch torus(double ring, double tube, double from, double to, int quarters);

/// A bicubic hill over a square: poles on a grid of seven, their heights a smooth product.
Patch hill(double size, double height);

/// A trimming curve; the face takes it.
using CurvePtr = std::unique_ptr<CGeom2d_Curve>;

CurvePtr polygon(const std::vector<CGeom2d_XY>& points);
CurvePtr rectangle(double u0, double v0, double u1, double v1, bool clockwise = false);

/// A full circle of four rational quadratic quarters, or an ellipse.
CurvePtr circle(double u, double v, double ru, double rv, bool clockwise = false);

/// One quarter of it, from quarter * 90 degrees on.
CurvePtr quarter(double u, double v, double ru, double rv, int quarter, bool clockwise = false);

/// A face as a converter makes one: wire, pieces, edges, repair.
std::unique_ptr<CTopo_Face> face(const Patch& patch, std::vector<CurvePtr> curves = {});

/// The mesh in doubles.
struct Mesh {
  std::vector<CGeom_XYZ> vertices;
  std::vector<CMesh_Index> triangles;
};
Mesh meshOf(const CTopo_Face& face);

double areaOf(const Mesh& mesh, const CMesh_Index& triangle);
double areaOf(const Mesh& mesh);

/// Largest of `distance` over all points of a fine grid on every triangle: a function that knows
/// the exact surface, so that mesh and library are judged by neither.
double largest(const Mesh& mesh, const std::function<double(const CGeom_XYZ&)>& distance);

/// The same over the vertices alone.
double largestAtVertices(const Mesh& mesh, const std::function<double(const CGeom_XYZ&)>& distance);

}  // namespace korvo::test
