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
constexpr double kNarrow = 1e-9;  ///< An extreme this far off is as high within 1e-18.
constexpr double kFlat = 1e-5;    ///< At the end of the halving, three roots in one leave less.
constexpr double kFine = 1e-3;    ///< From here on an interval is looked at with the whole series.
constexpr double kRounding = 1e-15;  ///< Of a slope, for each 1 of the bound of its derivatives.
constexpr double kNothing = 4e-15;   ///< As little is rounding alone.
constexpr double kSure = 1e-15;      ///< Rounding of an angle.

/// Of a monotone stretch: Newton's steps where they stay inside, else halving, until a step is no
/// longer than `step`.
double rootBetween(const TrigPolynomial& f, double low, double high, bool rises, double step) {
  const TrigPolynomial slope = f.derivative();
  double x = 0.5 * (low + high);
  for (int i = 0; i < 80; ++i) {
    const SinCos a = sinCos(x);
    const double value = f.at(a);
    ((value < 0) == rises ? low : high) = x;
    double next = x - value / slope.at(a);
    if (std::fabs(next - x) <= step) return next;
    if (!(next > low && next < high)) next = 0.5 * (low + high);
    if (std::fabs(next - x) <= step) return next;
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
    if (!(bound_ > 0) || !std::isfinite(bound_)) return;  // a constant has none
    const auto end = [](int i) { return kFirst + i * (kTurn / kIntervals); };
    const double first = slope_.at(sinCos(end(0)));
    double before = first;
    for (int i = 0; i < kIntervals; ++i) {
      const double after = i + 1 < kIntervals ? slope_.at(sinCos(end(i + 1))) : first;
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

  /// Around a slope with more than one root in one place, many intervals are left.
  void pushFlat(double angle) {
    if (count_ == 0 || angle - angles_[count_ - 1] > kFlat) push(angle);
  }

  /// From left to right, so the extremes are in order. Neighbours share their end and its slope: an
  /// extreme on it belongs to one of them whatever rounding says.
  void look(const End& left, const End& right) {
    const double h = 0.5 * (right.angle - left.angle), m = left.angle + h;
    const SinCos a = sinCos(m);
    const double s = slope_.at(a), c = curve_.at(a);
    if (std::fabs(s) > std::fabs(c) * h + 0.5 * bound_ * h * h) return;
    if (std::fabs(c) > bound_ * h) {
      if ((left.slope < 0) != (right.slope < 0)) {
        push(rootBetween(slope_, left.angle, right.angle, left.slope < 0, kNarrow));
      }
      return;
    }
    if (h < kFine && isFound(left, right, {m, s}, a)) return;
    look(left, {m, s});
    look({m, s}, right);
  }

  /// With the first two terms alone, three extremes in one place leave thirty thousand intervals.
  /// Whether nothing is left to look for in this one.
  bool isFound(const End& left, const End& right, const End& middle, const SinCos& a) {
    const TrigPolynomial second = curve_.derivative(), third = second.derivative();
    const double h = 0.5 * (right.angle - left.angle);
    const double c = std::fabs(curve_.at(a)) * h, d = std::fabs(second.at(a)) * h * h / 2;
    const double e = std::fabs(third.at(a)) * h * h * h / 6;
    const double rest = 4 * bound_ * h * h * h * h / 24;  // each derivative at most doubles
    const double value = std::fabs(middle.slope), beside = c + d + e + rest;
    if (value > beside + kRounding * bound_) return true;
    if (value + beside <= kNothing * bound_ || h < kNarrow) {
      pushFlat(middle.angle);
      return true;
    }
    if (c <= 2 * d + 3 * e + 4 * rest) return false;
    if ((left.slope < 0) != (right.slope < 0)) {
      push(rootBetween(slope_, left.angle, right.angle, left.slope < 0, kNarrow));
    }
    return true;
  }

  TrigPolynomial slope_, curve_;
  double bound_;
  int count_ = 0;
  std::array<double, 12> angles_{};
};

}  // namespace

double TrigPolynomial::largest() const {
  return std::max({std::fabs(c0), std::fabs(c1), std::fabs(s1), std::fabs(c2), std::fabs(s2)});
}

void TrigPolynomial::divide(double by) { *this = {c0 / by, c1 / by, s1 / by, c2 / by, s2 / by}; }

TrigPolynomial::Roots TrigPolynomial::roots(double rounding) const {
  Roots found;
  const Extremes extremes(*this);
  std::array<double, 12> values{};
  for (int i = 0; i < extremes.count(); ++i) {
    values[i] = at(sinCos(extremes[i]));
    if (std::fabs(values[i]) <= rounding) found.push({extremes[i], true});
  }
  for (int i = 0; i < extremes.count(); ++i) {
    const int next = (i + 1) % extremes.count();
    const bool isTaken = std::min(std::fabs(values[i]), std::fabs(values[next])) <= rounding;
    if (isTaken || (values[i] < 0) == (values[next] < 0)) continue;
    const double end = extremes[next] + (next == 0 ? kTurn : 0);
    found.push({rootBetween(*this, extremes[i], end, values[i] < 0, kSure), false});
  }
  return found;
}

}  // namespace korvo::rotations::detail
