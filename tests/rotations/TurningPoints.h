#pragma once

#include <cmath>
#include <ostream>
#include <random>

#include "platform/rotations/ThreeAxes.h"
#include "tests/rotations/Turning.h"

/// Turning of points about lines in long double, and arms to try ThreeAxes with.
namespace korvo::rotations {

inline void PrintTo(const ThreeAngles& t, std::ostream* out) {
  out->precision(17);
  *out << "(" << t.a1 << ", " << t.a2 << ", " << t.a3 << "; " << t.shoulder << ", " << t.elbow
       << ")";
}

}  // namespace korvo::rotations

namespace korvo::rotations::test {

inline Long3 longOf(const Vec3& v) { return {v[0], v[1], v[2]}; }

inline Long3 turnedAbout(const Line& line, const Long3& p, long double angle) {
  const Long3 o = longOf(line.point);
  const Long3 arm = {p[0] - o[0], p[1] - o[1], p[2] - o[2]};
  const Long3 turned = turnedL(arm, unitL(line.direction), angle);
  return {o[0] + turned[0], o[1] + turned[1], o[2] + turned[2]};
}

/// A free angle as a user might choose it.
inline double chosen(double angle, double choice) { return angle == kFreeAngle ? choice : angle; }

struct Arm {
  Vec3 from;
  Line l1, l2, l3;

  ThreeAxes solver() const { return {from, l1, l2, l3}; }
  double size() const { return solver().size(); }
  ThreeAnglesList to(const Vec3& target) const { return threeAxes(from, target, l1, l2, l3); }

  Long3 reached(double a1, double a2, double a3) const {
    const Long3 x = turnedAbout(l3, longOf(from), a3);
    return turnedAbout(l1, turnedAbout(l2, x, a2), a1);
  }
  Vec3 at(double a1, double a2, double a3) const { return rounded(reached(a1, a2, a3)); }

  double miss(const ThreeAngles& t, const Vec3& target, double choice = 0.0) const {
    const Long3 p = reached(chosen(t.a1, choice), chosen(t.a2, choice), chosen(t.a3, choice));
    return static_cast<double>(distanceL(p, longOf(target)));
  }
};

inline bool isSame(double a, double b, double tolerance) {
  return a == kFreeAngle || b == kFreeAngle || angleBetween(a, b) <= tolerance;
}

/// Whether the list has this triple; a free angle is every angle.
inline bool has(const ThreeAnglesList& list, double a1, double a2, double a3,
                double tolerance = 1e-6) {
  for (const ThreeAngles& t : list) {
    if (isSame(t.a1, a1, tolerance) && isSame(t.a2, a2, tolerance) && isSame(t.a3, a3, tolerance)) {
      return true;
    }
  }
  return false;
}

/// An upright first line, a level second one, both as usual on arms. `a1` is the distance of the
/// two, `lateral` what the third line's plane is aside; links `upper` and `fore`, the latter with
/// an elbow offset `a3`.
inline Arm usualArm(double a1, double lateral, double upper, double fore, double a3 = 0.0) {
  return {{a1 + a3, lateral, 400 + upper + fore},
          {{0, 0, 1}, {0, 0, 0}},
          {{0, 1, 0}, {a1, 0, 400}},
          {{0, 1, 0}, {a1, 0, 400 + upper}}};
}

/// The same arm elsewhere.
inline Arm placed(const Arm& arm, const Vec3& axis, double angle, const Vec3& by) {
  const Line turn{axis, {0, 0, 0}};
  const auto point = [&](const Vec3& p) {
    return plus(rounded(turnedAbout(turn, longOf(p), angle)), by);
  };
  const auto line = [&](const Line& l) {
    return Line{rounded(turnedAbout(turn, longOf(l.direction), angle)), point(l.point)};
  };
  return {point(arm.from), line(arm.l1), line(arm.l2), line(arm.l3)};
}

class Dice {
 public:
  explicit Dice(unsigned seed) : engine_(seed) {}

  double between(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(engine_);
  }
  double angle() { return between(-kPi, kPi); }
  bool coin() { return between(0, 1) < 0.5; }
  Vec3 point(double size) {
    return {between(-size, size), between(-size, size), between(-size, size)};
  }
  Vec3 direction() {
    for (;;) {
      const Vec3 v = point(1);
      if (length(v) > 0.1 && length(v) <= 1) return v;
    }
  }
  Line line(double size) { return {direction(), point(size)}; }

 private:
  std::mt19937_64 engine_;
};

/// `direction` turned aside by `angle`, anywhere.
inline Vec3 tilted(const Vec3& direction, double angle, Dice& dice) {
  const Vec3 k = unit(direction);
  const Vec3 aside = unit(cross(k, dice.direction()));
  return plus(scaled(k, std::cos(angle)), scaled(aside, std::sin(angle)));
}

}  // namespace korvo::rotations::test
