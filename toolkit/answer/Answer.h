#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/zgeo/UVec3d.h"
#include "toolkit/Export.h"
#include "toolkit/Language.h"
#include "toolkit/Machine.h"
#include "toolkit/Position.h"
#include "toolkit/solve/Solver.h"
#include "toolkit/solve/Target.h"

namespace korvo {

/// A target given in the part-zero frame, in the machine frame: the solvers take that one.
KORVO_TOOLKIT_API Target fromPartZero(const Machine& machine, const Target& target);

/// How far a position misses a target, computed forward from the position alone.
KORVO_TOOLKIT_API Residual residual(const Machine& machine, const zkin::KMachineValueBase& v,
                                    const Target& target);

/// How far an axis is from its limits, mm or degrees: negative outside, nothing without a limit.
struct Margin {
  std::optional<double> toMin;
  std::optional<double> toMax;
};

/// One entry for each axis, in value order.
KORVO_TOOLKIT_API std::vector<Margin> margins(const Machine& machine,
                                              const zkin::KMachineValueBase& v);

/// One axis outside its limits.
struct AxisOutside {
  int place = 0;
  double by = 0.0;  ///< mm or degrees; negative below the minimum, positive above the maximum.
};

/// How near the tool direction is to one at which two rotary axes lose a degree of freedom.
///
/// The tool direction lies at the angle t from the first axis, which is nearer the part; it can be
/// anything from |w - f| to w + f (beyond a half turn counted back), w being the angle between the
/// axes and f that between the second axis and the tool. At both ends the second axis moves the
/// tool along with the first or not at all, so that one direction of motion is lost; an end at 0 or
/// at a half turn is the first axis itself, whose angle then is free. In between none is lost:
/// the derivative of cos t by the second angle is zero at the ends alone. The distance to the
/// nearer end is an angle on the sphere of directions.
struct Singularity {
  int first = 0;          ///< Place of the axis nearer the part.
  int second = 0;         ///< Place of the axis nearer the tool.
  double angleRad = 0.0;  ///< 0 at such a direction.
};

/// Of the pair of axes that turns the tool: of several pairs of free rotary axes the one furthest
/// from its singular directions, of an arm its wrist. Nothing with fewer than two axes.
KORVO_TOOLKIT_API std::optional<Singularity> singularity(const Machine& machine,
                                                         const zkin::KMachineValueBase& v);

enum class Status {
  reached,        ///< Verified forward, inside the limits.
  outsideLimits,  ///< Reached, but only outside the limits.
  notReached,
};

/// Why a target has no position.
enum class Reason {
  none,
  noDirection,    ///< The target is null, or it or the start is not finite, or the start so far
                  ///< away that its angles are no angles.
  noRotaryAxis,   ///< The tool points elsewhere and no free axis can turn it; by degrees.
  outsideCone,    ///< The rotary axes do not turn the tool so far; by degrees.
  outsideLimits,  ///< See Answer::outside; by mm or degrees of the first of them.
  outOfReach,     ///< An arm is too short, or too long; by mm.
  linearAxes,     ///< The free linear axes do not carry the tool there; by mm.
  lockedAxis,     ///< Reached if locked axes stood elsewhere, see Answer::wanted; by mm or degrees
                  ///< of one such axis. Of LibrarySolver: the arm's solver moved locked axes.
  heldAxis,       ///< Reached if an axis stood elsewhere than SolverOptions hold it, see
                  ///< Answer::wanted; by mm or degrees. Of a Toolpath: or than the start has it.
  startOfArm,     ///< From this start the arm's solver turns to the wrong side; by mm.
  noSolver,       ///< No solver knows such a machine; by mm where that has a measure.
  missed,         ///< An arm's solver answers beside the target; by mm. See Answer::conditions.
};

/// Of an amount.
enum class Unit { none, mm, degree };

/// "reached", "outside-limits", "not-reached".
KORVO_TOOLKIT_API const char* toString(Status status);

/// "none", "no-direction", "no-rotary-axis", ...: a stable name.
KORVO_TOOLKIT_API const char* toString(Reason reason);

/// Where an axis would have to stand.
struct AxisWanted {
  int place = 0;
  double value = 0.0;  ///< mm or degrees
};

/// What a target came to.
struct Answer {
  explicit Answer(Position at) : position(std::move(at)) {}

  Status status = Status::notReached;
  Position position;  ///< That reaches the target; without one, the best that was found.
  Residual residual;
  std::vector<Margin> margins;
  std::optional<Singularity> singularity;

  /// Found without the machine's solver, where no rotary axis is free: the tool already points the
  /// wanted way and the linear axes alone carry it.
  bool isLinearOnly = false;

  // --- what the toolkit's own solver knows of its positions; LibrarySolver leaves it empty

  SolverKind solver = SolverKind::none;
  std::string branch;         ///< Label of the branch; see Branch.
  std::vector<int> freeAxes;  ///< Places of axes that may stand anywhere while others follow.
  SingularDistance singular;
  std::vector<AxisWanted> moved;  ///< Axes that a target leaves free and that could not stay at the
                                  ///< start: as near to it as the target is reached.

  // --- why there is none

