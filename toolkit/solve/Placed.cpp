// Axes that stand where the options say.
#include <algorithm>
#include <cmath>

#include "toolkit/solve/Core.h"

using zgeo::UVec3d;

namespace korvo {
namespace {

const Redundancy& ruleOf(const SolverCore& core, int joint) {
  return core.options.redundancy[at(core.joint(joint).place)];
}

/// The place of a sample: `samples` of them, the limits the first and the last.
double sampleOf(const Joint& joint, const Redundancy& rule, int sample) {
  return joint.min + (joint.max - joint.min) * sample / (rule.samples - 1);
}

bool isSampled(const Joint& joint, const Redundancy& rule) {
  return rule.rule == Redundancy::Rule::sampled && rule.samples >= 2 &&
         std::isfinite(joint.max - joint.min);
}

/// Without travel all samples are one.
int samplesOf(const Joint& joint, const Redundancy& rule) {
  return isSampled(joint, rule) && joint.max > joint.min ? rule.samples : 1;
}

using Solve = void (*)(const Query&, Values&);

/// `next` counts those that stand already.
void solveFrom(const Query& query, Values& from, std::size_t next, Solve solve) {
  if (next == query.core.placed.size()) {
    Values values = from;
    return solve({query.core, query.target, query.direction, from, query.limits, query.out,
                  query.frame, query.takesMissed},
                 values);
  }
  const int i = query.core.placed[next];
  const Joint& joint = query.core.joint(i);
  const Redundancy& rule = ruleOf(query.core, i);
  const bool samples = isSampled(joint, rule);
  for (int sample = 0; sample < samplesOf(joint, rule); ++sample) {
    query.value(i, from) = samples                                ? sampleOf(joint, rule, sample)
                           : rule.rule == Redundancy::Rule::value ? rule.value
                                                                  : query.start(i);
    solveFrom(query, from, next + 1, solve);
  }
}

// --- what a target leaves free

/// What a small motion of a joint does to the tip and to the direction of the tool.
struct Motion {
  std::array<double, 6> does{};

  Motion(const UVec3d& moves, const UVec3d& turns)
      : does{moves.x, moves.y, moves.z, turns.x, turns.y, turns.z} {}

  double operator*(const Motion& other) const {
    double sum = 0.0;
    for (std::size_t i = 0; i < 6; ++i) sum += does[i] * other.does[i];
    return sum;
  }

  void subtract(const Motion& other, double share) {
    for (std::size_t i = 0; i < 6; ++i) does[i] -= share * other.does[i];
  }
};

/// Motions square to each other, of length 1.
class Span {
 public:
  /// Whether it is none that the others make up.
  bool isNew(Motion motion) const { return left(motion) > kNone; }

  void take(Motion motion) {
    const double length = left(motion);
    if (!(length > kNone)) return;
    motion.subtract(motion, 1 - 1 / length);
    base_.push_back(motion);
  }

 private:
  static constexpr double kNone = 1e-7;

  double left(Motion& motion) const {
    const double length = std::sqrt(motion * motion);
    if (!(length > 0)) return 0.0;
    motion.subtract(motion, 1 - 1 / length);
    for (const Motion& one : base_) motion.subtract(one, motion * one);
    return std::sqrt(motion * motion);
  }

  std::vector<Motion> base_;
};

/// Of every joint, at a position that is like almost all others.
std::vector<Motion> motionsOf(const SolverCore& core) {
  constexpr double kLever = 1000.0;  // mm: a radian counts as what it moves at this distance
  Values values{};
  double degrees = 23.7;
  for (double& value : values) value = degrees = std::fmod(degrees * 1.9 + 31.3, 90.0) - 40.0;
  const ToolPose tool = core.chain.pose(values);
  const UVec3d tip = core.chain.tipOf(tool);
  std::vector<Motion> motions;
  zgeo::UMatrix placed;
  for (const Joint& joint : core.chain.joints) {
    UVec3d direction = joint.direction;
    placed.applyDir(direction);
    const bool isTurn = joint.motion == Joint::Motion::turn;
    const UVec3d moves = isTurn ? direction ^ (tip - placed * joint.point) : direction;
    motions.emplace_back(moves, isTurn ? (direction ^ tool.direction) * kLever : UVec3d());
    moveBy(joint, valueOf(joint, values), placed);
  }
  return motions;
}

/// Its first five joints are always solved for, and the last one where it does not turn the tool
/// about itself.
bool isSolvedOfArm(const SolverCore& core, int joint, const Motion& motion) {
  for (int k = 0; k < 5; ++k) {
    if (core.arm->joint(k) == joint) return true;
  }
  return core.arm->joint(5) == joint && motion * motion > 1e-12;
}

}  // namespace

void solvePlaced(const Query& query, void (*solve)(const Query&, Values&)) {
  Values from = query.from;
  if (query.core.placed.empty()) return solve(query, from);
  solveFrom(query, from, 0, solve);
}

std::vector<int> solvedSamplesOf(const SolverCore& core) {
  std::vector<int> sampled, solved;
  std::copy_if(core.placed.begin(), core.placed.end(), std::back_inserter(sampled),
               [&](int i) { return ruleOf(core, i).rule == Redundancy::Rule::sampled; });
  if (sampled.empty()) return solved;
  const std::vector<Motion> motions = motionsOf(core);
  Span free;
  for (const std::vector<int>* joints : {&core.turns, &core.slides}) {
    for (const int i : *joints) free.take(motions[at(i)]);
  }
  for (const int i : sampled) {
    const bool isSolved = core.kind == SolverKind::arm ? isSolvedOfArm(core, i, motions[at(i)])
                                                       : free.isNew(motions[at(i)]);
    if (isSolved) solved.push_back(core.joint(i).place);
  }
  return solved;
}

}  // namespace korvo
