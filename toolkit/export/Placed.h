#pragma once

#include <cmath>
#include <limits>

#include "platform/zgeo/UTri.h"
#include "toolkit/export/Bodies.h"

/// What every writer does with the triangles of a body.
namespace korvo::exporting {

/// Whether the number fits into single precision, which is what the files keep.
inline bool fits(double x) { return std::abs(x) <= double{std::numeric_limits<float>::max()}; }

inline bool fits(const zgeo::UVec3d& p) { return fits(p.x) && fits(p.y) && fits(p.z); }

inline bool fits(const zgeo::UTri& t) { return fits(t.p[0]) && fits(t.p[1]) && fits(t.p[2]); }

inline zgeo::UTri placed(const zgeo::UMatrix& motion, const zgeo::UTri& t) {
  return {motion * t.p[0], motion * t.p[1], motion * t.p[2]};
}

/// Calls `use` with every placed triangle that fits.
template <class Use>
void forEachPlaced(const Body& body, Use use) {
  for (const zgeo::UTri& t : body.triangles) {
    const zgeo::UTri p = placed(body.motion, t);
    if (fits(p)) use(p);
  }
}

/// The unit normal on the side where the corners run counter-clockwise; zero for triangles without
/// an area.
inline zgeo::UVec3d normalOf(const zgeo::UTri& t) {
  return ((t.p[1] - t.p[0]) ^ (t.p[2] - t.p[0])).normalised();
}

}  // namespace korvo::exporting
