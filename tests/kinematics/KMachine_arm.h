#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <string>
#include <vector>

#include "tests/kinematics/KMachine_reference.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/Matchers.h"

/// Arms and solves that the tests of the arm solver share.
namespace korvo::test::arm {

using reference::fromText;
using reference::Line;
using reference::numbers;
using reference::toolAt;
using reference::ToolPlace;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

inline constexpr double kDegree = std::numbers::pi / 180.0;
inline constexpr UVec3d kUp = {0, 0, 1};

/// An arm as its lines at the zero position.
struct Arm {
  std::vector<Line> joints;
  Line tool;

  std::string text() const { return reference::armText(joints, tool); }
  std::unique_ptr<KMachine> load() const { return fromText(text(), 1); }
};

/// The arm of the worked numbers. Shoulder at radius 50 and height 300, 150 to the right; upper arm
/// 400; forearm 180 out and 240 up, so 300 long: with the wrist 500 from the shoulder the elbow is
/// square, and every angle is one of a 3-4-5 triangle. Flange up at zero, the tool point `offset`
/// above the wrist centre.
///
/// Its Denavit-Hartenberg numbers, by hand (alpha, a, d; theta 0 for the first three joints):
/// J1 (0, 0, 300), J2 (90 degrees, 50, 150), J3 (0, 400, 0), J4 (-90 degrees, 180, 240).
inline Arm squareArm(double offset = 0.0) {
  return {{{{0, 0, 0}, {0, 0, 1}},
           {{50, 0, 300}, {0, -1, 0}},
           {{450, 0, 300}, {0, -1, 0}},
           {{630, -150, 300}, {0, 0, 1}},
           {{630, -150, 540}, {0, -1, 0}},
           {{630, -150, 540}, {0, 0, 1}}},
          {{630, -150, 540 + offset}, {0, 0, -1}}};
}
inline constexpr double kShoulderRadius = 50, kShoulderHeight = 300, kLateral = 150;
inline constexpr double kUpperArm = 400, kForearm = 300;

/// PUMA 560 in mm, from the standard Denavit-Hartenberg parameters of robotics-toolbox-python
/// (P. Corke, MIT licence), as lines at joint angles 0; the tool point `offset` above the wrist
/// centre.
inline Arm pumaArm(double offset = 0.0) {
  return {{{{0, 0, 0}, {0, 0, 1}},
           {{0, 0, 671.83}, {0, -1, 0}},
           {{431.8, 0, 671.83}, {0, -1, 0}},
           {{452.1, -150.05, 671.83}, {0, 0, 1}},
           {{452.1, -150.05, 1103.63}, {0, -1, 0}},
           {{452.1, -150.05, 1103.63}, {0, 0, 1}}},
          {{452.1, -150.05, 1103.63 + offset}, {0, 0, -1}}};
}

/// ABB IRB 2400/10 in mm (a1 100, a2 -135, c1 615, c2 705, c3 755; M. Brandstoetter, A. Angerer,
/// M. Hofbaur, 2014), arm up and forearm level at zero; the tool point `offset` before the wrist
/// centre.
inline Arm orthoParallelArm(double offset = 0.0) {
  return {{{{0, 0, 0}, {0, 0, 1}},
           {{100, 0, 615}, {0, 1, 0}},
           {{100, 0, 1320}, {0, 1, 0}},
           {{100, 0, 1455}, {1, 0, 0}},
           {{855, 0, 1455}, {0, 1, 0}},
           {{855, 0, 1455}, {1, 0, 0}}},
          {{855 + offset, 0, 1455}, {-1, 0, 0}}};
}

/// A shoulder at radius 120, the arm 80 to the left, forearm 60 out and 500 long; every joint but
/// the first turns the other way. The tool point is `offset` above the wrist centre.
inline Arm reversedArm(double offset = 0.0) {
  return {{{{0, 0, 0}, {0, 0, 1}},
           {{120, 0, 400}, {0, 1, 0}},
           {{680, 0, 400}, {0, 1, 0}},
           {{740, 80, 400}, {0, 0, -1}},
           {{740, 80, 900}, {0, 1, 0}},
           {{740, 80, 900}, {0, 0, -1}}},
          {{740, 80, 900 + offset}, {0, 0, -1}}};
}

struct Solved {
  int code = -99;
  std::vector<double> values;
};

inline std::vector<double> valuesOf(const zkin::KMachineValueBase& v) {
  return {v.get(), v.get() + v.size()};
}

/// From a start, by the dispatching solver.
inline Solved solve(const KMachine& machine, const std::vector<double>& start, const UVec3d& pos,
                    const UVec3d& dir) {
  const auto current = positionOf(machine, start);
  const auto out = positionOf(machine);
  const int code = machine.getConfigPlus(*current, pos, dir, *out);
  return {code, valuesOf(*out)};
}

/// The same by the arm solver alone, `out` prepared as its caller does.
inline Solved solveArm(const KMachine& machine, const std::vector<double>& start, const UVec3d& pos,
                       const UVec3d& dir) {
  const auto current = positionOf(machine, start);
  const auto out = positionOf(machine, start);
  const int code = machine.solveConfig1(*current, pos, dir, *out);
  return {code, valuesOf(*out)};
}

/// The point of a machine's body `joint` that stands at `p` at the zero position: the wrist centre
/// of an arm is a point of J4 and of the tool.
inline UVec3d carried(const KMachine& machine, const std::vector<double>& values, int joint,
                      const UVec3d& p) {
  return machine.getMatrix(*positionOf(machine, values), joint) * p;
}

inline double angleBetween(const UVec3d& a, const UVec3d& b) {
  return std::atan2((a ^ b).norm(), a * b);
}

/// How far a result is from its target.
struct Miss {
  UVec3d point;      ///< Reached minus wanted, mm.
  double direction;  ///< Radians.
};

inline Miss missOf(const KMachine& machine, const Solved& solved, const UVec3d& pos,
                   const UVec3d& dir) {
  const ToolPlace place = toolAt(machine, solved.values);
  return {place.point - pos, angleBetween(place.direction, dir)};
}

/// One direction each way: straight, slanted, against the start.
inline std::vector<UVec3d> manyDirections() {
  std::vector<UVec3d> all;
  for (int x = -1; x <= 1; ++x) {
    for (int y = -1; y <= 1; ++y) {
      for (int z = -1; z <= 1; ++z) {
        if (x || y || z) all.push_back(UVec3d(x, y, z).normalised());
      }
    }
  }
  return all;
}

}  // namespace korvo::test::arm
