#include "kinematics/inverse/WrapNear.h"

#include <cmath>

#include "kinematics/tolerances.h"

namespace zkin {

double wrapNear(double angle, double reference) {
  if (!std::isfinite(angle) || !std::isfinite(reference)) return angle;
  constexpr double kTurn = 2 * kPi;
  // Far angles come near in one step, so that the loop ends whatever the angle is.
  const double away = angle - reference;
  if (std::fabs(away) > kWrapLoop) angle -= kTurn * std::round(away / kTurn);
  while (std::fabs(angle - reference) > kPi) angle += angle - reference <= 0 ? kTurn : -kTurn;
  return angle;
}

}  // namespace zkin