  Reason reason = Reason::none;
  double by = 0.0;                               ///< How far off, in `unit`.
  Unit unit = Unit::none;                        ///< None where the reason has no amount.
  std::string text;                              ///< The reason in words; empty when reached.
  std::vector<int> axes;                         ///< Places of the axes that the reason concerns.
  std::vector<AxisOutside> outside;              ///< Axes of `position` outside their limits,
                                                 ///< whatever the reason.
  std::vector<AxisWanted> wanted;                ///< Axes that would have to stand elsewhere.
  std::optional<zgeo::UVec3d> nearestDirection;  ///< Reachable, nearest to the target's.
  std::optional<zgeo::UVec3d> nearestTip;        ///< Reachable with the target's direction.
  std::vector<std::string> conditions;  ///< What of machine or target the arm solver cannot do.
};

/// All positions of a target.
struct Answers {
  std::vector<Answer> positions;  ///< The nearest ones, nearest first.
  std::vector<double> distances;  ///< Their distances from the start.
  std::size_t total = 0;          ///< How many there are.

  /// How many starts the list would take, when these were too many to try: then the list holds what
  /// `nearest` gives.
  std::optional<std::uint64_t> tooManySeeds;

  std::optional<Answer> none;  ///< Why there is no position, when there is none.
};

/// Lists of more starts than this are not made; arms start from their first three joints alone.
inline constexpr std::uint64_t kMostSeeds = 1'000'000;

/// How many starts the list of all positions of the current tool takes: the start angles of every
/// rotary axis in its chain, multiplied.
KORVO_TOOLKIT_API std::uint64_t seedCount(const Machine& machine);

/// Distance of two positions: the sum of the differences of all axes, a degree counted as a mm.
/// What an axis moves less is never lost behind what another moves more.
KORVO_TOOLKIT_API double distance(const zkin::KMachineValueBase& a,
                                  const zkin::KMachineValueBase& b);

/// Puts the tool on targets, and says the truth about it: every answer is verified forward,
/// whatever code the library gave. Current tool, tool length, locks, strategy and limits are those
/// of the machine when this is made, which is copied: solvers of one machine may run in many
/// threads.
class KORVO_TOOLKIT_API LibrarySolver {
 public:
  explicit LibrarySolver(const Machine& machine, Language language = Language::english);

  /// The position that the machine takes from `from`: the start picks the turn, the strategy the
  /// branch. When that one is outside the limits, the nearest that is inside: of the other branch,
  /// of other turns and of other linear axes, else of all positions.
  ///
  /// Of more than three free linear axes the first three that can carry the tool do, counted from
  /// it, and the others stay. Where that ends outside the limits, or these three nearly lie in one
  /// plane, every other three are tried, and axes at their limits with the rest carrying on.
  /// Fewer than three may carry as well. Arms with the tool on the last joint's line are aimed at
  /// the wrist centre, so that tool point and tool length may lie anywhere on it.
  Answer nearest(const Target& target, const Position& from);

  /// All positions inside the limits, by `distance` from `from`, at most `max` of them; ties in the
  /// order of the library's list. What `nearest` gives is one of them. Every branch has all its
  /// full turns: of an axis without one of its limits (or with limits more than a hundred turns
  /// apart) those within one turn either way of zero and of `from`; those of the library's starts
  /// alone when these are more than a million. Locked axes and linear axes without a part in the
  /// solution stay where `from` has them, and so does an axis that only turns an arm's tool about
  /// itself.
  Answers all(const Target& target, const Position& from, std::size_t max);

  /// The shift of the tool tip by `delta` (mm, machine frame) at the same direction: what the
  /// library's own `axisTranslation` does, and where that does not reach, or leaves the limits, the
  /// linear axes as in `nearest`.
  Answer translate(const zgeo::UVec3d& delta, const Position& from);

  /// `nearest` for long tables, without the list of all positions: moves `at` and gives nothing
  /// when the target is reached; else leaves `at` and says why.
  std::optional<Answer> follow(const Target& target, Position& at, Residual& residual);

 private:
  bool isTurning() const { return hasRotary_ || isArm_; }
  bool isDoubtful(const Position& at) const;
  void solve(const Target& target, const Position& from, Position& out);
  void polish(const Target& target, const zgeo::UVec3d& centre, Position& out) const;
  Answer best(const Target& target, const Position& from);
  Answer carriedOn(const Target& target, const Position& from, Answer answer) const;
  Answer linearOnly(const Target& target, const Position& from) const;
  Answer judged(const Target& target, const Position& from, Position at) const;
  std::vector<Position> candidates(Machine machine, const Target& target,
                                   const Position& from) const;
  std::vector<Position> armCandidates(const Target& target, const Position& from);
  std::uint64_t list(const Target& target, const Position& from, std::vector<Position>& out);
  void explain(const Target& target, const Position& from, Answer& answer) const;
  void approach(const Target& target, const Position& from, Answer& answer);

  Machine machine_;
  Language language_;
  Position solved_;  // reused from target to target
  bool hasRotary_ = false;
  bool isArm_ = false;
  bool mindsLocks_ = false;
  bool hasTurnedSpare_ = false;
  std::optional<Machine> aimed_;  // of arms: the tool point in the wrist centre
  double tipToCentre_ = 0.0;
};

}  // namespace korvo
