// Arms: the first three joints carry the wrist centre, the last three turn the tool about it.
#include "toolkit/solve/Arm.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "toolkit/solve/ArmFamily.h"
#include "toolkit/solve/ArmStanding.h"
#include "toolkit/solve/Cone.h"
#include "toolkit/solve/Core.h"
#include "toolkit/solve/PairArm.h"

using zgeo::UMatrix;
using zgeo::UVec3d;

namespace korvo {

namespace {

using rotations::kFreeAngle;

constexpr double kTurn = 360.0;

/// One way of carrying the wrist centre.
struct Reached {
  rotations::ThreeAngles angles;
  Branch branch;
  SingularDistance singular;
};

/// Solves one query with the held joints standing in `values`.
class ArmTask {
 public:
  ArmTask(const Query& query, Values& values)
      : query_(query), values_(values), standing_(standingOf(query, values)) {}

  void solve() {
    if (query_.frame) return byFrame(*query_.frame, {-1, -1});
    if (isCoaxial()) return byDirection();
    if (!query_.takesMissed) return byTurns();
    forEachFrame([this](const UMatrix& frame) { byFrame(frame, {place(5), -1}); });
  }

 private:
  const UVec3d& axis(int k) const { return standing_.lines[at(k)].direction; }
  const Joint& joint(int k) const { return query_.core.joint(query_.core.arm->joint(k)); }
  int place(int k) const { return joint(k).place; }
  double start(int k) const { return query_.from[at(place(k))]; }
  double& value(int k) { return values_[at(place(k))]; }

  /// The tool as the last joint would carry it at zero.
  UVec3d toolDirection() const { return turned(standing_.behind, query_.core.chain.toolDirection); }
  UVec3d tip() const {
    const JointChain& chain = query_.core.chain;
    return standing_.behind * (chain.toolPoint - chain.toolDirection * chain.toolLength);
  }

  /// Whether the last joint turns the tool about itself, as near as counts as reached.
  bool isCoaxial() const {
    const UVec3d& z = axis(5);
    const UVec3d way = tip() - standing_.centre;
    const double aside = (z ^ toolDirection()).norm();
    return aside <= kReachedRad / 2 && (way ^ z).norm() + aside * way.norm() <= kReachedMm / 2;
  }

  // --- the wrist centre

  const rotations::ThreeAxes& axes() const {
    return standing_.moved ? *standing_.moved : query_.core.arm->shoulder();
  }

  template <typename Visit>
  void forEachReached(const UVec3d& centre, Visit visit) {
    const rotations::ThreeAnglesList list = axes().solutions(plain(centre));
    for (const rotations::ThreeAngles& a : list) visit(reachedBy(a));
    const bool isMissed = list.count == 0 && list.reach != rotations::Reach::undefined;
    if (isMissed && query_.takesMissed) visit(reachedBy(axes().nearest(plain(centre)).angles));
  }

  static Reached reachedBy(const rotations::ThreeAngles& a) {
    Reached reached{a, {}, {}};
    reached.branch.shoulder = static_cast<std::int8_t>(a.shoulder);
    reached.branch.elbow = static_cast<std::int8_t>(a.elbow);
    reached.singular.elbowRad = a.elbowRad;
    reached.singular.shoulderMm = a.shoulderMm;
    return reached;
  }

  static std::array<double, 3> anglesOf(const rotations::ThreeAngles& a) {
    return {a.a1, a.a2, a.a3};
  }

  /// Which of the first three joints has no effect; -1 for none.
  static int freeOf(const rotations::ThreeAngles& a) {
    return a.a1 == kFreeAngle ? 0 : a.a2 == kFreeAngle ? 1 : a.a3 == kFreeAngle ? 2 : -1;
  }

