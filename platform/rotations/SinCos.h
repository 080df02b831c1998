#pragma once

#include <bit>
#include <cmath>

#include "platform/rotations/Pair.h"

namespace korvo::rotations {

/// What a turn is made of; versine is 1 - cos, with all its digits at small angles too.
template <typename Real>
struct SinCosOf {
  Real sin;
  Real cos;
  Real versine;
};

using SinCos = SinCosOf<double>;

/// Angles that `sinCosWithin` takes are below this (radians).
inline constexpr double kMostSinCos = 1e5;

/// Sine, cosine and versine of `angle` (radians), without a branch that depends on the angle: in a
/// chain of joints the mispredicted branches of the C library's functions cost more than the rest.
/// Both of a pair are what each would be alone, bit by bit.
///
/// @source  Cody and Waite's reduction by multiples of pi/2, which is given in two pieces of 33
///          bits, so that their products with up to 17 bits are exact, and a rest; then the Taylor
///          series up to r^17, whose next terms are below 1e-19 for |r| <= pi/4.
/// @errors  2e-16 of sine and cosine, 3e-16 of the versine, absolute; below pi/4 the versine keeps
///          its digits. Angles from kMostSinCos on are not for this one.
template <typename Real>
inline SinCosOf<Real> sinCosWithin(Real angle) {
  using Bits = detail::BitsOf<Real>;
  constexpr double kToInteger = 0x1.8p52;  // its last bit is 1: adding it rounds to an integer
  const Real shifted = angle * 0.6366197723675814 + kToInteger;  // 2 / pi
  const Real n = shifted - kToInteger;
  const Real r =
      ((angle - n * 1.5707963267341256) - n * 6.077100506303966e-11) - n * 2.0222662487959506e-21;

  constexpr double f3 = 6, f4 = 24, f5 = 120, f6 = 720, f7 = 5040, f8 = 40320, f9 = 362880;
  constexpr double f10 = f9 * 10, f11 = f10 * 11, f12 = f11 * 12, f13 = f12 * 13, f14 = f13 * 14;
  constexpr double f15 = f14 * 15, f16 = f15 * 16, f17 = f16 * 17;
  const Real z = r * r, z2 = z * z, z4 = z2 * z2;
  const Real sinR = r - r * z *
                            ((1 / f3 - z * (1 / f5)) + z2 * (1 / f7 - z * (1 / f9)) +
                             z4 * ((1 / f11 - z * (1 / f13)) + z2 * (1 / f15 - z * (1 / f17))));
  const Real versineR = 0.5 * z - z2 * ((1 / f4 - z * (1 / f6)) + z2 * (1 / f8 - z * (1 / f10)) +
                                        z4 * ((1 / f12 - z * (1 / f14)) + z2 * (1 / f16)));

  // The number of quarter turns stands in the last bits: odd ones swap, two of four change signs.
  const auto quarter = std::bit_cast<Bits>(shifted);
  const auto sinBits = std::bit_cast<Bits>(sinR);
  const auto cosBits = std::bit_cast<Bits>(1.0 - versineR);
  const Bits swapped = (sinBits ^ cosBits) & (0 - (quarter & 1));
  const Real s = std::bit_cast<Real>(sinBits ^ swapped ^ ((quarter & 2) << 62));
  const Real c = std::bit_cast<Real>(cosBits ^ swapped ^ (((quarter + 1) & 2) << 62));
  // By bits, not by a comparison of the quarter: lanes of 64 bits would be compared one by one.
  const Bits isFirst = ((quarter | quarter >> 1) & 1) - 1;  // all bits, or none
  const auto versine =
      (isFirst & std::bit_cast<Bits>(versineR)) | (~isFirst & std::bit_cast<Bits>(1.0 - c));
  return {s, c, std::bit_cast<Real>(versine)};
}

/// The same for every angle: those from kMostSinCos on, and those that are not finite, go to the C
/// library.
inline SinCos sinCos(double angle) {
  if (std::fabs(angle) < kMostSinCos) return sinCosWithin(angle);
  const double c = std::cos(angle);
  return {std::sin(angle), c, 1 - c};
}

}  // namespace korvo::rotations
