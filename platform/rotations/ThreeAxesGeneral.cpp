#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <utility>

#include "platform/rotations/ArcTangent.h"
#include "platform/rotations/Meeting.h"
#include "platform/rotations/ThreeAxes.h"
#include "platform/rotations/TrigPolynomial.h"
#include "platform/rotations/Vec3.h"

namespace korvo::rotations::detail {
namespace {

/// cos a3, sin a3, cos a1, sin a1.
using Vec4 = std::array<double, 4>;

double dot4(const Vec4& a, const Vec4& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
}
double length4(const Vec4& v) { return std::sqrt(dot4(v, v)); }
/// a + s b
Vec4 sum4(const Vec4& a, double s, const Vec4& b) {
  return {a[0] + s * b[0], a[1] + s * b[1], a[2] + s * b[2], a[3] + s * b[3]};
}
Vec4 scaled4(double s, const Vec4& v) { return {s * v[0], s * v[1], s * v[2], s * v[3]}; }

/// row . v = value (mm)
struct Equation {
  Vec4 row;
  double value;

  double length() const { return length4(row); }
};

Equation heights(const CirclePair& c) {
  return {{c.x.e[2], c.x.f[2], -c.y.e[2], -c.y.f[2]}, c.y.centre[2] - c.x.centre[2]};
}

/// Halved, and divided by the size so as to be in mm.
Equation distances(const CirclePair& c) {
  const Vec3 &x = c.x.centre, &y = c.y.centre;
  const double between = dot(y - x, y + x) + dot(c.y.e, c.y.e) - dot(c.x.e, c.x.e);
  const Vec4 row = {dot(x, c.x.e), dot(x, c.x.f), -dot(y, c.y.e), -dot(y, c.y.f)};
  return {scaled4(1 / c.size, row), 0.5 * between / c.size};
}

/// `e` less what `n` of length 1 says of it.
Equation without(const Equation& e, const Equation& n) {
  const double part = dot4(e.row, n.row);
  return {sum4(e.row, -part, n.row), e.value - part * n.value};
}

Equation unit(const Equation& e) {
  const double s = 1 / e.length();
  return {scaled4(s, e.row), s * e.value};
}

/// A unit vector square to the given ones.
template <std::size_t N>
Vec4 squareTo(const std::array<Vec4, N>& units) {
  Vec4 best{};
  for (int i = 0; i < 4; ++i) {
    Vec4 v{};
    v[i] = 1;
    for (int twice = 0; twice < 2; ++twice) {
      for (const Vec4& u : units) v = sum4(v, -dot4(v, u), u);
    }
    if (length4(v) > length4(best)) best = v;
  }
  return scaled4(1 / length4(best), best);
}

/// The solutions of p0 cos + p1 sin = value, one or two; the nearest angle where it has none.
struct Roots {
  double middle;
  double half;

  Roots(double p0, double p1, double value)
      : middle(arcTangent(p1, p0)),
        half(arcTangent(std::sqrt(std::max(p0 * p0 + p1 * p1 - value * value, 0.0)), value)) {}

  std::array<double, 2> both() const { return {middle + half, middle - half}; }
};

/// A pair of angles on its way to be a solution.
struct Pair {
  double a1;
  double a3;
};

/// The plane of both equations, and the circle in it where |v1|^2 + |v3|^2 = 2.
struct PlaneCircle {
  Vec4 centre, w1, w2;
  double radius;

  PlaneCircle(const Equation& n1, const Equation& n2)
      : centre(sum4(scaled4(n1.value, n1.row), n2.value, n2.row)),
        w1(squareTo<2>({n1.row, n2.row})),
        w2(squareTo<3>({n1.row, n2.row, w1})),
        radius(std::sqrt(std::max(2 - dot4(centre, centre), 0.0))) {}

  Pair at(double angle) const {
    const SinCos a = sinCos(angle);
    const Vec4 v = sum4(sum4(centre, radius * a.cos, w1), radius * a.sin, w2);
    return {arcTangent(v[3], v[2]), arcTangent(v[1], v[0])};
  }

