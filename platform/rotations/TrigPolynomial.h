#pragma once

#include "platform/rotations/SinCos.h"

namespace korvo::rotations::detail {

/// c0 + c1 cos + s1 sin + c2 cos 2. + s2 sin 2.
struct TrigPolynomial {
  double c0, c1, s1, c2, s2;

  struct Root {
    double angle;
    bool isDouble;  ///< Two roots close to each other, or an extreme that just misses 0.
  };
  struct Roots {
    int count = 0;
    Root roots[16]{};

    void push(const Root& r) {
      if (count < 16) roots[count++] = r;
    }
    const Root* begin() const { return roots; }
    const Root* end() const { return roots + count; }
  };

  double at(const SinCos& a) const {
    return c0 + (c1 * a.cos + s1 * a.sin) +
           (c2 * (a.cos - a.sin) * (a.cos + a.sin) + s2 * (2 * a.sin * a.cos));
  }
  TrigPolynomial derivative() const { return {0, s1, -c1, 2 * s2, -2 * c2}; }
  double largest() const;  ///< Of the coefficients, without sign.
  void divide(double by);

  /// All roots of a polynomial with coefficients up to 1. An extreme whose value is within
  /// `rounding` stands for itself and the roots on both its sides.
  ///
  /// @source  The extremes are isolated first: none is in [m - h, m + h] when |f'(m)| > |f''(m)| h
  /// +
  ///          K h^2 / 2, at most one when |f''(m)| > K h, where K bounds |f'''|; else the interval
  ///          is halved. Short ones are looked at with Taylor's whole series, or three extremes in
  ///          one place would leave thousands. Between two extremes the polynomial is monotone.
  Roots roots(double rounding) const;
};

}  // namespace korvo::rotations::detail
