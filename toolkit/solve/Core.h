#pragma once

#include <optional>
#include <vector>

#include "platform/rotations/Solvers.h"
#include "toolkit/model/Walk.h"
#include "toolkit/solve/Arm.h"
#include "toolkit/solve/PairWalk.h"
#include "toolkit/solve/Solver.h"

/// What the sources of this folder share.
namespace korvo {

inline rotations::Vec3 plain(const zgeo::UVec3d& v) { return {v.x, v.y, v.z}; }
inline zgeo::UVec3d vector(const rotations::Vec3& v) { return {v[0], v[1], v[2]}; }

/// By the transpose: back to before a rotation.
inline zgeo::UVec3d turnedBack(const zgeo::UMatrix& m, const zgeo::UVec3d& v) {
  return {m(0, 0) * v.x + m(1, 0) * v.y + m(2, 0) * v.z,
          m(0, 1) * v.x + m(1, 1) * v.y + m(2, 1) * v.z,
          m(0, 2) * v.x + m(1, 2) * v.y + m(2, 2) * v.z};
}

inline std::size_t at(int i) { return static_cast<std::size_t>(i); }

/// What is solved onto a limit misses it by rounding (mm or degrees). Put on it, a joint moves a
/// tool that is a metre away by less than 1e-9 mm.
inline constexpr double kOnLimit = 5e-11;

/// The same of a locked joint, which has one place alone: next to a fold what is solved is no surer
/// than this. Whether the tool still reaches its target the residual says.
inline constexpr double kOnLock = 1e-7;

inline double slackOf(const Joint& joint) { return joint.isLocked ? kOnLock : kOnLimit; }

/// Below this the sine of an angle is the angle, to rounding.
inline constexpr double kSmallSine = 1.5e-8;

/// A tool for walks in pairs.
struct PairTool {
  PairVec3 point, direction;
  PairVec3 tip;
};

/// The task of the rotary joints that may move, in the frame of the joint nearest the part: `from`
/// is the tool at zero, turned by what is held behind the last of them, and so is the second axis
/// by what is held between.
struct Turning {
  zgeo::UVec3d from;
  zgeo::UVec3d axis1;
  zgeo::UVec3d axis2;
  Band band;  ///< Of two axes: where the tool can point, from the first.
};

/// A machine as its solver has it.
class SolverCore {
 public:
  SolverCore(const JointChain& chain, const SolverOptions& options);

  const Joint& joint(int i) const { return chain.joints[at(i)]; }

  JointChain chain;
  SolverOptions options;
  SolverKind kind = SolverKind::none;
  Unserved unserved = Unserved::served;
  std::vector<int> turns;          ///< Free rotary joints, root first.
  std::vector<int> slides;         ///< Free linear joints, root first.
  std::vector<int> placed;         ///< Joints that stand where the options say, as if locked there.
  std::vector<int> solvedSamples;  ///< Places, see Solver.
  std::optional<ArmShape> arm;
  std::vector<PairJoint> pairJoints;  ///< Those of the chain.
  PairTool pairTool;
  std::optional<Turning> turning;  ///< Of two rotary joints, both free, and no others.
};

/// Of the choice of two rotary joints (`second` -1: of one) with the others as `values` have them.
Turning turningOf(const SolverCore& core, const Values& values, int first, int second);

/// The tip of the tool, as JointChain has it.
inline PairVec3 tipOf(const SolverCore& core, const PairVec3& point, const PairVec3& direction) {
  const PairVec3& d = direction;
  const double length = core.chain.toolLength;
  return {point[0] - d[0] * length, point[1] - d[1] * length, point[2] - d[2] * length};
}

/// One question to a solver, and where its solutions go.
struct Query {
  const SolverCore& core;
  const Target& target;
  zgeo::UVec3d direction;  ///< The target's, of length 1.
  const Values& from;
  Limits limits;
  std::vector<Solution>& out;
  const zgeo::UMatrix* frame = nullptr;  ///< Of a frame target.
  bool takesMissed = false;              ///< Solutions whose tip misses the target count, too.

  double start(int joint) const { return from[at(core.joint(joint).place)]; }
  double& value(int joint, Values& values) const { return values[at(core.joint(joint).place)]; }
};

/// The values that differ by full turns and are inside the limits, which a locked joint always
/// keeps: first, first + 360, ...
struct TurnRange {
  double first = 0.0;
  int count = 0;

  double operator[](int k) const { return first + 360.0 * k; }
};

/// Where the turns of a rotary joint are listed: inside its limits or, of an endless one, of those
/// within one turn of the start.
std::array<double, 2> listedRange(const Joint& joint, double start);

/// How many turns of 360 degrees there are from `first` to `last`, both included; not more than are
/// ever listed, where the numbers are too large to count.
int turnCount(double first, double last);

TurnRange turnsOf(const Joint& joint, double degrees, double start, Limits limits);

/// The value itself, or the limit that it misses by rounding alone.
inline double onLimit(const Joint& joint, double value, double slack) {
  if (value < joint.min && joint.min - value <= slack) return joint.min;
  if (value > joint.max && value - joint.max <= slack) return joint.max;
  return value;
}
inline double onLimit(const Joint& joint, double value) {
  return onLimit(joint, value, slackOf(joint));
}

inline bool isInside(const Joint& joint, double value) {
  return value >= joint.min && value <= joint.max;
}

/// Moves the free linear joints so that the tool, turned as `values` say, has its tip on the
/// target's: false when they cannot, or only outside their limits.
bool carry(const Query& query, Values& values);

/// The same for two positions at once, by three linear joints far from one plane: whether each can.
/// Nothing, with neither position changed, elsewhere.
std::optional<std::array<bool, 2>> carryBoth(const Query& query, std::array<Values, 2>& values);

/// How far a position misses what is asked for.
Residual residualOf(const Query& query, const Values& values);

/// Adds what `values` are to the solutions if, computed forward, they reach the target.
void add(const Query& query, Values values, const Branch& branch, const SingularDistance& singular,
         std::array<int, 2> freePlaces = {-1, -1});

/// Adds a solution whose residual and margin are known if it reaches the target inside the limits.
void accept(const Query& query, const Solution& solution);

/// Calls `solve` with the joints that the options place there in the start and in the values, for
/// every one of their samples.
void solvePlaced(const Query& query, void (*solve)(const Query&, Values&));

/// Places of the axes that the options sample and that a target does not leave free: without them
/// the others move the tool in fewer ways.
std::vector<int> solvedSamplesOf(const SolverCore& core);

/// All solutions of machines with linear axes.
void solveCartesian(const Query& query);

/// All solutions of arms.
void solveArm(const Query& query);

/// How a rotary joint that stays free, `free`, turns another one with it: other = offset + slope *
/// free (degrees); slope 0 or 1 or -1.
struct Freedom {
  int free = -1;
  int other = -1;
  double offset = 0.0;
  double slope = 0.0;
};

/// Where a rotary joint has to stand (degrees) that a direction leaves free, because the linear
/// joints carry the tool in fewer than three directions.
struct SolvedAngles {
  int count = 0;  ///< 0 where it is free.
  std::array<double, 2> degrees{};
};

/// Where the joint alone could bring the tool, turned as `values` say, among the ways of the linear
/// joints; where it cannot, the nearest to that.
SolvedAngles solvedAngles(const Query& query, const Freedom& freedom, const Values& values);

/// The member of a family whose free joint is nearest to its start, of all inside the limits, in
/// `values`; false without one.
bool nearestMember(const Query& query, const Freedom& freedom, Values& values);

}  // namespace korvo
