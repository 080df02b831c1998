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
  bool isSample = false;  ///< One of the places that are tried of a family.

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

  /// Those that the target has from the start; `out` grows.
  void add(const Target& target, SideScratch& scratch, std::vector<Side>& out) const;

  /// Adds the samples of the families of a target, whose sides are in `out` from `first` on.
  void sample(const Target& target, std::size_t first, SideScratch& scratch,
              std::vector<Side>& out) const;

  bool hasFamily(std::span<const Side> sides) const;
  bool isPinned(std::span<const Side> sides) const;

  /// Whether positions depend on those of the target before even where no axis is free.
  bool isHistoric() const { return !free_.empty() || settled_ != axes_.idlePlace(); }

  /// Whether positions of a target depend on those of the target before.
  bool areCarried(std::span<const Side> sides) const;

  /// Adds what follows from where `before` has the axes that the target leaves free. `nearest` is
  /// where nearest-first stands before; it moves on.
  /// Those of the target itself are in `out` from `first` on.
  void carry(const Target& target, std::span<const Side> before, std::size_t first, Values& nearest,
             SideScratch& scratch, std::vector<Side>& out) const;

 private:
  enum class Taken { all, families, samples };

  bool isKnown(std::span<Side> sides, const Side& side) const;
  void addFrom(const Solver& solver, const Target& target, const Values& from, Taken taken,
               std::size_t first, SideScratch& scratch, std::vector<Side>& out) const;
  void samplePlace(const Target& target, int place, std::size_t first, SideScratch& scratch,
                   std::vector<Side>& out) const;
  void carryAcross(const Target& target, const Side& side, std::size_t first, SideScratch& scratch,
                   std::vector<Side>& out) const;
  void follow(const Target& target, Values& nearest, std::size_t first, SideScratch& scratch,
              std::vector<Side>& out) const;
  bool isFamily(const Side& side) const;
  bool meet(std::span<Side> sides, const Side& side) const;
  bool isFollowed(std::span<const Side> tried, const Side& side) const;
  double wayBetween(const Values& a, const Values& b) const;

  PathAxes axes_;
  Solver solver_;
  Solver wide_;            ///< With the limits of the machine.
  std::vector<int> free_;  ///< Places of axes that every target leaves to the start.
  int settled_;            ///< Of an axis that is free and needs no samples; or -1.
  int samples_;
};

}  // namespace korvo
