#include "platform/rotations/ThreeAxes.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/rotations/ArcTangent.h"
#include "platform/rotations/Vec3.h"

namespace korvo::rotations {
namespace {

using namespace detail;

constexpr double kPi = std::numbers::pi;

/// The size counts as this share of the coordinates at least: their rounding is in all distances.
constexpr double kSizeOfCoordinates = 0.01;

Vec3 footOn(const Line& line, const Vec3& p) {
  return line.point + dot(p - line.point, line.direction) * line.direction;
}

/// Any unit vector square to a unit vector.
Vec3 anySquareTo(const Vec3& k) {
  Vec3 v = std::fabs(k[0]) < 0.6 ? cross(k, {1, 0, 0}) : cross(k, {0, 1, 0});
  normalise(v);
  return v;
}

/// Sine of the angle between unit vectors and their normal, which comes from their difference (or
/// sum): exact where they are close, and square to both.
struct Between {
  Vec3 normal;
  double sine;

  Between(const Vec3& a, const Vec3& b) {
    normal = cross(a, dot(a, b) > 0 ? b - a : b + a);
    sine = length(normal);
  }
};

/// Within kSameSolution of its mirror image, full turns aside; 0 <= angle <= pi.
bool isFlat(double angle) { return 2 * std::min(angle, kPi - angle) < kSameSolution; }

double flat(double angle) { return angle < kPi / 2 ? 0.0 : kPi; }

bool isSame(double a, double b) { return std::fabs(inHalfTurns(a - b)) < kSameSolution; }

bool isSame(const ThreeAngles& a, const ThreeAngles& b) {
  return isSame(a.a1, b.a1) && isSame(a.a2, b.a2) && isSame(a.a3, b.a3);
}

}  // namespace

/// The triangle of line 2, line 3 and the point, seen along line 2.
struct ThreeAxes::Bent {
  double planar1, planar2;  ///< The point, from line 2.
  double radiusSq;
  double upTo;    ///< What the stretched elbow reaches further, squared; cut at 0 in reach.
  double downTo;  ///< What the folded one reaches nearer.
  double outMm;   ///< By how much the point is out of reach; negative: too near.