  /// The first three joints in `values_`, and visits for every turn of theirs with the rotation
  /// that they make. A free one stands where it starts, or at the next degree from where `visit`
  /// succeeds.
  template <typename Visit>
  void forEachShoulder(const Reached& reached, Visit visit) {
    const std::array<double, 3> angles = anglesOf(reached.angles);
    int free = -1;
    std::array<TurnRange, 3> ranges;
    for (int k = 0; k < 3; ++k) {
      if (angles[at(k)] == kFreeAngle) {
        free = k;
        ranges[at(k)] = {std::clamp(start(k), joint(k).min, joint(k).max), 1};
      } else {
        ranges[at(k)] = turnsOf(pinned(k), angles[at(k)] * kRadToDeg, start(k), query_.limits);
      }
    }
    for (int i = 0; i < ranges[0].count; ++i) {
      for (int j = 0; j < ranges[1].count; ++j) {
        for (int l = 0; l < ranges[2].count; ++l) {
          setShoulder({ranges[0][i], ranges[1][j], ranges[2][l]});
          if (free < 0) {
            visit(-1);
          } else {
            visitFree(free, visit);
          }
        }
      }
    }
  }

  void setShoulder(const std::array<double, 3>& degrees) {
    for (int k = 0; k < 3; ++k) value(k) = onLimit(pinned(k), degrees[at(k)]);
  }

  template <typename Visit>
  void visitFree(int free, Visit visit) {
    const double from = value(free);
    for (int step = 0; step <= 360; ++step) {
      for (const double degrees : {from + step, from - step}) {
        if (!mayStand(pinned(free), degrees)) continue;
        value(free) = degrees;
        if (visit(free)) return;
      }
    }
  }

  bool mayStand(const Joint& joint, double degrees) const {
    const bool isBound = query_.limits == Limits::kept || joint.isLocked;
    return !isBound || isInside(joint, degrees);
  }

  /// A locked joint of the arm may stand where it starts alone.
  Joint pinned(int k) const {
    Joint joint = this->joint(k);
    if (joint.isLocked) joint.min = joint.max = start(k);
    return joint;
  }

  UMatrix shoulderTurn() const {
    UMatrix m;
    for (int k = 0; k < 3; ++k) {
      turnBy(axis(k), {}, values_[at(place(k))] * kDegToRad, m);
    }
    return m;
  }

  // --- the wrist

  /// What the wrist can turn the last joint's line to, from the fourth's.
  Band wristBand() const {
    return bandOf(angleBetween(axis(3), axis(4)), angleBetween(axis(4), axis(5)));
  }

  SingularDistance singularOf(const Reached& reached, const UVec3d& to) const {
    SingularDistance singular = reached.singular;
    singular.directionRad = wristBand().toEdge(angleBetween(axis(3), to));
    return singular;
  }

  rotations::TwoAnglesList wristPairs(const UVec3d& to) const {
    const auto pairs =
        rotations::twoAxes(plain(axis(5)), plain(to), plain(axis(3)), plain(axis(4)));
    if (pairs.count > 0 || !query_.takesMissed) return pairs;
    const UVec3d nearest = nearestIn(wristBand(), axis(3), to, axis(5));
    return rotations::twoAxes(plain(axis(5)), plain(nearest), plain(axis(3)), plain(axis(4)));
  }

  std::int8_t sideOf(double a5) const {
    UMatrix turn;
    turnBy(axis(4), {}, a5, turn);
    return (axis(3) ^ axis(4)) * turned(turn, axis(5)) < 0 ? std::int8_t{-1} : std::int8_t{1};
  }

  /// Degrees of the last joint that turn the wrist, with a4 and a5, all the way to `wrist`.
  double lastTurn(double a4, double a5, const UMatrix& wrist) const {
    const UVec3d across = squareTo(axis(5));
    UMatrix turn;
    turnBy(axis(3), {}, a4, turn);
    turnBy(axis(4), {}, a5, turn);
    const UVec3d to = turnedBack(turn, turned(wrist, across));
    return std::atan2((axis(5) ^ across) * to, across * to) * kRadToDeg;
  }

