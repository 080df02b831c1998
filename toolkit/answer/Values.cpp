#include "toolkit/answer/Values.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace korvo {
namespace {

// Distances are told apart in steps of this (mm or degrees).
constexpr double kStep = 1e-9;

}  // namespace

Values valuesOf(const Position& position) {
  Values values{};
  for (int i = 0; i < position.size(); ++i) values[static_cast<std::size_t>(i)] = position[i];
  return values;
}

void setValues(const Values& values, Position& position) {
  for (int i = 0; i < position.size(); ++i) position[i] = values[static_cast<std::size_t>(i)];
}

bool isFinite(const Values& values) {
  return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

bool isFinite(const zgeo::UVec3d& v) { return std::isfinite(v.norm2()); }

bool isTarget(const Target& target) {
  return isFinite(target.tip) && isFinite(target.direction.normalised()) &&
         target.direction.normalised().norm2() > 0;
}

double distance(const Values& a, const Values& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += std::abs(a[i] - b[i]);
  return sum;
}

bool isNearer(const Values& a, const Values& b, const Values& from) {
  return std::round(distance(a, from) / kStep) < std::round(distance(b, from) / kStep);
}

std::optional<Solution> nearestBy(const Solver& solver, const Target& target, const Values& from) {
  std::vector<Solution> found;
  solver.solve(target, from, found);
  const auto nearest = std::min_element(
      found.begin(), found.end(),
      [&](const Solution& a, const Solution& b) { return isNearer(a.values, b.values, from); });
  if (nearest == found.end()) return {};
  return *nearest;
}

Machine withLocked(Machine machine, const std::vector<int>& places, bool isLocked) {
  for (const int place : places) {
    const int index = std::as_const(*machine).getAxisElem(place + 1)->getElemIndex();
    machine->getElemByIndex(index)->setLocked(isLocked);
  }
  return machine;
}

Answer answerOf(const Machine& machine, const Solver& solver, const Solution& solution,
                const Position& from) {
  Answer answer(from);
  setValues(solution.values, answer.position);
  answer.residual = solution.residual;
  answer.margins = margins(machine, answer.position);
  answer.singularity = singularity(machine, answer.position);
  answer.solver = solver.kind();
  answer.isLinearOnly = solver.kind() == SolverKind::linear && solution.residual.isReached();
  answer.branch = solution.branch.label(solver.kind());
  answer.singular = solution.singular;
  for (const int place : solution.freePlaces) {
    if (place >= 0) answer.freeAxes.push_back(place);
  }
  return answer;
}

}  // namespace korvo
