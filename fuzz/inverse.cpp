// Any machine of the generators, any target: what the solver gives reaches it, inside the limits.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/Ask.h"
#include "tests/support/Dice.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/SphericalArm.h"
#include "toolkit/solve/Solver.h"

namespace {

using korvo::FrameTarget;
using korvo::Joint;
using korvo::JointChain;
using korvo::kMostAxes;
using korvo::kReachedMm;
using korvo::kReachedRad;
using korvo::Machine;
using korvo::Residual;
using korvo::Solution;
using korvo::Solver;
using korvo::Target;
using korvo::Values;
using korvo::fuzz::require;
using korvo::test::Choices;
using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;

/// An input is read from its front; where it has ended all is 0.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : at_(data), left_(size) {}

  template <typename T>
  T take() {
    T value{};
    const std::size_t count = std::min(left_, sizeof value);
    if (count > 0) std::memcpy(&value, at_, count);
    at_ += count;
    left_ -= count;
    return value;
  }

  std::vector<std::uint8_t> rest() const { return {at_, at_ + left_}; }

 private:
  const std::uint8_t* at_;
  std::size_t left_;
};

struct Asked {
  std::uint8_t flags;
  bool isMade;    ///< The target is where the tool stands at `made`.
  bool isFrame;   ///< Turned as the tool is at `made`.
  bool isLocked;  ///< One of the axes.
  Values start, made;
  Target target;
  UMatrix frame;  ///< Where the target is one.
};

Asked askedOf(Bytes& bytes) {
  Asked asked{};
  const auto flags = bytes.take<std::uint8_t>();
  asked.isMade = (flags & 1) == 0;
  asked.flags = flags;
  asked.isLocked = (flags & 4) != 0;
  for (double& value : asked.start) value = bytes.take<float>();
  for (double& value : asked.made) value = bytes.take<float>();
  for (UVec3d* v : {&asked.target.tip, &asked.target.direction}) {
    v->x = bytes.take<double>();
    v->y = bytes.take<double>();
    v->z = bytes.take<double>();
  }
  return asked;
}

std::unique_ptr<KMachine> machineOf(Bytes& bytes) {
  const auto kind = bytes.take<std::uint8_t>() % (korvo::test::kTopologies + 1);
  if (kind == korvo::test::kTopologies) {
    const auto seed = bytes.take<std::uint32_t>();
    const auto wishes = bytes.take<std::uint8_t>();
    const auto has = [wishes](int bit) { return (wishes >> bit & 1) != 0; };
    korvo::test::Dice dice(seed);
    return korvo::test::sphericalArm(dice, {has(0), has(1), has(2), has(3), has(4), has(5)}).load();
  }
  Choices choices(bytes.rest());
  return korvo::test::loadMachine(
      korvo::test::machineText(choices, static_cast<korvo::test::Topology>(kind)));
}

/// Of an arm only one in 64 has no frame: to follow the turn that a direction leaves takes long.
bool asksFrame(const Solver& solver, std::uint8_t flags) {
  if (solver.kind() == korvo::SolverKind::arm) return (flags & 0xFA) != 0xFA;
  return (flags & 2) != 0;
}

Values intoLimits(const JointChain& chain, Values values) {
  for (const Joint& joint : chain.joints) {
    if (joint.place < 0) continue;
    double& value = values[static_cast<std::size_t>(joint.place)];
    value = std::clamp(std::isfinite(value) ? value : 0.0, std::max(joint.min, -1e6),
                       std::min(joint.max, 1e6));
  }
  return values;
}

/// Of any length that a double can have.
UVec3d scaledToOne(const UVec3d& v) {
  const double largest = std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)});
  return {v.x / largest, v.y / largest, v.z / largest};
}

double angleBetween(const UVec3d& a, const UVec3d& b) { return std::atan2((a ^ b).norm(), a * b); }

