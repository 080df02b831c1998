#pragma once

#include <array>
#include <cmath>
#include <optional>

#include "platform/rotations/ThreeAxes.h"
#include "toolkit/solve/Core.h"

/// An arm's lines with what is held on it standing anywhere.
namespace korvo {

inline zgeo::UVec3d turned(const zgeo::UMatrix& m, zgeo::UVec3d v) {
  m.applyDir(v);
  return v;
}

inline zgeo::UMatrix rigidInverse(const zgeo::UMatrix& m) {
  zgeo::UMatrix inverse;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) inverse(i, j) = m(j, i);
  }
  inverse.setOrigin(zgeo::UVec3d() - turnedBack(m, m.getOrigin()));
  return inverse;
}

/// A direction square to a unit one.
inline zgeo::UVec3d squareTo(const zgeo::UVec3d& v) {
  const zgeo::UVec3d other = std::abs(v.x) < 0.5 ? zgeo::UVec3d(1, 0, 0) : zgeo::UVec3d(0, 1, 0);
  return (v ^ other).normalised();
}

/// The six lines as the held joints have moved them, and what these do to the tool: motion of the
/// tool = front * turns about the lines * behind. Of an arm that is one body `behind` is the
/// identity and the lines are those of the zero position.
struct ArmStanding {
  std::array<Joint, 6> lines;
  zgeo::UVec3d centre;
  zgeo::UMatrix front;
  zgeo::UMatrix behind;
  std::optional<rotations::ThreeAxes> moved;  ///< Of an arm that is not one body.
};

inline void moveLine(const zgeo::UMatrix& by, Joint& line) {
  line.point = by * line.point;
  by.applyDir(line.direction);
}

inline ArmStanding standingOf(const Query& query, const Values& values) {
  const JointChain& chain = query.core.chain;
  const ArmShape& arm = *query.core.arm;
  ArmStanding s;
  zgeo::UMatrix held;  // behind the first joint
  int next = 0;
  for (int i = 0; i < static_cast<int>(chain.joints.size()); ++i) {
    if (next < 6 && arm.joint(next) == i) {
      Joint& line = s.lines[at(next++)];
      line = query.core.joint(i);
      if (!arm.isOneBody()) moveLine(held, line);
      if (next == 4) s.centre = held * arm.centre();
    } else {
      moveBy(query.core.joint(i), valueOf(query.core.joint(i), values), next == 0 ? s.front : held);
    }
  }
  s.behind = held;
  for (Joint& line : s.lines) line.direction.normalise();
  if (!arm.isOneBody()) {
    const auto lineOf = [&](std::size_t k) {
      return rotations::Line{plain(s.lines[k].direction), plain(s.lines[k].point)};
    };
    s.moved.emplace(plain(s.centre), lineOf(0), lineOf(1), lineOf(2));
  }
  return s;
}

}  // namespace korvo
