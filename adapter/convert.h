#pragma once

#include "platform/ombra/Vector3D.h"
#include "platform/zgeo/UVec3d.h"

/// From one library's types to the other's.
namespace zkin {

inline Ombra::Vector3D toOmbra(const zgeo::UVec3d& v) { return {v.x, v.y, v.z}; }

}  // namespace zkin
