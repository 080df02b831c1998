#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "toolkit/path/Blocks.h"
#include "toolkit/path/Neighbours.h"

namespace korvo {

/// Every position of a target: each side with each turn, one row of numbers each, in the order of
/// PathAxes.
struct States {
  std::vector<double> values;
  std::vector<std::uint32_t> sides;  ///< Which side of the target each is.

  std::size_t count() const { return sides.size(); }
  void list(const PathAxes& axes, std::span<const Side> sides);
};

/// One of them.
struct State {
  const Side* side = nullptr;
  Values values{};
};
State stateOf(const PathAxes& axes, std::span<const Side> sides, std::size_t state);

/// What it takes to come somewhere: breaks first.
struct PathCost {
  std::uint64_t breaks = 0;
  double way = 0.0;

  bool operator<(const PathCost& o) const {
    return breaks != o.breaks ? breaks < o.breaks : way < o.way;
  }
};

/// Steps from position to position, by what they cost.
class StepCosts {
 public:
  explicit StepCosts(const PathAxes& axes);

  std::size_t size() const { return weights_.size(); }

  /// How far an axis may step without a break; infinite where that is not along a straight line.
  std::vector<double> straightSteps() const;

  /// How far `axis` goes: an endless one the short way.
  double way(std::size_t axis, double from, double to) const {
    const double straight = std::abs(to - from);
    return std::min(straight, std::abs(periods_[axis] - straight));
  }

  double way(const double* from, const double* to) const {
    double way = 0.0;
    for (std::size_t i = 0; i < size(); ++i) way += weights_[i] * this->way(i, from[i], to[i]);
    return way;
  }

  bool isBreak(const double* from, const double* to) const {
    for (std::size_t i = 0; i < size(); ++i) {
      if (way(i, from[i], to[i]) > largest_[i]) return true;
    }
    return false;
  }

  /// Puts `cost` after the step into `least` if that is less, and says whether. It looks no further
  /// than to where it cannot be.
  bool improve(PathCost cost, const double* from, const double* to, bool isGap,
               PathCost& least) const {
    bool isWhole = isGap;
    for (std::size_t i = 0; i < size(); ++i) {
      const double by = way(i, from[i], to[i]);
      if (by > largest_[i] && !isWhole) {
        isWhole = true;
        ++cost.breaks;
      }
      cost.way += weights_[i] * by;
      if (!(cost < least)) return false;
    }
    least = cost;
    return true;
  }

 private:
  std::vector<double> weights_, largest_;
  std::vector<double> periods_;  ///< A turn where it does not matter which, else infinite.
};

/// The forward pass: the least cost of every position of a target, and from which position of the
/// target before it comes. That is a list of small numbers which seldom changes from target to
/// target, so it is kept once for all that follow each other with the same.
class Sweep {
 public:
  Sweep(const PathAxes& axes, const ToolpathOptions& options);

  void take(const SideBlock& block);

  std::size_t size() const { return count_; }
  std::size_t bytes() const { return bytes_; }

  /// What the way from the start costs to the first position, in the order of PathAxes; without a
  /// start nothing.
  double startCost(const double* row) const;

  static constexpr std::uint32_t kNone = 0xffffffff;

  /// The state of every target on the best path, or kNone; what was kept is given up for it.
  std::vector<std::vector<std::uint32_t>> chosen();

 private:
  struct Links {
    std::vector<std::uint32_t> at;  ///< Of each target: where its list begins.
    std::vector<std::uint16_t> lists;
  };

  void step(const SideBlock& block, std::size_t i, Links& links);
  void start();
  void connect();
  void sort();
  PathCost leastTo(std::size_t state, bool hasNeighbours);
  void link(Links& links);
  std::size_t bestState() const;

  const PathAxes& axes_;
  StepCosts costs_;
  bool hasMargins_ = false;
  std::vector<double> startRow_;  ///< Empty without a start.

  States before_, here_;
  std::vector<PathCost> costBefore_, costHere_;
  std::vector<std::uint32_t> order_;  ///< Of the states before, cheapest first.
  std::vector<std::uint16_t> from_;
  Neighbours neighbours_;     ///< Of the states before.
  std::uint64_t fewest_ = 0;  ///< Breaks of a state before.
  bool isGap_ = false;
  bool isFirst_ = true;
  std::size_t count_ = 0;
  std::size_t bytes_ = 0;
  std::vector<Links> links_;
};

}  // namespace korvo
