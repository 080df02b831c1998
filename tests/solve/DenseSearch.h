#pragma once

#include <array>
#include <vector>

#include "kinematics/KMachine.h"
#include "tests/support/MachineGenerator.h"
#include "toolkit/model/JointChain.h"
#include "toolkit/solve/Target.h"

namespace korvo::test {

/// The tip of the current tool and its direction, by the library's own queries.
Target tipAt(const zkin::KMachine& machine, const zkin::KMachineValueBase& v);
Target tipAt(const zkin::KMachine& machine, const Values& values);

/// A position that the search found, and how sure its numbers are.
struct Found {
  Values values{};
  double tolerance = 0.0;       ///< Of rotary values, degrees.
  double tolerancePerMm = 0.0;  ///< Of linear values, mm for each mm of the machine's size.
  bool isCarried = false;       ///< The linear values are determined; else only the rotary ones.
  bool isAtEdge = false;        ///< Within the tolerance of a limit or of the reachable directions.
};

/// All positions of a machine that reach a target, by a search that knows nothing of the machine's
/// geometry but what `KMachine::getTool` answers, and of its axes only which are rotary, their
/// locks and limits. For up to two free rotary axes.
///
/// Directions: the circle or torus of the rotary values is cut into cells; a cell whose middle
/// misses the direction by more than its half widths together (no turn moves a direction further)
/// holds no solution, the others are cut smaller, and from every one left the miss is followed down
/// by Gauss-Newton steps on measured differences. Points: the linear values add up measured
/// displacements. Turns: all full turns inside the limits, of an axis without both limits those
/// within one turn of the start.
///
/// How sure: two rotary values are as sure as rounding over the least singular value of the
/// direction's derivative. Where that is above 0.001 they are taken for equal within 1e-6 degrees,
/// below, where two branches nearly meet, within 1e-4 rad: a miss of 1e-9 rad moves them by its
/// root.
class DenseSearch {
 public:
  /// Locked axes, and those at the places `held`, stay where `start` has them; where that is
  /// outside their limits there is no solution.
  DenseSearch(const zkin::KMachine& machine, const Values& start, std::vector<int> held = {});

  struct Result {
    std::vector<Found> found;
    bool isContinuum = false;  ///< More directions than can be listed: nothing is found.
  };

  Result search(const Target& target) const;

  /// Whether three linear axes carry the tool everywhere, the rotary axes as they stand.
  bool areIndependent(const Values& values) const;

  /// Whether the linear axes bring the tip to the target inside their limits and by more than
  /// `clear` (mm), the rotary axes as they stand; sets their values.
  bool isCarriedInside(const Target& target, double clear, Values& values) const;

  int rotaryCount() const { return static_cast<int>(rotary_.size()); }

 private:
  struct Axis {
    int place = -1;
    double min = 0.0;
    double max = 0.0;
  };
  using Angles = std::array<double, 2>;  ///< Degrees.
  struct Cell {
    Angles middle{};
    zgeo::UVec3d direction;
  };
  struct Lowest {
    Angles angles{};
    double miss = 0.0;   ///< Radians.
    double least = 0.0;  ///< Least singular value of the derivative.
  };

  struct Turn {
    double value = 0.0;
    bool isAtEdge = false;
  };

  Target at(const Angles& angles) const;
  Target at(Values values) const;
  std::vector<Cell> firstCells() const;
  std::vector<Cell> cut(const std::vector<Cell>& cells, double half, const zgeo::UVec3d& to) const;
  bool canHold(const Cell& cell, double half, const zgeo::UVec3d& to) const;
  bool isContinuous(const std::vector<Cell>& cells, const zgeo::UVec3d& to) const;
  Lowest followedDown(Angles angles, const zgeo::UVec3d& to) const;
  void addTurns(const Lowest& lowest, const Target& target, std::vector<Found>& out) const;
  struct Ways {
    zgeo::UVec3d unit[3];  ///< The way for each mm.
    double volume = 0.0;
    double share = 0.0;  ///< Of the product of the ways.
  };

  Ways waysOf(const Values& values) const;
  bool carry(const Target& target, Found& found) const;
  bool isInside(Found& found, const zgeo::UVec3d& tip) const;
  std::vector<Turn> turnsOf(std::size_t i, double degrees, double tolerance) const;

  const zkin::KMachine& machine_;
  Values start_;
  std::vector<Axis> rotary_, linear_;
  std::vector<Cell> first_;
  bool isHeldOutside_ = false;
  mutable Position position_;
};

}  // namespace korvo::test
