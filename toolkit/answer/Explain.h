#pragma once

#include <optional>
#include <vector>

#include "toolkit/Language.h"
#include "toolkit/answer/Answer.h"
#include "toolkit/answer/Cones.h"
#include "toolkit/answer/Words.h"

namespace korvo {

/// Fills in why `answer`, the best that was found from `from`, is none: reason, amount, words,
/// conditions. `machine` is as the solver has it.
void explainMiss(const Machine& machine, const Target& target, const Position& from,
                 Language language, Answer& answer);

/// The direction nearest to the target's that the free rotary axes can turn the tool to, a hair
/// inside what they reach; nothing without two of them.
std::optional<zgeo::UVec3d> nearestDirection(const Machine& machine, const Target& target,
                                             const Position& from);

/// The same for a position that is reached outside the limits; fills in `outside` as well.
void explainOutside(const Machine& machine, Language language, Answer& answer);

/// Axes outside their limits, from the margins.
std::vector<AxisOutside> outsideOf(const std::vector<Margin>& margins);

/// Places of the locked axes whose values differ.
std::vector<int> movedLocks(const Machine& machine, const Position& from, const Position& to);

// --- one reason each

/// Reason and amount alone.
void give(Answer& answer, Reason reason, double by, Unit unit);

/// No question at all: `text` says why.
void explainNoTarget(const Text& text, Language language, Answer& answer);

/// The direction lies beside `cone`.
void explainBeside(const Machine& machine, const Cone& cone, const zgeo::UVec3d& direction,
                   Language language, Answer& answer);

/// Nothing turns the tool, which points along `tool`.
void explainNoRotary(double missingRad, const zgeo::UVec3d& tool, Language language,
                     Answer& answer);

/// The free linear axes, those at the places `free`, come to `tip` alone.
void explainLinear(const std::vector<int>& free, const zgeo::UVec3d& tip, Language language,
                   Answer& answer);

/// The wrist of an arm points the tool along `tool` alone, by the residual of `answer`.
void explainWrist(const zgeo::UVec3d& tool, Language language, Answer& answer);

/// The start is so far away that rounding leaves the tool beside the direction, by the residual of
/// `answer`.
void explainRounding(Language language, Answer& answer);

/// An arm comes to `tip` alone, by the residual of `answer`.
void explainReach(const zgeo::UVec3d& tip, Language language, Answer& answer);

/// The axes in `outside` are outside their limits.
void explainListed(const Machine& machine, Language language, Answer& answer);

/// `answer` reaches the target where `moved` has axes that shall stay where `from` has them: then
/// it is none.
void explainStaying(const Machine& machine, const Position& from, Language language,
                    Answer& answer);

/// Of the values of an axis.
Unit unitAt(const Machine& machine, int place);
Words amountAt(const Machine& machine, int place, double value);

}  // namespace korvo