  /// Emits every turn of the wrist's joints inside the limits; whether there was one.
  bool addWrist(const std::array<double, 3>& degrees, const Branch& branch,
                const SingularDistance& singular, const std::array<int, 2>& freePlaces) {
    std::array<TurnRange, 3> ranges;
    for (int k = 0; k < 3; ++k) {
      ranges[at(k)] = turnsOf(pinned(3 + k), degrees[at(k)], start(3 + k), query_.limits);
    }
    const std::size_t before = query_.out.size();
    for (int i = 0; i < ranges[0].count; ++i) {
      for (int j = 0; j < ranges[1].count; ++j) {
        for (int l = 0; l < ranges[2].count; ++l) {
          value(3) = onLimit(pinned(3), ranges[0][i]);
          value(4) = onLimit(pinned(4), ranges[1][j]);
          value(5) = onLimit(pinned(5), ranges[2][l]);
          add(query_, values_, branch, singular, freePlaces);
        }
      }
    }
    return query_.out.size() > before;
  }

  // --- a whole frame

  /// What the six joints have to do for a frame.
  UMatrix motionTo(const UMatrix& frame) const {
    const JointChain& chain = query_.core.chain;
    UMatrix motion = frame;  // of the tool's body
    motion.setOrigin(frame.getOrigin() -
                     turned(frame, chain.toolPoint - chain.toolDirection * chain.toolLength));
    return rigidInverse(standing_.front) * motion * rigidInverse(standing_.behind);
  }

  void byFrame(const UMatrix& frame, const std::array<int, 2>& freePlaces) {
    if (!query_.frame && !isFreeOnly_ && solveRegular(query_, values_, frame, freePlaces)) return;
    const UMatrix motion = motionTo(frame);
    forEachReached(motion * standing_.centre, [&](const Reached& reached) {
      if (isFollowed(reached)) return followFrame(reached, motion, freePlaces);
      forEachShoulder(reached, [&](int free) {
        return turnWristTo(reached, rigidInverse(shoulderTurn()) * motion, with(freePlaces, free));
      });
    });
  }

  std::array<int, 2> with(std::array<int, 2> freePlaces, int free) const {
    if (free >= 0) freePlaces[freePlaces[0] < 0 ? 0 : 1] = place(free);
    return freePlaces;
  }

  bool turnWristTo(const Reached& reached, const UMatrix& wrist,
                   const std::array<int, 2>& freePlaces) {
    const UVec3d to = turned(wrist, axis(5));
    const rotations::TwoAnglesList pairs = wristPairs(to);
    const SingularDistance singular = singularOf(reached, to);
    bool isAdded = false;
    for (const rotations::TwoAngles& pair : pairs) {
      if (pair.a1 == kFreeAngle) {
        isAdded |= addStraight(pair.a2, wrist, reached.branch, singular, freePlaces);
        continue;
      }
      if (isFreeOnly_) continue;
      Branch branch = reached.branch;
      if (pairs.count == 2) branch.wrist = sideOf(pair.a2);
      isAdded |=
          addWrist({pair.a1 * kRadToDeg, pair.a2 * kRadToDeg, lastTurn(pair.a1, pair.a2, wrist)},
                   branch, singular, freePlaces);
    }
    return isAdded;
  }

