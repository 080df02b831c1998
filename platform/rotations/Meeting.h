#pragma once

#include <algorithm>
#include <cmath>

#include "platform/rotations/SinCos.h"
#include "platform/rotations/ThreeAxes.h"
#include "platform/rotations/Vec3.h"

/// Two circles around a line, the third axis of their frame: how far a point of the one is from
/// where a turn about the line can bring a point of the other.
namespace korvo::rotations::detail {

/// A point of a circle, its derivative by the angle, and the radius vector there, which is minus
/// the second one.
struct OnCircle {
  Vec3 point;
  Vec3 slope;
  Vec3 arm;

  OnCircle(const Circle& c, double angle) {
    const SinCos a = sinCos(angle);
    arm = a.cos * c.e + a.sin * c.f;
    slope = a.cos * c.f - a.sin * c.e;
    point = c.centre + arm;
  }
};

/// Dot product of what is square to the line.
inline double dotAcross(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1]; }

/// Distance from the line.
inline double radiusOf(const Vec3& p) { return std::sqrt(dotAcross(p, p)); }

/// A pair of points, and by how much they miss each other's circle around the line.
struct Meeting {
  OnCircle x;
  OnCircle y;
  double height;   ///< x is higher by (mm).
  double squares;  ///< Difference of the squared distances from the line (mm^2), without
                   ///< cancellation next to the line.
  double radii;    ///< Sum of these distances (mm).

  Meeting(const CirclePair& c, double a1, double a3)
      : x(c.x, a3),
        y(c.y, a1),
        height(x.point[2] - y.point[2]),
        squares(dotAcross(x.point - y.point, x.point + y.point)),
        radii(radiusOf(x.point) + radiusOf(y.point)) {}

  /// x is further from the line by (mm).
  double radius() const { return radii > 0 ? squares / radii : 0.0; }
  double missMm() const {
    const double r = radius();
    return std::sqrt(height * height + r * r);
  }
};

}  // namespace korvo::rotations::detail
