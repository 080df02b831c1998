#pragma once

#include <array>
#include <vector>

#include "tests/solve/Machines.h"

/// Where a tool stands, worked from what the author of a definition wrote and by nothing of the
/// library: a plain product of motions, with the digits of a long double.
namespace korvo::test {

using Exact = std::array<long double, 3>;

inline Exact exact(const zgeo::UVec3d& v) { return {v.x, v.y, v.z}; }
inline zgeo::UVec3d rounded(const Exact& v) {
  return {static_cast<double>(v[0]), static_cast<double>(v[1]), static_cast<double>(v[2])};
}
Exact operator+(const Exact& a, const Exact& b);
Exact operator-(const Exact& a, const Exact& b);
Exact operator*(const Exact& a, long double k);
long double dot(const Exact& a, const Exact& b);
Exact cross(const Exact& a, const Exact& b);
long double length(const Exact& v);
Exact unit(const Exact& v);

/// `v` turned about the unit direction `axis` by `degrees`; whole turns leave it alone, exactly.
Exact turned(const Exact& v, const Exact& axis, long double degrees);

/// The angle (rad) between directions of any length.
long double angleBetween(const Exact& a, const Exact& b);

/// The tool's point, its direction (of length 1), and what its motion makes of x, y and z.
struct ExactPose {
  Exact point, direction;
  std::array<Exact, 3> axes;
};

/// The axes between part and tool with the places of their values: the part side the other way
/// round, for it is written from the frame outwards.
struct PlacedAxis {
  AxisLine line;
  std::size_t place;
};
std::vector<PlacedAxis> chainOf(const MachineLines& lines);

/// Of tool number `tool`; `extension` is how far it slides along its direction if it is a gun.
ExactPose poseAt(const MachineLines& lines, const std::vector<double>& values, int tool = 1,
                 double extension = 0.0);

}  // namespace korvo::test
