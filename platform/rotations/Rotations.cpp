#include "platform/rotations/Rotations.h"

#include <cmath>

#include "platform/rotations/Vec3.h"

namespace korvo::rotations {
namespace {

using namespace detail;

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
