// The linear axes: carrying a tool that already points the right way.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "toolkit/solve/Core.h"

using zgeo::UVec3d;

namespace korvo {
namespace {

/// Two directions are one when the sine of their angle is below this.
constexpr double kOneLine = 1e-10;

/// Directions that are apart by more lose few digits when they carry together.
constexpr double kClear = 1e-3;

/// By how much rounding may put a linear joint beyond its limit (mm): what a joint is put on its
/// limit for, and as much again for each metre that the numbers it is solved from are long.
double roundingAt(const UVec3d& tip, const UVec3d& way) {
  return kOnLimit * (1.0 + (tip.norm() + way.norm()) / 1000.0);
}

/// The free linear joints as they stand, the one nearest the tool first, and the way that is left.
struct Standing {
  std::array<int, kMostAxes> joints;
  std::array<UVec3d, kMostAxes> directions;
  int count = 0;
  UVec3d way;

  UVec3d& direction(int k) { return directions[at(k)]; }
  const UVec3d& direction(int k) const { return directions[at(k)]; }
};

/// With all free linear joints at zero, in `values` too: what carries starts from there, so that
/// the start leaves no rounding behind.
Standing standing(const Query& query, Values& values) {
  const SolverCore& core = query.core;
  for (const int i : core.slides) query.value(i, values) = 0.0;
  Standing s;
  zgeo::UMatrix placed;
  std::size_t next = 0;
  const int size = static_cast<int>(core.slides.size());
  s.count = size;
  for (int i = 0; i < static_cast<int>(core.chain.joints.size()); ++i) {
    const Joint& joint = core.joint(i);
    if (next < core.slides.size() && core.slides[next] == i) {
      const int k = size - 1 - static_cast<int>(next++);
      s.joints[at(k)] = i;
      s.direction(k) = joint.direction;
      placed.applyDir(s.direction(k));
    }
    moveBy(joint, valueOf(joint, values), placed);
  }
  UVec3d direction = core.chain.toolDirection;
  placed.applyDir(direction);
  s.way = query.target.tip - core.chain.tipOf({placed * core.chain.toolPoint, direction});
  return s;
}

/// Up to three joints that carry, counted from the tool: those nearest to it that are clearly
/// independent, and only where there are none, such as barely are.
class Carriers {
 public:
  explicit Carriers(const Standing& s) {
    take(s, kClear, kClear);
    take(s, kOneLine, rotations::kDependent);
  }

  std::array<int, 3> places{};  ///< In Standing.
  int count = 0;

  bool has(int k) const {
    return std::find(places.begin(), places.begin() + count, k) != places.begin() + count;
  }

 private:
  void take(const Standing& s, double leastSine, double leastVolume) {
    for (int k = 0; k < s.count && count < 3; ++k) {
      if (!has(k) && isNew(s, s.direction(k), leastSine, leastVolume)) places[at(count++)] = k;
    }
  }

