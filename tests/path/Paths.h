#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tests/solve/Machines.h"
#include "tests/support/Dice.h"
#include "toolkit/path/Toolpath.h"

namespace korvo::test {

/// What a run gave.
struct Ran {
  ToolpathReport report;
  std::vector<PathPosition> positions;

  /// Of each target its position, those between left out.
  std::vector<std::optional<Values>> atTargets() const;
};

Ran runPath(const Machine& machine, const std::vector<PathTarget>& targets,
            const ToolpathOptions& options = {});

/// What a list of positions costs: counted from the rules alone.
struct Counted {
  std::size_t breaks = 0;  ///< Targets without a position among them.
  double way = 0.0;        ///< Weighted travel and cost of margins.
};

/// The rules of what a path costs, by the joints of the machine.
class Rules {
 public:
  Rules(const Machine& machine, const ToolpathOptions& options);

  /// Endless axes go the short way.
  double travel(const Values& a, const Values& b) const;
  bool isBreak(const Values& a, const Values& b) const;
  double margins(const Values& at) const;

  Counted count(const std::vector<std::optional<Values>>& positions) const;

 private:
  double by(const Joint& joint, const Values& a, const Values& b) const;
  double largestStep(const Joint& joint) const;

  JointChain chain_;
  ToolpathOptions options_;
};

/// A five-axis machine of any make: two rotary axes under the part, on the head or on either, not
/// always square, off each other; narrow limits, wide ones and none.
MachineLines fiveAxes(Dice& dice);

/// Targets of positions that wander about inside the limits, sometimes far, sometimes not at all,
/// with now and then one that nothing reaches.
std::vector<PathTarget> wandering(const Machine& machine, Dice& dice, int count);

/// The targets of these positions.
std::vector<PathTarget> targetsOf(const Machine& machine, const std::vector<Values>& positions);

/// Limits where the machine has them, else something as wide as a turn or a metre.
double drawn(const Joint& joint, Dice& dice);

}  // namespace korvo::test