  /// A straight wrist: the fourth joint may stand anywhere, and the last one follows.
  bool addStraight(double a5, const UMatrix& wrist, const Branch& branch,
                   const SingularDistance& singular, const std::array<int, 2>& freePlaces) {
    const double a6 = lastTurn(0.0, a5, wrist);
    UMatrix turn;
    turnBy(axis(4), {}, a5, turn);
    const double sense = turned(turn, axis(5)) * axis(3) < 0 ? 1.0 : -1.0;
    std::vector<double> places;
    addPlaces(pinned(3), start(3), start(3), places);
    const Joint last = pinned(5);
    for (const double limit : {last.min, last.max, start(5)}) {
      if (std::isfinite(limit)) addPlaces(pinned(3), (limit - a6) / sense, start(3), places);
    }
    const bool isLastFirst = freePlaces[0] == place(5);
    const auto away = [&](double a4) {
      if (!isLastFirst) return std::abs(a4 - start(3));
      return std::abs(std::remainder(a6 + sense * a4 - start(5), kTurn));
    };
    std::sort(places.begin(), places.end(), [&](double a, double b) { return away(a) < away(b); });
    return forEachFifth(a5, [&] {
      return std::any_of(places.begin(), places.end(), [&](double a4) {
        return addMember(a4, a6 + sense * a4, branch, singular, with(freePlaces, 3));
      });
    });
  }

  /// The fifth joint at each of its turns; whether `visit` was successful at one.
  template <typename Visit>
  bool forEachFifth(double a5, Visit visit) {
    const TurnRange range = turnsOf(pinned(4), a5 * kRadToDeg, start(4), query_.limits);
    bool isAdded = false;
    for (int k = 0; k < range.count; ++k) {
      value(4) = onLimit(pinned(4), range[k]);
      isAdded |= visit();
    }
    return isAdded;
  }

  /// Turns of one place of a joint inside its limits, and its limits where the place is the start.
  void addPlaces(const Joint& joint, double degrees, double from, std::vector<double>& out) const {
    if (degrees == from) out.push_back(std::clamp(from, joint.min, joint.max));
    if (query_.limits == Limits::ignored && !joint.isLocked) return out.push_back(degrees);
    const TurnRange range = turnsOf(joint, degrees, from, query_.limits);
    for (int k = 0; k < range.count; ++k) out.push_back(onLimit(joint, range[k]));
  }

  /// One member of a family: the fourth joint as given, the last one at the turn nearest to its
  /// start.
  bool addMember(double fourth, double last, const Branch& branch, const SingularDistance& singular,
                 const std::array<int, 2>& freePlaces) {
    const TurnRange range = turnsOf(pinned(5), last, start(5), query_.limits);
    if (range.count == 0) return false;
    value(3) = fourth;
    value(5) = onLimit(pinned(5), nearestTurn(range, start(5)));
    const std::size_t before = query_.out.size();
    add(query_, values_, branch, singular, freePlaces);
    return query_.out.size() > before;
  }

  static double nearestTurn(const TurnRange& range, double start) {
    const double turn = std::round((start - range.first) / kTurn);
    return range[static_cast<int>(std::clamp(turn, 0.0, range.count - 1.0))];
  }

  // --- a point and a direction

  UVec3d centreByDirection() const {
    const double ahead = (standing_.centre - tip()) * toolDirection();
    return rigidInverse(standing_.front) * (query_.target.tip + query_.direction * ahead);
  }

  /// The last joint turns the tool about itself and stays where it starts.
  void byDirection() {
    const UVec3d direction = turnedBack(standing_.front, query_.direction);
    const double sense = toolDirection() * axis(5) < 0 ? -1.0 : 1.0;
    forEachReached(centreByDirection(), [&](const Reached& reached) {
      if (isFollowed(reached)) return followDirection(reached, direction * sense);
      forEachShoulder(reached, [&](int free) {
        return pointWrist(reached, turnedBack(shoulderTurn(), direction * sense), free);
      });
    });
  }

  bool pointWrist(const Reached& reached, const UVec3d& to, int free) {
    const rotations::TwoAnglesList pairs = wristPairs(to);
    const SingularDistance singular = singularOf(reached, to);
    const std::array<int, 2> freePlaces = with({place(5), -1}, free);
    const double last = std::clamp(start(5), pinned(5).min, pinned(5).max);
    bool isAdded = false;
    for (const rotations::TwoAngles& pair : pairs) {
      Branch branch = reached.branch;
      if (pair.a1 == kFreeAngle) {
        const double fourth = std::clamp(start(3), pinned(3).min, pinned(3).max);
        isAdded |= forEachFifth(pair.a2, [&] {
          return addMember(fourth, last, branch, singular, with({place(3), place(5)}, free));
        });
        continue;
      }
      if (isFreeOnly_) continue;
      if (pairs.count == 2) branch.wrist = sideOf(pair.a2);
      isAdded |= addTurnsOfTwo(pair, last, branch, singular, freePlaces);
    }
    return isAdded;
  }

