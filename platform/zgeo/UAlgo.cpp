#include "platform/zgeo/UAlgo.h"

#include "platform/rotations/Rotations.h"
#include "platform/rotations/Solvers.h"

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

int UAlgo::_solveRot_conical(const UVec3d& from, const UVec3d& to, const UVec3d& axis,
                             double& angle) {
  const auto found = korvo::rotations::oneAxis(plain(from), plain(to), plain(axis));
  if (found) angle = *found;
  return found ? 1 : 0;
}

int UAlgo::_solveRot_conical(const UVec3d& from, const UVec3d& to, const UVec3d& axis1,
                             const UVec3d& axis2, std::vector<UVec2d>& sols) {
  sols.clear();
  for (const auto& [a1, a2] :
       korvo::rotations::twoAxes(plain(from), plain(to), plain(axis1), plain(axis2))) {
    sols.emplace_back(a1, a2);
  }
  return sols.empty() ? 0 : 1;
}

int UAlgo::_solveXYZ(const UVec3d& d, const UVec3d& a1, const UVec3d& a2, const UVec3d& a3,
                     UVec3d& xyz) {
  const auto found = korvo::rotations::threeDirections(plain(d), plain(a1), plain(a2), plain(a3));
  xyz = found ? vector(*found) : UVec3d();
  return found ? 0 : -1;
}

}  // namespace zgeo
