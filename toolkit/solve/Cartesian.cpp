// Machines with linear axes: one or two rotary axes turn the tool, then the linear ones carry it.
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "platform/rotations/RotationMatrix.h"
#include "toolkit/solve/Cone.h"
#include "toolkit/solve/Faces.h"
#include "toolkit/solve/Refine.h"
#include "toolkit/solve/Verifier.h"

using zgeo::UVec3d;

namespace korvo {
namespace {

void turnDirection(const Joint& joint, double degrees, UVec3d& direction) {
  if (degrees == 0.0) return;
  const auto rows = rotations::rotationMatrix(plain(joint.direction), degrees * kDegToRad);
  const auto times = [&](const rotations::Vec3& row) {
    return row[0] * direction.x + row[1] * direction.y + row[2] * direction.z;
  };
  direction = {times(rows[0]), times(rows[1]), times(rows[2])};
}

bool isTurn(const Joint& joint) { return joint.motion == Joint::Motion::turn; }

/// The joints from behind `last` back to `first` (excluded both), on a direction.
void turnByHeld(const SolverCore& core, const Values& values, int first, int last,
                UVec3d& direction) {
  for (int i = last - 1; i > first; --i) {
    const Joint& joint = core.joint(i);
    if (isTurn(joint)) turnDirection(joint, valueOf(joint, values), direction);
  }
}

/// The target before the joints in front of `first` turn it.
void turnBackByHeld(const SolverCore& core, const Values& values, int first, UVec3d& direction) {
  for (int i = 0; i < first; ++i) {
    const Joint& joint = core.joint(i);
    if (isTurn(joint)) turnDirection(joint, -valueOf(joint, values), direction);
  }
}

bool isOnAxis(const UVec3d& direction, const UVec3d& axis) {
  return (direction ^ axis).norm() <= rotations::kOnAxis;
}

/// One choice of the joints that move: the others are held where `values` have them.
class Choice {
 public:
  Choice(const Query& query, Values& values, int first, int second)
      : query_(query),
        values_(values),
        first_(first),
        second_(second),
        to_(query.direction),
        verifier_(query) {
    turning_ =
        query.core.turning ? *query.core.turning : turningOf(query.core, values, first, second);
    turnBackByHeld(query.core, values, first, to_);
  }

  void solve() {
    second_ < 0 ? byOne() : byTwo();
    verifier_.flush();
  }

 private:
  void byOne() {
    const UVec3d& axis = turning_.axis1;
    if (isOnAxis(turning_.from, axis)) {
      if (angleBetween(turning_.from, to_) <= rotations::kReach) addFamily(first_);
      return;
    }
    const auto angle = rotations::oneAxis(plain(turning_.from), plain(to_), plain(axis));
    if (!angle) return;
    const double beside = angleBetween(axis, turning_.from) - angleBetween(axis, to_);
    if (std::abs(beside) > rotations::kReach) return;
    addTurns(*angle * kRadToDeg, 0.0);
  }

  void byTwo() {
    const auto pairs = rotations::twoAxes(plain(turning_.from), plain(to_), plain(turning_.axis1),
                                          plain(turning_.axis2));
    if (pairs.count == 0) return;
    singular_.directionRad = turning_.band.toEdge(angleBetween(turning_.axis1, to_));
    if (isOnAxis(turning_.axis1, turning_.axis2)) return aboutOneLine(pairs.solutions[0]);
    if (pairs.count == 2) return byBoth(pairs);
    byPair(pairs.solutions[0]);
  }

  /// On either side of the plane of the axes.
  void byBoth(const rotations::TwoAnglesList& pairs) {
    std::array<Turns, 2> turns;
    std::array<Values, 2> standing;
    for (std::size_t k = 0; k < 2; ++k) {
      const rotations::TwoAngles& pair = pairs.solutions[k];
      turns[k] = turnsAt(pair.a1 * kRadToDeg, pair.a2 * kRadToDeg);
      stand(turns[k], 0, 0);
      standing[k] = values_;
    }
    const std::int8_t side = sideOf(pairs.solutions[0].a2 * kRadToDeg);
    const auto isCarried = carryBoth(query_, standing);
    for (std::size_t k = 0; k < 2; ++k) {
      const Branch branch{0, 0, k == 0 ? side : static_cast<std::int8_t>(-side)};
      values_ = standing[k];
      if (turns[k].areNone()) continue;
      if (isCarried ? (*isCarried)[k] : carry(query_, values_)) takeTurns(turns[k], branch);
    }
  }

