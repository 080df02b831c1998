#pragma once

#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "kinematics/KMachine.h"
#include "toolkit/Machine.h"
#include "toolkit/solve/Solver.h"

/// Machines for the tests of the solver, written down axis by axis.
namespace korvo::test {

inline constexpr double kNoLimit = std::numeric_limits<double>::infinity();

/// One axis as its author writes it; numbers keep all their digits.
struct AxisLine {
  std::string name;
  int number = 1;
  bool isRotary = false;
  zgeo::UVec3d direction;
  zgeo::UVec3d point;
  double min = -kNoLimit;
  double max = kNoLimit;
};

AxisLine linear(const std::string& name, int number, const zgeo::UVec3d& direction,
                double min = -kNoLimit, double max = kNoLimit);
AxisLine rotary(const std::string& name, int number, const zgeo::UVec3d& direction,
                const zgeo::UVec3d& point = {}, double min = -kNoLimit, double max = kNoLimit);

/// A further tool or drill gun on what carries the first tool.
struct ToolLine {
  bool isGun = false;
  zgeo::UVec3d direction;
  zgeo::UVec3d point;
};

/// A machine of version 1: what carries the part, frame first, what carries the tool, frame first.
struct MachineLines {
  std::vector<AxisLine> part;
  std::vector<AxisLine> head;
  zgeo::UVec3d toolDirection{0, 0, 1};
  zgeo::UVec3d toolPoint;
  std::vector<ToolLine> moreTools{};

  std::string text() const;
  std::unique_ptr<zkin::KMachine> load() const;  ///< With tool 1 current.
  Machine machine() const { return Machine(*load()); }
};

std::vector<AxisLine> linearXyz();  ///< X, Y, Z, numbers 1 to 3, without limits.
std::vector<AxisLine> operator+(std::vector<AxisLine> a, const std::vector<AxisLine>& b);

double radiansBetween(const zgeo::UVec3d& a, const zgeo::UVec3d& b);

/// The largest distance between two of the points that matter at a position: of the rotary axes and
/// the tool as they stand, the target, and the ways of the linear axes; mm, at least a metre.
double sizeOf(const zkin::KMachine& machine, const Values& values, const Target& target);

/// All solutions; `korvo::Solver::solve` with a list of its own.
std::vector<Solution> solutionsOf(const Solver& solver, const Target& target, const Values& from,
                                  Limits limits = Limits::kept);

}  // namespace korvo::test
