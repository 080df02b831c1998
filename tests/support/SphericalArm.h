#pragma once

#include <array>
#include <memory>
#include <string>

#include "kinematics/KMachine.h"
#include "tests/support/Dice.h"

namespace korvo::test {

/// What a generated arm may have beside its six joints.
struct ArmWishes {
  bool isUsual = false;    ///< Joints 2 and 3 parallel and square to joint 1, the base upright.
  bool isPlanar = false;   ///< The wrist centre in one plane with joint 1: no lateral offsets.
  bool hasRail = false;    ///< A linear axis that carries the arm.
  bool hasTable = false;   ///< A rotary axis under the part.
  bool hasLimits = false;  ///< Else no joint has one.
  bool isCoaxial = false;  ///< The tool stands on the line of the last joint and points along it.
};

/// An arm whose last three joints meet in one point, in any make: base anywhere and tilted, offsets
/// of shoulder, elbow and wrist, lateral ones too, joints that turn either way, wrists whose axes
/// are not square, first joints that are neither square nor parallel, the tool on the last joint's
/// line or anywhere.
struct SphericalArm {
  static constexpr int kRailPlace = 6;   ///< The joints are 0 to 5.
  static constexpr int kTablePlace = 7;  ///< Without a rail one less.

  std::string text;
  zgeo::UVec3d centre;                 ///< Wrist centre at the zero position.
  std::array<zgeo::UVec3d, 3> points;  ///< Of the first three lines, near the centre.
  std::array<zgeo::UVec3d, 6> directions;

  std::unique_ptr<zkin::KMachine> load() const;  ///< With tool 1 current.

  /// The element of joint k (0 to 5).
  static const zkin::KMachineElem* jointOf(const zkin::KMachine& machine, int k);
};

/// Always the same for the same dice.
SphericalArm sphericalArm(Dice& dice, const ArmWishes& wishes);

}  // namespace korvo::test
