#pragma once

#include "toolkit/path/Toolpath.h"

namespace korvo {

/// The way between two targets: the straight line between the tips, the shortest turn between the
/// directions.
class PathWay {
 public:
  PathWay(const Target& from, const Target& to);

  /// False where directions are opposite: no turn is the shortest.
  bool hasShortestTurn() const { return hasTurn_; }

  /// After a share of the way, 0 to 1: of the line and of the angle alike.
  Target at(double way) const;

  double tipMiss(const zgeo::UVec3d& tip) const;  ///< From the line between its ends, mm.

  /// From the plane sector between the directions; of a direction of length 1 the sine of its
  /// angle to the arc (1 behind it).
  double directionMiss(const zgeo::UVec3d& direction) const;

 private:
  zgeo::UVec3d tip_, line_;
  zgeo::UVec3d from_, to_;
  zgeo::UVec3d across_;  ///< Of length 1, square to `from_` in the plane of the turn; or null.
  double angle_ = 0.0;
  bool hasTurn_ = true;
};

/// How far the tool leaves a way while all axes move in a straight line from one position to
/// another, as a bound that holds everywhere between, never as samples.
///
/// Bound. With q(s) = a + s (b - a), s from 0 to 1, a rotary joint i turns at the constant rate w_i
/// (radians for the whole move), a linear one k slides at v_k (mm). The tip p(s) seen from the part
/// is T_1(q_1) ... T_n(q_n) p_0, root first. Joint j moves it by p_j = a_j x (p - o_j), or by its
/// own direction; a joint i nearer the root turns this vector along, and one that slides leaves it:
/// d2p / dq_i dq_j = a_i x p_j for i <= j, i rotary, and 0 for i linear. So
///
///   |p''| <= sum over rotary i of |w_i| (|w_i| r_i + 2 S_i),
///   S_i = sum over j > i of |w_j| r_j (rotary) and |v_j| (linear),
///
/// with r_i the distance of the tip from the line of joint i: |a_i x (a_i x (p - o_i))| is r_i, and
/// a unit vector makes no vector longer. Joints from the root to i leave r_i as it is; the others
/// move the tip by at most S_i over the whole move, so from its value in the middle r_i departs by
/// at most S_i / 2. Taken from the tool to the root every S_i is known when it is needed. For the
/// direction d the same holds without linear joints, with the sine of its angle to the joint's axis
/// (at most 1) in the place of the distance.
///
/// Between two points s_1 and s_2 of the move, p(s) = chord(s) + e(s) with
/// |e| <= (s_2 - s_1)^2 / 8 * max |p''| (the error of linear interpolation). The distance from a
/// convex set is a convex function, and the line between two tips is convex, as is the plane sector
/// between two directions less than a half turn apart: along the chord neither distance exceeds
/// that at its ends. So on the whole piece
///
///   distance(p) <= max(distance(p(s_1)), distance(p(s_2))) + (s_2 - s_1)^2 / 8 * max |p''|,
///
/// and likewise for d, whose distance from the sector is the sine of its angle to the arc. A piece
/// where this exceeds the tolerance is halved: the second term falls to a quarter, so what is
/// refused is within a ten thousandth of the tolerance of really leaving it, or leaves it.
class Deviation {
 public:
  Deviation(const JointChain& chain, const PathWay& way, const Tolerance& tolerance);

  struct Verdict {
    bool isKept = false;
    double share = 0.0;  ///< Of the tolerance: the most that was seen before it was decided.
  };

  Verdict judge(const Values& from, const Values& to) const;

 private:
  struct Curvature {
    double tip = 0.0;
    double direction = 0.0;
  };
  struct Miss {
    double tip = 0.0;
    double direction = 0.0;
  };

  Curvature curvature(const Values& from, const Values& to) const;
  Miss missAt(const Values& values) const;
  double share(const Miss& miss) const;

  const JointChain& chain_;
  const PathWay& way_;
  double mm_;
  double sine_;
};

}  // namespace korvo
