#include "platform/zgeo/UAlgo.h"

#include "platform/rotations/Rotations.h"

namespace zgeo {
namespace {

using korvo::rotations::LinePair;
using korvo::rotations::Vec3;

Vec3 plain(const UVec3d& v) { return {v.x, v.y, v.z}; }
UVec3d vector(const Vec3& v) { return {v[0], v[1], v[2]}; }

}  // namespace

int UAlgo::_commonOrtho(const UVec3d& zA, const UVec3d& pA, const UVec3d& zB, const UVec3d& pB,
                        UVec3d& normal, UVec3d& footA, UVec3d& footB) {
  const auto common = korvo::rotations::commonNormal(plain(zA), plain(pA), plain(zB), plain(pB));
  if (common.kind == LinePair::undefined) return -3;
  if (common.kind == LinePair::coincident) return -2;
  normal = vector(common.normal);
  footA = vector(common.footA);
  footB = vector(common.footB);
  return common.kind == LinePair::skew ? 0 : -1;
}

}  // namespace zgeo
