#pragma once

#include <array>
#include <cmath>
#include <numbers>
#include <utility>
#include <vector>

#include "toolkit/solve/Between.h"
#include "toolkit/solve/Faces.h"

namespace korvo {

/// The zeros of what comes and goes at most four times a turn: of waves of one to four times an
/// angle (radians). Where they lie the waves say, and what the function itself says is exact. No
/// more places are given than there can be zeros, eight, but for a few where several are one but
/// for rounding; 16 calls of the function, and at most 62 for each zero.
///
/// @source  Taylor's series with Bernstein's bound of the derivatives tells of each stretch whether
///          there is no zero, or one, or nothing but rounding; else it is cut in half. By its first
///          two terms alone eight zeros in one place were a million stretches.
template <typename Function>
class WaveZeros {
 public:
  explicit WaveZeros(Function function) : function_(function) {
    constexpr int kLooks = 16;
    for (int look = 0; look < kLooks; ++look) {
      const double angle = kTurn * look / kLooks;
      const double value = function(angle) * 2 / kLooks;
      for (int k = 0; k <= kMost; ++k) {
        cosines_[at(k)] += value * std::cos(k * angle);
        sines_[at(k)] += value * std::sin(k * angle);
      }
    }
    cosines_[0] /= 2;
    for (int k = 0; k <= kMost; ++k) height_ += std::hypot(cosines_[at(k)], sines_[at(k)]);
  }

  /// In degrees, with those where it only touches zero.
  void addTo(std::vector<double>& out) const {
    if (height_ > 0 && std::isfinite(height_)) add(0.0, kTurn, out);
  }

 private:
  static constexpr double kTurn = 2 * std::numbers::pi;
  static constexpr int kMost = 4;
  static constexpr int kTerms = 2 * kMost;  ///< As many zeros can be in one place.

  /// The terms of Taylor's series at an angle, for the ends of what is within `half` of it, and the
  /// most that all behind them come to: no derivative is higher than four times the one before.
  struct Series {
    std::array<double, kTerms + 1> terms{};
    double rest = 0.0;

    /// The most that the derivative can differ from its first term, or that the value can.
    double slopeBeside() const {
      double sum = (kTerms + 1) * rest;
      for (int j = 2; j <= kTerms; ++j) sum += j * std::abs(terms[at(j)]);
      return sum;
    }
    double valueBeside() const {
      double sum = rest;
      for (int j = 1; j <= kTerms; ++j) sum += std::abs(terms[at(j)]);
      return sum;
    }
  };

  Series seriesAt(double angle, double half) const {
    Series s;
    for (int k = 0; k <= kMost; ++k) {
      double value = cosines_[at(k)] * std::cos(k * angle) + sines_[at(k)] * std::sin(k * angle);
      double slope = sines_[at(k)] * std::cos(k * angle) - cosines_[at(k)] * std::sin(k * angle);
      double scale = 1.0;
      for (int j = 0; j <= kTerms; ++j) {
        s.terms[at(j)] += scale * value;
        scale *= k * half / (j + 1);
        value = std::exchange(slope, -value);
      }
    }
    s.rest = height_;
    for (int j = 0; j <= kTerms; ++j) s.rest *= kMost * half / (j + 1);
    s.rest *= std::exp(kMost * half);  // the first of the terms behind, and all behind that
    return s;
  }

  /// Between two places there is no zero, or nothing but rounding, or one zero where all rises or
  /// falls, or they are cut in half.
  void add(double a, double b, std::vector<double>& out) const {
    const double middle = (a + b) / 2, half = (b - a) / 2;
    const Series s = seriesAt(middle, half);
    const double value = std::abs(s.terms[0]), beside = s.valueBeside();
    if (value > beside + kRounding * height_) return;
    if (value + beside <= kNothing * height_) return addTouched(middle, half, out);
    if (std::abs(s.terms[1]) > s.slopeBeside()) return addOne(a, b, out);
    add(a, middle, out);
    add(middle, b, out);
  }

  void addOne(double a, double b, std::vector<double>& out) const {
    // Where the circle is cut rounding must not tell one place from the other.
    const double atA = function_(a), atB = function_(b < kTurn ? b : 0.0);
    if ((atA < 0) == (atB < 0)) return;
    out.push_back(zeroBetween(a, b, atA, atB, 0.0, function_) * kRadToDeg);
  }

  /// Several zeros in one place are one of the last derivative that has any there.
  void addTouched(double middle, double half, std::vector<double>& out) const {
    constexpr int kSteps = 4;
    constexpr double kAcross = 16.0;  // halves: more is another place
    double place = middle;
    for (int i = 0; i < kSteps; ++i) {
      const double step = half * stepToLast(seriesAt(place, half), half);
      if (std::abs(place + step - middle) <= kAcross * half) place += step;
    }
    const double degrees = place * kRadToDeg;
    if (out.empty() || std::abs(degrees - out.back()) > kHair) out.push_back(degrees);
  }

  /// In halves: a step of Newton's to the zero of the derivative before the first that clearly has
  /// none.
  double stepToLast(const Series& s, double half) const {
    double degree = height_;  // what a term of the height comes to
    for (int j = 1; j <= kTerms; ++j) {
      degree *= kMost * half / j;
      if (std::abs(s.terms[at(j)]) > kClearly * degree) {
        return -s.terms[at(j - 1)] / (j * s.terms[at(j)]);
      }
    }
    return 0.0;
  }

  // Of the height.
  static constexpr double kRounding = 1e-15;
  static constexpr double kNothing = 4e-15;
  static constexpr double kClearly = 1e-4;

  Function function_;
  std::array<double, kMost + 1> cosines_{}, sines_{};
  double height_ = 0.0;
};

}  // namespace korvo
