#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "toolkit/Export.h"
#include "toolkit/Language.h"
#include "toolkit/Machine.h"
#include "toolkit/answer/Answer.h"
#include "toolkit/solve/Solver.h"
#include "toolkit/solve/Target.h"

namespace korvo {

/// The feed of a target that is reached in rapid.
inline constexpr double kRapid = std::numeric_limits<double>::infinity();

/// A target of a toolpath.
struct PathTarget {
  Target target;
  double feed = 0.0;  ///< Of the way to it, in whatever unit, or kRapid; handed on. 0: none.
};

/// What a path does with one axis.
struct AxisWish {
  double weight = 1.0;  ///< What a mm or a degree of its travel costs; not negative.

  /// A step above it between two targets is a break. Without one 90 degrees for a rotary axis and
  /// none for a linear one.
  std::optional<double> largestStep;

  double margin = 0.0;      ///< Where it can the axis keeps so far from its limits, mm or degrees.
  double marginCost = 1.0;  ///< What every mm or degree nearer costs, at every target.
};

/// How far the tool may leave the way between two targets.
struct Tolerance {
  double mm = 0.01;
  double degrees = 0.1;
};

struct ToolpathOptions {
  SolverOptions solver;
  std::array<AxisWish, kMostAxes> axes;  ///< By place.

  /// Where the machine stands before. The way from there counts as travel and is never a break;
  /// without it of equally good paths the one is taken that begins nearest to zero. Locked axes
  /// stand where it has them; without it they, and what else a target leaves to the start, stand at
  /// zero or at the limit nearest to it. With a rotary axis more than 1e9 degrees from zero no
  /// target has a position.
  std::optional<Values> start;

  std::optional<Tolerance> tolerance;  ///< Set: positions are added between targets.

  /// Where a target leaves an axis free (the tool along a table's axis): so many places of a turn
  /// are tried, the start's among them, beside every place where the target before could have it.
  /// In a long row of such targets these places are tried only up to 16 targets from one that does
  /// not leave the axis free, or where limits keep it from where the start has it.
  int familySamples = 12;

  double singularDegrees = 1.0;  ///< Targets nearer to a singular direction or elbow are counted,
  double singularMm = 1.0;       ///< and those nearer to where an arm's shoulder sides meet.

  int jobs = 1;  ///< Threads. The result is the same bit by bit.

  std::size_t mostReasons = 100;  ///< Of so many targets without a position it is said why.
  Language language = Language::english;
};

/// One position of a path.
struct PathPosition {
  std::size_t target = 0;  ///< The target that it is on, or on the way to.
  double way = 1.0;        ///< How much of the way to the target lies behind; 1: all, it is there.
  Values values{};
  Branch branch;
  SingularDistance singular;                                ///< With the digits of a float.
  double margin = std::numeric_limits<double>::infinity();  ///< As Solution::margin.
  int marginPlace = -1;
  double feed = 0.0;          ///< The target's.
  bool isAfterBreak = false;  ///< The tool has to leave the part, or to stand, on the way to it.

  bool isAdded() const { return way < 1.0; }
};

/// Where the tool has to leave the part, the axes move, and the path goes on.
struct PathBreak {
  enum class Kind {
    unwound,      ///< The axis goes back by full turns.
    sideChanged,  ///< The target is reached on another side: another Branch.
    step,         ///< The targets lie further apart than the axis may step.
  };

  std::size_t target = 0;  ///< Before which.
  std::size_t before = 0;  ///< The last target in front of the break.
  Kind kind = Kind::step;
  int place = -1;   ///< Of the axis that exceeds its step most.
  double by = 0.0;  ///< How far this axis goes, mm or degrees.
};

/// "unwound", "side-changed", "step".
KORVO_TOOLKIT_API const char* toString(PathBreak::Kind kind);

/// Where no number of positions keeps the tool on the way between two targets: an axis has to turn
/// while the tool stands (it passes beside a pole), or there is no position on the way.
struct PathStanding {
  std::size_t target = 0;  ///< To which the way leads.
  double way = 0.0;        ///< How much of it lies behind.
  double behind = 1.0;     ///< Where the tool is on the way again; 1: at the target.
  int place = -1;          ///< Of the axis that goes furthest.
  double by = 0.0;         ///< Its way, mm or degrees.
};

/// What one axis does over a whole path.
struct AxisTravel {
  double travel = 0.0;  ///< Sum of all ways, mm or degrees; those at breaks and from the start too.
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
  double largestStep = 0.0;  ///< Between targets without a break between them.
  std::size_t largestStepTarget = 0;
};

/// What a path came to. All of it is said of the targets up to `done`.
struct ToolpathReport {
  std::size_t targets = 0;  ///< Asked for.
  std::size_t done = 0;     ///< Less than `targets` where it was stopped.
  std::size_t positions = 0;
  std::size_t added = 0;  ///< Of these between targets.

