#include "platform/rotations/Solvers.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "platform/rotations/Angles.h"
#include "platform/rotations/Vec3.h"

namespace korvo::rotations {
namespace {

using namespace detail;

/// Half the angle between two unit vectors, from the chords to the one and to its opposite: near 0
/// and near half a turn neither loses the digits that a dot product does.
struct HalfAngle {
  double sine;
  double cosine;

  double wholeSine() const { return 2 * sine * cosine; }
  bool isAcute() const { return sine < cosine; }  ///< Of the whole angle.

  friend HalfAngle operator+(const HalfAngle& a, const HalfAngle& b) {
    return {a.sine * b.cosine + a.cosine * b.sine, a.cosine * b.cosine - a.sine * b.sine};
  }
  friend HalfAngle operator-(const HalfAngle& a, const HalfAngle& b) {
    return {a.sine * b.cosine - a.cosine * b.sine, a.cosine * b.cosine + a.sine * b.sine};
  }
};

HalfAngle halfAngle(const Vec3& a, const Vec3& b) {
  return {0.5 * length(a - b), 0.5 * length(a + b)};
}

/// Four unit directions and the sides of the triangle axis1, axis2, `from` after the first turn.
struct Task {
  Vec3 from;
  Vec3 to;
  Vec3 axis1;
  Vec3 axis2;
  HalfAngle w{};  ///< Between the axes.
  HalfAngle f{};  ///< From axis2 to `from`: opposite the corner at axis1.
  HalfAngle t{};  ///< From axis1 to `to`: opposite the corner at axis2.

  bool prepare() {
    for (Vec3* v : {&from, &to, &axis1, &axis2}) {
      if (!normalise(*v)) return false;
    }
    w = halfAngle(axis1, axis2);
    f = halfAngle(from, axis2);
    t = halfAngle(to, axis1);
    return true;
  }

  bool isParallel() const { return w.wholeSine() <= kOnAxis; }
  bool isFree1() const { return t.wholeSine() <= kOnAxis; }
  bool isFree2() const { return f.wholeSine() <= kOnAxis; }
};

/// Sines of half the perimeter and of what it exceeds the sides by. A negative one says that the
/// sides close no triangle, and by half the angle that is missing.
struct Sines {
  double perimeter;
  double overT;
  double overF;
  double overW;

  double least() const { return std::min({perimeter, overT, overF, overW}); }
};

/// Of sides that miss each other within kReach: those of the flat triangle.
Sines closed(const Sines& s) {
  return {std::max(s.perimeter, 0.0), std::max(s.overT, 0.0), std::max(s.overF, 0.0),
          std::max(s.overW, 0.0)};
}

Sines sinesOf(const Task& task) {
  const HalfAngle sum = task.w + task.f;
  const HalfAngle difference = task.w - task.f;
  return {(sum + task.t).sine, (sum - task.t).sine, (task.t + difference).sine,
          (task.t - difference).sine};
}

/// A corner angle (steps), by the tangent of its half: sqrt(adjacent / opposite).
double corner(double adjacent, double opposite) {
  return toSteps(2 * std::atan2(std::sqrt(adjacent), std::sqrt(opposite)));
}

/// The corner of a triangle whose two sides there lie on one line (steps).
double flatCorner(bool isAcute) { return isAcute ? 0.0 : kHalfTurn; }

/// Where `to` and `from` stand about their axis (steps), counted from the half plane of the other
/// axis.
struct Azimuths {
  double ofTo;
  double ofFrom;
};

/// The normal of both axes comes from their difference (or sum), which is exact where they are
/// close, and stays square to them.
Azimuths azimuthsOf(const Task& task) {
  const Vec3 apart = task.w.isAcute() ? task.axis2 - task.axis1 : task.axis2 + task.axis1;
  const Vec3 normal = cross(task.axis1, apart);
  return {toSteps(std::atan2(dot(task.to, normal), dot(task.to, cross(normal, task.axis1)))),
          toSteps(std::atan2(-dot(task.from, normal), dot(task.from, cross(task.axis2, normal))))};
}

TwoAngles pairOf(double steps1, double steps2) {
  return {toRadians(wrapped(steps1)), toRadians(wrapped(steps2))};
}

/// With the turned `from` on the left of the way from axis1 to axis2 (corner angles in steps, both
/// negative on the right).
TwoAngles pairOf(const Azimuths& azimuths, double corner1, double corner2) {
  return pairOf(azimuths.ofTo - corner1, -corner2 - azimuths.ofFrom);
}

TwoAnglesList one(const TwoAngles& pair) { return {1, {pair}}; }

/// The first axis could make any turn instead of the second. With `from` alone on the axes
/// `oneAxis` finds none: `to` is near enough as it is.
TwoAnglesList aboutParallelAxes(const Task& task) {
  const auto angle = oneAxis(task.from, task.to, task.axis1);
  return one({task.isFree1() ? kFreeAngle : angle.value_or(kFreeAngle), kFreeAngle});
}

TwoAnglesList withFreeAngle(const Task& task) {
  TwoAngles pair =
      pairOf(azimuthsOf(task), flatCorner(task.f.isAcute()), flatCorner(task.t.isAcute()));
  if (task.isFree1()) pair.a1 = kFreeAngle;
  if (task.isFree2()) pair.a2 = kFreeAngle;
  return one(pair);
}

/// Whether the corners to the left and right are one, full turns aside.
bool isFlat(double corner) {
  return 2 * std::min(corner, kHalfTurn - corner) * (std::numbers::pi / kHalfTurn) < kSameSolution;
}

bool comesBefore(const TwoAngles& a, const TwoAngles& b) {
  const double difference =
      (std::fabs(a.a1) + std::fabs(a.a2)) - (std::fabs(b.a1) + std::fabs(b.a2));
  return std::fabs(difference) <= kSameCost ? a.a2 > b.a2 : difference < 0;
}

TwoAnglesList onBothSides(const Task& task, const Sines& s) {
  const double corner1 = corner(s.overT * s.overW, s.perimeter * s.overF);
  const double corner2 = corner(s.overF * s.overW, s.perimeter * s.overT);
  const Azimuths azimuths = azimuthsOf(task);
  if (isFlat(corner1) && isFlat(corner2)) {
    return one(
        pairOf(azimuths, flatCorner(corner1 < kHalfTurn / 2), flatCorner(corner2 < kHalfTurn / 2)));
  }
  TwoAngles left = pairOf(azimuths, corner1, corner2);
  TwoAngles right = pairOf(azimuths, -corner1, -corner2);
  if (comesBefore(right, left)) std::swap(left, right);
  return {2, {left, right}};
}

}  // namespace

TwoAnglesList twoAxes(const Vec3& from, const Vec3& to, const Vec3& axis1, const Vec3& axis2) {
  Task task{from, to, axis1, axis2};
  if (!task.prepare()) return {};
  const Sines sines = sinesOf(task);
  if (2 * sines.least() < -kReach) return {};
  if (task.isParallel()) return aboutParallelAxes(task);
  if (task.isFree1() || task.isFree2()) return withFreeAngle(task);
  return onBothSides(task, closed(sines));
}

}  // namespace korvo::rotations