  void byPair(const rotations::TwoAngles& pair) {
    const double first = pair.a1 * kRadToDeg;
    const double second = pair.a2 * kRadToDeg;
    if (pair.a1 == rotations::kFreeAngle) return addFamilies(second_, second, first_);
    if (pair.a2 == rotations::kFreeAngle) return addFamilies(first_, first, second_);
    addTurns(first, second);
  }

  std::int8_t sideOf(double second) const {
    UVec3d turned = turning_.from;
    Joint about;
    about.direction = turning_.axis2;
    turnDirection(about, second, turned);
    return (turning_.axis1 ^ turning_.axis2) * turned < 0 ? std::int8_t{-1} : std::int8_t{1};
  }

  /// Two axes about one line: whatever the second turns the first turns back.
  void aboutOneLine(const rotations::TwoAngles& pair) {
    if (pair.a1 != rotations::kFreeAngle) {
      const double sense = turning_.axis1 * turning_.axis2 < 0 ? -1.0 : 1.0;
      addMember({second_, first_, pair.a1 * kRadToDeg, -sense}, {place(second_), -1});
      return;
    }
    addFamilyOfBoth();
  }

  /// Neither axis turns the tool's direction: the second one stays where it starts if it can.
  void addFamilyOfBoth() {
    const Joint& second = query_.core.joint(second_);
    const SolvedAngles solved = solvedSecond(query_, first_, second_, values_);
    for (int k = 0; k < solved.count; ++k) addFamilies(second_, solved.degrees[at(k)], first_);
    if (solved.count > 0) return;
    const double start = query_.start(second_);
    const bool isKept = query_.limits == Limits::kept;
    const double kept = isKept ? std::clamp(start, second.min, second.max) : start;
    if (addMemberAt(kept, isKept) == Added::some) return;
    std::optional<double> rough;
    for (const double degrees : placesOfSecond(query_, first_, second_, values_)) {
      for (const double hairs : kHairs) {
        const double there = std::clamp(degrees + hairs * kHair, second.min, second.max);
        const Added added = addMemberAt(there, true);
        if (added == Added::some) return;
        if (added == Added::noneFine && !rough) rough = there;
      }
    }
    if (rough) addMemberAt(*rough, false);
  }

  /// What linear joints almost in one plane leave to the two joints ends in a corner so sharp that
  /// one hair inside it rounding still hides the place of the first.
  static constexpr std::array kHairs{0.0, -1.0, 1.0, -100.0, 100.0};

  enum class Added { none, noneFine, some };

  /// Of both axes, the second one there.
  Added addMemberAt(double degrees, bool isFineOnly) {
    const std::size_t before = query_.out.size();
    query_.value(second_, values_) = degrees;
    if (!addMember({first_, -1, 0.0, 0.0}, {place(second_), place(first_)})) return Added::none;
    const bool isTaken = std::all_of(
        query_.out.begin() + static_cast<std::ptrdiff_t>(before), query_.out.end(),
        [&](const Solution& s) { return !isFineOnly || query_.takesMissed || isFine(s.residual); });
    if (isTaken) return Added::some;
    query_.out.resize(before);
    return Added::noneFine;
  }

  /// A family for every turn of the joint that is not free.
  void addFamilies(int fixed, double degrees, int free) {
    const Joint& joint = query_.core.joint(fixed);
    const TurnRange range = turnsOf(joint, degrees, query_.start(fixed), query_.limits);
    for (int k = 0; k < range.count; ++k) {
      query_.value(fixed, values_) = onLimit(joint, range[k]);
      addFamily(free);
    }
  }

  void addFamily(int free) { addMember({free, -1, 0.0, 0.0}, {place(free), -1}); }

  bool addMember(const Freedom& freedom, const std::array<int, 2>& freePlaces) {
    const SolvedAngles solved = solvedAngles(query_, freedom, values_);
    if (solved.count > 0) {
      const bool isOther = freePlaces[0] != place(freedom.free);
      return addSolved(freedom, solved, {isOther ? freePlaces[0] : -1, -1});
    }
    if (!nearestMember(query_, freedom, values_)) return false;
    verifier_.flush();
    add(query_, values_, {}, singular_, freePlaces);
    return true;
  }

  bool addSolved(const Freedom& freedom, const SolvedAngles& solved,
                 const std::array<int, 2>& freePlaces) {
    verifier_.flush();
    const std::size_t before = query_.out.size();
    const auto forEachTurn = [this](int i, double degrees, const auto& visit) {
      const Joint& joint = query_.core.joint(i);
      const TurnRange range = turnsOf(joint, degrees, query_.start(i), query_.limits);
      for (int k = 0; k < range.count; ++k) {
        query_.value(i, values_) = onLimit(joint, range[k]);
        visit();
      }
    };
    const auto addCarried = [&] {
      if (carry(query_, values_)) add(query_, values_, {}, singular_, freePlaces);
    };
    for (int k = 0; k < solved.count; ++k) {
      const double degrees = solved.degrees[at(k)];
      forEachTurn(freedom.free, degrees, [&] {
        if (freedom.other < 0) return addCarried();
        forEachTurn(freedom.other, freedom.offset + freedom.slope * degrees, addCarried);
      });
    }
    return query_.out.size() > before;
  }