  /// Half of |v3|^2 - |v1|^2.
  TrigPolynomial difference() const {
    const auto half = [](const Vec4& a, const Vec4& b) {
      return 0.5 * ((a[0] * b[0] + a[1] * b[1]) - (a[2] * b[2] + a[3] * b[3]));
    };
    const double r2 = radius * radius, h1 = half(w1, w1), h2 = half(w2, w2);
    return {half(centre, centre) + 0.5 * r2 * (h1 + h2), 2 * radius * half(centre, w1),
            2 * radius * half(centre, w2), 0.5 * r2 * (h1 - h2), r2 * half(w1, w2)};
  }
};

/// An equation around a pair of angles, up to the second order, in their scaled differences.
struct Local {
  double value, by1, by3, by11, by33;

  double slopeSq() const { return by1 * by1 + by3 * by3; }
};

Local localHeights(const Meeting& m, double scale1, double scale3) {
  return {m.height, -m.y.slope[2] * scale1, m.x.slope[2] * scale3, m.y.arm[2] * scale1 * scale1,
          -m.x.arm[2] * scale3 * scale3};
}

Local localSquares(const Meeting& m, double scale1, double scale3, double perSquare) {
  const OnCircle &x = m.x, &y = m.y;
  const double curve1 = dotAcross(y.slope, y.slope) - dotAcross(y.point, y.arm);
  const double curve3 = dotAcross(x.slope, x.slope) - dotAcross(x.point, x.arm);
  return {perSquare * m.squares, -2 * perSquare * scale1 * dotAcross(y.point, y.slope),
          2 * perSquare * scale3 * dotAcross(x.point, x.slope),
          -2 * perSquare * scale1 * scale1 * curve1, 2 * perSquare * scale3 * scale3 * curve3};
}

/// Where `good` is 0 next to a pair of angles, `other` is a parabola along it.
struct Parabola {
  double n1, n3;           ///< Along good = 0.
  double g1, g3;           ///< Across, to good = 0 for a step along.
  double good, goodCurve;  ///< Over the slope, squared.
  double value, slope, curve;

  Parabola(const Local& a, const Local& b) {
    const double slopeSq = a.slopeSq(), norm = std::sqrt(slopeSq);
    n1 = -a.by3 / norm;
    n3 = a.by1 / norm;
    g1 = a.by1;
    g3 = a.by3;
    const double bend = a.by11 * n1 * n1 + a.by33 * n3 * n3;
    const double share = (b.by1 * g1 + b.by3 * g3) / slopeSq;
    good = a.value / slopeSq;
    goodCurve = bend / slopeSq;
    value = b.value - share * a.value;
    slope = (b.by1 - share * g1) * n1 + (b.by3 - share * g3) * n3;
    curve = (b.by11 * n1 * n1 + b.by33 * n3 * n3) - share * bend;
  }

  Pair at(double step, const Pair& p, double scale1, double scale3) const {
    const double back = -(good + 0.5 * goodCurve * step * step);
    return {p.a1 + (step * n1 + back * g1) * scale1, p.a3 + (step * n3 + back * g3) * scale3};
  }
};

class Search {
 public:
  explicit Search(const CirclePair& c)
      : c_(c),
        isFree1_(length(c.y.e) <= onLine()),
        isFree3_(length(c.x.e) <= onLine()),
        scale1_(isFree1_ ? 0.0 : c.size / length(c.y.e)),
        scale3_(isFree3_ ? 0.0 : c.size / length(c.x.e)) {}

  ThreeAnglesList run();

 private:
  double onLine() const { return kOnLineOfSize * c_.size; }
  double reach() const { return kReachOfSize * c_.size; }

  void runOneAngle(const Equation& e, const Equation& other);
  void runCurve(const Equation& only);
  void runPoints(const Equation& n1, const Equation& n2, double sure);
  void runWholeCircle(const PlaneCircle& circle);
  void split(const Pair& near);
  void splitConics(const Pair& near);
  void runNearest();
  Pair polished(Pair p) const;
  bool improve(Pair& p, Meeting& m) const;
  void add(const Pair& start);
  ThreeAngles entryOf(const Pair& p, const Meeting& m) const;
  bool isKnown(const ThreeAngles& t) const;

