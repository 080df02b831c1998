#include "toolkit/path/Deviation.h"

#include <algorithm>
#include <cmath>

#include "toolkit/model/Walk.h"

using zgeo::UMatrix;
using zgeo::UVec3d;

namespace korvo {
namespace {

/// Pieces that wait for their turn: halving them so often makes any bound small.
constexpr std::size_t kMostOpen = 64;

/// A bound so little above the tolerance is refused instead of being made finer.
constexpr double kDecided = 1e-4;

constexpr double kLeastAngle = 1e-12;  // radians: below it two directions are one

Values between(const Values& a, const Values& b, double s) {
  Values values;
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = a[i] + (b[i] - a[i]) * s;
  return values;
}

/// A joint of the chain as it stands in the middle of a move.
struct Moving {
  double turn = 0.0;   ///< Radians.
  double slide = 0.0;  ///< mm
  UVec3d axis, point;
};

}  // namespace

PathWay::PathWay(const Target& from, const Target& to)
    : tip_(from.tip),
      line_(to.tip - from.tip),
      from_(from.direction.normalised()),
      to_(to.direction.normalised()) {
  const UVec3d normal = from_ ^ to_;
  angle_ = std::atan2(normal.norm(), from_ * to_);
  hasTurn_ = angle_ < std::numbers::pi - 1e-6;
  if (hasTurn_ && angle_ > kLeastAngle) across_ = (normal ^ from_).normalised();
}

Target PathWay::at(double way) const {
  const double angle = angle_ * way;
  return {tip_ + line_ * way, from_ * std::cos(angle) + across_ * std::sin(angle)};
}

double PathWay::tipMiss(const UVec3d& tip) const {
  const UVec3d off = tip - tip_;
  const double length2 = line_.norm2();
  const double along = length2 > 0 ? std::clamp(off * line_ / length2, 0.0, 1.0) : 0.0;
  return (off - line_ * along).norm();
}

double PathWay::directionMiss(const UVec3d& direction) const {
  const UVec3d normal = from_ ^ across_;  // null where the directions are one
  const bool isBetween =
      across_ != UVec3d() && direction * across_ >= 0 && direction * (normal ^ to_) <= 0;
  if (isBetween) return std::abs(direction * normal);
  const auto toRay = [&](const UVec3d& ray) {
    return direction * ray > 0 ? (direction ^ ray).norm() : direction.norm();
  };
  return std::min(toRay(from_), toRay(to_));
}

Deviation::Deviation(const JointChain& chain, const PathWay& way, const Tolerance& tolerance)
    : chain_(chain),
      way_(way),
      mm_(tolerance.mm),
      sine_(std::sin(std::min(tolerance.degrees, 90.0) * kDegToRad)) {}

Deviation::Curvature Deviation::curvature(const Values& from, const Values& to) const {
  std::array<Moving, kMostAxes> moving;
  const Values middle = between(from, to, 0.5);
  UMatrix placed;
  std::size_t count = 0;
  for (const Joint& joint : chain_.joints) {
    const double by = joint.place < 0 ? 0.0 : valueOf(joint, to) - valueOf(joint, from);
    if (by != 0.0) {
      Moving& m = moving[count++];
      m = {};
      m.axis = joint.direction;
      placed.applyDir(m.axis);
      if (joint.motion == Joint::Motion::turn) {
        m.turn = std::abs(by) * kDegToRad;
        m.axis.normalise();
        m.point = placed * joint.point;
      } else {
        m.slide = std::abs(by) * m.axis.norm();
      }
    }
    moveBy(joint, valueOf(joint, middle), placed);
  }
  UVec3d direction = chain_.toolDirection;
  placed.applyDir(direction);
  const UVec3d tip = chain_.tipOf({placed * chain_.toolPoint, direction});

  Curvature most;
  double tipWay = 0.0, directionWay = 0.0;  // by the joints behind, S_i
  while (count-- > 0) {
    const Moving& m = moving[count];
    if (m.turn == 0.0) {
      tipWay += m.slide;
      continue;
    }
    const double lever = ((tip - m.point) ^ m.axis).norm() + tipWay / 2;
    const double sine = std::min((direction ^ m.axis).norm() + directionWay / 2, 1.0);
    most.tip += m.turn * (m.turn * lever + 2 * tipWay);
    most.direction += m.turn * (m.turn * sine + 2 * directionWay);
    tipWay += m.turn * lever;
    directionWay += m.turn * sine;
  }
  return most;
}

Deviation::Miss Deviation::missAt(const Values& values) const {
  const ToolPose pose = chain_.pose(values);
  return {way_.tipMiss(chain_.tipOf(pose)), way_.directionMiss(pose.direction)};
}

double Deviation::share(const Miss& miss) const {
  return std::max(miss.tip / mm_, miss.direction / sine_);
}

Deviation::Verdict Deviation::judge(const Values& from, const Values& to) const {
  struct Piece {
    double begin = 0.0, end = 0.0;
    Miss first, last;
  };
  const Curvature most = curvature(from, to);
  std::array<Piece, kMostOpen> open{{{0.0, 1.0, missAt(from), missAt(to)}}};
  Verdict verdict{false, std::max(share(open[0].first), share(open[0].last))};
  if (verdict.share > 1) return verdict;
  for (std::size_t count = 1; count > 0;) {
    const Piece piece = open[--count];
    const double length = piece.end - piece.begin;
    const double above = length * length / 8;
    const Miss bound{
        std::max(piece.first.tip, piece.last.tip) + above * most.tip,
        std::max(piece.first.direction, piece.last.direction) + above * most.direction};
    if (share(bound) <= 1) continue;
    const bool isHopeless = share({above * most.tip, above * most.direction}) < kDecided;
    if (isHopeless || count + 2 > kMostOpen) return verdict;
    const double middle = (piece.begin + piece.end) / 2;
    const Miss half = missAt(between(from, to, middle));
    verdict.share = std::max(verdict.share, share(half));
    if (verdict.share > 1) return verdict;
    open[count++] = {middle, piece.end, half, piece.last};
    open[count++] = {piece.begin, middle, piece.first, half};
  }
  verdict.isKept = true;
  return verdict;
}

}  // namespace korvo
