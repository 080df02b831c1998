#include "toolkit/solve/Verifier.h"

#include <limits>
#include <utility>

#include "platform/rotations/Pair.h"
#include "toolkit/solve/Refine.h"

namespace korvo {
namespace {

using rotations::both;
using rotations::PairMask;
using rotations::detail::select;
using rotations::detail::sqrt;

Pair norm(const PairVec3& v) { return sqrt(dot(v, v)); }

/// Beyond it no residual counts as reached, so what the angle is does not matter.
Pair smallAngle(Pair sine, PairMask isSmall) {
  static_assert(kReachedRad < kSmallSine);
  return select(isSmall & (sine < kSmallSine), sine, both(std::numeric_limits<double>::infinity()));
}

}  // namespace

Verifier::Verifier(const Query& query, int first) : query_(query), first_(at(first)) {
  if (query.frame) frame_ = PairPlaced::bothAt(*query.frame);
  if (first == 0) front_ = PairPlaced::bothAt({});
}

void Verifier::take(const Values& values, const Branch& branch, const SingularDistance& singular,
                    const std::array<int, 2>& freePlaces, const PairPlaced& placed, int lane) {
  Candidate& candidate = candidates_[at(count_++)];
  candidate.solution.values = values;
  candidate.solution.branch = branch;
  candidate.solution.singular = singular;
  candidate.solution.freePlaces = freePlaces;
  candidate.placed = &placed;
  candidate.lane = lane;
  if (count_ == 2) verify();
}

Pair Verifier::valueOf(const PairJoint& joint) const {
  if (joint.place < 0) return both(0.0);
  return Pair{candidates_[0].solution.values[at(joint.place)],
              candidates_[1].solution.values[at(joint.place)]};
}

/// False where an angle is too large for a walk in pairs.
bool Verifier::walk(PairPlaced& placed) const {
  const std::vector<PairJoint>& joints = query_.core.pairJoints;
  PairMask isWithin = {-1, -1};
  for (std::size_t i = first_; i < joints.size(); ++i) {
    const Pair value = valueOf(joints[i]);
    isWithin &= isWalkable(joints[i], value);
    moveBy(joints[i], value, placed);
  }
  return (isWithin[0] & isWithin[1]) != 0;
}

/// As `residualOf` of the one position after the other.
Verifier::Residuals Verifier::residualsAt(const PairPlaced& placed) const {
  const SolverCore& core = query_.core;
  const PairVec3 d = placed.turned(core.pairTool.direction);
  const PairVec3 tip = tipOf(core, placed * core.pairTool.point, d);
  const PairVec3 wanted = bothOf(query_.direction);
  return {norm(difference(bothOf(query_.target.tip), tip)),
          smallAngle(norm(cross(d, wanted)), dot(d, wanted) > 0.0)};
}

Verifier::Residuals Verifier::residualsOfFrame(const PairPlaced& placed) const {
  const PairVec3 tip = placed * query_.core.pairTool.tip;
  Pair chordSq = both(0.0);
  for (std::size_t i = 0; i < 3; ++i) {
    const PairVec3 by = difference(placed.rows[i], frame_.rows[i]);
    for (const Pair x : by) chordSq += x * x;
  }
  return {norm(difference(frame_.origin, tip)),
          2.0 * smallAngle(sqrt(chordSq / 8.0), PairMask{-1, -1})};
}

void Verifier::takeMargins() {
  Pair margin = both(std::numeric_limits<double>::infinity());
  PairMask place = {-1, -1};
  for (const PairJoint& joint : query_.core.pairJoints) {
    if (joint.place < 0) continue;
    const Pair value = valueOf(joint);
    const Pair here = rotations::detail::least(value - joint.min, joint.max - value);
    const PairMask isLess = here < margin;
    margin = select(isLess, here, margin);
    place = (isLess & std::int64_t{joint.place}) | (~isLess & place);
  }
  for (int k = 0; k < 2; ++k) {
    candidates_[at(k)].solution.margin = margin[k];
    candidates_[at(k)].solution.marginPlace = static_cast<int>(place[k]);
  }
}

void Verifier::verify() {
  const int count = std::exchange(count_, 0);
  if (count == 1) candidates_[1] = candidates_[0];
  const auto& [a, b] = candidates_;
  PairPlaced placed = PairPlaced::of(*a.placed, a.lane, *b.placed, b.lane);
  const bool isWalked = walk(placed) && !query_.takesMissed;  // whose residuals are large
  const Residuals r = query_.frame ? residualsOfFrame(placed) : residualsAt(placed);
  takeMargins();
  for (int k = 0; k < count; ++k) {
    Solution& s = candidates_[at(k)].solution;
    s.residual = {r.pointMm[k], r.directionRad[k]};
    if (isWalked && (isFine(s.residual) || !query_.core.arm)) {
      accept(query_, s);
    } else {
      add(query_, s.values, s.branch, s.singular, s.freePlaces);
    }
  }
}

}  // namespace korvo
