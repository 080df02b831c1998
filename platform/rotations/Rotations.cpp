#include "platform/rotations/Rotations.h"

#include <algorithm>
#include <cmath>

namespace korvo::rotations {
namespace {

Vec3 operator+(const Vec3& a, const Vec3& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
Vec3 operator-(const Vec3& a, const Vec3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
Vec3 operator*(double s, const Vec3& v) { return {s * v[0], s * v[1], s * v[2]}; }
Vec3 operator/(const Vec3& v, double s) { return {v[0] / s, v[1] / s, v[2] / s}; }

double dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

Vec3 cross(const Vec3& a, const Vec3& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

bool isFinite(const Vec3& v) {
  return std::isfinite(v[0]) && std::isfinite(v[1]) && std::isfinite(v[2]);
}

/// Sets `v` to length 1; false when it has no direction. Where squares may over- or underflow, the
/// largest component is divided out first.
bool normalise(Vec3& v) {
  const double square = dot(v, v);
  if (square > 1e-280 && square < 1e280) {
    v = v / std::sqrt(square);
    return true;
  }
  const double largest = std::max({std::fabs(v[0]), std::fabs(v[1]), std::fabs(v[2])});
  if (!isFinite(v) || largest == 0.0) return false;
  const Vec3 scaled = v / largest;
  v = scaled / std::sqrt(dot(scaled, scaled));
  return true;
}

/// A line with a unit direction.
struct Line {
  Vec3 direction;
  Vec3 point;

  Vec3 at(double s) const { return point + s * direction; }
  Vec3 footOf(const Vec3& p) const { return at(dot(p - point, direction)); }
};

/// The offset of near-parallel lines differs from place to place; it is taken at B's point, seen
/// from A, so that `normal` is square to A and ends where the caller put line B.
CommonNormal parallelNormal(const Line& a, const Line& b) {
  CommonNormal result{LinePair::coincident, {}, a.footOf(b.point), b.footOf(a.point)};
  const Vec3 offset = b.point - result.footA;
  const double distance = std::sqrt(dot(offset, offset));
  if (distance < kCoincidentDistance) return result;
  result.kind = LinePair::parallel;
  result.normal = offset;
  normalise(result.normal);
  return result;
}

CommonNormal skewNormal(const Line& a, const Line& b, const Vec3& u, double u2) {
  const Vec3 w = b.point - a.point;
  return {LinePair::skew, u / std::sqrt(u2), a.at(dot(cross(w, b.direction), u) / u2),
          b.at(dot(cross(w, a.direction), u) / u2)};
}

}  // namespace

Mat3 rotationMatrix(const Vec3& axis, double angle) {
  Vec3 u = axis;
  if (!normalise(u)) return {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  const double versine = c > 0 ? s * s / (1 + c) : 1 - c;  // 1 - cos(a) without cancellation
  const Vec3 v = versine * u;
  return {{{c + v[0] * u[0], v[0] * u[1] - s * u[2], v[0] * u[2] + s * u[1]},
           {v[1] * u[0] + s * u[2], c + v[1] * u[1], v[1] * u[2] - s * u[0]},
           {v[2] * u[0] - s * u[1], v[2] * u[1] + s * u[0], c + v[2] * u[2]}}};
}

CommonNormal commonNormal(const Vec3& zA, const Vec3& pA, const Vec3& zB, const Vec3& pB) {
  Line a{zA, pA};
  Line b{zB, pB};
  if (!normalise(a.direction) || !normalise(b.direction) || !isFinite(pA) || !isFinite(pB)) {
    return {};
  }
  const Vec3 u = cross(a.direction, b.direction);
  const double u2 = dot(u, u);
  const CommonNormal result =
      u2 < kParallelCrossSq ? parallelNormal(a, b) : skewNormal(a, b, u, u2);
  // Points some 1e300 apart are finite, their difference is not.
  return isFinite(result.footA) && isFinite(result.footB) ? result : CommonNormal{};
}

}  // namespace korvo::rotations
