#include "platform/rotations/Solvers.h"

#include <cmath>
#include <optional>

#include "platform/rotations/Vec3.h"

namespace korvo::rotations {
namespace {

using namespace detail;

/// Below this volume of directions of length 1 to 2 one step is not enough.
constexpr double kFlat = 1e-5;

/// Cramer's rule: the triple products with `d` in the place of each direction, over their volume.
struct Cramer {
  Vec3 a1, a2, a3;
  Vec3 a23 = cross(a2, a3);
  Vec3 a31 = cross(a3, a1);
  Vec3 a12 = cross(a1, a2);
  double volume = dot(a1, a23);

  Vec3 solve(const Vec3& d) const { return Vec3{dot(d, a23), dot(d, a31), dot(d, a12)} / volume; }
  Vec3 missing(const Vec3& d, const Vec3& x) const {
    return d - (x[0] * a1 + x[1] * a2 + x[2] * a3);
  }
};

bool areDependent(const Cramer& c) {
  const double lengths = std::sqrt(dot(c.a1, c.a1) * dot(c.a2, c.a2) * dot(c.a3, c.a3));
  return std::fabs(c.volume) <= kDependent * lengths;
}

}  // namespace

std::optional<Vec3> threeDirections(const Vec3& d, const Vec3& a1, const Vec3& a2, const Vec3& a3) {
  Cramer c{a1, a2, a3};
  const Vec3 scales = {takeScale(c.a1), takeScale(c.a2), takeScale(c.a3)};
  c = {c.a1, c.a2, c.a3};
  if (areDependent(c)) return {};
  Vec3 x = c.solve(d);
  // Directions close to one plane lose up to ten of sixteen digits in the products; each step
  // brings back as many as were kept.
  x = x + c.solve(c.missing(d, x));
  if (std::fabs(c.volume) < kFlat) x = x + c.solve(c.missing(d, x));
  x = {x[0] / scales[0], x[1] / scales[1], x[2] / scales[2]};
  // A direction that is null or not finite has the scale 0 and ends here too.
  return isFinite(x) ? std::optional(x) : std::nullopt;
}

}  // namespace korvo::rotations
