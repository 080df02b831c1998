#include "kinematics/inverse/WrapNear.h"

#include <cmath>

#include "kinematics/tolerances.h"

namespace zkin {

double wrapNear(double angle, double reference) {
  constexpr double kTurn = 2 * kPi;
  const double away = angle - reference;
  if (!std::isfinite(away)) return angle;
  // In one step: beside a far reference one turn can be less than the spacing of the doubles, and
  // adding turns would never come near.
  if (std::fabs(away) > kWrapLoop) return reference + std::remainder(away, kTurn);
  constexpr int kWholeTurns = static_cast<int>(kWrapLoop / kTurn);  // the last one is begun
  for (int i = 0; i <= kWholeTurns && std::fabs(angle - reference) > kPi; ++i) {
    angle += angle - reference <= 0 ? kTurn : -kTurn;
  }
  return angle;
}

}  // namespace zkin
