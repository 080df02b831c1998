#pragma once

#include <array>
#include <optional>
#include <vector>

#include "platform/rotations/BallWrist.h"
#include "platform/rotations/ThreeAxes.h"
#include "toolkit/model/JointChain.h"
#include "toolkit/solve/Cone.h"
#include "toolkit/solve/Solver.h"

namespace korvo {

/// Lines that miss each other by no more than this (mm) meet: the finest offset that a machine
/// maker states is a hundred times larger.
inline constexpr double kMeeting = rotations::kCoincidentDistance;

/// Six rotary joints of a chain: the last three are neighbours whose lines meet in one point, the
/// wrist centre, and the first three carry it, which the third does not where the centre lies on
/// its line. Of all such six those nearest the tool whose first three carry the centre every way,
/// else those nearest the tool. All other joints of the chain are held while these are solved.
class ArmShape {
 public:
  /// Nothing when no three lines of successive rotary joints, behind three others, meet wherever
  /// the other joints stand.
  static std::optional<ArmShape> of(const JointChain& chain);

  /// Why there is none of a chain of six rotary joints or more, by the three nearest the tool.
  static Unserved whyNot(const JointChain& chain);

  /// How far (mm) the lines of the last three rotary joints miss one point; nothing with fewer than
  /// six, or where two neighbours among them are parallel.
  static std::optional<double> wristMiss(const JointChain& chain);

  int joint(int k) const { return joints_[static_cast<std::size_t>(k)]; }  ///< 0 to 5, root first.
  const zgeo::UVec3d& centre() const { return centre_; }
  double miss() const { return miss_; }  ///< How far (mm) a line of the wrist passes the centre.

  /// Whether every joint that is held stands in front of the first: then their motion moves the
  /// whole arm.
  bool isOneBody() const { return isOneBody_; }

  /// Whether it is one body, no joint of it is locked and its wrist can turn every way.
  bool isRegular() const { return isRegular_; }
  const rotations::BallWrist& wrist() const { return wrist_; }
  const Band& wristBand() const { return wristBand_; }

  /// Of an arm that is one body, made once.
  const rotations::ThreeAxes& shoulder() const { return shoulder_; }

 private:
  ArmShape(const JointChain& chain, const std::array<int, 6>& joints, const zgeo::UVec3d& centre,
           double miss);

  std::array<int, 6> joints_;
  zgeo::UVec3d centre_;
  double miss_ = 0.0;
  bool isOneBody_ = false;
  bool isRegular_ = false;
  rotations::BallWrist wrist_;
  Band wristBand_;
  rotations::ThreeAxes shoulder_;
};

}  // namespace korvo
