#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "toolkit/Export.h"
#include "toolkit/Language.h"
#include "toolkit/Machine.h"
#include "toolkit/Position.h"
#include "toolkit/answer/Answer.h"
#include "toolkit/solve/Solver.h"
#include "toolkit/solve/Target.h"

namespace korvo {

class WhyNot;

/// Puts the tool on targets by the toolkit's own solver: every branch, every turn inside the
/// limits, families with their free axis; and where there is no position, why not.
///
/// Current tool, tool length, locks and limits are those of the machine when this is made, which is
/// copied. One object answers in one thread.
///
/// Why not, in this order, the first that holds:
///   1. noDirection: the target is null, or it or the start is not finite.
///   2. noSolver: no closed form serves the machine (Solver::unserved); `by` where the last
///      three joints miss each other.
///   3. lockedAxis: with one locked axis free the target would be reached inside the limits (of
///      several such axes by the position nearest to the start), else with all of them free.
///      `wanted` says where they would have to stand: of one axis that may stand at many places at
///      the one nearest to its start. `by` is how far that of one axis is from its start.
///   4. heldAxis: the same of an axis that the options hold at a value of its own.
///   5. noRotaryAxis, outsideCone: the tool cannot point so; `nearestDirection`.
///   6. linearAxes, outOfReach: the direction is had, and the tip is missed; `nearestTip`.
///   7. outsideLimits: of all branches, turns and members of families the one whose excess, summed
///      over its axes, is least; of more than three linear axes as many stand at their limits.
/// Axes that a target leaves free stay at the start: one in front of an arm, a third rotary axis.
/// Where nothing reaches the target so, one of them moves as little as helps, and `moved` says
/// where: it is tried at places a few degrees or a seventieth of its travel apart, and between
/// them where that comes nearer. What is said of a target out of all reach is said of its best
/// place.
///
/// Each is said of the candidate that comes nearest, which is `position`. Where the tool cannot
/// point so that is one that points along `nearestDirection`. An arm with locked joints that come
/// near no candidate gets the reason that it would have with all of them free.
class KORVO_TOOLKIT_API Reach {
 public:
  explicit Reach(const Machine& machine, const SolverOptions& options = {},
                 Language language = Language::english);
  Reach(Reach&&) noexcept;
  Reach& operator=(Reach&&) noexcept;
  ~Reach();

  const Solver& solver() const { return solver_; }

  /// The position nearest to `from` by `distance`; of equally near ones the first of the solver's.
  Answer nearest(const Target& target, const Position& from);

  /// All positions, nearest to `from` first, at most `max` of them; equally near ones in the
  /// solver's order.
  Answers all(const Target& target, const Position& from, std::size_t max);

  /// `nearest` for long tables: moves `at` and gives nothing when the target is reached; else
  /// leaves `at` and says why.
  std::optional<Answer> follow(const Target& target, Position& at, Residual& residual);

  /// The same, with all that is known of the position.
  std::optional<Answer> follow(const Target& target, Position& at, Solution& found);

 private:
  const Solution* nearestOf(const Target& target, const Position& from);
  void takeNearerMember(const Target& target, const Values& from);
  Answer answerOf(const Solution& solution, const Position& from) const;

  Machine machine_;
  Solver solver_;
  std::optional<Solver> firstStays_;  ///< Of two rotary axes about parallel lines.
  std::unique_ptr<WhyNot> whyNot_;
  std::vector<Solution> found_;  // reused from target to target
};

}  // namespace korvo
