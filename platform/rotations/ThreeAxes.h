#pragma once

#include <array>

#include "platform/rotations/Solvers.h"

/// Which turns about three lines carry a point onto another: the first three joints of an arm.
namespace korvo::rotations {

/// A target that misses the reachable points by no more than this share of the size of the joints
/// (1e-9 mm for a metre) is taken for the nearest of them: what rounding makes of a stretched arm.
inline constexpr double kReachOfSize = 1e-12;

/// A point within this share of the size of the joints from a line lies on it (1e-10 mm for a
/// metre): turning about that line does not move it by more than is promised anyway.
inline constexpr double kOnLineOfSize = kOnAxis;

/// A rotary axis at the zero position; the direction may have any length.
struct Line {
  Vec3 direction{};
  Vec3 point{};
};

/// Turns about three lines: first a3 about line 3, then a2 about line 2, then a1 about line 1.
struct ThreeAngles {
  double a1 = 0.0;
  double a2 = 0.0;
  double a3 = 0.0;

  /// Root for a1: +1 when the point, before the first turn, is on the side of line 1 that
  /// direction1 x direction2 points to, or on neither; else -1.
  int shoulder = 1;
  /// Root for a3: +1 when the way from line 2 over line 3 to the point is bent positively about
  /// line 2, or is flat; else -1. With lines 1 and 2 parallel, heights along line 2 and distances
  /// from it change their parts: there the signs are of what turning makes the distance of the
  /// target and the height of the point grow.
  int elbow = 1;
  /// How far the point is from where both shoulder roots meet (mm, along direction1 x direction2).
  double shoulderMm = 0.0;
  /// How far the elbow is from the nearer of stretched and folded (rad, 0 to pi/2).
  double elbowRad = 0.0;
};

/// Whether a list has entries, and what forbids them.
enum class Reach {
  reached,
  tooFar,           ///< Further from line 2 than the stretched elbow reaches.
  tooNear,          ///< Nearer to line 2 than the folded elbow reaches.
  tooCloseToAxis1,  ///< So close to line 1 that the lateral offset cannot be turned aside.
  outOfReach,       ///< One of these, for lines in no usual arrangement.
  undefined,        ///< A null direction or a value that is not finite.
};

/// None to four solutions, by shoulder (+1 first), then elbow (+1 first), then a1, a3.
struct ThreeAnglesList {
  int count = 0;
  Reach reach = Reach::undefined;
  bool isFamily = false;     ///< The entries are members of a curve of solutions (see ThreeAxes).
  double missMm = 0.0;       ///< From the target to the nearest reachable point when empty.
  double fromAxis1Mm = 0.0;  ///< From the target to line 1.
  std::array<ThreeAngles, 4> solutions{};

  const ThreeAngles* begin() const { return solutions.data(); }
  const ThreeAngles* end() const { return solutions.data() + count; }
};

/// Turns that bring the point nearest to a target, and the distance that is left.
struct NearestAngles {
  ThreeAngles angles;
  double missMm = 0.0;
};

namespace detail {

/// A circle, at(angle) = centre + cos(angle) e + sin(angle) f.
struct Circle {
  Vec3 centre{};
  Vec3 e{};
  Vec3 f{};
};

/// The places that the first turn gives to line 2's points, or rather where `to` is seen from
/// there, and those that the third gives to `from`; in a frame with line 2 as its third axis.
struct CirclePair {
  Circle x;                ///< S3(a3) * from.
  Circle y;                ///< S1(-a1) * to.
  double size = 0.0;       ///< Of the joints (mm).
  double sine12 = 0.0;     ///< Of the angle between lines 1 and 2; 0 when they are parallel.
  bool isOpposed = false;  ///< Lines 2 and 3 point to opposite sides.
};

/// Any lines. ThreeAxesGeneral.cpp.
ThreeAnglesList solveCircles(const CirclePair& circles);
/// ThreeAxesNearest.cpp.
NearestAngles nearestOfCircles(const CirclePair& circles);

}  // namespace detail

/// All triples with S1(a1) * S2(a2) * S3(a3) * from = to, Si the rotation about line i, which is
/// given as it stands before the lines with smaller numbers turn: line 1 is next to the root.
///
/// Made once from the lines and `from`, asked for many targets; immutable.
///
/// @frames  Lines and points in one frame.
/// @units   Points in mm, directions of any length; radians in (-pi, pi].
/// @shape   See ThreeAnglesList. Two triples that differ by less than kSameSolution in all angles,
///          full turns aside, are one, the one between them (stretched or folded elbow, shoulder at
///          its limit). kFreeAngle stands for a1 when `to` lies on line 1, for a3 when `from` lies
///          on line 3, for a2 when `to`, seen from behind the first turn, lies on line 2: the other
///          two angles then hold for every value of the free one. Where more than that is free
///          (three parallel or meeting lines, two lines that are one) solutions make a curve:
///          isFamily, with the entries whose a1, and if a1 does not decide then a3, is nearest to
///          0.
/// @source  x = S3(a3) from and y = S1(-a1) to run on circles about lines 3 and 1, and an a2 exists
///          when both are on one circle about line 2: as high along it and as far from a point o2
///          of it (Pieper, The Kinematics of Manipulators under Computer Control, 1968). Both
///          conditions are linear in the cosines and sines of a1 and a3.
///          Lines 2 and 3 parallel: the height is free of a3 and gives a1 = phi -+ psi; then the
///          triangle of line 2, line 3 and the point, by its sides, gives a3 and a2. Its angles are
///          arc tangents of its area, which is a product of differences of lengths: so neither the
///          stretched nor the folded elbow loses digits.
///          Else (ThreeAxesGeneral.cpp): the two equations leave a plane of cosines and sines, in
///          which |v1|^2 + |v3|^2 = 2 is a circle; on it |v1|^2 = |v3|^2 is a trigonometric
///          polynomial of degree two, whose roots are isolated by bounds on its derivatives.
/// @errors  Empty when a direction is null or a value is not finite, or the target misses the
///          reachable points by more than kReachOfSize. The turned `from` misses `to` by at most
///          1e-13 of the size plus what the target misses the limits of shoulder and elbow by, each
///          up to kReachOfSize. Lines 2 and 3 count as parallel within kOnAxis. Where the
///          roots of shoulder and elbow meet at once (point next to line 2, equal links, lines 1
///          and 2 meeting) and lines 2 and 3 are not quite parallel, triples may be missing.
/// @cost    Parallel lines 2 and 3: eight arc tangents, four square roots for four triples. Else
///          some microseconds, and ten for missMm of an empty list. No allocation.
class ThreeAxes {
 public:
  ThreeAxes(const Vec3& from, const Line& line1, const Line& line2, const Line& line3);