  bool addTurnsOfTwo(const rotations::TwoAngles& pair, double last, const Branch& branch,
                     const SingularDistance& singular, const std::array<int, 2>& freePlaces) {
    const TurnRange fourth = turnsOf(pinned(3), pair.a1 * kRadToDeg, start(3), query_.limits);
    const TurnRange fifth = turnsOf(pinned(4), pair.a2 * kRadToDeg, start(4), query_.limits);
    const std::size_t before = query_.out.size();
    value(5) = last;
    for (int i = 0; i < fourth.count; ++i) {
      for (int j = 0; j < fifth.count; ++j) {
        value(3) = onLimit(pinned(3), fourth[i]);
        value(4) = onLimit(pinned(4), fifth[j]);
        add(query_, values_, branch, singular, freePlaces);
      }
    }
    return query_.out.size() > before;
  }

  /// The tool as the start has it, turned the shortest way.
  UMatrix shortestFrame() const {
    const JointChain& chain = query_.core.chain;
    UMatrix start = chain.motion(query_.from);
    start.setOrigin({});
    const UVec3d from = turned(start, chain.toolDirection);
    const UVec3d normal = from ^ query_.direction;
    const double angle = angleBetween(from, query_.direction);
    UMatrix shortest;
    turnBy(normal.norm() > 1e-12 ? normal : squareTo(from), {}, angle, shortest);
    return shortest * start;
  }

  UMatrix turnedFrame(const UMatrix& shortest, double angle) const {
    UMatrix about;
    turnBy(query_.direction, {}, angle, about);
    UMatrix frame = about * shortest;
    frame.setOrigin(query_.target.tip);
    return frame;
  }

  template <typename Visit>
  void forEachFrame(Visit visit) const {
    const UMatrix shortest = shortestFrame();
    const int turns = std::max(query_.core.options.toolTurns, 1);
    for (int k = 0; k < turns; ++k) {
      visit(turnedFrame(shortest, 2 * std::numbers::pi * k / turns));
    }
  }

  // --- curves

  ArmCircle circleOf(int free) const {
    ArmCircle circle;
    circle.free = free;
    circle.steps = query_.core.options.toolTurns;
    for (int k = 0; k < 6; ++k) {
      const Joint joint = pinned(k);
      const auto [low, high] = listedRange(joint, start(k));
      const bool isUnbound = query_.limits == Limits::ignored && !joint.isLocked;
      circle.ranges[at(k)] = {low, high, start(k), isUnbound || isEndless(joint)};
    }
    return circle;
  }

  static bool isEndless(const Joint& joint) {
    return std::isinf(joint.min) && std::isinf(joint.max);
  }

  void addMembers(const ArmMembers& members, int free, const std::array<int, 2>& freePlaces) {
    for (const ArmMember& member : members.list) addTurned(member.way, free, 0, freePlaces);
  }

  /// With all turns of the joints from `next` on that have no limits, but for the one that is free.
  void addTurned(const ArmWay& way, int free, int next, const std::array<int, 2>& freePlaces) {
    if (next == 6) return add(query_, values_, way.branch, way.singular, freePlaces);
    const double degrees = way.degrees[at(next)];
    const bool isTurned = next != free && isEndless(pinned(next));
    const TurnRange range = isTurned ? turnsOf(pinned(next), degrees, start(next), query_.limits)
                                     : TurnRange{degrees, 1};
    for (int k = 0; k < range.count; ++k) {
      value(next) = range[k];
      addTurned(way, free, next + 1, freePlaces);
    }
  }

