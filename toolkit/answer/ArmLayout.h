#pragma once

#include <optional>
#include <string>
#include <vector>

#include "toolkit/answer/Answer.h"

namespace korvo {

/// An arm as its solver sees it: lengths from the lines of its joints at the zero position.
///
/// The solver knows one layout: first joint upright on the machine's Z line, second square to it,
/// third parallel to the second, a ball wrist, and the tool on the last joint's line. Everything
/// else it answers too, beside the target.
class ArmLayout {
 public:
  explicit ArmLayout(const zkin::KMachine& machine);

  /// What the machine is that the solver does not know, in words for its builder; empty for the one
  /// layout.
  std::vector<std::string> brokenByMachine() const;

  /// What of a target, asked from a position, the solver cannot do: a tip away from the wrist
  /// centre when the tool is not wanted upright, a tool length when the wrist is bent.
  std::vector<std::string> brokenByTarget(const Target& target,
                                          const zkin::KMachineValueBase& from) const;

  /// How much (mm) the arm is too short or too long for a target; nothing when it reaches it, or
  /// when it is of another layout. Limits are not looked at.
  std::optional<double> outOfReach(const Target& target) const;

 private:
  using Elem = zkin::KMachineElem;

  bool isUpright() const;
  bool isFirstInChain() const;
  bool hasLowestPlaces() const;
  bool hasSquareShape() const;
  bool isToolOnLastJoint() const;
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
