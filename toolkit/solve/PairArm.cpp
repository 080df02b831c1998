// Arms: what Arm.cpp does, two branches at once, for targets that are far from singular.
#include "toolkit/solve/PairArm.h"

#include "toolkit/solve/Verifier.h"

using zgeo::UMatrix;
using zgeo::UVec3d;

namespace korvo {
namespace {

using rotations::both;
using rotations::PairMask;
using rotations::WristAngles;

constexpr double kTurn = 360.0;
constexpr std::size_t kMostStands = 16;

/// `TurnRange` of two angles.
struct PairRange {
  Pair first, count;

  TurnRange operator[](int lane) const { return {first[lane], static_cast<int>(count[lane])}; }
};

/// The first three joints at one of their turns.
struct Stand {
  std::array<double, 3> degrees;
  const rotations::ThreeAngles* angles;
};

/// Two stands: where they place the wrist, and how it has to turn there.
struct StandPair {
  PairPlaced placed;
  rotations::BallWrist::Solutions wrist;
  std::array<std::array<PairRange, 3>, 2> ranges;  ///< Of the left and the right.
};

class PairArm {
 public:
  PairArm(const Query& query, const Values& values, const UMatrix& frame,
          const std::array<int, 2>& freePlaces)
      : query_(query),
        arm_(*query.core.arm),
        frame_(frame),
        freePlaces_(freePlaces),
        values_(values),
        verifier_(query, query.core.arm->joint(3)) {
    for (int i = 0; i < arm_.joint(0); ++i) {
      moveBy(query.core.joint(i), valueOf(query.core.joint(i), values), front_);
    }
  }

  bool solve() {
    const rotations::ThreeAnglesList list = arm_.shoulder().solutions(plain(centre()));
    if (!bound() || !stand(list)) return false;
    to_ = PairPlaced::bothAt(frame_);
    for (std::size_t i = 0; i < count_; i += 2) {
      if (!turnWrists(i)) return false;
    }
    for (std::size_t i = 0; i < count_; ++i) addStand(i);
    verifier_.flush();
    return true;
  }

 private:
  const Joint& joint(std::size_t k) const {
    return query_.core.joint(arm_.joint(static_cast<int>(k)));
  }
  const PairJoint& pairJoint(std::size_t k) const {
    return query_.core.pairJoints[at(arm_.joint(static_cast<int>(k)))];
  }
  double& value(std::size_t k) { return values_[at(joint(k).place)]; }

  /// The wrist centre wanted, as it stands before the joints in front of the arm move it.
  UVec3d centre() const {
    const JointChain& chain = query_.core.chain;
    UVec3d fromTip = arm_.centre() - (chain.toolPoint - chain.toolDirection * chain.toolLength);
    frame_.applyDir(fromTip);
    return turnedBack(front_, frame_.getOrigin() + fromTip - front_.getOrigin());
  }

  /// Where the turns of the joints are listed; false where they are too far from zero.
  bool bound() {
    bool isNear = true;
    for (std::size_t k = 0; k < 6; ++k) {
      const auto [low, high] = listedRange(joint(k), query_.from[at(joint(k).place)]);
      low_[k] = both(low - kOnLimit);
      high_[k] = both(high + kOnLimit);
      isNear = isNear && low > -kMostPairDegrees && high < kMostPairDegrees;
    }
    return isNear;
  }

  /// As `turnsOf`.
  PairRange rangeOf(std::size_t k, Pair angle) const {
    const Pair degrees = angle * kRadToDeg;
    const Pair first = rotations::detail::ceil((low_[k] - degrees) / kTurn);
    const Pair last = rotations::detail::floor((high_[k] - degrees) / kTurn);
    return {degrees + kTurn * first, last - first + 1.0};
  }

  // --- the first three joints

  bool stand(const rotations::ThreeAnglesList& list) {
    for (int i = 0; i < list.count; i += 2) {
      const int j = std::min(i + 1, list.count - 1);
      const rotations::ThreeAngles& a = list.solutions[at(i)];
      const rotations::ThreeAngles& b = list.solutions[at(j)];
      const std::array<PairRange, 3> ranges = {
          rangeOf(0, Pair{a.a1, b.a1}), rangeOf(1, Pair{a.a2, b.a2}), rangeOf(2, Pair{a.a3, b.a3})};
      for (int lane = 0; lane <= j - i; ++lane) {
        if (!addTurns(ranges, lane, list.solutions[at(i + lane)])) return false;
      }
    }
    return list.count > 0;
  }

