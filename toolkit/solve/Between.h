#pragma once

#include <algorithm>
#include <cmath>

namespace korvo {

/// A zero of a continuous function between two places where it has different signs: false position,
/// with the value halved of an end that stays (Illinois).
template <typename Value>
double zeroBetween(double a, double b, double atA, double atB, double small, Value value) {
  double x = a;
  for (int i = 0; i < 60 && std::abs(b - a) > 1e-15; ++i) {
    x = std::clamp(b - atB * (b - a) / (atB - atA), std::min(a, b), std::max(a, b));
    const double here = value(x);
    if (!(std::abs(here) > small)) break;
    if ((here < 0) != (atB < 0)) {
      a = b, atA = atB;
    } else {
      atA /= 2;
    }
    b = x, atB = here;
  }
  return x;
}

/// Where a function that changes by less than a thousand for each 1 is least, by golden section;
/// left as soon as it is 0 or cannot be anywhere between.
template <typename Value>
double lowestBetween(double a, double b, Value value) {
  constexpr double kGolden = 0.6180339887498949;
  double c = b - kGolden * (b - a), d = a + kGolden * (b - a);
  double atC = value(c), atD = value(d);
  while (b - a > std::max(1e-15, 1e-3 * std::min(atC, atD)) && std::min(atC, atD) > 0) {
    if (atC < atD) {
      b = d, d = c, atD = atC;
      c = b - kGolden * (b - a), atC = value(c);
    } else {
      a = c, c = d, atC = atD;
      d = a + kGolden * (b - a), atD = value(d);
    }
  }
  return atC < atD ? c : d;
}

}  // namespace korvo
