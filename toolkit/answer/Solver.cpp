#include <algorithm>
#include <cmath>

#include "toolkit/answer/Answer.h"
#include "toolkit/answer/Candidates.h"
#include "toolkit/answer/Explain.h"
#include "toolkit/answer/FreeAxes.h"

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

// Of two reached positions the nearer one, of two outside the limits the one less far outside. The
// earlier of equal ones.
bool isBetter(const Answer& a, const Answer& b, const Position& from) {
  if (a.status != b.status) return a.status < b.status;
  if (a.status == Status::reached) return distance(a.position, from) < distance(b.position, from);
  return a.status == Status::outsideLimits && totalOutside(a) < totalOutside(b);
}

}  // namespace

Solver::Solver(const Machine& machine)
    : machine_(machine), solved_(machine_.position()), isArm_(isArmClass(*machine_)) {
  bool hasLock = false;
  for (const KMachineElem* e : machine_->getToolChain(false, -1)) {
    const bool isAxis = e->getValueIndex() >= 0;
    const bool isRotary = isAxis && e->getElemType() == KMachineElem::KMET_TYPE_AROT;
    hasRotary_ = hasRotary_ || (isRotary && !e->isLocked());
    hasLock = hasLock || (isAxis && e->isLocked());
  }
  isArm_ = isArm_ && !wristAxes(*machine_, solved_).empty();
  mindsLocks_ = hasLock && isArm_;  // the other solvers leave locked axes alone
}

// The code is not asked: it says neither that a point was reached nor that it was not.
void Solver::solve(const Target& target, const Position& from, Position& out) {
  *out = *from;
  machine_->getConfigPlus(from, target.tip, target.direction, out);
}

Answer Solver::judged(const Target& target, const Position& from, Position at) const {
  Answer answer(std::move(at));
  answer.residual = korvo::residual(machine_, answer.position, target);
  answer.margins = korvo::margins(machine_, answer.position);
  const bool isKept = !mindsLocks_ || movedLocks(machine_, from, answer.position).empty();
  if (isKept && answer.residual.isReached()) {
    answer.status = outsideOf(answer.margins).empty() ? Status::reached : Status::outsideLimits;
  }
  return answer;
}

void Solver::explain(const Target& target, const Position& from, Answer& answer) const {
  answer.singularity = korvo::singularity(machine_, answer.position);
  if (answer.status == Status::outsideLimits) explainOutside(machine_, answer);
  if (answer.status == Status::notReached) explainMiss(machine_, target, from, answer);
}

Answer Solver::linearOnly(const Target& target, const Position& from) const {
  Position at = carried(machine_, target, from);
  bringInside(machine_, from, at);
  Answer answer = judged(target, from, std::move(at));
  answer.isLinearOnly = answer.residual.isReached();
  return answer;
}

Answer Solver::best(const Target& target, const Position& from) {
  if (!isTurning()) return linearOnly(target, from);
  const auto solvedFrom = [&](const Position& start) {
    solve(target, start, solved_);
    bringInside(machine_, from, solved_);
    return judged(target, from, solved_);
  };
  Answer best = solvedFrom(from);
  if (best.status != Status::outsideLimits) return best;
  for (const Position& start : otherBranches(machine_, best.position)) {
    Answer answer = solvedFrom(start);
    if (isBetter(answer, best, from)) best = std::move(answer);
  }
  return best;
}

namespace {

// Whether other starts may lead where this one did not: to other values, or to another side of an
// arm. What machine or target cannot do stays so from everywhere.
bool mayLieElsewhere(const Answer& answer) {
  return answer.reason == Reason::outsideLimits || answer.reason == Reason::startOfArm;
}

Answer refused(const Position& from) {
  Answer answer(from);
  answer.reason = Reason::noDirection;
  answer.text = "a point and a direction in finite numbers, the direction not null, are wanted";
  return answer;
}

}  // namespace

Answer Solver::nearest(const Target& target, const Position& from) {
  if (!isTarget(target)) return refused(from);
  Answer answer = best(target, from);
  explain(target, from, answer);
  if (!mayLieElsewhere(answer) || !isTurning()) return answer;
  std::vector<Position> all;
  list(target, from, all);
  if (all.empty()) return answer;
  Answer listed = judged(target, from, std::move(all.front()));
  explain(target, from, listed);
  return listed;
}

Answers Solver::all(const Target& target, const Position& from, std::size_t max) {
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

Answer Solver::translate(const UVec3d& delta, const Position& from) {
  UVec3d nose, direction;
  machine_->getTool(from, nose, direction, -1);
  const UVec3d tip = nose - direction * machine_->getTHELength(-1);
  const Target target{tip + delta, direction};
  if (!isTarget(target)) return refused(from);
  solved_ = from;
  zkin::KMachineValueBase* increments = machine_->axisTranslation(&*from, delta);
  if (increments) *solved_ += *increments;
  zkin::KMachineValueBase::_release(increments);
  Answer answer = judged(target, from, solved_);
  if (answer.status == Status::notReached && !isTurning()) answer = linearOnly(target, from);
  explain(target, from, answer);
  return answer;
}

std::optional<Answer> Solver::follow(const Target& target, Position& at, Residual& residual) {
  if (!isTarget(target)) return refused(at);
  if (isTurning() && !mindsLocks_) {
    solve(target, at, solved_);
    residual = korvo::residual(machine_, solved_, target);
    if (residual.isReached() && machine_->checkLimitsFull(solved_, nullptr) == 0) {
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