  bool isReached() const { return outMm == 0.0; }
};

ThreeAxes::ThreeAxes(const Vec3& from, const Line& line1, const Line& line2, const Line& line3) {
  Line l1 = line1, l2 = line2, l3 = line3;
  for (Line* l : {&l1, &l2, &l3}) {
    if (!normalise(l->direction) || !isFinite(l->point)) return;
  }
  if (!isFinite(from)) return;
  direction3_ = l3.direction;
  const Vec3 centre = footOn(l3, from);
  o2_ = footOn(l2, centre);
  placeLines(l1, l2);
  Vec3 e = from - centre;
  e = e - dot(e, direction3_) * direction3_;
  x_ = {inFrame2(centre - o2_), inFrame2(e), inFrame2(cross(direction3_, e))};
  x_.centre[2] = 0.0;  // o2 is its foot
  size_ = length(o2_ - o1_) + length(x_.centre) + length(e);
  for (const Vec3& p : {from, l1.point, l2.point, l3.point}) {
    size_ = std::max(size_, kSizeOfCoordinates * length(p));
  }
  isValid_ = size_ < 1e100 && (size_ > 1e-100 || size_ == 0.0);
  measureElbow();
}

void ThreeAxes::placeLines(const Line& line1, const Line& line2) {
  direction1_ = line1.direction;
  direction2_ = line2.direction;
  o1_ = footOn(line1, o2_);
  const Between b(direction1_, direction2_);
  cosine_ = dot(direction1_, direction2_);
  if (b.sine > kOnAxis) {
    sine_ = b.sine;
    cotangent_ = cosine_ / sine_;
    normal_ = b.normal / b.sine;
  } else {
    cosine_ = std::copysign(1.0, cosine_);
    normal_ = anySquareTo(direction1_);
  }
  across_ = cross(normal_, direction1_);
  level2_ = cross(normal_, direction2_);
  offsetAcross_ = dot(o2_ - o1_, across_);
  offsetNormal_ = dot(o2_ - o1_, normal_);
}

void ThreeAxes::measureElbow() {
  const Vec3& c = x_.centre;
  const Vec3& e = x_.e;
  upper_ = std::hypot(c[0], c[1]);
  fore_ = std::hypot(e[0], e[1]);
  sumSq_ = (upper_ + fore_) * (upper_ + fore_);
  differenceSq_ = (upper_ - fore_) * (upper_ - fore_);
  squares_ = upper_ * upper_ + fore_ * fore_;
  bias_ = (upper_ - fore_) * (upper_ + fore_);
  azimuthUpper_ = arcTangent(c[1], c[0]);
  bend0_ = arcTangent(c[0] * e[1] - c[1] * e[0], c[0] * e[0] + c[1] * e[1]);
  sense3_ = dot(direction2_, direction3_) < 0 ? -1.0 : 1.0;
  const bool hasElbow = std::min(upper_, fore_) > kOnLineOfSize * size_;
  isUsual_ = hasElbow && sine_ > 0 && Between(direction2_, direction3_).sine <= kOnAxis;
}

Vec3 ThreeAxes::inFrame2(const Vec3& v) const {
  return {dot(v, level2_), dot(v, normal_), dot(v, direction2_)};
}

ThreeAxes::Bent ThreeAxes::bent(double planar1, double planar2) const {
  const double radiusSq = planar1 * planar1 + planar2 * planar2;
  Bent b{planar1, planar2, radiusSq, sumSq_ - radiusSq, radiusSq - differenceSq_, 0.0};
  if (b.upTo >= 0 && b.downTo >= 0) return b;
  const double radius = std::sqrt(radiusSq);
  const double over = b.upTo < 0 ? radius - (upper_ + fore_) : radius - std::fabs(upper_ - fore_);
  if (std::fabs(over) > kReachOfSize * size_) b.outMm = over;
  b.upTo = std::max(b.upTo, 0.0);
  b.downTo = std::max(b.downTo, 0.0);
  return b;
}

/// Sides and area of the triangle give the corners at line 3 (from stretched) and line 2.
void ThreeAxes::addElbows(const ThreeAngles& shoulder, const Bent& b, ThreeAnglesList& list) const {
  if (!b.isReached()) return;
  const double area = std::sqrt(b.upTo * b.downTo);  // four times it
  double bend = arcTangent(area, b.radiusSq - squares_);
  double atLine2 = arcTangent(area, b.radiusSq + bias_);
  const double a2 = arcTangent(b.planar2, b.planar1) - azimuthUpper_;
  const double onLine2 = kOnLineOfSize * size_;
  const bool isFree2 = b.radiusSq <= onLine2 * onLine2;
  const bool isOne = isFree2 || (isFlat(bend) && isFlat(atLine2));
  if (isOne) {
    bend = isFree2 ? kPi : flat(bend);
    atLine2 = flat(atLine2);
  }
  for (const int elbow : {1, -1}) {
    if (isOne && elbow < 0) break;
    ThreeAngles& entry = list.solutions[list.count++];
    entry = shoulder;
    entry.a2 = isFree2 ? kFreeAngle : inHalfTurns(a2 - elbow * atLine2);
    entry.a3 = inHalfTurns(sense3_ * (elbow * bend - bend0_));
    entry.elbow = elbow;
    entry.elbowRad = std::min(bend, kPi - bend);
  }
}

/// Where the first turn has to bring the target: on either side of line 1.
struct ThreeAxes::Shoulder {
  double phi, psi;  ///< Azimuths of the target and, on the positive side, of its place.
  double aside;     ///< From line 1, along the normal (mm).
  double planar1;   ///< As in Bent.
  double across;    ///< From line 1, square to the normal (mm).
  bool isFree = false;

