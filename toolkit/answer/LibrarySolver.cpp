#include <algorithm>
#include <cmath>

#include "toolkit/answer/Answer.h"
#include "toolkit/answer/ArmLayout.h"
#include "toolkit/answer/Candidates.h"
#include "toolkit/answer/Carry.h"
#include "toolkit/answer/Explain.h"
#include "toolkit/answer/FreeAxes.h"
#include "toolkit/answer/Sentences.h"

using zgeo::UVec3d;
using zkin::KMachineElem;

namespace korvo {
namespace {

bool isFinite(const UVec3d& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool isTarget(const Target& target) {
  return isFinite(target.tip) && isFinite(target.direction) &&
         target.direction.normalised().norm2() > 0;
}

double totalOutside(const Answer& answer) {
  double sum = 0.0;
  for (const AxisOutside& axis : outsideOf(answer.margins)) sum += std::abs(axis.by);
  return sum;
}

// Of two reached positions the nearer one, of two outside the limits the one less far outside, of
// two beside the target the one less far beside. The earlier of equal ones.
bool isBetter(const Answer& a, const Answer& b, const Position& from) {
  if (a.status != b.status) return a.status < b.status;
  if (a.status == Status::reached) return distance(a.position, from) < distance(b.position, from);
  if (a.status == Status::outsideLimits) return totalOutside(a) < totalOutside(b);
  return a.residual.directionRad <= kReachedRad && a.residual.pointMm < b.residual.pointMm;
}

// The linear axes back where they started.
void takeLinear(const Machine& machine, const Position& from, Position& at) {
  for (int i = 0; i < at.size(); ++i) {
    const KMachineElem& axis = *machine->getAxisElem(i + 1);
    if (axis.getElemType() == KMachineElem::KMET_TYPE_ALIN) at[i] = from[i];
  }
}

}  // namespace

LibrarySolver::LibrarySolver(const Machine& machine, Language language)
    : machine_(machine),
      language_(language),
      solved_(machine_.position()),
      isArm_(isArmClass(*machine_)) {
  bool hasLock = false;
  for (const KMachineElem* e : machine_->getToolChain(false, -1)) {
    const bool isAxis = e->getValueIndex() >= 0;
    const bool isRotary = isAxis && e->getElemType() == KMachineElem::KMET_TYPE_AROT;
    hasRotary_ = hasRotary_ || (isRotary && !e->isLocked());
    hasLock = hasLock || (isAxis && e->isLocked());
  }
  isArm_ = isArm_ && !wristAxes(*machine_, solved_).empty();
  mindsLocks_ = hasLock && isArm_;  // the other solvers leave locked axes alone
  hasTurnedSpare_ = korvo::hasTurnedSpare(machine_);
  if (!isArm_) return;
  const ArmLayout arm(*machine_);
  const std::optional<double> tipToCentre = arm.tipToCentre();
  if (!tipToCentre) return;
  aimed_.emplace(arm.aimedAtCentre(machine_));
  tipToCentre_ = *tipToCentre;
}

// The code is not asked: it says neither that a point was reached nor that it was not.
void LibrarySolver::solve(const Target& target, const Position& from, Position& out) {
  *out = *from;
  if (aimed_) {
    const UVec3d centre = target.tip + target.direction.normalised() * tipToCentre_;
    (*aimed_)->getConfigPlus(from, centre, target.direction, out);
    polish(target, centre, out);
  } else {
    machine_->getConfigPlus(from, target.tip, target.direction, out);
  }
}

// The arm's solver takes angles from their cosines, which near 0 and half a turn know them to 1e-8
// alone: a forearm of a metre then misses by 1e-5 mm.
void LibrarySolver::polish(const Target& target, const UVec3d& centre, Position& out) const {
  constexpr double kHair = 1e-3;
  const Residual missed = korvo::residual(machine_, out, target);
  if (missed.isReached() || !(missed.pointMm <= kHair)) return;
  UVec3d nose, direction;
  (*aimed_)->getTool(out, nose, direction, -1);
  polishArm(machine_, nose, centre - nose, target.direction, out);
}

Answer LibrarySolver::judged(const Target& target, const Position& from, Position at) const {
  Answer answer(std::move(at));
  answer.residual = korvo::residual(machine_, answer.position, target);
  answer.margins = korvo::margins(machine_, answer.position);
  const bool isKept = !mindsLocks_ || movedLocks(machine_, from, answer.position).empty();
  if (isKept && answer.residual.isReached()) {
    answer.status = outsideOf(answer.margins).empty() ? Status::reached : Status::outsideLimits;
  }
  return answer;
}

void LibrarySolver::explain(const Target& target, const Position& from, Answer& answer) const {
  answer.singularity = korvo::singularity(machine_, answer.position);
  if (answer.status == Status::outsideLimits) explainOutside(machine_, language_, answer);
  if (answer.status == Status::notReached) explainMiss(machine_, target, from, language_, answer);
}

// Reached, and yet by axes that travel far for little.
bool LibrarySolver::isDoubtful(const Position& at) const {
  return hasTurnedSpare_ && isNearlyDependent(machine_, at);
}

// The tool points the wanted way: the best of what the free linear axes can do for its point.
Answer LibrarySolver::carriedOn(const Target& target, const Position& from, Answer answer) const {
  if (isArm_ || !(answer.residual.directionRad <= kReachedRad)) return answer;
  if (answer.status == Status::reached && !isDoubtful(answer.position)) return answer;
  Position start = answer.position;
  takeLinear(machine_, from, start);
  for (Position& way : carriedWays(machine_, target, start)) {
    bringInside(machine_, from, way);
    Answer other = judged(target, from, std::move(way));
    if (isBetter(other, answer, from)) answer = std::move(other);
  }
  return answer;
}

Answer LibrarySolver::linearOnly(const Target& target, const Position& from) const {
  Answer answer = carriedOn(target, from, judged(target, from, from));
  answer.isLinearOnly = answer.residual.isReached();
  return answer;
}

Answer LibrarySolver::best(const Target& target, const Position& from) {
  if (!isTurning()) return linearOnly(target, from);
  const auto solvedFrom = [&](const Position& start) {
    solve(target, start, solved_);
    bringInside(machine_, from, solved_);
    return carriedOn(target, from, judged(target, from, solved_));
  };
  Answer best = solvedFrom(from);
  const bool mayBranch = best.status == Status::outsideLimits ||
                         (!isArm_ && best.residual.directionRad <= kReachedRad);
  if (best.status == Status::reached || !mayBranch) return best;
  for (const Position& start : otherBranches(machine_, best.position)) {
    Answer answer = solvedFrom(start);
    if (isBetter(answer, best, from)) best = std::move(answer);
  }
  return best;
}

namespace {

// Whether other starts may lead where this one did not: to other values, into the reach of few
// linear axes, or to another side of an arm. What machine or target cannot do stays so from
// everywhere.
bool mayLieElsewhere(const Answer& answer) {
  return answer.reason == Reason::outsideLimits || answer.reason == Reason::startOfArm ||
         answer.reason == Reason::linearAxes;
}

Answer refused(const Position& from, Language language) {
  Answer answer(from);
  explainNoTarget(sentences::kNoTarget, language, answer);
  return answer;
}

}  // namespace

// A direction out of reach leaves the library where it starts: the best is the nearest direction.
void LibrarySolver::approach(const Target& target, const Position& from, Answer& answer) {
  if (answer.reason != Reason::outsideCone || isArm_) return;
  const std::optional<UVec3d> direction = nearestDirection(machine_, target, from);
  if (!direction) return;
  Answer nearer = judged(target, from, best({target.tip, *direction}, from).position);
  if (nearer.residual.directionRad >= answer.residual.directionRad) return;
  explain(target, from, nearer);
  answer = std::move(nearer);
}

Answer LibrarySolver::nearest(const Target& target, const Position& from) {
  if (!isTarget(target)) return refused(from, language_);
  Answer answer = best(target, from);
  explain(target, from, answer);
  approach(target, from, answer);
  if (!mayLieElsewhere(answer) || !isTurning()) return answer;
  std::vector<Position> all;
  list(target, from, all);
  if (all.empty()) return answer;
  Answer listed = judged(target, from, std::move(all.front()));
  explain(target, from, listed);
  return listed;
}

Answers LibrarySolver::all(const Target& target, const Position& from, std::size_t max) {
  Answers answers;
  std::vector<Position> found;
  if (isTarget(target) && isTurning()) {
    const std::uint64_t seeds = list(target, from, found);
    if (seeds > kMostSeeds) answers.tooManySeeds = seeds;
  }
  if (found.empty()) {
    Answer only = nearest(target, from);
    if (only.status == Status::reached) {
      found.push_back(std::move(only.position));
    } else {
      answers.none.emplace(std::move(only));
    }
  }
  answers.total = found.size();
  found.resize(std::min(found.size(), max), from);
  for (Position& position : found) {
    answers.distances.push_back(distance(position, from));
    Answer answer =
        isTurning() ? judged(target, from, std::move(position)) : linearOnly(target, from);
    explain(target, from, answer);
    answers.positions.push_back(std::move(answer));
  }
  return answers;
}

Answer LibrarySolver::translate(const UVec3d& delta, const Position& from) {
  UVec3d nose, direction;
  machine_->getTool(from, nose, direction, -1);
  const UVec3d tip = nose - direction * machine_->getTHELength(-1);
  const Target target{tip + delta, direction};
  if (!isTarget(target)) return refused(from, language_);
  if (isTurning()) {
    solve(target, from, solved_);
  } else {
    solved_ = from;
  }
  Answer answer = carriedOn(target, from, judged(target, from, solved_));
  answer.isLinearOnly = !isTurning() && answer.residual.isReached();
  explain(target, from, answer);
  return answer;
}

std::optional<Answer> LibrarySolver::follow(const Target& target, Position& at,
                                            Residual& residual) {
  if (!isTarget(target)) return refused(at, language_);
  if (isTurning() && !mindsLocks_) {
    solve(target, at, solved_);
    residual = korvo::residual(machine_, solved_, target);
    const bool isInside = machine_->checkLimitsFull(solved_, nullptr) == 0;
    if (residual.isReached() && isInside && !isDoubtful(solved_)) {
      *at = *solved_;
      return {};
    }
  }
  Answer answer = best(target, at);
  residual = answer.residual;
  if (answer.status == Status::reached) {
    *at = *answer.position;
    return {};
  }
  explain(target, at, answer);
  return answer;
}

}  // namespace korvo
