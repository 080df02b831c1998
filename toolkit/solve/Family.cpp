// Targets that leave one rotary joint free: the others follow it, and the limits cut its circle.
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "toolkit/solve/Faces.h"

using zgeo::UVec3d;

namespace korvo {
namespace {

constexpr double kTurn = 360.0;

/// A direction that makes linear joints three is so far from theirs (sine of the angle).
constexpr double kApart = 0.05;

/// The directions of the linear joints with a rotary one at some angle, and behind them the way
/// that they have to carry the tool.
using Ways = std::array<UVec3d, kMostAxes + 4>;

/// Linear joints, made three in independent directions by some that are none: these stand at 0.
class Slides {
 public:
  Slides(const SolverCore& core, const Ways& somewhere, double apart) : core_(core), ways_{} {
    for (count_ = 0; count_ < real(); ++count_) isNew(somewhere[at(count_)], 1e-9);
    for (const UVec3d& any :
         {UVec3d(0.31, 0.59, 0.745), UVec3d(0.83, -0.41, 0.38), UVec3d(-0.47, 0.27, 0.84)}) {
      if (isNew(any, apart)) others_[at(count_++ - real())] = any;
    }
  }

  int count() const { return count_; }
  int real() const { return static_cast<int>(core_.slides.size()); }
  bool isReal(int k) const { return k < real(); }
  bool areEnough() const { return count_ == real(); }

  /// With the rotary joint at 0, 90 and 180 degrees.
  void take(int quarter, const Ways& ways) {
    Ways& all = ways_[at(quarter)];
    all = ways;
    std::copy_n(others_.begin(), count_ - real(), all.begin() + real());
    all[at(count_)] = ways[at(real())];
  }

  /// The triple product of two directions and a third, or the way (`count()`). A turn takes each of
  /// them along or not, so that it comes and goes once a turn.
  Wave triple(int k, int a, int b) const {
    const auto product = [&](int quarter) {
      const Ways& w = ways_[at(quarter)];
      return w[at(k)] * (w[at(a)] ^ w[at(b)]);
    };
    return Wave::through(product(0), product(1), product(2));
  }
  Wave tripleOfWay(int a, int b) const { return triple(count_, a, b); }

  /// Whether a joint moves across the plane of two others.
  bool isAcross(int k, int a, int b) const {
    const Wave w = triple(k, a, b);
    return k != a && k != b && std::abs(w.a) + w.height() > 1e-10;
  }

  std::array<double, 2> limits(int k) const {
    if (!isReal(k)) return {0.0, 0.0};
    const Joint& joint = core_.joint(core_.slides[at(k)]);
    return {joint.min, joint.max};
  }

 private:
  bool isNew(UVec3d direction, double least) {
    for (int i = 0; i < rank_; ++i) direction -= base_[at(i)] * (base_[at(i)] * direction);
    if (rank_ == 3 || !(direction.norm() > least)) return false;
    base_[at(rank_++)] = direction.normalised();
    return true;
  }

  const SolverCore& core_;
  std::array<Ways, 3> ways_;
  std::array<UVec3d, 3> others_;
  std::array<UVec3d, 3> base_;
  int rank_ = 0;
  int count_ = 0;
};

class Family {
 public:
  Family(const Query& query, const Freedom& freedom)
      : query_(query), freedom_(freedom), joint_(query.core.joint(freedom.free)) {}

  bool nearest(Values& values) const {
    const double start = std::clamp(query_.start(freedom_.free), joint_.min, joint_.max);
    if (take(start, values)) return true;
    if (query_.limits == Limits::ignored) return false;
    return fromEdges(start, values);
  }

  SolvedAngles solved(const Values& values) const {
    if (somewhere(values).areEnough()) return {};
    const std::vector<Wave> wanted = wantedOf(slidesAt(values));
    const auto highest =
        std::max_element(wanted.begin(), wanted.end(),
                         [](const Wave& a, const Wave& b) { return a.height() < b.height(); });
    if (highest == wanted.end() || !(highest->height() > kFreeMm)) return {};
    auto [one, other] = highest->lows();
    for (double* degrees : {&one, &other}) settle(wanted, *degrees);
    if (other - one < kOneRoot) return {1, {(one + other) / 2, 0.0}};
    return {one + kTurn - other < kOneRoot ? 1 : 2, {one, other}};
  }

  std::vector<Wave> faces(const Values& values, double apart = kApart) const {
    const Slides slides = slidesAt(values, apart);
    std::vector<Wave> out;
    for (int b = 1; b < slides.count(); ++b) {
      for (int a = 0; a < b; ++a) {
        addFaces(slides, slides.tripleOfWay(a, b), 0, a, b, out);
        for (int k = b + 1; k < slides.count(); ++k) out.push_back(slides.triple(k, a, b));
      }
    }
    return out;
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
      const double turn = std::round((start - range.first) / kTurn);
      const double k = std::clamp(turn, 0.0, range.count - 1.0);
      query_.value(freedom_.other, values) = onLimit(other, range[static_cast<int>(k)]);
    }
    // Where linear joints come to lie in one plane they carry the tip as near as they can.
    return carry(query_, values) && (query_.takesMissed || residualOf(query_, values).isReached());
  }

