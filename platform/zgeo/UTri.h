#pragma once

#include "platform/zgeo/UVec3d.h"

namespace zgeo {

/// A triangle of three points (mm). Its outside is where the corners run counter-clockwise.
struct UTri {
  UVec3d p[3];

  constexpr UTri() = default;
  constexpr UTri(const UVec3d& a, const UVec3d& b, const UVec3d& c) : p{a, b, c} {}
  constexpr bool operator==(const UTri&) const = default;  ///< Exact.
};

}  // namespace zgeo
