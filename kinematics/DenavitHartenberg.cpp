#include "kinematics/DenavitHartenberg.h"

#include <cmath>

#include "kinematics/tolerances.h"
#include "platform/zgeo/UAlgo.h"

using zgeo::UAlgo;
using zgeo::UVec3d;

namespace zkin {
namespace {

// An axis line of the chain; the world's Z line stands in for the part and for what is before the
// root.
struct Line {
  UVec3d dir{0, 0, 1};
  UVec3d point;
  bool isWorld = true;
};

// A frame while the walk goes on.
struct Frame {
  UVec3d origin, x, z;
  KMachineElem::_sUDHm h;
};

Line lineBefore(const std::vector<const KMachineElem*>& chain, int j) {
  if (j < 0 || chain[j]->getElemType() == KMachineElem::KMET_TYPE_PART) return {};
  return {chain[j]->getElemAxis().normalised(), chain[j]->getElemPivot(), false};
}

// Angle from unit vector `from` to `to`, signed by their cross product against `about`.
double signedAngle(const UVec3d& from, const UVec3d& to, const UVec3d& about) {
  const UVec3d cross = from ^ to;
  const double sine = cross.norm();
  double angle = sine > 1 ? kHalfPi : std::asin(sine);
  if (from * to < 0) angle = kPi - angle;
  return cross * about < 0 ? -angle : angle;
}

double halfTurnIfOpposed(const UVec3d& a, const UVec3d& b) { return a * b < 0 ? kPi : 0.0; }

// What one pair of lines says: frame i's parameters but theta, and the X axis and origin of the
// frame before it.
struct Link {
  double alpha = 0, a = 0, d = 0;
  UVec3d x, origin;
};

Link skewLink(const Line& before, const Frame& own, UVec3d x, const UVec3d& footA,
              const UVec3d& footB) {
  if (x * (footB - footA) < 0) x = -x;  // from the line before towards this one
  return {signedAngle(before.dir, own.z, x), footA.distanceTo(footB), (own.origin - footB) * own.z,
          x, footA};
}

// Deliberate: the normal stays as it is, also where the other two feet lie the other way, and the
// offset is taken from the foot on the line before, which tells for lines that are not quite
// parallel. Tests: DenavitHartenberg.IsTheHandsOwn/NormalOfParallelLinesIsKept and
// /AlmostParallelToTheWorld.
Link parallelLink(const Line& before, const Frame& own, const UVec3d& x, const UVec3d& footA,
                  const UVec3d& footB) {
  const double a = (footB.distanceTo(before.point) + footA.distanceTo(own.origin)) / 2;
  return {halfTurnIfOpposed(before.dir, own.z), a, (own.origin - footA) * own.z, x, footA};
}

Link coincidentLink(const Line& before, const Frame& own) {
  const double alpha = halfTurnIfOpposed(before.dir, own.z);
  // Deliberate: the height along world Z, also when the own axis points down.
  // Test: DenavitHartenberg.IsTheHandsOwn/FirstAxisAgainstTheWorld.
  if (before.isWorld) return {alpha, 0, own.origin.z, {1, 0, 0}, {}};
  return {alpha, 0, 0, {}, own.origin};
}

// False when the lines say nothing (a null direction).
// Deliberate: then nothing is stored, so the frame before gets its origin, and the element its
// point, at zero. Test: DenavitHartenberg.IsTheHandsOwn/AxisWithoutDirection.
bool linkOf(const Line& before, const Frame& own, Link& link) {
  UVec3d normal, footA, footB;
  switch (UAlgo::_commonOrtho(before.dir, before.point, own.z, own.origin, normal, footA, footB)) {
    case 0:
      link = skewLink(before, own, normal, footA, footB);
      return true;
    case -1:
      link = parallelLink(before, own, normal, footA, footB);
      return true;
    case -2:
      link = coincidentLink(before, own);
      return true;
    default:
      return false;
  }
}

bool hasX(const Frame& frame) { return frame.x.norm2() > kUnsetXAxisSq; }

// Frames from i on whose X axis is still unset take that of the frame before them.
void passOnX(std::vector<Frame>& frames, std::size_t i) {
  if (!hasX(frames[i - 1])) return;
  for (; i < frames.size() && frames[i].x.norm2() < kUnsetXAxisSq; ++i) {
    frames[i].x = frames[i - 1].x;
    frames[i].h.theta = 0;
  }
}

// Deliberate: a frame's own line passes through its origin as the pass before found it, not through
// the element's point elsewhere on the line. Test: DenavitHartenberg.IsTheHandsOwn/TableAc.
void linkFrames(const std::vector<const KMachineElem*>& chain, std::vector<Frame>& frames) {
  UVec3d z = chain.back()->getElemAxis().normalised();
  for (int i = static_cast<int>(chain.size()) - 1; i >= 0; --i) {
    const Line before = lineBefore(chain, i - 1);
    frames[i].z = z;
    Link link;
    if (linkOf(before, frames[i], link)) {
      frames[i].h.alpha = link.alpha, frames[i].h.a = link.a, frames[i].h.d = link.d;
      if (i > 0) {
        if (link.x.norm2() > kUnsetXAxisSq) frames[i - 1].x = link.x;
        frames[i - 1].origin = link.origin;
      }
    }
    if (i > 0) passOnX(frames, i);
    z = before.dir;
  }
}

}  // namespace

std::vector<DhFrame> dhFrames(const std::vector<const KMachineElem*>& chain) {
  std::vector<Frame> frames(chain.size());
  if (chain.empty()) return {};
  frames.front().x.set(1, 0, 0);
  frames.back().origin = chain.back()->getElemPivot();
  linkFrames(chain, frames);
  std::vector<DhFrame> result;
  for (std::size_t k = 0; k < frames.size(); ++k) {
    // Deliberate: the first frame's theta is 0 although its X axis may be turned.
    // Test: DenavitHartenberg.IsTheHandsOwn/TableAc.
    if (k == 0)
      frames[k].h.theta = 0;
    else
      frames[k].h.theta = signedAngle(frames[k - 1].x, frames[k].x, frames[k].z);
    result.push_back({frames[k].h, frames[k].origin});
  }
  return result;
}

}  // namespace zkin
