#include "tests/path/Paths.h"

#include <algorithm>
#include <cmath>

namespace korvo::test {
namespace {

std::size_t placeOf(const Joint& joint) { return static_cast<std::size_t>(joint.place); }

bool isTurn(const Joint& joint) { return joint.motion == Joint::Motion::turn; }

AxisLine drawnRotary(const std::string& name, int number, const zgeo::UVec3d& along, Dice& dice) {
  zgeo::UVec3d direction = along, point;
  if (dice.oneIn(3)) {
    direction = direction + zgeo::UVec3d(dice.between(-0.7, 0.7), dice.between(-0.7, 0.7), 0.1);
  }
  if (!dice.oneIn(3)) {
    point = {dice.between(-50, 50), dice.between(-50, 50), dice.between(-200, 200)};
  }
  switch (dice.below(4)) {
    case 0:
      return rotary(name, number, direction, point);
    case 1:
      return rotary(name, number, direction, point, dice.between(-400, -180),
                    dice.between(180, 400));
    case 2:
      return rotary(name, number, direction, point, -360, 360);
    default:
      return rotary(name, number, direction, point, dice.between(-130, -20), dice.between(20, 130));
  }
}

}  // namespace

std::vector<std::optional<Values>> Ran::atTargets() const {
  std::vector<std::optional<Values>> out(report.done);
  for (const PathPosition& p : positions) {
    if (!p.isAdded()) out[p.target] = p.values;
  }
  return out;
}

Ran runPath(const Machine& machine, const std::vector<PathTarget>& targets,
            const ToolpathOptions& options) {
  Ran ran;
  ran.report = Toolpath(machine, options).run(targets, [&](const PathPosition& p) {
    ran.positions.push_back(p);
  });
  return ran;
}

Rules::Rules(const Machine& machine, const ToolpathOptions& options)
    : chain_(JointChain::of(*machine)), options_(options) {}

double Rules::by(const Joint& joint, const Values& a, const Values& b) const {
  const double by = b[placeOf(joint)] - a[placeOf(joint)];
  const bool isEndless = isTurn(joint) && std::isinf(joint.min) && std::isinf(joint.max);
  return std::abs(isEndless ? std::remainder(by, 360.0) : by);
}

double Rules::largestStep(const Joint& joint) const {
  return options_.axes[placeOf(joint)].largestStep.value_or(isTurn(joint) ? 90.0 : kNoLimit);
}

double Rules::travel(const Values& a, const Values& b) const {
  double sum = 0.0;
  for (const Joint& joint : chain_.joints) {
    if (joint.place >= 0) sum += options_.axes[placeOf(joint)].weight * by(joint, a, b);
  }
  return sum;
}

bool Rules::isBreak(const Values& a, const Values& b) const {
  return std::any_of(chain_.joints.begin(), chain_.joints.end(), [&](const Joint& joint) {
    return joint.place >= 0 && by(joint, a, b) > largestStep(joint) + 1e-8;
  });
}

double Rules::margins(const Values& at) const {
  double sum = 0.0;
  for (const Joint& joint : chain_.joints) {
    if (joint.place < 0) continue;
    const AxisWish& wish = options_.axes[placeOf(joint)];
    const double value = at[placeOf(joint)];
    const double margin = std::min(value - joint.min, joint.max - value);
    if (margin < wish.margin) sum += (wish.margin - margin) * wish.marginCost;
  }
  return sum;
}

Counted Rules::count(const std::vector<std::optional<Values>>& positions) const {
  Counted counted;
  std::optional<Values> last = options_.start;
  bool isFree = true;  // the way from the start, and behind a target without a position
  for (const auto& at : positions) {
    if (!at) {
      ++counted.breaks;
      isFree = true;
      continue;
    }
    if (last) counted.way += travel(*last, *at);
    if (last && !isFree && isBreak(*last, *at)) ++counted.breaks;
    counted.way += margins(*at);
    last = at;
    isFree = false;
  }
  return counted;
}

MachineLines fiveAxes(Dice& dice) {
  MachineLines lines;
  lines.toolPoint = {0, 0, dice.oneIn(2) ? 0.0 : 120.0};
  for (AxisLine axis : linearXyz()) {
    const double far = dice.oneIn(4) ? dice.between(300, 600) : 2000;
    axis.min = -far;
    axis.max = far;
    lines.head.push_back(axis);
  }
  const AxisLine c = drawnRotary("C", 6, {0, 0, 1}, dice);
  const AxisLine a = drawnRotary("A", 4, {1, 0, 0}, dice);
  switch (dice.below(3)) {
    case 0:
      lines.part = {a, c};
      break;
    case 1:
      lines.head.insert(lines.head.end(), {c, a});
      break;
    default:
      lines.part = {c};
      lines.head.push_back(a);
  }
  return lines;
}

double drawn(const Joint& joint, Dice& dice) {
  const double wide = isTurn(joint) ? 360 : 500;
  const double low = std::isinf(joint.min) ? std::min(-wide, joint.max - wide) : joint.min;
  const double high = std::isinf(joint.max) ? std::max(wide, low + wide) : joint.max;
  return dice.between(low, high);
}

std::vector<PathTarget> targetsOf(const Machine& machine, const std::vector<Values>& positions) {
  const JointChain chain = JointChain::of(*machine);
  std::vector<PathTarget> targets;
  for (const Values& values : positions) {
    const ToolPose pose = chain.pose(values);
    targets.push_back({{chain.tipOf(pose), pose.direction}, 0.0});
  }
  return targets;
}

std::vector<PathTarget> wandering(const Machine& machine, Dice& dice, int count) {
  const JointChain chain = JointChain::of(*machine);
  std::vector<Values> positions;
  Values at{};
  for (const Joint& joint : chain.joints) {
    if (joint.place >= 0) at[placeOf(joint)] = drawn(joint, dice);
  }
  const double stride = dice.oneIn(4) ? 0.3 : 0.05;
  for (int i = 0; i < count; ++i) {
    positions.push_back(at);
    if (dice.oneIn(8)) continue;
    for (const Joint& joint : chain.joints) {
      if (joint.place < 0) continue;
      double& value = at[placeOf(joint)];
      value = std::clamp(value + stride * (drawn(joint, dice) - value), joint.min, joint.max);
    }
  }
  std::vector<PathTarget> targets = targetsOf(machine, positions);
  for (PathTarget& target : targets) {
    if (dice.oneIn(25)) target.target.tip = {1e5, 0, 0};
  }
  return targets;
}

}  // namespace korvo::test
