#pragma once

#include "platform/rotations/Pair.h"
#include "platform/rotations/RotationMatrix.h"
#include "platform/zgeo/UMatrix.h"
#include "platform/zgeo/UVec3d.h"

namespace zkin {

/// How far a chain has carried a body: its motion matrix by columns, two rows at once, so that a
/// walk keeps it in registers. Every step gives bit by bit what the same products of UMatrix give.
class Placement {
 public:
  zgeo::UVec3d operator*(const zgeo::UVec3d& p) const { return vectorOf(moved(p)); }

  zgeo::UMatrix matrix() const {
    zgeo::UMatrix m;
    m.set(x_.xy[0], y_.xy[0], z_.xy[0], origin_.xy[0],  //
          x_.xy[1], y_.xy[1], z_.xy[1], origin_.xy[1],  //
          x_.z[0], y_.z[0], z_.z[0], origin_.z[0],      //
          0, 0, 0, 1);
    return m;
  }

  /// The direction, turned, not normalised.
  zgeo::UVec3d turned(const zgeo::UVec3d& v) const { return vectorOf(sum(v.x, v.y, v.z)); }

  /// What is carried starts from another point.
  void slide(const zgeo::UVec3d& by) { origin_ = moved(by); }

  /// `matrix() * UMatrix::_rotation(axis, point, angle)`, by the angle of which `by` is made.
  [[gnu::always_inline]] void turn(const zgeo::UVec3d& axis, const zgeo::UVec3d& point,
                                   const korvo::rotations::SinCos& by) {
    const auto [a, b, c] = korvo::rotations::rotationMatrix({axis.x, axis.y, axis.z}, by);
    const auto times = [&point](const korvo::rotations::Vec3& row) {
      return row[0] * point.x + row[1] * point.y + row[2] * point.z;
    };
    origin_ = moved(point - zgeo::UVec3d(times(a), times(b), times(c)));
    const Column x = sum(a[0], b[0], c[0]), y = sum(a[1], b[1], c[1]);
    z_ = sum(a[2], b[2], c[2]);
    x_ = x, y_ = y;
  }

 private:
  using Pair = korvo::rotations::Pair;

  struct Column {
    Pair xy;
    Pair z;  // and a row that nothing reads
  };

  Column sum(double a, double b, double c) const {
    return {x_.xy * a + y_.xy * b + z_.xy * c, x_.z * a + y_.z * b + z_.z * c};
  }

  Column moved(const zgeo::UVec3d& p) const {
    const auto [xy, z] = sum(p.x, p.y, p.z);
    return {xy + origin_.xy, z + origin_.z};
  }

  static zgeo::UVec3d vectorOf(const Column& c) { return {c.xy[0], c.xy[1], c.z[0]}; }

  // A function's result, for GCC clears aggregates of constants in memory before it fills them.
  static Column column(double x, double y, double z) { return {Pair{x, y}, Pair{z}}; }

  Column x_ = column(1, 0, 0), y_ = column(0, 1, 0), z_ = column(0, 0, 1),
         origin_ = column(0, 0, 0);
};

}  // namespace zkin
