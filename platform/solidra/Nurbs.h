#pragma once

#include <memory>
#include <vector>

#include "platform/solidra/CGeom2d_XY.h"
#include "platform/solidra/CGeom_Bound.h"
#include "platform/solidra/CGeom_XYZ.h"
#include "platform/solidra/CStd_Array1.h"

/// The data behind the interface: checked once, then evaluated without any further check.
namespace solidra {

/// Highest degree: the mesher takes no higher one.
inline constexpr int kMaxDegree = 25;

/// Largest coordinate in mm: a thousand kilometres, far beyond any machine and far below overflow.
inline constexpr double kMaxCoordinate = 1e9;

/// Largest ratio of two weights: beyond it a pole no longer has a say within the rounding.
inline constexpr double kMaxWeightRatio = 1e6;

/// Knots nearer than this (relative to their range and size) are one: the mesher refuses closer
/// ones.
inline constexpr double kSameKnot = 1e-12;

/// The flat knots of one direction.
struct Knots {
  std::vector<double> values;  ///< count + degree + 1 of them.
  int degree = 0;
  int count = 0;  ///< Poles.

  double start() const { return values[static_cast<std::size_t>(degree)]; }
  double end() const { return values[static_cast<std::size_t>(count)]; }

  /// The index i with values[i] <= t < values[i + 1] inside the range; the last one at its end.
  int span(double t) const;

  /// The degree + 1 basis functions that are not zero on that span (Piegl and Tiller, The NURBS
  /// Book, 1997, algorithm A2.2), into `basis`.
  void basis(int span, double t, double* basis) const;

  /// Ends of the spans that are not empty, between `from` and `to`, these two included.
  std::vector<double> breaks(double from, double to) const;
};

/// Copies flat knots and checks them; false when they are none. Near-equal ones become equal.
bool makeKnots(const CStd_Array1<double>& values, int count, int order, Knots& out);

/// Whether there are no weights, or `count` good ones.
bool areWeights(const CStd_Array1<double>& weights, long long count);

/// A NURBS surface over start .. end of both directions.
struct Surface {
  Knots u;
  Knots v;
  std::vector<CGeom_XYZ> poles;  ///< u runs fastest.
  std::vector<double> weights;   ///< Empty: all are 1.
  CGeom2d_XY start;
  CGeom2d_XY end;

  /// The point at (u, v), which is moved into the range first.
  CGeom_XYZ point(double u, double v) const;

  /// The same for unit parameters: 0 .. 1 is start .. end. All that trims works in these.
  CGeom_XYZ unitPoint(const CGeom2d_XY& p) const;

  /// What a point costs, in some nanoseconds.
  int steps() const { return 20 + (u.degree + 2) * (v.degree + 2); }

  /// The box of the poles, which holds the surface.
  CGeom_Bound poleBound() const;
};

/// The tight box of a surface: samples on every span, the outermost ones followed to the extremes.
CGeom_Bound tightBound(const Surface& surface);

/// A NURBS curve or a polyline in the parameter plane. A polyline has no knots.
struct CurveShape {
  Knots knots;
  std::vector<CGeom2d_XY> poles;
  std::vector<double> weights;
};

/// A part of a shape; pieces of one curve share it.
struct Curve {
  std::shared_ptr<const CurveShape> shape;
  double start = 0;  ///< Parameter, or index of the first point of a polyline.
  double end = 0;    ///< Parameter, or index of the last point.

  bool isPolygon() const { return shape->knots.values.empty(); }

  /// The point of a NURBS curve at parameter t.
  CGeom2d_XY point(double t) const;
};

}  // namespace solidra
