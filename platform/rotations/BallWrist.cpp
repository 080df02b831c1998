#include "platform/rotations/BallWrist.h"

#include <cmath>
#include <numbers>

#include "platform/rotations/Angles.h"
#include "platform/rotations/ArcTangent.h"
#include "platform/rotations/Vec3.h"

namespace korvo::rotations {
namespace {

using namespace detail;

/// The sines of a triangle that is regular are larger: its corners are as sure as 1e-12 degrees
/// wants them, and all conditions of `twoAxes` on singular ones are far off.
constexpr double kRegular = 1e-4;

Pair dotOf(const PairVec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Pair lengthOf(const PairVec3& a) { return sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]); }

Pair pairToSteps(Pair radians) { return rounded(radians * (kHalfTurn / std::numbers::pi)); }

/// `steps` is at most a full turn off.
Pair pairToRadians(Pair steps) {
  const Pair above = select(steps <= -kHalfTurn, steps + 2 * kHalfTurn, steps);
  const Pair wrapped = select(steps > kHalfTurn, steps - 2 * kHalfTurn, above);
  return wrapped / kHalfTurn * std::numbers::pi + 0.0;
}

}  // namespace

BallWrist::BallWrist(const Vec3& direction1, const Vec3& direction2, const Vec3& direction3) {
  const Vec3 normal = cross(direction1, direction2);
  const Vec3 normalBack = cross(direction3, direction2);
  first_ = {direction1, normal, cross(normal, direction1)};
  last_ = {direction3, normalBack, cross(normalBack, direction3)};
  azimuth_ =
      toSteps(std::atan2(-dot(direction3, normal), dot(direction3, cross(direction2, normal))));
  const double w = std::atan2(length(normal), dot(direction1, direction2));
  const double f = std::atan2(length(normalBack), dot(direction3, direction2));
  sumSine_ = std::sin((w + f) / 2);
  sumCosine_ = std::cos((w + f) / 2);
  differenceSine_ = std::sin((w - f) / 2);
  differenceCosine_ = std::cos((w - f) / 2);
  isRegular_ = length(normal) > kRegular && length(normalBack) > kRegular;
}

BallWrist::Solutions BallWrist::solve(const PairVec3& to, const PairVec3& back) const {
  const Vec3& k = first_.axis;
  const Pair tSine = 0.5 * lengthOf({to[0] - k[0], to[1] - k[1], to[2] - k[2]});
  const Pair tCosine = 0.5 * lengthOf({to[0] + k[0], to[1] + k[1], to[2] + k[2]});
  // Half the perimeter and what it exceeds the sides by: see `twoAxes`.
  const Pair perimeter = sumSine_ * tCosine + sumCosine_ * tSine;
  const Pair overT = sumSine_ * tCosine - sumCosine_ * tSine;
  const Pair overF = tSine * differenceCosine_ + tCosine * differenceSine_;
  const Pair overW = tSine * differenceCosine_ - tCosine * differenceSine_;
  const Pair smallest = least(least(perimeter, overT), least(overF, overW));

  Solutions s;
  s.isReached = smallest > kRegular;
  s.isRegular = s.isReached | (smallest < -kRegular);
  const Pair root = sqrt(abs(perimeter * overT * overF * overW));
  const auto corner = [&](Pair opposite) {
    return pairToSteps(2.0 * arcTangent(root, perimeter * opposite));
  };
  const Pair corner1 = corner(overF), corner2 = corner(overT), corner3 = corner(overW);
  const auto azimuthOf = [](const PairVec3& v, const Frame& frame) {
    return pairToSteps(arcTangent(dotOf(v, frame.normal), dotOf(v, frame.across)));
  };
  const Pair azimuth1 = azimuthOf(to, first_), azimuth3 = azimuthOf(back, last_);
  s.left = {pairToRadians(azimuth1 - corner1), pairToRadians(-corner2 - azimuth_),
            pairToRadians(-azimuth3 - corner3)};
  s.right = {pairToRadians(azimuth1 + corner1), pairToRadians(corner2 - azimuth_),
             pairToRadians(corner3 - azimuth3)};
  const Pair costLeft = abs(s.left.a1) + abs(s.left.a2);
  const Pair costRight = abs(s.right.a1) + abs(s.right.a2);
  const PairMask isTie = abs(costRight - costLeft) <= kSameCost;
  s.isRightFirst = (isTie & (s.right.a2 > s.left.a2)) | (~isTie & (costRight < costLeft));
  s.tilt = 2.0 * arcTangent(tSine, tCosine);
  return s;
}

}  // namespace korvo::rotations
