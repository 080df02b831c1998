#include "toolkit/solve/Solver.h"

#include <algorithm>
#include <cmath>

#include "toolkit/solve/Cone.h"
#include "toolkit/solve/Core.h"
#include "toolkit/solve/Refine.h"

using zgeo::UVec3d;

namespace korvo {
namespace {

bool isFinite(const Values& values) {
  return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

bool isFinite(const UVec3d& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

/// Whether there is something to solve.
bool isQuestion(const UVec3d& tip, const UVec3d& direction, const Values& from) {
  return isFinite(tip) && isFinite(direction) && direction != UVec3d() && isFinite(from);
}

/// `angleBetween` of two directions of length 1.
double angleOf(const UVec3d& a, const UVec3d& b) {
  const double sine = (a ^ b).norm();
  const bool isSmall = sine < kSmallSine && a * b > 0;
  return isSmall ? sine : std::atan2(sine, a * b);
}

Residual residualOf(const JointChain& chain, const Values& values, const UVec3d& tip,
                    const UVec3d& direction) {
  const ToolPose pose = chain.pose(values);
  return {chain.tipOf(pose).distanceTo(tip), angleOf(pose.direction, direction)};
}

/// The angle of the turn that carries one rotation onto another: each of its columns lies at most
/// that far off, and two of them at least as far as its share of the axis leaves them.
double turnBetween(const zgeo::UMatrix& a, const zgeo::UMatrix& b) {
  double chordSq = 0.0;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) chordSq += (a(i, j) - b(i, j)) * (a(i, j) - b(i, j));
  }
  const double sine = std::sqrt(chordSq / 8);  // |A - B|^2 = 8 sin^2(angle / 2)
  return 2 * (sine < kSmallSine ? sine : std::asin(std::min(sine, 1.0)));
}

Residual residualOf(const JointChain& chain, const Values& values, const zgeo::UMatrix& frame) {
  const zgeo::UMatrix motion = chain.motion(values);
  const UVec3d tip = motion * (chain.toolPoint - chain.toolDirection * chain.toolLength);
  return {tip.distanceTo(frame.getOrigin()), turnBetween(motion, frame)};
}

bool isRotation(const zgeo::UMatrix& m) {
  constexpr double kSquare = 1e-9;
  UVec3d rows[3];
  for (int i = 0; i < 3; ++i) rows[i] = {m(i, 0), m(i, 1), m(i, 2)};
  return (rows[0] ^ rows[1]).distanceTo(rows[2]) <= kSquare &&
         std::abs(rows[0].norm() - 1) <= kSquare && std::abs(rows[1].norm() - 1) <= kSquare;
}

/// What near a singular direction rounding leaves between two closed forms of one position is some
/// 1e-8 degrees.
bool isSame(const Values& a, const Values& b) {
  constexpr double kSame = 1e-7;  // mm or degrees
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!(std::abs(a[i] - b[i]) <= kSame)) return false;
  }
  return true;
}

void takeMargin(double margin, int place, Solution& solution) {
  if (!(margin < solution.margin)) return;
  solution.margin = margin;
  solution.marginPlace = place;
}

}  // namespace

Residual residualOf(const Query& query, const Values& values) {
  const JointChain& chain = query.core.chain;
  return query.frame ? residualOf(chain, values, *query.frame)
                     : residualOf(chain, values, query.target.tip, query.direction);
}

namespace {

/// Whether a position of an arm is near enough to be moved onto the target: closed forms take the
/// wrist for one point, and each of its three turns carries that point along by up to twice what
/// its line passes it by.
bool isRefined(const Query& query, const Residual& residual) {
  return query.core.arm && !query.takesMissed && residual.directionRad <= kReachedRad &&
         residual.pointMm <= kReachedMm + 6 * query.core.arm->miss();
}

}  // namespace

void add(const Query& query, Values values, const Branch& branch, const SingularDistance& singular,
         std::array<int, 2> freePlaces) {
  // Of a start beyond all turns the nearest of them is one bit beside it.
  for (const Joint& joint : query.core.chain.joints) {
    if (joint.isLocked && joint.place >= 0) values[at(joint.place)] = query.from[at(joint.place)];
  }
  Solution solution;
  solution.residual = residualOf(query, values);
  if (isRefined(query, solution.residual)) refine(query, values, solution.residual);
  for (const Joint& joint : query.core.chain.joints) {
    if (joint.place < 0) continue;
    const double value = values[at(joint.place)];
    takeMargin(value - joint.min, joint.place, solution);
    takeMargin(joint.max - value, joint.place, solution);
  }
  solution.values = values;
  solution.branch = branch;
  solution.singular = singular;
  solution.freePlaces = freePlaces;
  accept(query, solution);
}

void accept(const Query& query, const Solution& solution) {
  if (!query.takesMissed && !solution.residual.isReached()) return;
  if (query.limits == Limits::kept && solution.margin < 0) return;
  // Two pairs of more than two rotary joints may end in one position.
  if (query.core.kind == SolverKind::moreRotary &&
      std::any_of(query.out.begin(), query.out.end(),
                  [&](const Solution& s) { return isSame(s.values, solution.values); })) {
    return;
  }
  query.out.push_back(solution);
}

