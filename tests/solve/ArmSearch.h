#pragma once

#include <array>
#include <optional>
#include <vector>

#include "kinematics/KMachine.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/SphericalArm.h"
#include "toolkit/solve/Solver.h"

namespace korvo::test {

/// The target that a position reaches: `KMachine::getMatrix_H2T`, its origin at the tip.
FrameTarget frameAt(const zkin::KMachine& machine, const Values& values);

/// How far a position misses a frame, by the library's own queries.
Residual missOf(const zkin::KMachine& machine, const Values& values, const FrameTarget& target);

/// How many positions of an arm reach a frame, full turns aside, by a search that uses only the
/// library's motion matrices and axes: the first three joints by cells of their angles (a cell
/// whose middle brings the wrist centre no nearer than its half widths can move it holds nothing),
/// the wrist by the sign changes of what the angle between the fourth and the last axis lacks.
class ArmSearch {
 public:
  ArmSearch(const zkin::KMachine& machine, const SphericalArm& arm, const Values& held);

  /// Nothing next to singular positions, where neighbours cannot be counted.
  std::optional<int> count(const Values& made) const;

 private:
  using Angles = std::array<double, 3>;  ///< Degrees.
  struct Cell {
    Angles middle{};
    zgeo::UVec3d centre;
  };

  zgeo::UVec3d centreAt(const Angles& angles) const;
  bool canHold(const Cell& cell, double half, const zgeo::UVec3d& to) const;
  std::vector<Cell> cut(const std::vector<Cell>& cells, double half, const zgeo::UVec3d& to) const;
  std::optional<std::vector<Angles>> shoulders(const zgeo::UVec3d& to) const;
  /// The share of their lengths that the joints' effects span at `angles`, which are improved.
  double followDown(Angles& angles, const zgeo::UVec3d& to) const;
  std::optional<int> wrists(const Angles& angles, const zgeo::UVec3d& last) const;
  zgeo::UVec3d axisAt(const Values& values, int joint) const;

  const zkin::KMachine& machine_;
  const SphericalArm& arm_;
  Values held_;
  std::array<double, 3> reach_{};  ///< How far the centre is from each line at most, mm.
  std::vector<Cell> first_;
  std::vector<double>
      bends_;  ///< Cosine between fourth and last axis at bends_[i] = i / 4 degrees.
  mutable Position position_;
};

}  // namespace korvo::test
