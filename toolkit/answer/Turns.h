#pragma once

#include <set>

#include "toolkit/answer/Answer.h"

namespace korvo {

/// Places of the axes whose full turns are other positions: every free rotary axis of the current
/// tool's chain, of an arm the first three joints and the two that turn its wrist.
std::vector<int> turningPlaces(const Machine& machine, bool isArm);

/// How many positions `turnsOf` gives at most.
double mostTurns(const Machine& machine, const std::vector<int>& places, const Position& from);

/// `at` with all full turns of those axes inside their limits. An axis without one of its limits,
/// or with limits more than a hundred turns apart, has those within one turn either way of zero and
/// of `from`. An axis that has none inside stays.
std::vector<Position> turnsOf(const Machine& machine, const std::vector<int>& places,
                              const Position& from, const Position& at);

/// Turns those axes by full turns to the value nearest to `from`, inside the limits where possible.
void unwind(const Machine& machine, const std::vector<int>& places, const Position& from,
            Position& at);

/// Positions that were met, equal ones found without a look at all of them. Of two that are equal
/// but for rounding both may count as new.
class Met {
 public:
  bool isNew(const Position& at);

 private:
  std::set<std::vector<double>> keys_;
};

}  // namespace korvo
