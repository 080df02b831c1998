#pragma once

#include "platform/ombra/Vector3D.h"
#include "platform/zgeo/UVec3d.h"

/// Between the two libraries' types.
namespace zkin {

inline Ombra::Vector3D toOmbra(const zgeo::UVec3d& v) { return {v.x, v.y, v.z}; }
inline zgeo::UVec3d toZgeo(const Ombra::Vector3D& v) { return {v.x, v.y, v.z}; }

}  // namespace zkin
