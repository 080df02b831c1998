#include "platform/solidra/Nurbs.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace solidra {

namespace {

bool isSameKnot(double a, double b, double range) {
  return std::abs(a - b) <= kSameKnot * std::max(range, std::max(std::abs(a), std::abs(b)));
}

// Copies and merges; false when a value is not finite or smaller than the one before.
bool copyKnots(const CStd_Array1<double>& values, std::vector<double>& out) {
  const double range = values[static_cast<int>(out.size()) - 1] - values[0];
  if (!std::isfinite(range)) return false;
  for (std::size_t i = 0; i < out.size(); ++i) {
    const double knot = values[static_cast<int>(i)];
    if (!std::isfinite(knot) || (i > 0 && knot < values[static_cast<int>(i) - 1])) return false;
    out[i] = i > 0 && isSameKnot(out[i - 1], knot, range) ? out[i - 1] : knot;
  }
  return true;
}

// The first and the last value may stand once more than the degree, the others not.
bool areMultiplicities(const Knots& k) {
  const std::vector<double>& values = k.values;
  for (std::size_t i = 0, j = 0; i < values.size(); i = j) {
    while (j < values.size() && values[j] == values[i]) ++j;
    const bool atEnd = i == 0 || j == values.size();
    if (static_cast<int>(j - i) > k.degree + (atEnd ? 1 : 0)) return false;
  }
  return true;
}

struct Sums {
  double x = 0, y = 0, z = 0, w = 0;
};

CGeom_XYZ divided(const Sums& s) { return {s.x / s.w, s.y / s.w, s.z / s.w}; }

double coordinate(const CGeom_XYZ& p, int axis) { return axis == 0 ? p.x : axis == 1 ? p.y : p.z; }

// Samples on each span: where the spans are few, twice as many as a coordinate can turn there;
// where they are many, two.
std::vector<double> samplesOf(const Knots& knots, double from, double to) {
  const std::vector<double> breaks = knots.breaks(from, to);
  const int each =
      std::clamp(512 / static_cast<int>(breaks.size()), 2, std::max(8, 2 * knots.degree));
  std::vector<double> out{breaks.front()};
  for (std::size_t i = 1; i < breaks.size(); ++i)
    for (int j = 1; j <= each; ++j)
      out.push_back(breaks[i - 1] + (breaks[i] - breaks[i - 1]) * j / each);
  return out;
}

/// How far out a point of a surface is in one direction.
struct Extreme {
  double value = -HUGE_VAL;
  CGeom2d_XY at;
};

/// Points of a surface in rows and columns.
class PointGrid {
 public:
  explicit PointGrid(const Surface& s)
      : us_(samplesOf(s.u, s.start.x, s.end.x)), vs_(samplesOf(s.v, s.start.y, s.end.y)) {
    points_.reserve(us_.size() * vs_.size());
    for (const double v : vs_)
      for (const double u : us_) points_.push_back(s.point(u, v));
  }

  /// Those further out than the samples around them, the outermost first, at most `most`; of equal
  /// ones side by side the first alone.
  std::vector<Extreme> peaks(int axis, double sign, std::size_t most) const {
    std::vector<Extreme> found;
    for (std::size_t j = 0; j < vs_.size(); ++j)
      for (std::size_t i = 0; i < us_.size(); ++i)
        if (isPeak(i, j, axis, sign)) found.push_back({value(i, j, axis, sign), {us_[i], vs_[j]}});
    const auto end = found.begin() + static_cast<std::ptrdiff_t>(std::min(most, found.size()));
    std::partial_sort(found.begin(), end, found.end(),
                      [](const Extreme& a, const Extreme& b) { return a.value > b.value; });
    found.erase(end, found.end());
    return found;
  }

  /// Between two samples, on average.
  CGeom2d_XY step(const Surface& s) const {
    return {(s.end.x - s.start.x) / static_cast<double>(us_.size() - 1),
            (s.end.y - s.start.y) / static_cast<double>(vs_.size() - 1)};
  }

 private:
  double value(std::size_t i, std::size_t j, int axis, double sign) const {
    return sign * coordinate(points_[j * us_.size() + i], axis);
  }

  bool isPeak(std::size_t i, std::size_t j, int axis, double sign) const {
    const double own = value(i, j, axis, sign);
    for (int k = 0; k < 9; ++k) {
      const std::size_t x = i + static_cast<std::size_t>(k % 3) - 1;
      const std::size_t y = j + static_cast<std::size_t>(k / 3) - 1;
      if (k == 4 || x >= us_.size() || y >= vs_.size()) continue;  // itself; beyond the rim
      const double other = value(x, y, axis, sign);
      if (k < 4 ? other >= own : other > own) return false;
    }
    return true;
  }

  std::vector<double> us_, vs_;
  std::vector<CGeom_XYZ> points_;
};

// Follows an extreme uphill: the step is halved whenever none of the eight neighbours is further
// out.
CGeom_XYZ climb(const Surface& s, int axis, double sign, Extreme best, CGeom2d_XY step) {
  for (int halvings = 0, moves = 0; halvings < 40 && moves < 400; ++moves) {
    Extreme next = best;
    for (int k = 0; k < 9; ++k) {
      const int column = k % 3 - 1, row = k / 3 - 1;
      const CGeom2d_XY at{std::clamp(best.at.x + column * step.x, s.start.x, s.end.x),
                          std::clamp(best.at.y + row * step.y, s.start.y, s.end.y)};
      const double value = sign * coordinate(s.point(at.x, at.y), axis);
      if (value > next.value) next = {value, at};
    }
    if (next.value > best.value) {
      best = next;
    } else {
      step = {step.x / 2, step.y / 2};
      ++halvings;
    }
  }
  return s.point(best.at.x, best.at.y);
}

}  // namespace