  /// By the sine of two directions, the volume of three.
  bool isNew(const Standing& s, const UVec3d& d, double leastSine, double leastVolume) const {
    if (count == 0) return d.norm() > 0;
    const UVec3d& a = s.direction(places[0]);
    if (count == 1) return (a ^ d).norm() > leastSine * a.norm() * d.norm();
    const UVec3d& b = s.direction(places[1]);
    return std::abs(a * (b ^ d)) > leastVolume * a.norm() * b.norm() * d.norm();
  }
};

/// The displacements of the carriers that add up to `way`, as near as they can.
std::array<double, 3> displacements(const Standing& s, const Carriers& carriers,
                                    const UVec3d& way) {
  if (carriers.count == 0) return {};
  const UVec3d& a = s.direction(carriers.places[0]);
  if (carriers.count == 1) return {way * a / a.norm2(), 0, 0};
  const UVec3d& b = s.direction(carriers.places[1]);
  const UVec3d c = carriers.count == 3 ? s.direction(carriers.places[2]) : a ^ b;
  auto d = rotations::threeDirections(plain(way), plain(a), plain(b), plain(c))
               .value_or(rotations::Vec3{});
  if (carriers.count == 2) d[2] = 0;
  return d;
}

/// What the joints beside the carriers move by, or a direction in the space of these moves.
using Moves = std::array<double, kMostAxes>;

double product(const Moves& a, const Moves& b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

void subtract(const Moves& n, double share, Moves& from) {
  for (std::size_t i = 0; i < n.size(); ++i) from[i] -= share * n[i];
}

/// The moves with some joints on a limit: the least of them, and what is square to those limits.
struct Bound {
  Moves least{};
  std::array<Moves, kMostAxes> normals{};
  std::size_t count = 0;

  /// Another joint, which moves by `rate` with the moves, has to move by `by`; false where those
  /// before leave it no way.
  bool put(const Moves& rate, double by) {
    Moves normal = rate;
    for (std::size_t i = 0; i < count; ++i)
      subtract(normals[i], product(normal, normals[i]), normal);
    const double length = std::sqrt(product(normal, normal));
    if (!(length > kOneLine)) return false;
    for (double& n : normal) n /= length;
    subtract(normal, (product(rate, least) - by) / length, least);
    normals[count++] = normal;
    return true;
  }
};

/// The moves of the joints beside the carriers that bring all inside, of the least sum of squares:
/// of one of them the shortest way.
///
/// @source  Joints are taken one after the other. One that the least moves of those before it leave
///          outside is on its limit in the least moves with it, as a sum of squares has one low
///          alone: these are found among the moves that put it there (Seidel 1991, of linear
///          programs of few variables).
class LeastMoves {
 public:
  LeastMoves(const SolverCore& core, double slack) : core_(core), slack_(slack) {}

  std::array<Moves, kMostAxes> rates{};  ///< Of every joint of Standing for each mm of the moves.
  int count = 0;                         ///< Of the moves.

  bool find(const Standing& s, const Values& values, Moves& by) const {
    return find(s, values, {}, s.count, by);
  }

 private:
  /// Of the first `joints` alone.
  bool find(const Standing& s, const Values& values, const Bound& bound, int joints,
            Moves& by) const {
    by = bound.least;
    for (int k = 0; k < joints; ++k) {
      const Joint& joint = core_.joint(s.joints[at(k)]);
      const double value = values[at(joint.place)];
      const double stands = value + product(rates[at(k)], by);
      const double limit = std::clamp(stands, joint.min, joint.max);
      if (std::abs(stands - limit) <= slack_) continue;
      Bound narrower = bound;
      const bool can = narrower.put(rates[at(k)], limit - value);
      if (!can || !find(s, values, narrower, k, by)) return false;
    }
    return true;
  }

  const SolverCore& core_;
  double slack_;  ///< As near to a limit counts as inside, mm.
};

/// The carriers' travels, and how much they move for each mm of one joint beside them.
class Carriage {
 public:
  Carriage(const Query& query, const Standing& s, Values& values)
      : query_(query),
        s_(s),
        values_(values),
        carriers_(s),
        slack_(roundingAt(query.target.tip, s.way)) {}

  bool reach() {
    UVec3d way = s_.way;
    for (int k = 0; k < s_.count; ++k) {
      if (carriers_.has(k)) continue;
      value(k) = query_.start(s_.joints[at(k)]);
      way -= s_.direction(k) * value(k);
    }
    move(displacements(s_, carriers_, way));
    return query_.limits == Limits::ignored || snap() || spare();
  }

 private:
  const Joint& joint(int k) const { return query_.core.joint(s_.joints[at(k)]); }
  double& value(int k) const { return values_[at(joint(k).place)]; }

  void move(const std::array<double, 3>& by) {
    for (int c = 0; c < carriers_.count; ++c) value(carriers_.places[at(c)]) += by[at(c)];
  }

  /// Whether all are inside, those that miss their limit by rounding put on it.
  bool snap() {
    bool isAllInside = true;
    for (int k = 0; k < s_.count; ++k) {
      value(k) = onLimit(joint(k), value(k), slack_);
      isAllInside = isAllInside && isInside(joint(k), value(k));
    }
    return isAllInside;
  }

  /// Moves the joints beside the carriers by as little as brings all inside.
  bool spare() {
    if (carriers_.count == s_.count) return false;
    LeastMoves least(query_.core, slack_);
    for (int k = 0; k < s_.count; ++k) {
      if (!carriers_.has(k)) addSpare(k, least);
    }
    Moves by;
    if (!least.find(s_, values_, by)) return false;
    const Values kept = values_;
    int j = 0;
    for (int k = 0; k < s_.count; ++k) {
      if (!carriers_.has(k)) shift(k, by[at(j++)]);
    }
    if (snap()) return true;
    values_ = kept;
    return false;
  }

  void addSpare(int k, LeastMoves& least) const {
    const auto by = displacements(s_, carriers_, s_.direction(k) * -1.0);
    const std::size_t j = at(least.count++);
    for (int c = 0; c < carriers_.count; ++c) {
      least.rates[at(carriers_.places[at(c)])][j] = by[at(c)];
    }
    least.rates[at(k)][j] = 1.0;
  }

  void shift(int k, double by) {
    const UVec3d back = s_.direction(k) * -by;
    value(k) += by;
    move(displacements(s_, carriers_, back));
  }

  const Query& query_;
  const Standing& s_;
  Values& values_;
  Carriers carriers_;
  double slack_;  ///< mm
};

/// Two positions with their free linear joints at zero.
struct PairStanding {
  std::array<PairVec3, 3> directions;  ///< Of these.
  PairVec3 way;
  bool isRegular;

  PairStanding(const Query& query, const std::array<Values, 2>& values) {
    const SolverCore& core = query.core;
    PairPlaced placed = PairPlaced::bothAt({});
    rotations::PairMask isWithin = {-1, -1};
    std::size_t next = 0;
    for (std::size_t i = 0; i < core.pairJoints.size(); ++i) {
      const PairJoint& joint = core.pairJoints[i];
      if (next < 3 && at(core.slides[next]) == i) {
        directions[next++] = placed.turned(joint.direction);
        continue;
      }
      const Joint& one = core.chain.joints[i];
      const Pair value = {valueOf(one, values[0]), valueOf(one, values[1])};
      isWithin &= isWalkable(joint, value);
      moveBy(joint, value, placed);
    }
    isRegular = (isWithin[0] & isWithin[1]) != 0;
    const PairVec3 direction = placed.turned(core.pairTool.direction);
    way =
        difference(bothOf(query.target.tip), tipOf(core, placed * core.pairTool.point, direction));
  }
};

}  // namespace

bool carry(const Query& query, Values& values) {
  const Standing s = standing(query, values);
  return Carriage(query, s, values).reach();
}

std::optional<std::array<bool, 2>> carryBoth(const Query& query, std::array<Values, 2>& values) {
  constexpr double kLeast = 0.1;  // of the volume of unit directions: no digits are lost there
  if (query.core.slides.size() != 3 || query.limits == Limits::ignored) return {};
  const PairStanding s(query, values);
  const auto& [a, b, c] = s.directions;
  const PairVec3 bc = cross(b, c), ca = cross(c, a), ab = cross(a, b);
  const Pair volume = dot(a, bc);
  const rotations::PairMask isClear =
      volume * volume > kLeast * kLeast * (dot(a, a) * dot(b, b) * dot(c, c));
  if (!s.isRegular || (isClear[0] & isClear[1]) == 0) return {};
  const PairVec3 by = {dot(s.way, bc) / volume, dot(s.way, ca) / volume, dot(s.way, ab) / volume};
  std::array<bool, 2> isInsideAll = {true, true};
  for (std::size_t k = 0; k < 2; ++k) {
    const UVec3d way = {s.way[0][k], s.way[1][k], s.way[2][k]};
    const double slack = roundingAt(query.target.tip, way);
    for (std::size_t i = 0; i < 3; ++i) {
      const int slide = query.core.slides[i];
      const double value = onLimit(query.core.joint(slide), by[i][k], slack);
      query.value(slide, values[k]) = value;
      isInsideAll[k] = isInsideAll[k] && isInside(query.core.joint(slide), value);
    }
  }
  return isInsideAll;
}

}  // namespace korvo