  struct Turns {
    TurnRange first;
    TurnRange second{0.0, 1};

    bool areNone() const { return first.count == 0 || second.count == 0; }
  };

  Turns turnsAt(double degrees1, double degrees2) const {
    const Joint& joint1 = query_.core.joint(first_);
    Turns turns{turnsOf(joint1, degrees1, query_.start(first_), query_.limits)};
    if (second_ < 0) return turns;
    const Joint& joint2 = query_.core.joint(second_);
    turns.second = turnsOf(joint2, degrees2, query_.start(second_), query_.limits);
    return turns;
  }

  void stand(const Turns& turns, int k, int l) {
    query_.value(first_, values_) = onLimit(query_.core.joint(first_), turns.first[k]);
    if (second_ < 0) return;
    query_.value(second_, values_) = onLimit(query_.core.joint(second_), turns.second[l]);
  }

  /// The linear joints are the same for all turns: they are solved once.
  void addTurns(double degrees1, double degrees2) {
    const Turns turns = turnsAt(degrees1, degrees2);
    if (turns.areNone()) return;
    stand(turns, 0, 0);
    if (carry(query_, values_)) takeTurns(turns, {});
  }

  void takeTurns(const Turns& turns, const Branch& branch) {
    for (int k = 0; k < turns.first.count; ++k) {
      for (int l = 0; l < turns.second.count; ++l) {
        stand(turns, k, l);
        verifier_.take(values_, branch, singular_);
      }
    }
  }

  int place(int i) const { return query_.core.joint(i).place; }

  const Query& query_;
  Values& values_;
  int first_;
  int second_;
  UVec3d to_;  ///< The target before what is held in front turns it.
  Turning turning_;
  SingularDistance singular_;
  Verifier verifier_;
};

/// Where a rotary joint that is left over stands: at its start, brought inside by full turns where
/// that helps, else at the nearer limit.
double heldValue(const Query& query, int i) {
  const Joint& joint = query.core.joint(i);
  const double start = query.start(i);
  if (query.limits == Limits::ignored || isInside(joint, start)) return start;
  const TurnRange range = turnsOf(joint, start, start, Limits::kept);
  if (range.count == 0) return std::clamp(start, joint.min, joint.max);
  return onLimit(joint, start < joint.min ? range.first : range[range.count - 1]);
}

void solveWithout(const Query& query, Values& values) {
  if (angleBetween(
          [&] {
            UVec3d direction = query.core.chain.toolDirection;
            turnByHeld(query.core, values, -1, static_cast<int>(query.core.chain.joints.size()),
                       direction);
            return direction;
          }(),
          query.direction) > rotations::kReach) {
    return;
  }
  if (carry(query, values)) add(query, values, {}, {});
}

/// All others of more than two rotary joints are held.
void solvePair(const Query& query, Values values, int first, int second) {
  for (const int i : query.core.turns) {
    if (i != first && i != second) query.value(i, values) = heldValue(query, i);
  }
  Choice(query, values, first, second).solve();
}

/// With the axes that have a rule of their own standing in `values`.
void solveStanding(const Query& query, Values& values) {
  const std::vector<int>& turns = query.core.turns;
  if (turns.empty()) return solveWithout(query, values);
  if (turns.size() == 1) return Choice(query, values, turns[0], -1).solve();
  for (std::size_t second = turns.size() - 1; second > 0; --second) {
    for (std::size_t first = second; first-- > 0;) {
      solvePair(query, values, turns[first], turns[second]);
    }
  }
}

}  // namespace

Turning turningOf(const SolverCore& core, const Values& values, int first, int second) {
  const int last = second < 0 ? first : second;
  Turning t{core.chain.toolDirection,
            core.joint(first).direction.normalised(),
            core.joint(last).direction.normalised(),
            {}};
  turnByHeld(core, values, last, static_cast<int>(core.chain.joints.size()), t.from);
  if (second < 0) return t;
  turnByHeld(core, values, first, second, t.axis2);
  turnByHeld(core, values, first, second, t.from);
  t.band = bandOf(angleBetween(t.axis1, t.axis2), angleBetween(t.axis2, t.from));
  return t;
}

void solveCartesian(const Query& query) { solvePlaced(query, solveStanding); }

}  // namespace korvo
