// Targets that leave one rotary joint free: the others follow it, and the limits cut its circle.
#include <algorithm>
#include <cmath>
#include <vector>

#include "toolkit/solve/Core.h"

using zgeo::UVec3d;

namespace korvo {
namespace {

constexpr double kTurn = 360.0;

/// A root may be a hair outside what it bounds (degrees).
constexpr double kHair = 1e-9;

/// a + b cos x + c sin x.
struct Wave {
  double a = 0.0;
  double b = 0.0;
  double c = 0.0;

  /// From its values at 0, 90 and 180 degrees.
  static Wave through(double at0, double at90, double at180) {
    const double a = (at0 + at180) / 2;
    return {a, (at0 - at180) / 2, at90 - a};
  }

  Wave operator-(const Wave& o) const { return {a - o.a, b - o.b, c - o.c}; }
  Wave operator*(double s) const { return {a * s, b * s, c * s}; }

  /// Where it is zero, in degrees; where it only comes near zero that place, too.
  void addZeros(std::vector<double>& out) const {
    const double r = std::hypot(b, c);
    if (!(r > 0) || std::abs(a) > r * (1 + 1e-12)) return;
    const double middle = std::atan2(c, b) * kRadToDeg;
    const double aside = std::acos(std::clamp(-a / r, -1.0, 1.0)) * kRadToDeg;
    out.push_back(middle - aside);
    out.push_back(middle + aside);
  }
};

class Family {
 public:
  Family(const Query& query, const Freedom& freedom)
      : query_(query), freedom_(freedom), joint_(query.core.joint(freedom.free)) {}

  bool nearest(Values& values) const {
    const double start = std::clamp(query_.start(freedom_.free), joint_.min, joint_.max);
    if (take(start, values)) return true;
    if (query_.limits == Limits::ignored) return false;
    return query_.core.slides.size() == 3 ? fromEdges(start, values) : fromSteps(start, values);
  }

 private:
  /// The member with the free joint at `degrees`, if it is inside the limits.
  bool take(double degrees, Values& values) const {
    query_.value(freedom_.free, values) = degrees;
    if (freedom_.other >= 0) {
      const Joint& other = query_.core.joint(freedom_.other);
      const double start = query_.start(freedom_.other);
      const double value = freedom_.offset + freedom_.slope * degrees;
      const TurnRange range = turnsOf(other, value, start, query_.limits);
      if (range.count == 0) return false;
      const int k = std::clamp(static_cast<int>(std::lround((start - range.first) / kTurn)), 0,
                               range.count - 1);
      query_.value(freedom_.other, values) = onLimit(other, range[k]);
    }
    return carry(query_, values);
  }

  /// What bounds the members inside the limits is an end of some joint's travel. The travels of
  /// three linear joints are quotients of two waves in the free angle: by Cramer's rule each
  /// triple product holds directions and ways that turn with it at most once.
  bool fromEdges(double start, Values& values) const {
    std::vector<double> edges;
    addLinearEdges(values, edges);
    addOwnEdges(edges);
    addOtherEdges(edges);
    std::vector<double> places;
    for (const double edge : edges) {
      for (const double hair : {0.0, -kHair, kHair}) addTurned(edge + hair, start, places);
    }
    std::sort(places.begin(), places.end(),
              [start](double a, double b) { return std::abs(a - start) < std::abs(b - start); });
    return std::any_of(places.begin(), places.end(),
                       [&](double place) { return take(place, values); });
  }

  /// Without such a form: degree by degree away from the start.
  bool fromSteps(double start, Values& values) const {
    for (int step = 1; step <= 360; ++step) {
      for (const double place : {start + step, start - step}) {
        if (isInside(joint_, place) && take(place, values)) return true;
      }
    }
    return false;
  }

  void addTurned(double degrees, double start, std::vector<double>& out) const {
    const TurnRange range = turnsOf(joint_, degrees, start, Limits::kept);
    for (int k = 0; k < range.count; ++k) out.push_back(onLimit(joint_, range[k]));
  }

  void addOwnEdges(std::vector<double>& out) const {
    for (const double limit : {joint_.min, joint_.max}) {
      if (std::isfinite(limit)) out.push_back(limit);
    }
  }

  void addOtherEdges(std::vector<double>& out) const {
    if (freedom_.other < 0 || freedom_.slope == 0.0) return;
    const Joint& other = query_.core.joint(freedom_.other);
    for (const double end : listedRange(other, query_.start(freedom_.other))) {
      out.push_back((end - freedom_.offset) / freedom_.slope);
    }
  }

  void addLinearEdges(const Values& values, std::vector<double>& out) const {
    const Products at0 = productsAt(0, values), at90 = productsAt(90, values),
                   at180 = productsAt(180, values);
    const auto wave = [&](std::size_t i) { return Wave::through(at0[i], at90[i], at180[i]); };
    const Wave volume = wave(3);
    for (std::size_t i = 0; i < 3; ++i) {
      const Joint& slide = query_.core.joint(query_.core.slides[i]);
      for (const double limit : {slide.min, slide.max}) {
        if (std::isfinite(limit)) (wave(i) - volume * limit).addZeros(out);
      }
    }
    volume.addZeros(out);
  }

  /// The triple products of Cramer's rule: with the way in the place of each direction, and of the
  /// directions alone.
  using Products = std::array<double, 4>;

  Products productsAt(double degrees, Values values) const {
    query_.value(freedom_.free, values) = degrees;
    if (freedom_.other >= 0) {
      query_.value(freedom_.other, values) = freedom_.offset + freedom_.slope * degrees;
    }
    for (const int i : query_.core.slides) query_.value(i, values) = 0.0;
    UVec3d u[3];
    zgeo::UMatrix placed;
    std::size_t next = 0;
    const JointChain& chain = query_.core.chain;
    for (int i = 0; i < static_cast<int>(chain.joints.size()); ++i) {
      const Joint& joint = query_.core.joint(i);
      if (next < 3 && query_.core.slides[next] == i) placed.applyDir(u[next++] = joint.direction);
      moveBy(joint, valueOf(joint, values), placed);
    }
    UVec3d direction = chain.toolDirection;
    placed.applyDir(direction);
    const UVec3d way = query_.target.tip - chain.tipOf({placed * chain.toolPoint, direction});
    return {way * (u[1] ^ u[2]), u[0] * (way ^ u[2]), u[0] * (u[1] ^ way), u[0] * (u[1] ^ u[2])};
  }

  const Query& query_;
  const Freedom& freedom_;
  const Joint& joint_;
};

}  // namespace

bool nearestMember(const Query& query, const Freedom& freedom, Values& values) {
  return Family(query, freedom).nearest(values);
}

}  // namespace korvo