  std::vector<PathBreak> breaks;
  std::vector<PathStanding> standing;
  std::vector<std::size_t> unreached;  ///< Targets without a position; each is a break of its own.
  std::vector<std::pair<std::size_t, Answer>> reasons;  ///< Why: of the first of each run of these.

  std::optional<PathPosition> first;  ///< Where it begins.

  /// What is least: over all targets with a position up to `done` the weighted way of every axis
  /// from the one before (the first: from ToolpathOptions::start), at breaks and across unreached
  /// targets too, straight or, of an axis without limits, the short way; and what margins cost at
  /// each. The positions between targets have no part in it, so that with a tolerance, or where an
  /// axis turns back between two targets, the travels in `axes` come to more.
  double cost = 0.0;
  int axisCount = 0;
  std::array<AxisTravel, kMostAxes> axes;  ///< By place.

  double margin = std::numeric_limits<double>::infinity();  ///< To the nearest limit.
  int marginPlace = -1;
  std::size_t marginTarget = 0;

  std::size_t singularTargets = 0;        ///< Near a singular place.
  SingularDistance nearestSingular;       ///< Each the least of all targets.
  std::size_t nearestSingularTarget = 0;  ///< Of the least directionRad, else elbowRad.

  /// Breaks in all: between targets, and targets without a position.
  std::size_t breakCount() const { return breaks.size() + unreached.size(); }
  bool isStopped() const { return done < targets; }
  bool isFitting() const { return breakCount() == 0 && standing.empty() && !isStopped(); }
};

/// Called with every position, in order; those of unreached targets are missing.
using PathSink = std::function<void(const PathPosition&)>;

struct ToolpathProgress {
  std::size_t searched = 0;  ///< Targets whose positions are known.
  std::size_t given = 0;     ///< Targets whose positions went to the sink.
  std::size_t targets = 0;
};

/// Called every thousand targets or so, and every thousand positions between them; false stops.
/// Stopped while it searches, a path ends with the targets searched so far, which are all given, as
/// the best path of these alone; stopped while it gives, with those given.
using ToolpathWatch = std::function<bool(const ToolpathProgress&)>;

/// The best continuous way of a machine's axes along a toolpath.
///
/// Best is, in this order: fewest breaks; least weighted travel plus cost of margins. It is the
/// optimum over every position that `Solver` has of each target (all branches, all turns inside the
/// limits, the stated samples of redundant axes and of families), by dynamic programming.
///
/// A break is a step of an axis above its largest, or a target without a position; what comes after
/// such a target is no further break. The machine is that of the time when this is made: tool,
/// length, locks, limits.
///
/// Turns: an axis without limits turns the short way, which is always best. Of one with a single
/// limit, or more than a hundred turns between them, the 64 turns about the start are tried; of two
/// such axes 8 each, of three 4. One that only turns the tool about its own line stays.
/// Families: see ToolpathOptions::familySamples. With more than three linear axes, or more than two
/// rotary ones, positions depend on where the others stand: beside those from the start those are
/// tried that follow from the positions of the target before, at most 32 a target. There, and of an
/// arm whose tool is tried in many turns about its direction, those of nearest-first are among
/// them.
///
/// Added positions: in a straight line of all axes from one position to the next the tip stays
/// within `mm` of the straight line between the targets' tips, and the direction within `degrees`
/// of the shortest turn between their directions. Both are distances from the line (and the arc) as
/// a whole: how fast they are followed does not count. Deviation.h has the bound and its proof.
class KORVO_TOOLKIT_API Toolpath {
 public:
  explicit Toolpath(const Machine& machine, const ToolpathOptions& options = {});
  Toolpath(Toolpath&&) noexcept;
  Toolpath& operator=(Toolpath&&) noexcept;
  ~Toolpath();

  SolverKind kind() const;

  /// @errors  As data: a target that is not finite or null is unreached; where no closed form
  ///          serves the machine all are.
  /// @cost    Two solver calls a target at most. Memory beside the caller's: at most 64 bytes a
  ///          target of a five-axis machine, plus a constant and what the report lists.
  ToolpathReport run(std::span<const PathTarget> targets, const PathSink& sink,
                     const ToolpathWatch& watch = {}) const;

 private:
  struct Task;
  std::unique_ptr<const Task> task_;
};

}  // namespace korvo
