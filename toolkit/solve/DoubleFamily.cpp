// Targets that leave two rotary joints free, about parallel lines along the tool: where the second
// has to stand so that the first finds a place inside the limits.
#include <algorithm>
#include <cmath>
#include <vector>

#include "toolkit/solve/Faces.h"
#include "toolkit/solve/WaveZeros.h"

using zgeo::UMatrix;
using zgeo::UVec3d;

namespace korvo {
namespace {

double square(double x) { return x * x; }

/// A face that both joints move: a wave of the first one's angle, whose parts are waves of the
/// second's, which are counted from some angle.
struct DoubleFace {
  Wave a, b, c;

  Wave at(double radians) const {
    const double cosine = std::cos(radians), sine = std::sin(radians);
    const auto value = [&](const Wave& w) { return w.a + w.b * cosine + w.c * sine; };
    return {value(a), value(b), value(c)};
  }

  static DoubleFace through(const Wave& at0, const Wave& at90, const Wave& at180) {
    return {Wave::through(at0.a, at90.a, at180.a), Wave::through(at0.b, at90.b, at180.b),
            Wave::through(at0.c, at90.c, at180.c)};
  }
};

/// Zero where two waves are zero at one angle.
double meeting(const Wave& p, const Wave& q) {
  return square(p.c * q.a - q.c * p.a) + square(p.a * q.b - q.a * p.b) -
         square(p.b * q.c - q.b * p.c);
}

/// Zero where a wave only touches zero.
double touching(const Wave& p) { return square(p.b) + square(p.c) - square(p.a); }

/// The faces and the ends of the second joint's places between them.
class Ends {
 public:
  Ends(const Query& query, int first, int second, Values values)
      : query_(query), free_{first, -1, 0.0, 0.0}, first_(query.core.joint(first)) {
    for (int i = 0; i < 32; ++i) {
      if (findFaces(second, 17.3 + 10.9 * i, values)) return;
    }
    faces_.clear();
  }

  /// In degrees, some turn of each.
  std::vector<double> places() const {
    std::vector<double> out;
    for (std::size_t i = 0; i < faces_.size(); ++i) {
      WaveZeros([&](double y) { return touching(faces_[i].at(y)); }).addTo(out);
      addWithOwnLimits(faces_[i], out);
      for (std::size_t j = 0; j < i; ++j) {
        WaveZeros([&](double y) { return meeting(faces_[i].at(y), faces_[j].at(y)); }).addTo(out);
      }
    }
    for (double& place : out) place += offset_;
    return out;
  }

 private:
  /// False where the faces are not the same ones at every angle looked at: where joints come to lie
  /// in one plane some are left out, and what makes them three may be another direction.
  bool findFaces(int second, double offset, Values values) {
    const auto facesAt = [&](double degrees) {
      query_.value(second, values) = offset + degrees;
      return facesOf(query_, free_, values);
    };
    const auto at0 = facesAt(0), at90 = facesAt(90), at180 = facesAt(180), other = facesAt(51.7);
    if (at0.size() != other.size() || at90.size() != other.size() || at180.size() != other.size()) {
      return false;
    }
    offset_ = offset;
    faces_.clear();
    for (std::size_t i = 0; i < other.size(); ++i) {
      faces_.push_back(DoubleFace::through(at0[i], at90[i], at180[i]));
      if (!isNear(faces_.back().at(51.7 * kDegToRad), other[i])) return false;
    }
    return true;
  }

  static bool isNear(const Wave& p, const Wave& q) {
    const double size = std::abs(q.a) + q.height() + 1.0;
    const Wave d = p - q;
    return std::abs(d.a) + d.height() <= 1e-9 * size;
  }

  void addWithOwnLimits(const DoubleFace& face, std::vector<double>& out) const {
    for (const double limit : {first_.min, first_.max}) {
      if (!std::isfinite(limit)) continue;
      const double cosine = std::cos(limit * kDegToRad), sine = std::sin(limit * kDegToRad);
      const auto part = [&](double a, double b, double c) { return a + b * cosine + c * sine; };
      const Wave there{part(face.a.a, face.b.a, face.c.a), part(face.a.b, face.b.b, face.c.b),
                       part(face.a.c, face.b.c, face.c.c)};
      there.addZeros(out);
    }
  }

