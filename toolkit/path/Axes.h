#pragma once

#include <algorithm>
#include <vector>

#include "toolkit/path/Toolpath.h"

namespace korvo {

inline constexpr double kFullTurn = 360.0;

/// An axis of the chain as a path has it.
struct PathAxis {
  int place = -1;
  bool isTurn = false;
  double min = 0.0;  ///< Of the machine.
  double max = 0.0;
  double weight = 1.0;
  double largestStep = 0.0;
  double margin = 0.0;
  double marginCost = 0.0;

  /// Full turns are added by the path and not by the solver, which sees one turn from `low` alone:
  /// they leave the other axes as they are, and need not be solved nor verified again.
  bool isWound = false;
  double low = 0.0;
  double firstTurn = 0.0;  ///< Limits within which turns are listed.
  double lastTurn = 0.0;

  bool isEndless = false;  ///< Wound without limits: the turn does not matter.

  std::size_t at() const { return static_cast<std::size_t>(place); }
};

/// How many numbers a position of the path has, and which.
class PathAxes {
 public:
  PathAxes(const JointChain& chain, const ToolpathOptions& options);

  /// Those that wind first: two positions mostly differ by a turn.
  const std::vector<PathAxis>& all() const { return axes_; }
  std::size_t size() const { return axes_.size(); }

  /// Where the axes stand before: the start, else zero; brought inside the limits.
  const Values& start() const { return start_; }

  /// Whether a rotary axis stands so far out that nothing says any more where in its turn it is.
  bool isStartFar() const;

  /// What the solver starts from: the start with full turns taken off.
  const Values& reference() const { return reference_; }

  /// Of the axis that turns the tool about its own line, and moves nothing else: it stays. Or -1.
  int idlePlace() const { return idle_; }

  /// The machine with every wound axis limited to its one turn.
  Machine unwound(const Machine& machine) const;

  /// With the wound axes turned into their one turn.
  Values unwound(Values values) const;

  /// The cost of being nearer to limits than wished, of the values of `all()` in a row.
  double marginCost(const double* row) const;

  /// Calls `take` for every turn of the wound axes that have limits, with changed `values`.
  template <typename Take>
  void forEachTurn(Values& values, Take take) const {
    turn(values, 0, take);
  }

  /// The values of state `k` of those that `forEachTurn` counts.
  void setTurn(std::size_t k, Values& values) const;

  std::size_t turnCount(const Values& values) const;

 private:
  struct Turns {
    double first = 0.0;
    std::size_t count = 0;
  };

  /// Wound axes with limits come first.
  template <typename Take>
  void turn(Values& values, std::size_t next, Take& take) const {
    if (next == limited_) return take(values);
    const PathAxis& axis = axes_[next];
    double& value = values[axis.at()];
    const double once = value;
    const auto [first, count] = turnsOf(axis, once);
    for (std::size_t k = 0; k < count; ++k) {
      value = valueAt(axis, once, first, k);
      turn(values, next + 1, take);
    }
    value = once;
  }

  static Turns turnsOf(const PathAxis& axis, double value);

  /// What lies outside does so by rounding alone.
  static double valueAt(const PathAxis& axis, double once, double first, std::size_t k) {
    const double value = once + kFullTurn * (first + static_cast<double>(k));
    return std::clamp(value, axis.min, axis.max);
  }

  std::vector<PathAxis> axes_;
  std::size_t limited_ = 0;  ///< How many wound axes have limits.
  Values start_{}, reference_{};
  int idle_ = -1;
};

}  // namespace korvo
