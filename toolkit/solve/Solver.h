#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "toolkit/Export.h"
#include "toolkit/Machine.h"
#include "toolkit/model/JointChain.h"
#include "toolkit/solve/Target.h"

namespace korvo {

/// Which closed form serves a machine.
enum class SolverKind {
  none,        ///< See Unserved.
  linear,      ///< No free rotary axis: the linear axes carry the tool as it points.
  oneRotary,   ///< One rotary axis turns the tool on its cone.
  twoRotary,   ///< Two rotary axes turn the tool, three linear ones carry it.
  moreRotary,  ///< Every two of three or more rotary axes, the others held.
  arm,         ///< Six joints, the last three through one point.
};

/// Why no closed form serves a machine.
enum class Unserved {
  served,
  noTool,        ///< No current tool, or one without a direction.
  coupledAxes,   ///< One value moves two joints.
  fewJoints,     ///< Neither three linear axes nor six joints, and three rotary axes or more.
  noBallWrist,   ///< Six joints or more, whose last three do not meet in one point.
  wristOnThird,  ///< They meet on the line of the joint in front of them, which carries it nowhere.
  splitWrist,    ///< They meet only where a linear axis between them stands at zero.
  solvedSample,  ///< The options sample an axis that a target does not leave free to choose.
};

/// "none", "linear", "one-rotary", "two-rotary", "more-rotary", "arm".
KORVO_TOOLKIT_API const char* toString(SolverKind kind);

/// "served", "no-tool", "coupled-axes", "few-joints", "no-ball-wrist", "wrist-on-third",
/// "split-wrist", "solved-sample".
KORVO_TOOLKIT_API const char* toString(Unserved reason);

/// What an axis does that a target leaves free to choose: a second linear axis beside another, a
/// third rotary one, a rail. `value` may be said of any axis.
struct Redundancy {
  enum class Rule {
    start,    ///< It stays where the start has it.
    value,    ///< It stands at `value`, as if it were locked there.
    sampled,  ///< `samples` places from its lower to its upper limit, both included, are tried. A
              ///< target that does not leave it free has one place or few: that is refused, see
              ///< Unserved::solvedSample.
  };

  Rule rule = Rule::start;
  double value = 0.0;  ///< mm or degrees.
  int samples = 2;     ///< At least 2; an axis without both limits has its start alone,
                       ///< one without travel between them that place.
};

struct SolverOptions {
  std::array<Redundancy, kMostAxes> redundancy;  ///< By place.

  /// Of an arm whose tool does not turn about its own direction with the last joint: how finely its
  /// positions are followed while the tool turns once about its direction; at least 16. What lies
  /// between is met where it shows at neighbouring turns: ways that meet or part, limits that are
  /// touched. Two ways that come and go between two turns while the shoulder's other side reaches
  /// the target are not. To `approach` it is how many turns are tried.
  int toolTurns = 72;
};

/// Which of the ways in which a machine reaches a target a solution is: -1 or 1, 0 where the two
/// sides are one or where the machine has no such choice.
struct Branch {
  std::int8_t shoulder = 0;  ///< Of an arm: the side of the first joint's line on which it works.
  std::int8_t elbow = 0;     ///< Of an arm: the side to which the third joint bends.
  std::int8_t wrist = 0;     ///< The side of the two axes' common plane on which the tool stands.

  bool operator==(const Branch&) const = default;

  /// "shoulder+ elbow- wrist+"; of a machine that is no arm "+", "-" or "0".
  KORVO_TOOLKIT_API std::string label(SolverKind kind) const;
};

/// How near a solution is to where a joint has no effect of its own. Infinite where the machine has
/// no such place.
struct SingularDistance {
  /// Angle on the sphere of directions from the tool direction (of an arm: of the last joint's
  /// axis) to the nearest one at which two rotary axes lose a degree of freedom.
  double directionRad = std::numeric_limits<double>::infinity();
  double elbowRad = std::numeric_limits<double>::infinity();  ///< Of an arm: to the straight elbow.
  /// Of an arm: from the wrist centre to where its two shoulder sides meet.
  double shoulderMm = std::numeric_limits<double>::infinity();
};

/// A position that reaches a target, verified forward.
struct Solution {
  Values values{};
  Branch branch;
  Residual residual;
  SingularDistance singular;

  double margin = std::numeric_limits<double>::infinity();  ///< Least distance to a limit, mm or
                                                            ///< degrees; negative outside.
  int marginPlace = -1;  ///< Of the axis with the least margin; -1 where no axis has a limit.

  /// Places of axes that may stand anywhere while others follow: this is one of a family, the
  /// member whose first free axis is nearest to the start of all that are inside the limits. Of an
  /// arm every branch has as many members as its limits leave separate pieces of the family.
  std::array<int, 2> freePlaces{-1, -1};

  bool isFamily() const { return freePlaces[0] >= 0; }
};

enum class Limits {
  kept,
  ignored,  ///< Every branch once, with the turns nearest to the start.
};

class SolverCore;

/// All positions of a machine's current tool that reach a target.
///
/// Made once from a machine, of which it keeps what it needs: current tool, tool length, locks and
/// limits are those of that moment. It never changes and may be asked from many threads at once.
///
/// Rotary axes first: closed forms of `platform/rotations` give every pair of angles that turns the
/// tool into the direction; then the linear axes carry the tip. Of an arm the first three joints
/// carry the wrist centre and the last three turn the tool.
///
/// Of an axis that has no lower or no upper limit, or more than a hundred turns between them, the
/// turns within one turn of the start are given; a start beyond 1e9 degrees counts as there. Locked
/// axes stay where the start has them.
/// With more than three free linear axes the first three that can carry the tool do, counted from
/// it; the others stand as `SolverOptions::redundancy` says, and move from there by as little as
/// brings the three inside their limits.
class KORVO_TOOLKIT_API Solver {
 public:
  explicit Solver(const Machine& machine, const SolverOptions& options = {});

  SolverKind kind() const;
  Unserved unserved() const;

  /// What is locked there stands still: axes that are locked, and those that the options place.
  const JointChain& chain() const;

  /// Places of the axes that the options sample and that a target determines.
  const std::vector<int>& solvedSamples() const;

  /// Every solution, branch by branch, turns ascending. `out` is emptied first, its storage kept.
  ///
  /// @frames  Machine frame.
  /// @errors  Empty when nothing reaches the target, when target or start is not finite or the
  ///          direction null, and when no closed form serves the machine.
  /// @cost    Closed forms and one forward walk a solution; of an arm with its tool beside the last
  ///          joint's line a thousand times the closed form. No allocation once `out`, and what a
  ///          thread keeps for that, have grown.
  void solve(const Target& target, const Values& from, std::vector<Solution>& out,
             Limits limits = Limits::kept) const;

  /// The same for the whole frame of the tool, of arms alone: nothing of other machines, and where
  /// the frame is no rotation (to 1e-9).
  void solve(const FrameTarget& target, const Values& from, std::vector<Solution>& out,
             Limits limits = Limits::kept) const;

  /// What comes nearest, for who asks why nothing reaches: every branch, limits ignored, the tip
  /// carried as near to the target's as it can be, which may be beside it. An arm whose wrist does
  /// not turn the tool into the direction turns it as near as it can; of other machines there is
  /// nothing then.
  void approach(const Target& target, const Values& from, std::vector<Solution>& out) const;

  /// How far a position misses a target.
  Residual residual(const Values& values, const Target& target) const;
  Residual residual(const Values& values, const FrameTarget& target) const;

 private:
  std::shared_ptr<const SolverCore> core_;
};

}  // namespace korvo