SolverCore::SolverCore(const JointChain& c, const SolverOptions& o) : chain(c), options(o) {
  int linear = 0;
  int rotary = 0;
  for (int i = 0; i < static_cast<int>(chain.joints.size()); ++i) {
    const Joint& j = joint(i);
    if (j.place < 0) continue;
    const bool isTurn = j.motion == Joint::Motion::turn;
    ++(isTurn ? rotary : linear);
    if (j.isLocked) continue;
    const bool isPlaced = options.redundancy[at(j.place)].rule != Redundancy::Rule::start;
    (isPlaced ? placed : isTurn ? turns : slides).push_back(i);
    chain.joints[at(i)].isLocked = isPlaced;
  }
  for (const Joint& j : chain.joints) pairJoints.emplace_back(j);
  pairTool = {bothOf(chain.toolPoint), bothOf(chain.toolDirection),
              bothOf(chain.toolPoint - chain.toolDirection * chain.toolLength)};
  if (rotary >= 6) arm = ArmShape::of(chain);
  if (!chain.hasTool || chain.toolDirection == UVec3d()) {
    unserved = Unserved::noTool;
  } else if (chain.isCoupled()) {
    unserved = Unserved::coupledAxes;
  } else if (arm) {
    kind = SolverKind::arm;
  } else if (linear < 3 && rotary > 2) {
    unserved = rotary < 6 ? Unserved::fewJoints : ArmShape::whyNot(chain);
  } else {
    constexpr SolverKind kinds[] = {SolverKind::linear, SolverKind::oneRotary,
                                    SolverKind::twoRotary};
    kind = turns.size() < 3 ? kinds[turns.size()] : SolverKind::moreRotary;
    if (rotary == 2 && turns.size() == 2) turning = turningOf(*this, {}, turns[0], turns[1]);
  }
  if (kind == SolverKind::none) return;
  solvedSamples = solvedSamplesOf(*this);
  if (solvedSamples.empty()) return;
  kind = SolverKind::none;
  unserved = Unserved::solvedSample;
}

Solver::Solver(const Machine& machine, const SolverOptions& options)
    : core_(std::make_shared<const SolverCore>(JointChain::of(*machine), options)) {}

SolverKind Solver::kind() const { return core_->kind; }
Unserved Solver::unserved() const { return core_->unserved; }
const JointChain& Solver::chain() const { return core_->chain; }
const std::vector<int>& Solver::solvedSamples() const { return core_->solvedSamples; }

void Solver::solve(const Target& target, const Values& from, std::vector<Solution>& out,
                   Limits limits) const {
  out.clear();
  const UVec3d direction = target.direction.normalised();
  if (!isQuestion(target.tip, direction, from)) return;
  const Query query{*core_, target, direction, from, limits, out};
  if (core_->kind == SolverKind::none) return;
  core_->kind == SolverKind::arm ? solveArm(query) : solveCartesian(query);
}

void Solver::solve(const FrameTarget& target, const Values& from, std::vector<Solution>& out,
                   Limits limits) const {
  out.clear();
  const UVec3d tip = target.frame.getOrigin();
  UVec3d direction = core_->chain.toolDirection;
  target.frame.applyDir(direction);
  if (core_->kind != SolverKind::arm || !isRotation(target.frame)) return;
  if (!isQuestion(tip, direction, from)) return;
  solveArm({*core_, {tip, direction}, direction, from, limits, out, &target.frame});
}

void Solver::approach(const Target& target, const Values& from, std::vector<Solution>& out) const {
  out.clear();
  const UVec3d direction = target.direction.normalised();
  if (!isQuestion(target.tip, direction, from)) return;
  if (core_->kind == SolverKind::none) return;
  const Query query{*core_, target, direction, from, Limits::ignored, out, nullptr, true};
  core_->kind == SolverKind::arm ? solveArm(query) : solveCartesian(query);
}

Residual Solver::residual(const Values& values, const Target& target) const {
  return residualOf(core_->chain, values, target.tip, target.direction.normalised());
}

Residual Solver::residual(const Values& values, const FrameTarget& target) const {
  return residualOf(core_->chain, values, target.frame);
}

std::string Branch::label(SolverKind kind) const {
  const auto sign = [](std::int8_t side) { return side < 0 ? "-" : side > 0 ? "+" : "0"; };
  if (kind != SolverKind::arm) return sign(wrist);
  return std::string("shoulder") + sign(shoulder) + " elbow" + sign(elbow) + " wrist" + sign(wrist);
}

const char* toString(SolverKind kind) {
  static constexpr const char* kNames[] = {"none",       "linear",      "one-rotary",
                                           "two-rotary", "more-rotary", "arm"};
  return kNames[static_cast<std::size_t>(kind)];
}

const char* toString(Unserved reason) {
  static constexpr const char* kNames[] = {"served",      "no-tool",       "coupled-axes",
                                           "few-joints",  "no-ball-wrist", "wrist-on-third",
                                           "split-wrist", "solved-sample"};
  return kNames[static_cast<std::size_t>(reason)];
}

}  // namespace korvo
