#include "toolkit/answer/Reach.h"

#include <algorithm>
#include <cmath>

#include "platform/rotations/Solvers.h"
#include "toolkit/answer/Values.h"
#include "toolkit/answer/WhyNot.h"

namespace korvo {
namespace {

/// Nearest first; of those equally near the one found first.
std::vector<const Solution*> byDistance(const std::vector<Solution>& found, const Values& from) {
  std::vector<const Solution*> sorted;
  sorted.reserve(found.size());
  for (const Solution& solution : found) sorted.push_back(&solution);
  std::sort(sorted.begin(), sorted.end(), [&](const Solution* a, const Solution* b) {
    if (isNearer(a->values, b->values, from)) return true;
    return a < b && !isNearer(b->values, a->values, from);
  });
  return sorted;
}

/// The one nearer the part of two rotary axes about parallel lines, which turn the tool alone: what
/// the one turns the other turns back.
std::optional<int> firstOfParallel(const Solver& solver) {
  std::vector<const Joint*> turns;
  for (const Joint& joint : solver.chain().joints) {
    if (joint.motion == Joint::Motion::turn && joint.place >= 0) turns.push_back(&joint);
  }
  if (solver.kind() != SolverKind::twoRotary || turns.size() != 2) return {};
  const double sine = (turns[0]->direction.normalised() ^ turns[1]->direction.normalised()).norm();
  if (sine > rotations::kOnAxis) return {};
  return turns[0]->place;
}

}  // namespace

Reach::Reach(const Machine& machine, const SolverOptions& options, Language language)
    : machine_(machine),
      solver_(machine_, options),
      whyNot_(std::make_unique<WhyNot>(machine_, options, language)) {
  if (const std::optional<int> first = firstOfParallel(solver_)) {
    firstStays_.emplace(withLocked(machine_, {*first}), options);
  }
}

Reach::Reach(Reach&&) noexcept = default;
Reach& Reach::operator=(Reach&&) noexcept = default;
Reach::~Reach() = default;

const Solution* Reach::nearestOf(const Target& target, const Position& from) {
  found_.clear();
  const Values start = valuesOf(from);
  if (!isFinite(start)) return nullptr;
  solver_.solve(target, start, found_);
  if (firstStays_) takeNearerMember(target, start);
  const auto nearest = std::min_element(
      found_.begin(), found_.end(),
      [&](const Solution& a, const Solution& b) { return isNearer(a.values, b.values, start); });
  return nearest == found_.end() ? nullptr : &*nearest;
}

// The solver's member of their family has the second axis nearest to the start.
void Reach::takeNearerMember(const Target& target, const Values& from) {
  if (found_.size() != 1 || !found_[0].isFamily() || found_[0].freePlaces[1] >= 0) return;
  std::optional<Solution> other = nearestBy(*firstStays_, target, from);
  if (!other || !isNearer(other->values, found_[0].values, from)) return;
  other->branch = found_[0].branch;
  other->singular = found_[0].singular;
  other->freePlaces = {*firstOfParallel(solver_), -1};
  found_[0] = *other;
}

Answer Reach::answerOf(const Solution& solution, const Position& from) const {
  Answer answer = korvo::answerOf(machine_, solver_, solution, from);
  answer.status = Status::reached;
  return answer;
}

Answer Reach::nearest(const Target& target, const Position& from) {
  const Solution* nearest = nearestOf(target, from);
  return nearest ? answerOf(*nearest, from) : whyNot_->explain(target, from);
}

Answers Reach::all(const Target& target, const Position& from, std::size_t max) {
  Answers answers;
  if (!nearestOf(target, from)) {
    Answer only = whyNot_->explain(target, from);
    if (only.status != Status::reached) {
      answers.none.emplace(std::move(only));
      return answers;
    }
    answers.total = 1;
    answers.positions.push_back(std::move(only));
  }
  std::vector<const Solution*> sorted = byDistance(found_, valuesOf(from));
  answers.total += sorted.size();
  sorted.resize(std::min(sorted.size(), max));
  for (const Solution* solution : sorted) answers.positions.push_back(answerOf(*solution, from));
  for (const Answer& answer : answers.positions) {
    answers.distances.push_back(distance(answer.position, from));
  }
  return answers;
}

std::optional<Answer> Reach::follow(const Target& target, Position& at, Residual& residual) {
  Solution found;
  std::optional<Answer> none = follow(target, at, found);
  residual = found.residual;
  return none;
}

std::optional<Answer> Reach::follow(const Target& target, Position& at, Solution& found) {
  if (const Solution* nearest = nearestOf(target, at)) {
    found = *nearest;
    setValues(found.values, at);
    return {};
  }
  Answer answer = whyNot_->explain(target, at);
  found = Solution();
  found.residual = answer.residual;
  if (answer.status != Status::reached) return answer;
  *at = *answer.position;
  if (const Solution* nearest = nearestOf(target, at)) found = *nearest;
  found.values = valuesOf(at);
  return {};
}

}  // namespace korvo