  CirclePair c_;
  bool isFree1_, isFree3_;
  double scale1_, scale3_;  ///< Zero where the angle stays as it is.
  ThreeAnglesList list_;
};

/// One step by the derivatives, shortened until it helps.
bool Search::improve(Pair& p, Meeting& m) const {
  const Local h = localHeights(m, scale1_, scale3_);
  const Local r = localSquares(m, scale1_, scale3_, m.radii > 0 ? 1 / m.radii : 0.0);
  const double det = h.by1 * r.by3 - h.by3 * r.by1;
  const double norm1 = h.by1 * h.by1 + r.by1 * r.by1;
  const double norm3 = h.by3 * h.by3 + r.by3 * r.by3;
  double b1 = 0, b3 = 0;
  if (std::fabs(det) > 1e-14 * std::sqrt(norm1 * norm3)) {
    b1 = (h.by3 * r.value - r.by3 * h.value) / det;
    b3 = (r.by1 * h.value - h.by1 * r.value) / det;
  } else if (norm1 > norm3) {
    b1 = -(h.value * h.by1 + r.value * r.by1) / norm1;
  } else if (norm3 > 0) {
    b3 = -(h.value * h.by3 + r.value * r.by3) / norm3;
  }
  const double before = m.missMm();
  for (const double share : {1.0, 0.25, 0.0625, 0.015625}) {
    const Pair moved = {p.a1 + share * b1 * scale1_, p.a3 + share * b3 * scale3_};
    const Meeting there(c_, moved.a1, moved.a3);
    if (there.missMm() < before) {
      p = moved;
      m = there;
      return true;
    }
  }
  return false;
}

Pair Search::polished(Pair p) const {
  Meeting m(c_, p.a1, p.a3);
  for (int i = 0; i < 12 && m.missMm() > 4e-16 * c_.size; ++i) {
    if (!improve(p, m)) break;
  }
  return p;
}

bool isSameAngle(double a, double b) { return std::fabs(inHalfTurns(a - b)) < kSameSolution; }

bool Search::isKnown(const ThreeAngles& t) const {
  return std::any_of(list_.begin(), list_.end(), [&](const ThreeAngles& s) {
    return isSameAngle(s.a1, t.a1) && isSameAngle(s.a2, t.a2) && isSameAngle(s.a3, t.a3);
  });
}

ThreeAngles Search::entryOf(const Pair& p, const Meeting& m) const {
  const Vec3 &x = m.x.point, &y = m.y.point;
  const bool isFree2 = std::max(radiusOf(x), radiusOf(y)) <= onLine();
  ThreeAngles t;
  t.a1 = isFree1_ ? kFreeAngle : inHalfTurns(p.a1);
  t.a2 = isFree2 ? kFreeAngle : inHalfTurns(arcTangent(x[0] * y[1] - x[1] * y[0], dotAcross(x, y)));
  t.a3 = isFree3_ ? kFreeAngle : inHalfTurns(p.a3);

  // With lines 1 and 2 parallel the first turn changes distances, and the third one heights; so
  // they do where the third one turns about a point of line 2, as an upper arm that turns about
  // itself has its elbow.
  const bool isParallel = c_.sine12 == 0.0;
  const Vec3 &cx = c_.x.centre, &cy = c_.y.centre;
  const bool isSwapped = isParallel || radiusOf(cx) <= onLine();
  const double off = std::hypot(dot(cy, m.y.slope), dot(cy, m.y.arm)) / length(m.y.arm);
  const double aside =
      isSwapped ? (off > 0 ? dot(cy, m.y.slope) / off : 0.0) : m.y.slope[2] / c_.sine12;
  const double bend = isSwapped ? m.x.slope[2] : dot(cx, m.x.slope) * (c_.isOpposed ? 1 : -1);
  const double straight = isSwapped ? m.x.arm[2] : dot(cx, m.x.arm);
  t.shoulder = aside < 0 ? -1 : 1;
  t.elbow = bend < 0 ? -1 : 1;
  t.shoulderMm = std::fabs(aside);
  t.elbowRad = arcTangent(std::fabs(bend), std::fabs(straight));
  return t;
}

bool comesBefore(const ThreeAngles& a, const ThreeAngles& b) {
  if (a.shoulder != b.shoulder) return a.shoulder > b.shoulder;
  if (a.elbow != b.elbow) return a.elbow > b.elbow;
  return a.a1 != b.a1 ? a.a1 < b.a1 : a.a3 < b.a3;
}

void Search::add(const Pair& start) {
  const Pair p = polished(start);
  const Meeting m(c_, p.a1, p.a3);
  if (!(m.missMm() <= reach()) || list_.count == 4) return;
  const ThreeAngles entry = entryOf(p, m);
  if (isKnown(entry)) return;
  ThreeAngles* const end = list_.solutions.data() + list_.count++;
  *end = entry;
  std::rotate(std::upper_bound(list_.solutions.data(), end, entry, comesBefore), end, end + 1);
}

/// Two solutions that are close, or the one between them: along the direction in which the better
/// equation does not change, the other is a parabola.
void Search::split(const Pair& near) {
  Pair p = near;
  for (int i = 0; i < 3; ++i) {
    const Meeting m(c_, p.a1, p.a3);
    const Local h = localHeights(m, scale1_, scale3_);
    const Local s = localSquares(m, scale1_, scale3_, 1 / c_.size);
    const bool isHeight = h.slopeSq() >= s.slopeSq();
    if (!((isHeight ? h : s).slopeSq() > 0)) return add(p);
    const Parabola along(isHeight ? h : s, isHeight ? s : h);
    if (along.curve == 0) return add(p);
    const double middle = -along.slope / along.curve;
    const auto at = [&](double step) { return along.at(step, p, scale1_, scale3_); };
    if (i < 2) {  // onto the good equation and to the top of the parabola
      p = at(middle);
      continue;
    }
    const double square = along.slope * along.slope - 2 * along.value * along.curve;
    const double apart = std::sqrt(std::max(square, 0.0)) / along.curve;
    add(at(middle + apart));
    add(at(middle - apart));
    if (list_.count == 0) add(at(middle));
  }
}

/// Up to four solutions that are close: both equations are conics there. One sum of them is a
/// circle, on which another one, a hyperbola, is a trigonometric polynomial.
void Search::splitConics(const Pair& p) {
  const Meeting m(c_, p.a1, p.a3);
  const Local h = localHeights(m, scale1_, scale3_);
  const Local s = localSquares(m, scale1_, scale3_, 1 / c_.size);
  const double det = h.by11 * s.by33 - h.by33 * s.by11;
  if (det == 0) return;
  const auto sum = [&](double square3) {  // b1^2 + square3 * b3^2 + ...
    const double ofH = 2 * (s.by33 - square3 * s.by11) / det;
    const double ofS = 2 * (square3 * h.by11 - h.by33) / det;
    return Local{ofH * h.value + ofS * s.value, ofH * h.by1 + ofS * s.by1,
                 ofH * h.by3 + ofS * s.by3, 2, 2 * square3};
  };
  const Local circle = sum(1), hyperbola = sum(-1);
  const double m1 = -0.5 * circle.by1, m3 = -0.5 * circle.by3;
  const double r = std::sqrt(std::max(m1 * m1 + m3 * m3 - circle.value, 0.0));
  TrigPolynomial f{hyperbola.value + (m1 + hyperbola.by1) * m1 + (hyperbola.by3 - m3) * m3,
                   r * (2 * m1 + hyperbola.by1), r * (hyperbola.by3 - 2 * m3), r * r, 0};
  const double largest = f.largest();
  if (!(largest > 0)) return;
  f.divide(largest);
  for (const TrigPolynomial::Root& root : f.roots(1e-9)) {
    const SinCos a = sinCos(root.angle);
    add({p.a1 + (m1 + r * a.cos) * scale1_, p.a3 + (m3 + r * a.sin) * scale3_});
  }
}

/// Nothing was found on the whole circle. What is next to the target may be a solution all the
/// same, where rounding of the polynomial counts as much as its values.
void Search::runNearest() {
  const NearestAngles near = nearestOfCircles(c_);
  if (near.missMm > 1e-6 * c_.size) return;
  const Pair p{near.angles.a1, near.angles.a3};
  add(p);
  if (list_.count == 0) split(p);
  if (list_.count == 0) splitConics(p);
}

/// The other angle is free: an equation for the one that is left.
void Search::runOneAngle(const Equation& e, const Equation& other) {
  const auto isWeak = [&](const Equation& q) {
    return std::hypot(q.row[isFree1_ ? 0 : 2], q.row[isFree1_ ? 1 : 3]) <= onLine();
  };
  const double p0 = e.row[isFree1_ ? 0 : 2], p1 = e.row[isFree1_ ? 1 : 3];
  const double q0 = other.row[isFree1_ ? 0 : 2], q1 = other.row[isFree1_ ? 1 : 3];
  if (std::hypot(q0, q1) > std::hypot(p0, p1)) return runOneAngle(other, e);
  if (isWeak(e)) {
    list_.isFamily = !(isFree1_ && isFree3_);
    return add({0, 0});
  }
  for (const double a : Roots(p0, p1, e.value).both()) add(isFree1_ ? Pair{0, a} : Pair{a, 0});
}

/// One equation alone: the solutions are a curve, and of them those with a1 next to 0.
void Search::runCurve(const Equation& e) {
  list_.isFamily = true;
  const double reach3 = std::hypot(e.row[0], e.row[1]);
  double rest = e.value - e.row[2];
  double a1 = 0;
  if (std::fabs(rest) > reach3) {
    const Roots r(e.row[2], e.row[3], e.value - std::copysign(reach3, rest));
    const double first = inHalfTurns(r.both()[0]), second = inHalfTurns(r.both()[1]);
    a1 = std::fabs(first) <= std::fabs(second) ? first : second;
    rest = std::copysign(reach3, rest);
  }
  if (reach3 <= kOnLineOfSize) return add({a1, 0});
  for (const double a3 : Roots(e.row[0], e.row[1], rest).both()) add({a1, a3});
}

/// Every point of the circle is a solution: the one with a1 next to 0.
void Search::runWholeCircle(const PlaneCircle& circle) {
  constexpr int kSamples = 64;
  Pair best = circle.at(0);
  for (int i = 1; i < kSamples; ++i) {
    const Pair p = circle.at(i * (2 * std::numbers::pi / kSamples));
    if (std::fabs(p.a1) < std::fabs(best.a1)) best = p;
  }
  list_.isFamily = true;
  const double scale1 = std::exchange(scale1_, 0.0);
  add({0.0, best.a3});
  scale1_ = scale1;
  if (list_.count == 0) add(best);
}

/// `sure` is the length of what the second equation adds to the first: rounding counts against it.
void Search::runPoints(const Equation& n1, const Equation& n2, double sure) {
  const PlaneCircle circle(n1, n2);
  if (circle.radius < 1e-5) return split(circle.at(0));
  TrigPolynomial f = circle.difference();
  const double largest = f.largest();
  const double least = std::min(length(c_.x.e), length(c_.y.e));
  if (largest <= kReachOfSize * least / sure) return runWholeCircle(circle);
  f.divide(largest);
  const double rounding = std::max(1e-11, 3e-15 / largest * std::max(1.0, c_.size / sure));
  for (const TrigPolynomial::Root& root : f.roots(rounding)) {
    const Pair p = circle.at(root.angle);
    root.isDouble ? split(p) : add(p);
  }
}

ThreeAnglesList Search::run() {
  if (c_.size == 0.0) {
    list_.isFamily = false;
    add({0, 0});
    return list_;
  }
  Equation e1 = heights(c_), e2 = distances(c_);
  if (isFree1_ || isFree3_) {
    runOneAngle(e1, e2);
  } else {
    if (e2.length() > e1.length()) std::swap(e1, e2);
    if (e1.length() <= onLine()) {
      list_.isFamily = true;
      add({0, 0});
    } else {
      const Equation n1 = unit(e1);
      const Equation rest = without(without(e2, n1), n1);
      if (rest.length() <= onLine()) {
        runCurve(n1);
      } else {
        runPoints(n1, unit(rest), rest.length());
      }
    }
  }
  if (list_.count == 0) runNearest();
  return list_;
}

}  // namespace

ThreeAnglesList solveCircles(const CirclePair& circles) { return Search(circles).run(); }

}  // namespace korvo::rotations::detail
