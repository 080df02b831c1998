#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/rotations/Pair.h"

namespace korvo::rotations::detail {

/// Taylor's, without its first term: atan(u) = u - arcTangentRest(u), |u| <= tan(pi/16).
template <typename Real>
inline Real arcTangentRest(Real u) {
  const Real z = u * u, z2 = z * z, z4 = z2 * z2;
  const Real head = (1 / 3.0 - z * (1 / 5.0)) + z2 * (1 / 7.0 - z * (1 / 9.0));
  const Real tail = (1 / 11.0 - z * (1 / 13.0)) + z2 * (1 / 15.0 - z * (1 / 17.0)) +
                    z4 * (1 / 19.0 - z * (1 / 21.0));
  return u * z * (head + z4 * tail);
}

/// The angle of (x, y) in [-pi, pi], without a branch that depends on it: a solver asks for several
/// that do not wait for each other. (0, 0) gives 0.
///
/// @source  atan(t) = k pi/8 + atan((t - T) / (1 + t T)) with T = tan(k pi/8), k of the nearest of
///          0, 1, 2 for t in [0, 1]; then the Taylor series up to u^21, whose next term is below
///          2e-17 of the first for |u| <= tan(pi/16).
/// @errors  6e-16 rad; lengths between 1e-150 and 1e150.
inline double arcTangent(double y, double x) {
  static constexpr double kTangents[] = {0, 0.41421356237309503, 1};
  static constexpr double kAngles[] = {0, std::numbers::pi / 8, std::numbers::pi / 4};
  // By octant pairs: 0 x larger, 1 y larger, 2 and 3 the same with a negative x.
  static constexpr double kBases[] = {0, std::numbers::pi / 2, std::numbers::pi,
                                      std::numbers::pi / 2};
  static constexpr double kSenses[] = {1, -1, -1, 1};

  const double ax = std::fabs(x), ay = std::fabs(y);
  const double low = std::min(ax, ay);
  const double high = std::max(std::max(ax, ay), 1e-300);
  const int k = static_cast<int>(low > 0.19891236737965801 * high) +
                static_cast<int>(low > 0.66817863791929892 * high);
  const double u = (low - kTangents[k] * high) / (high + kTangents[k] * low);
  const double angle = kAngles[k] + (u - arcTangentRest(u));
  const int octants = static_cast<int>(ay > ax) + 2 * static_cast<int>(x < 0);
  return std::copysign(kBases[octants] + kSenses[octants] * angle, y);
}

/// Both at once.
inline Pair arcTangent(Pair y, Pair x) {
  const Pair ax = abs(x), ay = abs(y);
  const Pair low = least(ax, ay);
  const Pair high = greatest(greatest(ax, ay), both(1e-300));
  const PairMask first = low > 0.19891236737965801 * high;
  const PairMask second = low > 0.66817863791929892 * high;
  const auto among = [&](double a, double b, double c) {
    return select(second, both(c), select(first, both(b), both(a)));
  };
  const Pair tangent = among(0, 0.41421356237309503, 1);
  const Pair u = (low - tangent * high) / (high + tangent * low);
  const Pair acute = among(0, std::numbers::pi / 8, std::numbers::pi / 4) + (u - arcTangentRest(u));
  const Pair upright = select(ay > ax, std::numbers::pi / 2 - acute, acute);
  const Pair angle = select(x < 0.0, std::numbers::pi - upright, upright);
  const PairMask sign = reinterpret_cast<PairMask>(y) & reinterpret_cast<PairMask>(both(-0.0));
  return reinterpret_cast<Pair>(reinterpret_cast<PairMask>(angle) | sign);
}

/// An angle between -30 and 30 turns in (-pi, pi].
inline double inHalfTurns(double angle) {
  constexpr double kToInteger = 0x1.8p52;  // its last bit is 1: adding it rounds to an integer
  constexpr double kTurn = 2 * std::numbers::pi;
  const double turns = (angle * (1 / kTurn) + kToInteger) - kToInteger;
  const double rest = angle - turns * kTurn;
  return rest <= -std::numbers::pi ? std::numbers::pi : rest + 0.0;
}

}  // namespace korvo::rotations::detail
