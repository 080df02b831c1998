#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "platform/rotations/ArcTangent.h"
#include "platform/rotations/Meeting.h"
#include "platform/rotations/ThreeAxes.h"
#include "platform/rotations/Vec3.h"

namespace korvo::rotations::detail {
namespace {

constexpr int kSamples = 32;
constexpr double kStep = 2 * std::numbers::pi / kSamples;

/// Height and distance from the line along a circle.
struct Profile {
  std::array<double, kSamples> height{};
  std::array<double, kSamples> radius{};

  explicit Profile(const Circle& c) {
    for (int i = 0; i < kSamples; ++i) {
      const Vec3 p = OnCircle(c, i * kStep).point;
      height[i] = p[2];
      radius[i] = radiusOf(p);
    }
  }
};

struct Grid {
  Profile x, y;

  explicit Grid(const CirclePair& c) : x(c.x), y(c.y) {}

  double square(int i1, int i3) const {
    const int i = i1 & (kSamples - 1), j = i3 & (kSamples - 1);
    const double h = x.height[j] - y.height[i], r = x.radius[j] - y.radius[i];
    return h * h + r * r;
  }

  bool isLeast(int i1, int i3) const {
    const double here = square(i1, i3);
    return here <= square(i1 - 1, i3) && here <= square(i1 + 1, i3) && here <= square(i1, i3 - 1) &&
           here <= square(i1, i3 + 1);
  }
};

/// Distance of a point from the line along its circle, with derivatives.
struct Radius {
  double value, slope, curve;

  explicit Radius(const OnCircle& p) : value(std::max(radiusOf(p.point), 1e-300)) {
    slope = dotAcross(p.point, p.slope) / value;
    curve = (dotAcross(p.slope, p.slope) - dotAcross(p.point, p.arm) - slope * slope) / value;
  }
};

/// Half the square of the miss, its gradient and second derivatives.
struct Model {
  double g1, g3, h11, h13, h33;

  explicit Model(const Meeting& m) {
    const Radius x(m.x), y(m.y);
    const double h = m.height, r = m.radius();
    const double hy = m.y.slope[2], hx = m.x.slope[2];
    g1 = -h * hy - r * y.slope;
    g3 = h * hx + r * x.slope;
    h11 = hy * hy + h * m.y.arm[2] + y.slope * y.slope - r * y.curve;
    h33 = hx * hx - h * m.x.arm[2] + x.slope * x.slope + r * x.curve;
    h13 = -hy * hx - y.slope * x.slope;
  }
};

struct Place {
  double a1, a3, miss;
};

/// Newton's steps, towards the gradient where the second derivatives do not close a bowl.
Place descended(const CirclePair& c, double a1, double a3) {
  Place p{a1, a3, Meeting(c, a1, a3).missMm()};
  double damping = 0;
  for (int i = 0; i < 60; ++i) {
    const Model m(Meeting(c, p.a1, p.a3));
    const double size = std::fabs(m.h11) + std::fabs(m.h33) + std::fabs(m.h13) + 1e-300;
    const double mean = 0.5 * (m.h11 + m.h33);
    const double least = mean - std::hypot(0.5 * (m.h11 - m.h33), m.h13);
    const double shift = std::max(0.0, 1e-9 * size - least) + damping * size;
    const double d11 = m.h11 + shift, d33 = m.h33 + shift;
    const double det = d11 * d33 - m.h13 * m.h13;
    const double b1 = -(m.g1 * d33 - m.g3 * m.h13) / det, b3 = -(d11 * m.g3 - m.h13 * m.g1) / det;
    const double miss = Meeting(c, p.a1 + b1, p.a3 + b3).missMm();
    if (miss < p.miss) {
      p = {p.a1 + b1, p.a3 + b3, miss};
      damping *= 0.1;
    } else {
      if (damping > 1e6 || std::hypot(b1, b3) < 1e-9) break;
      damping = std::max(1e-3, 10 * damping);
    }
  }
  return p;
}

}  // namespace

NearestAngles nearestOfCircles(const CirclePair& c) {
  const Grid grid(c);
  Place best{0, 0, Meeting(c, 0, 0).missMm()};
  for (int i = 0; i < kSamples; ++i) {
    for (int j = 0; j < kSamples; ++j) {
      if (!grid.isLeast(i, j)) continue;
      const Place p = descended(c, i * kStep, j * kStep);
      if (p.miss < best.miss) best = p;
    }
  }
  const Meeting m(c, best.a1, best.a3);
  const Vec3 &x = m.x.point, &y = m.y.point;
  const double a2 = arcTangent(x[0] * y[1] - x[1] * y[0], dotAcross(x, y));
  return {{inHalfTurns(best.a1), inHalfTurns(a2), inHalfTurns(best.a3)}, best.miss};
}

}  // namespace korvo::rotations::detail
