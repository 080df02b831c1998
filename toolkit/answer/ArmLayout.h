#pragma once

#include <optional>
#include <string>
#include <vector>

#include "toolkit/Language.h"
#include "toolkit/answer/Answer.h"

namespace korvo {

/// What the arm solver asks of a machine.
enum class ArmCondition {
  enoughJoints,   ///< Four elements from the first rotary axis on.
  upright,        ///< The first joint, +Z on the machine's Z line.
  firstInChain,   ///< No axis before the first joint.
  lowestNumbers,  ///< The first three joints, in their order.
  shape,          ///< Four rotary joints, the second square to the first, the third parallel to it.
  fourthSquare,   ///< To the third joint.
  upperArm,       ///< The second and third joint on two lines.
  sameSense,      ///< The third joint along the second where the fourth has an offset.
  ballWrist,      ///< The last three joints meet in one point.
  toolOnLastJoint,
  wristOfOneTool,  ///< No later tool behind the same last joint.
};

/// A condition that a machine does not meet.
struct ArmFault {
  ArmCondition condition;
  const zkin::KMachineElem* joint = nullptr;  ///< Where it shows; null for the tool.
  double off = 0.0;                           ///< How far; 0 for what has no measure.
  bool isAngle = false;                       ///< `off` in degrees, not in mm.
};

/// An arm as its solver sees it: lengths from the lines of its joints at the zero position.
///
/// The solver knows one layout: first joint upright on the machine's Z line, second square to it,
/// third parallel to the second, a ball wrist, and the tool on the last joint's line. Everything
/// else it answers too, beside the target. It aims the wrist centre, and a tip beyond it is met
/// only along the machine's Z: see `aimedAtCentre` for what brings every tip there.
class ArmLayout {
 public:
  explicit ArmLayout(const zkin::KMachine& machine);

  /// What the machine is that the solver does not know; empty for the one layout.
  std::vector<ArmFault> faults() const;

  /// The same in words for the machine's builder, without the tools behind the same joint: a
  /// machine aimed at its wrist centre does not mind them.
  std::vector<std::string> brokenByMachine(Language language) const;

  /// How far (mm) the tool point is from the wrist centre; nothing without a ball wrist.
  std::optional<double> toolOffset() const;

  /// How far (mm) from the tip to the wrist centre, along the tool; nothing where the tool does not
  /// lie on the last joint's line, or without a ball wrist: no shift of the target helps there.
  std::optional<double> tipToCentre() const;

  /// The machine with the tool point of the current tool in the wrist centre and no tool length.
  /// Ask only where `tipToCentre` has a value.
  Machine aimedAtCentre(const Machine& machine) const;

  /// What of a target no start and no shift changes: the wrist centre straight behind the first
  /// joint, without a lateral offset.
  std::vector<std::string> brokenBehind(const Target& target, Language language) const;

  /// Whether the library's solver, asked with this very target from a position, can do it: the tip
  /// in the wrist centre unless the tool is wanted upright, no tool length where the wrist is bent,
  /// and a wrist centre that is not straight behind the first joint.
  bool isTargetSolvable(const Target& target, const zkin::KMachineValueBase& from) const;

  /// How much (mm) the arm is too short or too long for a target; nothing when it reaches it, or
  /// when it is of another layout. Limits are not looked at.
  std::optional<double> outOfReach(const Target& target) const;

 private:
  using Elem = zkin::KMachineElem;

  std::optional<ArmFault> uprightFault() const;
  bool isBehind(const Target& target) const;
  bool isFirstInChain() const;
  bool hasLowestPlaces() const;
  std::optional<ArmFault> shapeFault() const;
  std::optional<ArmFault> wristFault() const;
  std::optional<ArmFault> toolFault() const;
  double upperArm() const;
  double forearmOffset() const;
  double centreOffset() const;
  const Elem* laterToolOnWrist() const;

  const zkin::KMachine& machine_;
  std::vector<const Elem*> chain_;   // active elements, root first
  std::vector<const Elem*> joints_;  // from the first rotary axis on, whatever they are
  const Elem* tool_ = nullptr;
  const Elem* wrist_ = nullptr;  // first rotary axis of the ball joint
};

}  // namespace korvo