  /// The tool may be turned about its direction, and the last joint follows: it is what is free.
  void byTurns() {
    thread_local ArmMembers members;
    const UMatrix shortest = shortestFrame();
    ArmCircle circle = circleOf(5);
    circle.waysAt = [this, &shortest](double angle, const Branch* side) {
      return waysAt(turnedFrame(shortest, angle), side);
    };
    followCircle(circle, members);
    addMembers(members, 5, {place(5), -1});
    isFreeOnly_ = true;
    for (const double angle : members.singular) {
      byFrame(turnedFrame(shortest, angle), {place(5), -1});
    }
  }

  /// All ways for a frame that leave no joint free; see ArmCircle.
  ArmWays waysAt(const UMatrix& frame, const Branch* side) {
    const UMatrix motion = motionTo(frame);
    const rotations::Vec3 centre = plain(motion * standing_.centre);
    const rotations::ThreeAnglesList list = side ? axes().solutions(centre) : axes().solve(centre);
    ArmWays ways;
    ways.missing[4] = list.missMm / axes().size();
    for (const rotations::ThreeAngles& angles : list) {
      if (side && (angles.shoulder != side->shoulder || angles.elbow != side->elbow)) continue;
      if (freeOf(angles) >= 0) {
        setSingular(angles, ways);
        continue;
      }
      const std::array<double, 3> three = anglesOf(angles);
      for (int k = 0; k < 3; ++k) value(k) = three[at(k)] * kRadToDeg;
      addWays(reachedBy(angles), rigidInverse(shoulderTurn()) * motion, ways);
    }
    return ways;
  }

  static std::size_t sideOf(const rotations::ThreeAngles& a) {
    return (a.shoulder < 0 ? 2u : 0u) + (a.elbow < 0 ? 1u : 0u);
  }

  static void setSingular(const rotations::ThreeAngles& angles, ArmWays& ways) {
    ways.isSingular = true;
    ways.clear[sideOf(angles)] = 0.0;
  }

  /// The first three joints stand in `values_`.
  void addWays(const Reached& reached, const UMatrix& wrist, ArmWays& ways) {
    const UVec3d to = turned(wrist, axis(5));
    const rotations::TwoAnglesList pairs = wristPairs(to);
    ArmWay way;
    for (int k = 0; k < 3; ++k) way.degrees[at(k)] = value(k);
    way.branch = reached.branch;
    way.singular = singularOf(reached, to);
    const bool isShoulderFree = freeOf(reached.angles) >= 0;
    const double clear = isShoulderFree ? kTurn : way.singular.shoulderMm / axes().size();
    setClear(reached, to, pairs, std::min(way.singular.directionRad, clear), ways);
    for (const rotations::TwoAngles& pair : pairs) {
      if (pair.a1 == kFreeAngle) {
        setSingular(reached.angles, ways);
        continue;
      }
      if (pairs.count == 2) way.branch.wrist = sideOf(pair.a2);
      way.degrees[3] = pair.a1 * kRadToDeg;
      way.degrees[4] = pair.a2 * kRadToDeg;
      way.degrees[5] = lastTurn(pair.a1, pair.a2, wrist);
      ways.add(way);
    }
  }

  bool isFollowed(const Reached& reached) const {
    return freeOf(reached.angles) >= 0 && !query_.takesMissed;
  }

  /// One of the first three joints may stand anywhere, and the wrist follows.
  void followFrame(const Reached& reached, const UMatrix& motion,
                   const std::array<int, 2>& freePlaces) {
    const int free = freeOf(reached.angles);
    const auto wrist = [&] { return rigidInverse(shoulderTurn()) * motion; };
    followShoulder(
        reached, free, with(freePlaces, free),
        [&](ArmWays& ways) { addWays(reached, wrist(), ways); },
        [&](const std::array<int, 2>& places) { turnWristTo(reached, wrist(), places); });
  }