  bool addTurns(const std::array<PairRange, 3>& ranges, int lane,
                const rotations::ThreeAngles& angles) {
    if (std::min({angles.a1, angles.a2, angles.a3}) == rotations::kFreeAngle) return false;
    if (!std::isfinite(angles.a1 + angles.a2 + angles.a3)) return false;  // of numbers too large
    const TurnRange first = ranges[0][lane], second = ranges[1][lane], third = ranges[2][lane];
    for (int i = 0; i < first.count; ++i) {
      for (int j = 0; j < second.count; ++j) {
        for (int l = 0; l < third.count; ++l) {
          if (count_ == kMostStands) return false;
          stands_[count_++] = {{onLimit(joint(0), first[i]), onLimit(joint(1), second[j]),
                                onLimit(joint(2), third[l])},
                               &angles};
        }
      }
    }
    return true;
  }

  // --- the last three

  bool turnWrists(std::size_t i) {
    StandPair& pair = pairs_[i / 2];
    const Stand& a = stands_[i];
    const Stand& b = stands_[std::min(i + 1, count_ - 1)];
    pair.placed = PairPlaced::bothAt(front_);
    for (std::size_t k = 0; k < 3; ++k) {
      moveBy(pairJoint(k), Pair{a.degrees[k], b.degrees[k]}, pair.placed);
    }
    pair.wrist = arm_.wrist().solve(pair.placed.turnedBack(to_.turned(pairJoint(5).direction)),
                                    to_.turnedBack(pair.placed.turned(pairJoint(3).direction)));
    const PairMask& isRegular = pair.wrist.isRegular;
    if ((isRegular[0] & isRegular[1]) == 0) return false;
    for (std::size_t side = 0; side < 2; ++side) {
      const WristAngles& angles = side == 0 ? pair.wrist.left : pair.wrist.right;
      pair.ranges[side] = {rangeOf(3, angles.a1), rangeOf(4, angles.a2), rangeOf(5, angles.a3)};
    }
    return true;
  }

  void addStand(std::size_t i) {
    const StandPair& pair = pairs_[i / 2];
    const int lane = static_cast<int>(i % 2);
    if (pair.wrist.isReached[lane] == 0) return;
    const Stand& stand = stands_[i];
    for (std::size_t k = 0; k < 3; ++k) value(k) = stand.degrees[k];
    branch_.shoulder = static_cast<std::int8_t>(stand.angles->shoulder);
    branch_.elbow = static_cast<std::int8_t>(stand.angles->elbow);
    singular_ = {arm_.wristBand().toEdge(pair.wrist.tilt[lane]), stand.angles->elbowRad,
                 stand.angles->shoulderMm};
    const bool isRightFirst = pair.wrist.isRightFirst[lane] != 0;
    addSide(pair, lane, isRightFirst);
    addSide(pair, lane, !isRightFirst);
  }

  void addSide(const StandPair& pair, int lane, bool isRight) {
    const std::array<PairRange, 3>& ranges = pair.ranges[isRight ? 1 : 0];
    const TurnRange first = ranges[0][lane], second = ranges[1][lane], third = ranges[2][lane];
    branch_.wrist = isRight ? std::int8_t{-1} : std::int8_t{1};
    for (int i = 0; i < first.count; ++i) {
      for (int j = 0; j < second.count; ++j) {
        for (int l = 0; l < third.count; ++l) {
          value(3) = onLimit(joint(3), first[i]);
          value(4) = onLimit(joint(4), second[j]);
          value(5) = onLimit(joint(5), third[l]);
          verifier_.take(values_, branch_, singular_, freePlaces_, pair.placed, lane);
        }
      }
    }
  }

  const Query& query_;
  const ArmShape& arm_;
  const UMatrix& frame_;
  std::array<int, 2> freePlaces_;
  UMatrix front_;
  Values values_;
  Branch branch_;
  SingularDistance singular_;
  PairPlaced to_;
  Verifier verifier_;
  std::array<Pair, 6> low_, high_;
  std::size_t count_ = 0;
  std::array<Stand, kMostStands> stands_;
  std::array<StandPair, kMostStands / 2> pairs_;
};

}  // namespace

bool solveRegular(const Query& query, const Values& values, const UMatrix& frame,
                  const std::array<int, 2>& freePlaces) {
  const bool isUsual =
      query.core.arm->isRegular() && query.limits == Limits::kept && !query.takesMissed;
  return isUsual && PairArm(query, values, frame, freePlaces).solve();
}

}  // namespace korvo