int Knots::span(double t) const {
  const auto first = values.begin() + degree;
  const auto last = values.begin() + count;
  auto it = std::upper_bound(first, last, t);  // the first knot beyond t
  if (it == last) it = std::lower_bound(first, last, *last);
  return static_cast<int>(std::max(it, first + 1) - values.begin()) - 1;
}

void Knots::basis(int span, double t, double* basis) const {
  std::array<double, kMaxDegree + 1> left{};
  std::array<double, kMaxDegree + 1> right{};
  const double* at = values.data() + span;
  basis[0] = 1;
  for (int j = 1; j <= degree; ++j) {
    left[j] = t - at[1 - j];
    right[j] = at[j] - t;
    double saved = 0;
    for (int r = 0; r < j; ++r) {
      const double share = basis[r] / (right[r + 1] + left[j - r]);
      basis[r] = saved + right[r + 1] * share;
      saved = left[j - r] * share;
    }
    basis[j] = saved;
  }
}

std::vector<double> Knots::breaks(double from, double to) const {
  std::vector<double> out{from};
  for (const double knot : values)
    if (knot > out.back() && knot < to) out.push_back(knot);
  out.push_back(to);
  return out;
}

bool makeKnots(const CStd_Array1<double>& values, int count, int order, Knots& out) {
  if (order < 2 || order > kMaxDegree + 1 || count < order) return false;
  const long long size = static_cast<long long>(count) + order;
  if (values.GetCount() < size) return false;
  out.degree = order - 1;
  out.count = count;
  out.values.resize(static_cast<std::size_t>(size));
  return copyKnots(values, out.values) && areMultiplicities(out) && out.end() > out.start();
}

bool areWeights(const CStd_Array1<double>& weights, long long count) {
  if (weights.GetCount() == 0) return true;
  if (weights.GetCount() < count) return false;
  double low = HUGE_VAL;
  double high = 0;
  for (int i = 0; i < count; ++i) {
    if (!std::isfinite(weights[i]) || weights[i] <= 0) return false;
    low = std::min(low, weights[i]);
    high = std::max(high, weights[i]);
  }
  return high / low <= kMaxWeightRatio;
}

CGeom_XYZ Surface::point(double atU, double atV) const {
  std::array<double, kMaxDegree + 1> bu;
  std::array<double, kMaxDegree + 1> bv;
  atU = std::clamp(atU, start.x, end.x);
  atV = std::clamp(atV, start.y, end.y);
  const int iu = u.span(atU);
  const int iv = v.span(atV);
  u.basis(iu, atU, bu.data());
  v.basis(iv, atV, bv.data());
  Sums sum;
  for (int j = 0; j <= v.degree; ++j) {
    const std::size_t row = static_cast<std::size_t>(iv - v.degree + j) * u.count + (iu - u.degree);
    const CGeom_XYZ* pole = poles.data() + row;
    const double* weight = weights.empty() ? nullptr : weights.data() + row;
    Sums line;
    for (int i = 0; i <= u.degree; ++i) {
      const double share = weight ? bu[i] * weight[i] : bu[i];
      line.x += share * pole[i].x;
      line.y += share * pole[i].y;
      line.z += share * pole[i].z;
      line.w += share;
    }
    sum.x += bv[j] * line.x;
    sum.y += bv[j] * line.y;
    sum.z += bv[j] * line.z;
    sum.w += bv[j] * line.w;
  }
  return divided(sum);
}

CGeom_XYZ Surface::unitPoint(const CGeom2d_XY& p) const {
  // The end itself for 1, whatever start + (end - start) rounds to.
  return point(p.x >= 1 ? end.x : start.x + p.x * (end.x - start.x),
               p.y >= 1 ? end.y : start.y + p.y * (end.y - start.y));
}

CGeom_Bound Surface::poleBound() const {
  CGeom_Bound bound = CGeom_Bound::Empty();
  for (const CGeom_XYZ& pole : poles) bound.Add(pole);
  return bound;
}

CGeom_Bound tightBound(const Surface& s) {
  // Of a wavy surface another peak than the highest sample's may be the highest.
  constexpr std::size_t kMostPeaks = 16;
  const PointGrid grid(s);
  CGeom_Bound bound = CGeom_Bound::Empty();
  for (int axis = 0; axis < 3; ++axis)
    for (const double sign : {1.0, -1.0})
      for (const Extreme& peak : grid.peaks(axis, sign, kMostPeaks))
        bound.Add(climb(s, axis, sign, peak, grid.step(s)));
  return bound;
}

CGeom2d_XY Curve::point(double t) const {
  std::array<double, kMaxDegree + 1> basis;
  const auto& [knots, poles, weights] = *shape;
  const int span = knots.span(t);
  knots.basis(span, t, basis.data());
  const std::size_t first = static_cast<std::size_t>(span - knots.degree);
  Sums sum;
  for (int i = 0; i <= knots.degree; ++i) {
    const double share = weights.empty() ? basis[i] : basis[i] * weights[first + i];
    sum.x += share * poles[first + i].x;
    sum.y += share * poles[first + i].y;
    sum.w += share;
  }
  return {sum.x / sum.w, sum.y / sum.w};
}

}  // namespace solidra
