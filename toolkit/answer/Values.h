#pragma once

#include "toolkit/answer/Answer.h"
#include "toolkit/solve/Solver.h"

/// Between a machine's positions and the plain numbers of the solver.
namespace korvo {

Values valuesOf(const Position& position);
void setValues(const Values& values, Position& position);

bool isFinite(const Values& values);
bool isFinite(const zgeo::UVec3d& v);

/// The solver's point and direction can be worked with: finite, also squared, and not null.
bool isTarget(const Target& target);

/// `distance`, of plain numbers.
double distance(const Values& a, const Values& b);

/// Whether `a` is nearer to `from` than `b` by more than rounding makes: mirror images are equally
/// near.
bool isNearer(const Values& a, const Values& b, const Values& from);

/// The solution nearest to `from`; of equally near ones the first.
std::optional<Solution> nearestBy(const Solver& solver, const Target& target, const Values& from);

/// The machine with the axes at these places locked.
Machine withLocked(Machine machine, const std::vector<int>& places, bool isLocked = true);

/// What is known of a solution, without its status. The axes beyond `from` stay as there.
Answer answerOf(const Machine& machine, const Solver& solver, const Solution& solution,
                const Position& from);

}  // namespace korvo
