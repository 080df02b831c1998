#include <algorithm>
#include <cmath>

#include "toolkit/solve/Arm.h"
#include "toolkit/solve/Core.h"

using zgeo::UVec3d;

namespace korvo {
namespace {

rotations::Line lineOf(const Joint& joint) { return {plain(joint.direction), plain(joint.point)}; }

std::vector<int> turnsOf(const JointChain& chain) {
  std::vector<int> turns;
  for (int i = 0; i < static_cast<int>(chain.joints.size()); ++i) {
    const Joint& joint = chain.joints[at(i)];
    if (joint.motion == Joint::Motion::turn && joint.place >= 0) turns.push_back(i);
  }
  return turns;
}

double distanceToLine(const UVec3d& point, const Joint& line) {
  return ((point - line.point) ^ line.direction.normalised()).norm();
}

/// Where three lines come nearest to meeting, and how far apart they are there.
struct Meeting {
  UVec3d centre;
  double miss = 0.0;
};

std::optional<Meeting> meetingOf(const Joint& a, const Joint& b, const Joint& c) {
  const auto areSkew = [](const Joint& one, const Joint& other) {
    return (one.direction.normalised() ^ other.direction.normalised()).norm2() >
           rotations::kParallelCrossSq;
  };
  if (!areSkew(a, b) || !areSkew(b, c)) return {};
  const auto normal = rotations::commonNormal(plain(a.direction), plain(a.point),
                                              plain(b.direction), plain(b.point));
  if (normal.kind != rotations::LinePair::skew) return {};
  const UVec3d centre = (vector(normal.footA) + vector(normal.footB)) / 2;
  return Meeting{centre, std::max({vector(normal.footA).distanceTo(vector(normal.footB)),
                                   distanceToLine(centre, c)})};
}

using Three = std::array<int, 3>;

/// Whether the last three lines meet wherever a linear joint between them stands: one that moves
/// the last of them along itself leaves the point where it is.
bool isWhole(const JointChain& chain, const Three& wrist) {
  for (int i = wrist[0] + 1; i < wrist[2]; ++i) {
    const Joint& joint = chain.joints[at(i)];
    if (joint.motion != Joint::Motion::slide || joint.place < 0) continue;
    const UVec3d beside =
        joint.direction.normalised() ^ chain.joints[at(wrist[2])].direction.normalised();
    if (i < wrist[1] || beside.norm2() > rotations::kParallelCrossSq) return false;
  }
  return true;
}

/// Whether three joints carry a point every way, at a position that is like almost all others.
bool carry(const JointChain& chain, const Three& joints, UVec3d point) {
  constexpr double kNone = 1e-6;  // of the volume of unit directions
  std::array<UVec3d, 3> ways;
  double angle = 0.4;
  for (std::size_t k = 3; k-- > 0;) {
    const Joint& joint = chain.joints[at(joints[k])];
    zgeo::UMatrix turn;
    turnBy(joint.direction, joint.point, angle += 0.3, turn);
    for (std::size_t behind = k + 1; behind < 3; ++behind) turn.applyDir(ways[behind]);
    point = turn * point;
    ways[k] = (joint.direction ^ (point - joint.point)).normalised();
  }
  return std::abs(ways[0] * (ways[1] ^ ways[2])) > kNone;
}

/// The first three that go with a wrist whose first joint has the place `wrist` among the turns.
std::optional<Three> carriersOf(const JointChain& chain, const std::vector<int>& turns,
                                std::size_t wrist, const UVec3d& centre) {
  const auto isOnLine = [&](std::size_t k) {
    return distanceToLine(centre, chain.joints[at(turns[k])]) <= kMeeting;
  };
  for (std::size_t third = wrist; third-- > 2;) {
    if (isOnLine(third)) continue;
    for (std::size_t second = third; second-- > 1;) {
      for (std::size_t first = second; first-- > 0;) {
        const Three joints{turns[first], turns[second], turns[third]};
        if (carry(chain, joints, centre)) return joints;
      }
    }
  }
  if (isOnLine(wrist - 1)) return {};
  return Three{turns[wrist - 3], turns[wrist - 2], turns[wrist - 1]};
}

std::optional<Meeting> meetingAt(const JointChain& chain, const std::vector<int>& turns,
                                 std::size_t last) {
  const auto line = [&](std::size_t k) -> const Joint& { return chain.joints[at(turns[k])]; };
  return meetingOf(line(last - 2), line(last - 1), line(last));
}

}  // namespace

ArmShape::ArmShape(const JointChain& chain, const std::array<int, 6>& joints, const UVec3d& centre,
                   double miss)
    : joints_(joints),
      centre_(centre),
      miss_(miss),
      shoulder_(plain(centre), lineOf(chain.joints[at(joints[0])]),
                lineOf(chain.joints[at(joints[1])]), lineOf(chain.joints[at(joints[2])])) {
  isOneBody_ = joints[5] - joints[0] == 5 && joints[5] + 1 == static_cast<int>(chain.joints.size());
  const auto axis = [&](std::size_t k) {
    return chain.joints[at(joints[k])].direction.normalised();
  };
  wrist_ = rotations::BallWrist(plain(axis(3)), plain(axis(4)), plain(axis(5)));
  wristBand_ = bandOf(angleBetween(axis(3), axis(4)), angleBetween(axis(4), axis(5)));
  isRegular_ = isOneBody_ && wrist_.isRegular() &&
               std::none_of(joints.begin(), joints.end(),
                            [&](int i) { return chain.joints[at(i)].isLocked; });
}

std::optional<ArmShape> ArmShape::of(const JointChain& chain) {
  const std::vector<int> turns = turnsOf(chain);
  for (std::size_t last = turns.size(); last-- > 5;) {
    const auto meeting = meetingAt(chain, turns, last);
    if (!meeting || meeting->miss > kMeeting) continue;
    const Three wrist{turns[last - 2], turns[last - 1], turns[last]};
    if (!isWhole(chain, wrist)) continue;
    const auto first = carriersOf(chain, turns, last - 2, meeting->centre);
    if (!first) continue;
    return ArmShape(chain, {(*first)[0], (*first)[1], (*first)[2], wrist[0], wrist[1], wrist[2]},
                    meeting->centre, meeting->miss);
  }
  return {};
}

Unserved ArmShape::whyNot(const JointChain& chain) {
  const std::vector<int> turns = turnsOf(chain);
  const std::size_t last = turns.size() - 1;
  const auto meeting = meetingAt(chain, turns, last);
  if (!meeting || meeting->miss > kMeeting) return Unserved::noBallWrist;
  const bool isOne = isWhole(chain, {turns[last - 2], turns[last - 1], turns[last]});
  return isOne ? Unserved::wristOnThird : Unserved::splitWrist;
}

std::optional<double> ArmShape::wristMiss(const JointChain& chain) {
  const std::vector<int> turns = turnsOf(chain);
  if (turns.size() < 6) return {};
  const auto meeting = meetingAt(chain, turns, turns.size() - 1);
  if (!meeting) return {};
  return meeting->miss;
}

}  // namespace korvo
