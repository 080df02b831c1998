#pragma once

#include <array>

#include "platform/rotations/RotationMatrix.h"
#include "toolkit/model/Walk.h"

/// The steps of Walk.h for two positions at once: the same operations in the same order, so the
/// results are the same bit by bit.
namespace korvo {

using rotations::Pair;
using PairVec3 = std::array<Pair, 3>;

inline PairVec3 bothOf(const zgeo::UVec3d& v) {
  return {rotations::both(v.x), rotations::both(v.y), rotations::both(v.z)};
}

inline PairVec3 difference(const PairVec3& a, const PairVec3& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

inline PairVec3 scaled(const PairVec3& v, Pair s) { return {v[0] * s, v[1] * s, v[2] * s}; }

inline Pair dot(const PairVec3& a, const PairVec3& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline PairVec3 cross(const PairVec3& a, const PairVec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// What a walk needs of a joint, ready to use.
struct PairJoint {
  explicit PairJoint(const Joint& joint)
      : motion(joint.motion),
        place(joint.place),
        direction(bothOf(joint.direction)),
        point(bothOf(joint.point)),
        shift(bothOf(joint.direction * joint.length)),
        min(rotations::both(joint.min)),
        max(rotations::both(joint.max)) {
    rotations::Vec3 unit = {joint.direction.x, joint.direction.y, joint.direction.z};
    if (motion != Joint::Motion::turn || !rotations::makeUnit(unit)) return;
    direction = bothOf({unit[0], unit[1], unit[2]});
  }

  Joint::Motion motion;
  int place;
  PairVec3 direction;  ///< Of a turn made unit.
  PairVec3 point;
  PairVec3 shift;
  Pair min, max;
};

/// Where two positions place a body.
struct PairPlaced {
  std::array<PairVec3, 3> rows;
  PairVec3 origin;

  PairVec3 turned(const PairVec3& v) const {
    const auto times = [&v](const PairVec3& row) {
      return row[0] * v[0] + row[1] * v[1] + row[2] * v[2];
    };
    return {times(rows[0]), times(rows[1]), times(rows[2])};
  }

  /// By the transpose.
  PairVec3 turnedBack(const PairVec3& v) const {
    const auto times = [&](std::size_t j) {
      return rows[0][j] * v[0] + rows[1][j] * v[1] + rows[2][j] * v[2];
    };
    return {times(0), times(1), times(2)};
  }

  PairVec3 operator*(const PairVec3& p) const {
    const PairVec3 v = turned(p);
    return {v[0] + origin[0], v[1] + origin[1], v[2] + origin[2]};
  }

  static PairPlaced bothAt(const zgeo::UMatrix& m) {
    PairPlaced p;
    for (int i = 0; i < 3; ++i) {
      for (int j = 0; j < 3; ++j)
        p.rows[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)] = rotations::both(m(i, j));
    }
    p.origin = bothOf(m.getOrigin());
    return p;
  }

  /// One of either: of `a` the place `i`, of `b` the place `j` (0 or 1).
  static PairPlaced of(const PairPlaced& a, int i, const PairPlaced& b, int j) {
    PairPlaced p;
    for (std::size_t r = 0; r < 3; ++r) {
      for (std::size_t c = 0; c < 3; ++c) p.rows[r][c] = Pair{a.rows[r][c][i], b.rows[r][c][j]};
      p.origin[r] = Pair{a.origin[r][i], b.origin[r][j]};
    }
    return p;
  }
};

inline void turnBy(const PairJoint& joint, Pair angle, PairPlaced& placed) {
  const auto [x, y, z] = rotations::aboutUnit(joint.direction, rotations::sinCosWithin(angle));
  const PairVec3& point = joint.point;
  const auto times = [&point](const PairVec3& row) {
    return row[0] * point[0] + row[1] * point[1] + row[2] * point[2];
  };
  placed.origin = placed * PairVec3{point[0] - times(x), point[1] - times(y), point[2] - times(z)};
  for (PairVec3& row : placed.rows) {
    const Pair a = row[0], b = row[1], c = row[2];
    for (std::size_t j = 0; j < 3; ++j) row[j] = a * x[j] + b * y[j] + c * z[j];
  }
}

/// Turns are walked in pairs below this (degrees).
inline constexpr double kMostPairDegrees = 1e6;
static_assert(kMostPairDegrees * kDegToRad < rotations::kMostSinCos);

inline rotations::PairMask isWalkable(const PairJoint& joint, Pair value) {
  if (joint.motion != Joint::Motion::turn) return rotations::PairMask{-1, -1};
  return rotations::detail::abs(value) < kMostPairDegrees;
}

/// `value` in degrees or mm, walkable.
inline void moveBy(const PairJoint& joint, Pair value, PairPlaced& placed) {
  const PairVec3& d = joint.direction;
  switch (joint.motion) {
    case Joint::Motion::turn:
      return turnBy(joint, value * kDegToRad, placed);
    case Joint::Motion::slide:
      placed.origin = placed * scaled(d, value);
      return;
    default:
      placed.origin = placed * joint.shift;
  }
}

}  // namespace korvo