/// Of two rotations that are nearly the same: |A - B|^2 = 8 sin^2(angle / 2).
double turnBetween(const UMatrix& a, const UMatrix& b) {
  double sum = 0;
  for (int i = 0; i < 9; ++i) sum += std::pow(a(i / 3, i % 3) - b(i / 3, i % 3), 2);
  return std::sqrt(sum / 2);
}

/// What is wrong with a solution, or null: judged by the machine, not by the solver.
const char* faultOf(const KMachine& machine, const Solver& solver, const Solution& solution,
                    const Asked& asked) {
  for (const Joint& joint : solver.chain().joints) {
    if (joint.place < 0) continue;
    const auto place = static_cast<std::size_t>(joint.place);
    const double value = solution.values[place];
    if (!(value >= joint.min && value <= joint.max)) return "outside its limits";
    if (joint.isLocked && value != asked.start[place]) return "a locked axis moved";
  }
  if (!(solution.margin >= 0)) return "its margin";
  if (!solution.residual.isReached()) return "its own residual";
  const auto position =
      korvo::test::positionOf(machine, {solution.values.begin(), solution.values.end()});
  UVec3d point, direction;
  if (!machine.getTool(*position, point, direction, 0)) return "no tool";
  const UVec3d tip = point - direction * machine.getTHELength(1);
  if (!(tip.distanceTo(asked.target.tip) <= 1.001 * kReachedMm)) return "the point";
  if (asked.isFrame) {
    const double turn = turnBetween(machine.getMatrix_H2T(*position), asked.frame);
    if (!(turn <= 1.001 * kReachedRad)) return "the turn";
  }
  const double angle = angleBetween(direction, scaledToOne(asked.target.direction));
  return angle <= 1.001 * kReachedRad ? nullptr : "the direction";
}

void requireSound(const KMachine& machine, const Solver& solver, const Solution& solution,
                  const Asked& asked) {
  const char* const fault = faultOf(machine, solver, solution, asked);
  if (!fault) return;
  std::fprintf(stderr, "%s:", fault);
  for (const double value : solution.values) std::fprintf(stderr, " %.17g", value);
  const UVec3d& p = asked.target.tip;
  const UVec3d& d = asked.target.direction;
  std::fprintf(stderr, "\nfor %.17g %.17g %.17g, %.17g %.17g %.17g: %g mm, %g rad\n", p.x, p.y, p.z,
               d.x, d.y, d.z, solution.residual.pointMm, solution.residual.directionRad);
  require(false);
}

/// The first axis, where it starts: inside its limits.
void lockOne(KMachine& machine, Values& start) {
  const zkin::KMachineElem* const axis = machine.getAxisElem(1);
  if (!axis) return;
  machine.getElemByIndex(axis->getElemIndex())->setLocked(true);
  if (axis->hasMin()) start[0] = std::max(start[0], axis->getMin());
  if (axis->hasMax()) start[0] = std::min(start[0], axis->getMax());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, size);
  Asked asked = askedOf(bytes);
  const std::unique_ptr<KMachine> machine = machineOf(bytes);
  if (!machine) return 0;
  if (asked.isLocked) lockOne(*machine, asked.start);
  korvo::SolverOptions options;
  options.toolTurns = 16;
  const Solver solver(Machine(*machine), options);
  const JointChain& chain = solver.chain();

  asked.isFrame = asksFrame(solver, asked.flags);
  asked.made = intoLimits(chain, asked.made);
  const korvo::ToolPose pose = chain.pose(asked.made);
  if (asked.isMade) asked.target.tip = chain.tipOf(pose);
  if (asked.isMade || asked.isFrame) asked.target.direction = pose.direction;
  std::vector<Solution> found;
  if (asked.isFrame) {
    asked.frame = chain.motion(asked.made);
    asked.frame.setOrigin(asked.target.tip);
    solver.solve(FrameTarget{asked.frame}, asked.start, found);
  } else {
    solver.solve(asked.target, asked.start, found);
  }
  for (const Solution& solution : found) requireSound(*machine, solver, solution, asked);
  return 0;
}