  ThreeAngles at(int side) const {
    const double a1 = isFree ? kFreeAngle : inHalfTurns(phi - side * psi);
    return {a1, 0.0, 0.0, side, 1, aside, 0.0};
  }
};

void ThreeAxes::addSide(const Shoulder& s, int side, ThreeAnglesList& list) const {
  addElbows(s.at(side), bent(s.planar1, side * s.aside - offsetNormal_), list);
}

void ThreeAxes::addSides(const Shoulder& s, ThreeAnglesList& list) const {
  if (s.isFree) return addSide(s, 1, list);
  addSide(s, 1, list);
  const int half = list.count;
  addSide(s, -1, list);
  if (!isFlat(s.psi) || list.count != 2 * half) return;
  for (int i = 0; i < half; ++i) {
    if (!isSame(list.solutions[i], list.solutions[half + i])) return;
  }
  list.count = 0;
  addSide({s.phi, flat(s.psi), 0.0, s.planar1, s.across}, 1, list);
}

/// A target on both limits at once: the elbow flat while the shoulder's sides nearly are one. There
/// the square root makes much of what a target misses; the elbow's limit tells the side better. Of
/// two sides out of reach one is added, and one beside that of the list.
void ThreeAxes::addAtLimits(const Shoulder& s, double distance, ThreeAnglesList& list) const {
  const int found = list.count;
  for (const int side : {1, -1}) {
    const Bent b = bent(s.planar1, side * s.aside - offsetNormal_);
    if (b.isReached()) continue;
    const double limitSq = b.outMm > 0 ? sumSq_ : differenceSq_;
    const double planar2 = std::sqrt(std::max(limitSq - s.planar1 * s.planar1, 0.0));
    const double normal = std::copysign(planar2, b.planar2) + offsetNormal_,
                 aside = std::fabs(normal);
    const double missMm = std::fabs(aside - s.aside) * (aside + s.aside) / (2 * distance);
    const int limitSide = normal < 0 ? -1 : 1;
    if (missMm > kReachOfSize * size_ || (found > 0 && limitSide != side)) continue;
    addSide({s.phi, arcTangent(aside, s.across), aside, s.planar1, s.across}, limitSide, list);
    if (side > 0) {
      const auto begin = list.solutions.begin();
      std::rotate(begin, begin + found, begin + list.count);
    }
    return;
  }
}

/// Both sides are out of reach: by the one that is nearer.
Reach ThreeAxes::whyNot(const Shoulder& s) const {
  const double front = bent(s.planar1, s.aside - offsetNormal_).outMm;
  const double back = bent(s.planar1, -s.aside - offsetNormal_).outMm;
  const double least = std::fabs(front) <= std::fabs(back) ? front : back;
  return least > 0 ? Reach::tooFar : Reach::tooNear;
}

ThreeAnglesList ThreeAxes::solveUsual(const Vec3& to) const {
  ThreeAnglesList list;
  const Vec3 q = to - o1_;
  const double along = dot(q, direction1_);
  const double u = dot(q, across_), n = dot(q, normal_);
  const double distanceSq = u * u + n * n;
  const double distance = std::sqrt(distanceSq);
  list.fromAxis1Mm = distance;

  // Turned back, the target is as high along line 2 as its foot o2.
  double across = offsetAcross_ - cotangent_ * along;
  const double asideSq = distanceSq - across * across;
  if (asideSq < 0) {
    const double shortMm = sine_ * (std::fabs(across) - distance);
    list.reach = Reach::tooCloseToAxis1;
    if (shortMm > kReachOfSize * size_) return list;
    across = std::copysign(distance, across);
  }
  const double aside = std::sqrt(std::max(asideSq, 0.0));
  const double planar1 = cosine_ * (across - offsetAcross_) - sine_ * along;
  const Shoulder shoulder{arcTangent(n, u), arcTangent(aside, across),        aside, planar1,
                          across,           distance <= kOnLineOfSize * size_};
  addSides(shoulder, list);
  if (list.count <= 2 && distance > 0) addAtLimits(shoulder, distance, list);
  list.reach = list.count > 0 ? Reach::reached : whyNot(shoulder);
  return list;
}

/// The frame of line 1 is seen from that of line 2 through the angle between the lines.
CirclePair ThreeAxes::circlesTo(const Vec3& to) const {
  const Vec3 q = to - o1_;
  const double along = dot(q, direction1_);
  const double u = dot(q, across_), n = dot(q, normal_);
  const double cu = -offsetAcross_;
  const Vec3 centre = {cosine_ * cu - sine_ * along, -offsetNormal_, sine_ * cu + cosine_ * along};
  const Vec3 e = {cosine_ * u, n, sine_ * u};
  const Vec3 f = {cosine_ * n, -u, sine_ * n};
  return {x_, {centre, e, f}, size_, sine_, sense3_ < 0};
}

ThreeAnglesList ThreeAxes::solveAny(const Vec3& to) const {
  const CirclePair circles = circlesTo(to);
  ThreeAnglesList list = solveCircles(circles);
  list.fromAxis1Mm = length(circles.y.e);
  list.reach = list.count > 0 ? Reach::reached : Reach::outOfReach;
  return list;
}

ThreeAnglesList ThreeAxes::solutions(const Vec3& to) const {
  if (!isValid_ || !isFinite(to)) return {};
  return isUsual_ ? solveUsual(to) : solveAny(to);
}

ThreeAnglesList ThreeAxes::solve(const Vec3& to) const {
  ThreeAnglesList list = solutions(to);
  if (list.count == 0) list.missMm = nearest(to).missMm;
  return list;
}

NearestAngles ThreeAxes::nearest(const Vec3& to) const {
  if (!isValid_ || !isFinite(to)) return {};
  return nearestOfCircles(circlesTo(to));
}

ThreeAnglesList threeAxes(const Vec3& from, const Vec3& to, const Line& line1, const Line& line2,
                          const Line& line3) {
  return ThreeAxes(from, line1, line2, line3).solve(to);
}

}  // namespace korvo::rotations
