#include "benchmarks/peers/TableAc.h"

#include <cmath>
#include <numbers>

namespace korvo::bench {

using zgeo::UMatrix;
using zgeo::UVec3d;

namespace {

constexpr double kDegree = std::numbers::pi / 180;
constexpr double kAxisY = -0.5, kAxisZ = 60;  // where A turns, mm
constexpr double kNose = 120;                 // height of the tool point at zero, mm

/// Rz(c) Rx(a), each a sine and a cosine.
struct Turn {
  explicit Turn(double a, double c)
      : sinA(std::sin(a)), cosA(std::cos(a)), sinC(std::sin(c)), cosC(std::cos(c)) {}

  // To the part's frame: A about its line first, then C.
  UVec3d apply(const UVec3d& p) const {
    const double y = p.y - kAxisY, z = p.z - kAxisZ;
    const double turned = cosA * y - sinA * z + kAxisY;
    return {cosC * p.x - sinC * turned, sinC * p.x + cosC * turned, sinA * y + cosA * z + kAxisZ};
  }

  // Back from it.
  UVec3d undo(const UVec3d& p) const {
    const double y = -sinC * p.x + cosC * p.y - kAxisY, z = p.z - kAxisZ;
    return {cosC * p.x + sinC * p.y, cosA * y + sinA * z + kAxisY, -sinA * y + cosA * z + kAxisZ};
  }

  double sinA, cosA, sinC, cosC;
};

/// The place at which the tip is reached with the rotary axes at `a` and `c` (radians).
TableAc::Entry placed(const UVec3d& tip, double a, double c) {
  const UVec3d at = Turn(a, c).undo(tip);
  return {at.x, at.y, at.z - kNose, a / kDegree, c / kDegree};
}

// Rz(c) Rx(a) z = (sin c sin a, -cos c sin a, cos a)
double angleC(const UVec3d& d, double a) {
  return a < 0 ? std::atan2(-d.x, d.y) : std::atan2(d.x, -d.y);
}

/// What is nearest to `from` of an angle and its full turns, all in degrees.
double near(double angle, double from) { return from + std::remainder(angle - from, 360.0); }

}  // namespace

UMatrix TableAc::motion(const Entry& at) {
  const Turn t(at.a * kDegree, at.c * kDegree);
  const UVec3d origin = t.apply({at.x, at.y, at.z + kNose});
  UMatrix m;
  m.set(t.cosC, -t.sinC * t.cosA, t.sinC * t.sinA, origin.x,  //
        t.sinC, t.cosC * t.cosA, -t.cosC * t.sinA, origin.y,  //
        0, t.sinA, t.cosA, origin.z,                          //
        0, 0, 0, 1);
  return m;
}

void TableAc::tool(const Entry& at, UVec3d& point, UVec3d& direction) {
  const Turn t(at.a * kDegree, at.c * kDegree);
  point = t.apply({at.x, at.y, at.z + kNose});
  direction = {t.sinC * t.sinA, -t.cosC * t.sinA, t.cosA};
}

TableAc::Entry TableAc::nearest(const Entry& from, const UVec3d& tip, const UVec3d& direction) {
  const double tilt = std::acos(direction.z);
  const double one = near(angleC(direction, tilt) / kDegree, from.c);
  const double other = near(angleC(direction, -tilt) / kDegree, from.c);
  const bool isOne = std::abs(one - from.c) <= std::abs(other - from.c);
  Entry out = placed(tip, isOne ? tilt : -tilt, (isOne ? one : other) * kDegree);
  out.a = near(out.a, from.a);
  return out;
}

void TableAc::solve(const UVec3d& tip, const UVec3d& direction) {
  count = 0;
  const double tilt = std::acos(direction.z);
  for (const double a : {tilt, -tilt}) add(placed(tip, a, angleC(direction, a)));
}

void TableAc::add(const Entry& at) {
  if (at.x < -300 || at.x > 300 || at.y < -255 || at.y > 255 || at.z < -20 || at.z > 440) return;
  for (const double a : {at.a, at.a < 0 ? at.a + 360 : at.a - 360}) {
    for (const double c : {at.c, at.c < 0 ? at.c + 360 : at.c - 360}) {
      entries[static_cast<std::size_t>(count++)] = {at.x, at.y, at.z, a, c};
    }
  }
}

}  // namespace korvo::bench