  const Query& query_;
  Freedom free_;
  const Joint& first_;
  double offset_ = 0.0;
  std::vector<DoubleFace> faces_;
};

/// The first joint's line as it stands.
struct Line {
  UVec3d point, direction;

  double distance2(const UVec3d& p) const { return ((p - point) ^ direction).norm2(); }
};

Line lineOf(const Query& query, int joint, const Values& values) {
  UMatrix placed;
  for (int i = 0; i < joint; ++i)
    moveBy(query.core.joint(i), valueOf(query.core.joint(i), values), placed);
  UVec3d direction = query.core.joint(joint).direction;
  placed.applyDir(direction);
  return {placed * query.core.joint(joint).point, direction.normalised()};
}

/// The directions of the linear joints as they stand.
std::vector<UVec3d> slidesAt(const Query& query, const Values& values) {
  std::vector<UVec3d> slides;
  UMatrix placed;
  for (const Joint& joint : query.core.chain.joints) {
    if (joint.motion == Joint::Motion::slide && !joint.isLocked) {
      slides.push_back(joint.direction.normalised());
      placed.applyDir(slides.back());
    }
    moveBy(joint, valueOf(joint, values), placed);
  }
  return slides;
}

/// Whether there is one place of the linear joints alone that carries the tip as far along the
/// lines as the target is: in `values` then. So it is where all of them move along one direction.
bool carryAlong(const Query& query, int first, Values& values) {
  for (const int i : query.core.slides) query.value(i, values) = 0.0;
  const std::vector<UVec3d> slides = slidesAt(query, values);
  if (slides.empty()) return true;
  const double along = slides[0] * lineOf(query, first, values).direction;
  const auto isOther = [&](const UVec3d& d) { return (d ^ slides[0]).norm() > kFreeMm; };
  if (std::abs(along) < kFreeMm || std::any_of(slides.begin(), slides.end(), isOther)) return false;
  const UVec3d way = query.target.tip - query.core.chain.tipOf(query.core.chain.pose(values));
  query.value(query.core.slides[0], values) = way * lineOf(query, first, values).direction / along;
  return true;
}

}  // namespace

SolvedAngles solvedSecond(const Query& query, int first, int second, Values values) {
  query.value(first, values) = 23.7;  // like almost all others
  query.value(second, values) = 41.9;
  if (!carryAlong(query, first, values)) return {};
  const Line line = lineOf(query, first, values);
  const auto distance2At = [&](double degrees) {
    query.value(second, values) = degrees;
    return line.distance2(query.core.chain.tipOf(query.core.chain.pose(values)));
  };
  Wave wave = Wave::through(distance2At(0), distance2At(90), distance2At(180));
  if (!(wave.height() > kFreeMm * std::sqrt(std::abs(wave.a) + wave.height()))) return {};
  wave.a -= line.distance2(query.target.tip);
  const auto [one, other] = wave.lows();
  if (other - one < kOneRoot) return {1, {(one + other) / 2, 0.0}};
  return {one + 360 - other < kOneRoot ? 1 : 2, {one, other}};
}

std::vector<double> placesOfSecond(const Query& query, int first, int second,
                                   const Values& values) {
  const Joint& joint = query.core.joint(second);
  const double start = query.start(second);
  std::vector<double> places;
  for (const double limit : {joint.min, joint.max}) {
    if (std::isfinite(limit)) places.push_back(limit);
  }
  for (const double end : Ends(query, first, second, values).places()) {
    const TurnRange range = turnsOf(joint, end, start, query.limits);
    for (int k = 0; k < range.count; ++k) places.push_back(onLimit(joint, range[k]));
  }
  sortPlaces(start, places);
  return places;
}

}  // namespace korvo