  ThreeAnglesList solve(const Vec3& to) const;

  /// The same without missMm, which takes most of the time where nothing reaches.
  ThreeAnglesList solutions(const Vec3& to) const;

  /// The triple that comes nearest to any target: a local search from a grid of all a1 and a3.
  NearestAngles nearest(const Vec3& to) const;

  /// Distances along the joints, from line 1 to the point (mm), but at least a hundredth of the
  /// coordinates: what rounding is measured by.
  double size() const { return size_; }

 private:
  struct Bent;
  struct Shoulder;

  void placeLines(const Line& line1, const Line& line2);
  void measureElbow();
  Vec3 inFrame2(const Vec3& v) const;
  Bent bent(double planar1, double planar2) const;
  void addElbows(const ThreeAngles& shoulder, const Bent& bent, ThreeAnglesList& list) const;
  void addSide(const Shoulder& shoulder, int side, ThreeAnglesList& list) const;
  void addSides(const Shoulder& shoulder, ThreeAnglesList& list) const;
  void addAtLimits(const Shoulder& shoulder, double distance, ThreeAnglesList& list) const;
  Reach whyNot(const Shoulder& shoulder) const;
  ThreeAnglesList solveUsual(const Vec3& to) const;
  ThreeAnglesList solveAny(const Vec3& to) const;
  detail::CirclePair circlesTo(const Vec3& to) const;

  bool isValid_ = false;
  bool isUsual_ = false;  ///< Lines 2 and 3 parallel, line 1 not.
  double size_ = 0.0;

  // Frame of line 1: right-handed across_, normal_ (direction1 x direction2), direction1; its
  // origin o1 is the foot on line 1 of o2, which is the foot on line 2 of the centre of x.
  Vec3 o1_{}, o2_{};
  Vec3 across_{}, normal_{}, direction1_{}, direction2_{},
      level2_{};                                        ///< level2_: normal x line 2.
  double sine_ = 0.0, cosine_ = 0.0, cotangent_ = 0.0;  ///< Of the angle between lines 1 and 2.
  double offsetAcross_ = 0.0, offsetNormal_ = 0.0;      ///< Of o2 in the frame of line 1.

  detail::Circle x_{};  ///< In the frame level2_, normal_, direction2_ at o2.
  Vec3 direction3_{};

  // Lines 2 and 3 parallel: the elbow's triangle.
  double upper_ = 0.0, fore_ = 0.0;          ///< From line 2 to line 3, from line 3 to `from`.
  double sumSq_ = 0.0, differenceSq_ = 0.0;  ///< Of upper_ + fore_ and upper_ - fore_.
  double squares_ = 0.0, bias_ = 0.0;        ///< upper_^2 + fore_^2 and upper_^2 - fore_^2.
  double azimuthUpper_ = 0.0, bend0_ = 0.0;  ///< At the zero position.
  double sense3_ = 1.0;                      ///< Of line 3 about line 2.
};

/// All triples for one target; see ThreeAxes.
ThreeAnglesList threeAxes(const Vec3& from, const Vec3& to, const Line& line1, const Line& line2,
                          const Line& line3);

}  // namespace korvo::rotations
