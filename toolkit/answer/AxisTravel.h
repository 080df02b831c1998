#pragma once

#include <optional>
#include <vector>

#include "toolkit/Machine.h"
#include "toolkit/answer/Nearly.h"
#include "toolkit/solve/Solver.h"

namespace korvo {

/// One axis tried all along its travel while the others are solved for: where it has to stand for a
/// target that is not reached from where it starts.
///
/// It is put at even places outward from the start, a few degrees or a seventieth of its travel
/// apart, until one reaches the target. About every place that misses by less than its neighbours
/// the way is halved, so that a short reach between two places is found, too; and from what reaches
/// back to the start, so that no nearer place does.
class AxisTravel {
 public:
  AxisTravel(const Machine& machine, const SolverOptions& options, int place);

  struct Found {
    std::optional<Solution> reached;  ///< With the axis as near to its start as reaches.
    int place = -1;                   ///< Of the axis.
    std::optional<Candidate> miss;    ///< Without that: what comes nearest.
  };

  /// A linear axis that lacks a limit is tried as far as it could bring a target within the reach
  /// of what it carries.
  Found explore(const Target& target, const Values& from) const;

  /// Whether the target is reached with the axis where `from` has it.
  bool reaches(const Target& target, const Values& from) const;

 private:
  struct Tried;
  class Search;

  Solver solver_;  ///< With the axis locked.
  Joint joint_;
};

}  // namespace korvo