  /// The same where the last joint stays where it starts.
  void followDirection(const Reached& reached, const UVec3d& direction) {
    const int free = freeOf(reached.angles);
    const auto to = [&] { return turnedBack(shoulderTurn(), direction); };
    followShoulder(
        reached, free, with({place(5), -1}, free),
        [&](ArmWays& ways) { addPointing(reached, to(), ways); },
        [&](const std::array<int, 2>&) { pointWrist(reached, to(), free); });
  }

  /// `waysHere` gives the ways with the first three joints in `values_`, `addHere` adds what leaves
  /// a joint of the wrist free as well.
  template <typename WaysHere, typename AddHere>
  void followShoulder(const Reached& reached, int free, const std::array<int, 2>& freePlaces,
                      WaysHere waysHere, AddHere addHere) {
    thread_local ArmMembers members;
    const auto standAt = [&](double angle) {
      const std::array<double, 3> three = anglesOf(reached.angles);
      for (int k = 0; k < 3; ++k) value(k) = three[at(k)] * kRadToDeg;
      value(free) = start(free) + angle * kRadToDeg;
    };
    const auto waysAt = [&](double angle) {
      ArmWays ways;
      standAt(angle);
      waysHere(ways);
      return ways;
    };
    ArmCircle circle = circleOf(free);
    circle.waysAt = [&waysAt](double angle, const Branch*) { return waysAt(angle); };
    followCircle(circle, members);
    addMembers(members, free, freePlaces);
    const bool wasFreeOnly = std::exchange(isFreeOnly_, true);
    for (const double angle : members.singular) {
      standAt(angle);
      if (standInside()) addHere(freePlaces);
    }
    isFreeOnly_ = wasFreeOnly;
  }

  /// The first three joints at their turns nearest to the start; false where one has none.
  bool standInside() {
    for (int k = 0; k < 3; ++k) {
      const TurnRange range = turnsOf(pinned(k), value(k), start(k), query_.limits);
      if (range.count == 0) return false;
      value(k) = onLimit(pinned(k), nearestTurn(range, start(k)));
    }
    return true;
  }

  /// With the last joint where it starts.
  void addPointing(const Reached& reached, const UVec3d& to, ArmWays& ways) {
    const rotations::TwoAnglesList pairs = wristPairs(to);
    ArmWay way;
    for (int k = 0; k < 3; ++k) way.degrees[at(k)] = value(k);
    way.degrees[5] = std::clamp(start(5), pinned(5).min, pinned(5).max);
    way.branch = reached.branch;
    way.singular = singularOf(reached, to);
    setClear(reached, to, pairs, way.singular.directionRad, ways);
    for (const rotations::TwoAngles& pair : pairs) {
      if (pair.a1 == kFreeAngle) {
        setSingular(reached.angles, ways);
        continue;
      }
      if (pairs.count == 2) way.branch.wrist = sideOf(pair.a2);
      way.degrees[3] = pair.a1 * kRadToDeg;
      way.degrees[4] = pair.a2 * kRadToDeg;
      ways.add(way);
    }
  }

  void setClear(const Reached& reached, const UVec3d& to, const rotations::TwoAnglesList& pairs,
                double clear, ArmWays& ways) const {
    const std::size_t side = sideOf(reached.angles);
    ways.missing[side] = pairs.count > 0 ? 0.0 : wristBand().missing(angleBetween(axis(3), to));
    ways.clear[side] = clear;
  }

  const Query& query_;
  Values& values_;
  ArmStanding standing_;
  bool isFreeOnly_ = false;  ///< Of a frame only what leaves a joint free.
};

void solveStanding(const Query& query, Values& values) {
  if (query.frame && solveRegular(query, values, *query.frame, {-1, -1})) return;
  ArmTask(query, values).solve();
}

}  // namespace

void solveArm(const Query& query) { solvePlaced(query, solveStanding); }

}  // namespace korvo
