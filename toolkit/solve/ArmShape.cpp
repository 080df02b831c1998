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

std::optional<Meeting> meetingAt(const JointChain& chain, const std::vector<int>& turns,
                                 std::size_t last) {
  const auto line = [&](std::size_t k) -> const Joint& { return chain.joints[at(turns[k])]; };
  return meetingOf(line(last - 2), line(last - 1), line(last));
}

}  // namespace

ArmShape::ArmShape(const JointChain& chain, const std::array<int, 6>& joints, const UVec3d& centre)
    : joints_(joints),
      centre_(centre),
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
    // Through the wrist centre the third joint's line would carry it nowhere.
    if (distanceToLine(meeting->centre, chain.joints[at(turns[last - 3])]) <= kMeeting) continue;
    std::array<int, 6> joints{};
    std::copy_n(turns.begin() + static_cast<std::ptrdiff_t>(last) - 5, 6, joints.begin());
    return ArmShape(chain, joints, meeting->centre);
  }
  return {};
}

std::optional<double> ArmShape::wristMiss(const JointChain& chain) {
  const std::vector<int> turns = turnsOf(chain);
  if (turns.size() < 6) return {};
  const auto meeting = meetingAt(chain, turns, turns.size() - 1);
  if (!meeting) return {};
  return meeting->miss;
}

}  // namespace korvo