  /// The members inside the limits end where the way lies on a face, or where some joint's own
  /// travel ends.
  bool fromEdges(double start, Values& values) const {
    std::vector<double> edges;
    for (const Wave& face : faces(values)) face.addZeros(edges);
    addOwnEdges(edges);
    addOtherEdges(edges);
    std::vector<double> places;
    for (const double edge : edges) {
      for (const double hair : {0.0, -kHair, kHair}) addTurned(edge + hair, start, places);
    }
    sortPlaces(start, places);
    return std::any_of(places.begin(), places.end(),
                       [&](double place) { return take(place, values); });
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

  /// The way, without those joints before `k` that are at a limit, out of a face.
  static void addFaces(const Slides& slides, const Wave& way, int k, int a, int b,
                       std::vector<Wave>& out) {
    while (k < slides.count() && !slides.isAcross(k, a, b)) ++k;
    if (k == slides.count()) return out.push_back(way);
    const auto [min, max] = slides.limits(k);
    if (std::isfinite(min)) addFaces(slides, way - slides.triple(k, a, b) * min, k + 1, a, b, out);
    if (max == min || !std::isfinite(max)) return;
    addFaces(slides, way - slides.triple(k, a, b) * max, k + 1, a, b, out);
  }

  /// Those that have to be zero.
  static std::vector<Wave> wantedOf(const Slides& slides) {
    std::vector<Wave> out;
    for (int b = 1; b < slides.count(); ++b) {
      for (int a = 0; a < b; ++a) {
        if (isWanted(slides, a, b)) out.push_back(slides.tripleOfWay(a, b));
      }
    }
    return out;
  }

  /// By what all of them say: next to the top of the highest a root of it is not sure.
  static void settle(const std::vector<Wave>& waves, double& degrees) {
    constexpr double kMost = 1e-4;  // radians: else it is none of theirs
    const double angle = degrees * kDegToRad, cosine = std::cos(angle), sine = std::sin(angle);
    double left = 0.0, steep = 0.0;
    for (const Wave& w : waves) {
      const double slope = w.c * cosine - w.b * sine;
      left += (w.a + w.b * cosine + w.c * sine) * slope;
      steep += slope * slope;
    }
    if (std::abs(left) <= kMost * steep) degrees -= left / steep * kRadToDeg;
  }

  /// Whether no joint moves across the plane of two: there the way has to lie.
  static bool isWanted(const Slides& slides, int a, int b) {
    for (int k = 0; k < slides.real(); ++k) {
      if (slides.isAcross(k, a, b)) return false;
    }
    return true;
  }

  /// At an angle that is like almost all others.
  Slides somewhere(const Values& values, double apart = kApart) const {
    return {query_.core, waysAt(17.3, values), apart};
  }

  Slides slidesAt(const Values& values, double apart = kApart) const {
    Slides slides = somewhere(values, apart);
    for (int quarter = 0; quarter < 3; ++quarter)
      slides.take(quarter, waysAt(90 * quarter, values));
    return slides;
  }

  Ways waysAt(double degrees, Values values) const {
    query_.value(freedom_.free, values) = degrees;
    if (freedom_.other >= 0) {
      query_.value(freedom_.other, values) = freedom_.offset + freedom_.slope * degrees;
    }
    for (const int i : query_.core.slides) query_.value(i, values) = 0.0;
    Ways ways;
    zgeo::UMatrix placed;
    std::size_t next = 0;
    const JointChain& chain = query_.core.chain;
    for (int i = 0; i < static_cast<int>(chain.joints.size()); ++i) {
      const Joint& joint = query_.core.joint(i);
      if (next < query_.core.slides.size() && query_.core.slides[next] == i) {
        placed.applyDir(ways[next++] = joint.direction);
      }
      moveBy(joint, valueOf(joint, values), placed);
    }
    UVec3d direction = chain.toolDirection;
    placed.applyDir(direction);
    ways[next] = query_.target.tip - chain.tipOf({placed * chain.toolPoint, direction});
    return ways;
  }

  const Query& query_;
  const Freedom& freedom_;
  const Joint& joint_;
};

}  // namespace

void sortPlaces(double start, std::vector<double>& places) {
  constexpr double kOne = kHair / 1000;
  std::sort(places.begin(), places.end());
  const auto last =
      std::unique(places.begin(), places.end(), [](double a, double b) { return b - a <= kOne; });
  places.erase(last, places.end());
  std::sort(places.begin(), places.end(), [start](double a, double b) {
    return std::pair(std::abs(a - start), a) < std::pair(std::abs(b - start), b);
  });
}

SolvedAngles solvedAngles(const Query& query, const Freedom& freedom, const Values& values) {
  return Family(query, freedom).solved(values);
}

std::vector<Wave> facesOf(const Query& query, const Freedom& freedom, const Values& values) {
  return Family(query, freedom).faces(values, 1e-3);
}

bool nearestMember(const Query& query, const Freedom& freedom, Values& values) {
  return Family(query, freedom).nearest(values);
}

}  // namespace korvo
