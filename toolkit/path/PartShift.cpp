#include "toolkit/path/PartShift.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "toolkit/model/Walk.h"

namespace korvo {
namespace {

using zgeo::UVec3d;

constexpr double kSpare = 0.5;         // mm that are left to every limit
constexpr double kTenth = 10.0;        // shifts are said in tenths of a mm
constexpr double kLeastVolume = 1e-3;  // of the directions of three axes that carry
constexpr double kMet = 1e-6;          // mm
constexpr int kMostHalves = 60;
constexpr int kMostRounds = 20'000;

double roundedUp(double value) {
  return std::copysign(std::ceil(std::abs(value) * kTenth - kMet) / kTenth, value);
}

UVec3d rounded(const UVec3d& v) {
  return {std::round(v.x * kTenth) / kTenth, std::round(v.y * kTenth) / kTenth,
          std::round(v.z * kTenth) / kTenth};
}

}  // namespace

/// n * shift <= most
struct PartShift::Half {
  UVec3d n;
  double most = 0.0;
  double excess = 0.0;
};

std::optional<PartShift> PartShift::of(const JointChain& chain) {
  PartShift shift(chain);
  for (const Joint& joint : chain.joints) {
    const bool isFree = joint.motion == Joint::Motion::slide && !joint.isLocked;
    if (isFree && joint.place >= 0) shift.places_.push_back(joint.place);
  }
  if (shift.places_.size() != 3) return {};
  return shift;
}

void PartShift::take(const Values& values) {
  UVec3d directions[3];
  const Joint* joints[3] = {};
  std::size_t count = 0;
  zgeo::UMatrix placed;
  for (const Joint& joint : chain_.joints) {
    if (joint.motion == Joint::Motion::slide && !joint.isLocked && joint.place >= 0) {
      UVec3d direction = joint.direction;
      placed.applyDir(direction);
      directions[count] = direction;
      joints[count++] = &joint;
    }
    moveBy(joint, valueOf(joint, values), placed);
  }
  if (count != 3) return;
  const UVec3d& a = directions[0];
  const UVec3d& b = directions[1];
  const UVec3d& c = directions[2];
  const double volume = (a ^ b) * c;
  if (std::abs(volume) < kLeastVolume) {
    isSolvable_ = false;
    return;
  }
  const UVec3d rows[3] = {(b ^ c) / volume, (c ^ a) / volume, (a ^ b) / volume};
  for (std::size_t i = 0; i < 3; ++i) {
    const double value = valueOf(*joints[i], values);
    const auto single = [](double x) { return static_cast<float>(x); };
    slabs_.push_back({{single(rows[i].x), single(rows[i].y), single(rows[i].z)},
                      joints[i]->min - value,
                      joints[i]->max - value});
  }
}

std::optional<UVec3d> PartShift::shortest() const {
  if (!isSolvable_) return {};
  const auto found = shortest(kSpare);
  return found ? found : shortest(0.0);
}

std::optional<UVec3d> PartShift::shortest(double spare) const {
  std::optional<UVec3d> least;
  for (int axis = 0; axis < 3; ++axis) {
    const std::optional<double> by = along(axis, spare);
    if (!by || (least && least->norm() <= std::abs(*by))) continue;
    least = UVec3d(axis == 0 ? *by : 0.0, axis == 1 ? *by : 0.0, axis == 2 ? *by : 0.0);
  }
  return least ? least : across(spare);
}

/// Every slab leaves an interval of shifts along one axis.
std::optional<double> PartShift::along(int axis, double spare) const {
  constexpr double kAcross = 1e-9;  // of a row: the shift does not move that axis
  double low = -std::numeric_limits<double>::infinity(), high = -low;
  for (const Slab& slab : slabs_) {
    const double n = slab.n[axis], least = slab.low + spare, most = slab.high - spare;
    if (std::abs(n) < kAcross) {
      if (least > 0 || most < 0) return {};
      continue;
    }
    low = std::max(low, std::min(least / n, most / n));
    high = std::min(high, std::max(least / n, most / n));
  }
  if (low > high) return {};
  const double least = std::clamp(0.0, low, high);
  const double neat = roundedUp(least);
  return neat >= low && neat <= high ? neat : least;
}

std::optional<PartShift::Half> PartShift::mostViolated(const UVec3d& shift, double spare) const {
  Half most;
  most.excess = kMet;
  for (const Slab& slab : slabs_) {
    const UVec3d n(slab.n[0], slab.n[1], slab.n[2]);
    const double at = n * shift;
    const double above = at - (slab.high - spare), below = slab.low + spare - at;
    if (above > most.excess) most = {n, slab.high - spare, above};
    if (below > most.excess) most = {-n, -(slab.low + spare), below};
  }
  if (most.excess <= kMet) return {};
  return most;
}

/// The point nearest to zero in all half spaces: that of a few of them, to which the one that it
/// violates most is added until it violates none. Of few it is found by projections in turn
/// (Hildreth's method: each half space has a multiplier that never falls below zero).
std::optional<UVec3d> PartShift::across(double spare) const {
  std::vector<Half> halves;
  UVec3d shift;
  while (const std::optional<Half> next = mostViolated(shift, spare)) {
    if (halves.size() >= kMostHalves) return {};
    halves.push_back(*next);
    std::vector<double> multipliers(halves.size(), 0.0);
    shift = UVec3d();
    double worst = 1.0;
    for (int round = 0; round < kMostRounds && worst > kMet / 2; ++round) {
      worst = 0.0;
      for (std::size_t i = 0; i < halves.size(); ++i) {
        const Half& half = halves[i];
        const double excess = half.n * shift - half.most;
        const double step = std::max(excess / half.n.norm2(), -multipliers[i]);
        multipliers[i] += step;
        shift = shift - half.n * step;
        worst = std::max(worst, excess);
      }
    }
    if (worst > kMet) return {};  // they have no point in common
  }
  const UVec3d neat = rounded(shift);
  return mostViolated(neat, std::min(spare, kSpare - 1 / kTenth)) ? shift : neat;
}

}  // namespace korvo
