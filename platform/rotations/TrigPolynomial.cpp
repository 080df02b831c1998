#include "platform/rotations/TrigPolynomial.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

#include "platform/rotations/SinCos.h"

namespace korvo::rotations::detail {
namespace {

constexpr double kTurn = 2 * std::numbers::pi;
constexpr int kIntervals = 16;
constexpr double kFirst = 0.1;    ///< Where the circle is cut: square lines have nothing there.
constexpr double kNarrow = 1e-9;  ///< Half a width at which value and slope are both rounding.

/// Of a monotone stretch: Newton's steps where they stay inside, else halving.
double rootBetween(const TrigPolynomial& f, double low, double high, bool rises) {
  const TrigPolynomial slope = f.derivative();
  double x = 0.5 * (low + high);
  for (int i = 0; i < 80 && high - low > 1e-16; ++i) {
    const double value = f.at(x);
    if (value == 0) return x;
    ((value < 0) == rises ? low : high) = x;
    double next = x - value / slope.at(x);
    if (!(next > low && next < high)) next = 0.5 * (low + high);
    if (std::fabs(next - x) < 1e-16) return next;
    x = next;
  }
  return x;
}

class Extremes {
 public:
  explicit Extremes(const TrigPolynomial& f)
      : slope_(f.derivative()),
        curve_(slope_.derivative()),
        bound_(std::hypot(f.c1, f.s1) + 8 * std::hypot(f.c2, f.s2)) {
    const auto end = [](int i) { return kFirst + i * (kTurn / kIntervals); };
    const double first = slope_.at(end(0));
    double before = first;
    for (int i = 0; i < kIntervals; ++i) {
      const double after = i + 1 < kIntervals ? slope_.at(end(i + 1)) : first;
      look({end(i), before}, {end(i + 1), after});
      before = after;
    }
  }

  int count() const { return count_; }
  double operator[](int i) const { return angles_[i]; }

 private:
  struct End {
    double angle;
    double slope;
  };

  void push(double angle) {
    if (count_ < static_cast<int>(angles_.size())) angles_[count_++] = angle;
  }

  /// From left to right, so the extremes are in order. Neighbours share their end and its slope: an
  /// extreme on it belongs to one of them whatever rounding says.
  void look(const End& left, const End& right) {
    const double h = 0.5 * (right.angle - left.angle), m = left.angle + h;
    const double s = slope_.at(m), c = curve_.at(m);
    if (std::fabs(s) > std::fabs(c) * h + 0.5 * bound_ * h * h) return;
    if (std::fabs(c) > bound_ * h) {
      if ((left.slope < 0) != (right.slope < 0)) {
        push(rootBetween(slope_, left.angle, right.angle, left.slope < 0));
      }
      return;
    }
    if (h < kNarrow) return push(m);
    look(left, {m, s});
    look({m, s}, right);
  }

  TrigPolynomial slope_, curve_;
  double bound_;
  int count_ = 0;
  std::array<double, 12> angles_{};
};

}  // namespace

double TrigPolynomial::at(double angle) const {
  const SinCos a = sinCos(angle);
  return c0 + (c1 * a.cos + s1 * a.sin) +
         (c2 * (a.cos - a.sin) * (a.cos + a.sin) + s2 * (2 * a.sin * a.cos));
}

double TrigPolynomial::largest() const {
  return std::max({std::fabs(c0), std::fabs(c1), std::fabs(s1), std::fabs(c2), std::fabs(s2)});
}

void TrigPolynomial::divide(double by) { *this = {c0 / by, c1 / by, s1 / by, c2 / by, s2 / by}; }

TrigPolynomial::Roots TrigPolynomial::roots(double rounding) const {
  Roots found;
  const Extremes extremes(*this);
  std::array<double, 12> values{};
  for (int i = 0; i < extremes.count(); ++i) {
    values[i] = at(extremes[i]);
    if (std::fabs(values[i]) <= rounding) found.push({extremes[i], true});
  }
  for (int i = 0; i < extremes.count(); ++i) {
    const int next = (i + 1) % extremes.count();
    const bool isTaken = std::min(std::fabs(values[i]), std::fabs(values[next])) <= rounding;
    if (isTaken || (values[i] < 0) == (values[next] < 0)) continue;
    const double end = extremes[next] + (next == 0 ? kTurn : 0);
    found.push({rootBetween(*this, extremes[i], end, values[i] < 0), false});
  }
  return found;
}

}  // namespace korvo::rotations::detail
