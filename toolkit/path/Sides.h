#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "toolkit/path/Axes.h"

namespace korvo {

/// A position of a target, its wound axes in their one turn.
struct Side {
  Values values{};
  Branch branch;
  std::array<float, 3> singular{};  ///< As SingularDistance.
  std::array<std::int8_t, 2> freePlaces{-1, -1};

  SingularDistance singularDistance() const { return {singular[0], singular[1], singular[2]}; }
};

/// What a query needs from target to target; one for each thread.
struct SideScratch {
  std::vector<Solution> found;
};

/// All positions of one target that a path chooses from. Asked from many threads at once.
class Sides {
 public:
  Sides(const Machine& machine, const ToolpathOptions& options);

  const Solver& solver() const { return solver_; }
  const PathAxes& axes() const { return axes_; }

  /// Those that the target has by itself; `out` grows.
  void add(const Target& target, SideScratch& scratch, std::vector<Side>& out) const;

  /// Whether positions of a target depend on those of the target before.
  bool areCarried(std::span<const Side> sides) const;

  /// Adds what follows from where `before` has the axes that the target leaves free. `nearest` is
  /// where nearest-first stands before; it moves on.
  /// Those of the target itself are in `out` from `first` on.
  void carry(const Target& target, std::span<const Side> before, std::size_t first, Values& nearest,
             SideScratch& scratch, std::vector<Side>& out) const;

 private:
  void addFrom(const Target& target, const Values& from, bool onlyFamilies, std::size_t first,
               SideScratch& scratch, std::vector<Side>& out) const;
  void sample(const Target& target, std::size_t first, SideScratch& scratch,
              std::vector<Side>& out) const;
  void follow(const Target& target, Values& nearest, std::size_t first, SideScratch& scratch,
              std::vector<Side>& out) const;
  bool isFamily(const Side& side) const;
  bool hasFamily(std::span<const Side> sides) const;
  bool isMet(std::span<const Side> sides, const Side& side) const;
  bool isFollowed(std::span<const Side> tried, const Side& side) const;
  double wayBetween(const Values& a, const Values& b) const;

  PathAxes axes_;
  Solver solver_;
  std::vector<int> free_;  ///< Places of axes that a target leaves to the start, always.
  int samples_;
};

}  // namespace korvo
