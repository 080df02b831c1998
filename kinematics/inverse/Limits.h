#pragma once

#include "kinematics/KMachineElem.h"

namespace zkin {

/// Where a value lies against an axis' limits: -1 below the minimum, 1 above the maximum, else 0.
/// A value on a limit is inside, and so is NaN; there is no tolerance.
inline int sideOfLimits(const KMachineElem& axis, double x) {
  if (axis.hasMin() && axis.getMin() > x) return -1;
  return axis.hasMax() && x > axis.getMax() ? 1 : 0;
}

inline bool isRotary(const KMachineElem& e) {
  return e.getElemType() == KMachineElem::KMET_TYPE_AROT;
}

/// Deliberate: guns are asked for, but those of files have no place in positions, so their limits
/// have no effect (GunConfigs.LimitsOfGunsHaveNoEffect).
inline bool isLinearOrGun(const KMachineElem& e) {
  return e.getElemType() == KMachineElem::KMET_TYPE_ALIN ||
         e.getElemType() == KMachineElem::KMET_TYPE_DGUN;
}

}  // namespace zkin
