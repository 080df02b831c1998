#include "tests/solve/ArmSearch.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "tests/solve/DenseSearch.h"

namespace korvo::test {
namespace {

using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;

constexpr double kDegree = std::numbers::pi / 180.0;
constexpr double kCoarse = 5.0;  // half widths of cells, degrees
constexpr double kFine = 0.2;
constexpr std::size_t kMost = 60000;
constexpr double kFlat = 3e-3;  // share below which branches nearly meet
constexpr int kBends = 1440;

void put(const Values& values, zkin::KMachineValueBase& v) {
  for (int i = 0; i < v.size(); ++i) v[i] = values[static_cast<std::size_t>(i)];
}

double turnApart(double a, double b) { return std::abs(std::remainder(a - b, 360.0)); }

}  // namespace

FrameTarget frameAt(const KMachine& machine, const Values& values) {
  const Position v = positionOf(machine, {values.begin(), values.end()});
  FrameTarget target{machine.getMatrix_H2T(*v)};
  target.frame.setOrigin(tipAt(machine, *v).tip);
  return target;
}

Residual missOf(const KMachine& machine, const Values& values, const FrameTarget& target) {
  const UMatrix at = frameAt(machine, values).frame;
  UMatrix turn;  // what is missing, seen from the target
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      turn(i, j) = 0.0;
      for (int k = 0; k < 3; ++k) turn(i, j) += target.frame(k, i) * at(k, j);
    }
  }
  const UVec3d twice(turn(2, 1) - turn(1, 2), turn(0, 2) - turn(2, 0), turn(1, 0) - turn(0, 1));
  const double trace = turn(0, 0) + turn(1, 1) + turn(2, 2);
  return {at.getOrigin().distanceTo(target.frame.getOrigin()),
          std::atan2(twice.norm(), trace - 1.0)};
}

ArmSearch::ArmSearch(const KMachine& machine, const SphericalArm& arm, const Values& held)
    : machine_(machine), arm_(arm), held_(held), position_(positionOf(machine)) {
  reach_[2] = arm.points[2].distanceTo(arm.centre);
  reach_[1] = reach_[2] + arm.points[1].distanceTo(arm.points[2]);
  reach_[0] = reach_[1] + arm.points[0].distanceTo(arm.points[1]);
  const int count = static_cast<int>(180 / kCoarse);
  const auto middle = [](int i) { return kCoarse * (2 * i + 1); };
  for (int i = 0; i < count; ++i) {
    for (int j = 0; j < count; ++j) {
      for (int k = 0; k < count; ++k) {
        const Angles angles{middle(i), middle(j), middle(k)};
        first_.push_back({angles, centreAt(angles)});
      }
    }
  }
  for (int i = 0; i < kBends; ++i) {
    Values values = held;
    values[4] = 360.0 * i / kBends;
    bends_.push_back(axisAt(values, 3) * axisAt(values, 5));
  }
}

UVec3d ArmSearch::centreAt(const Angles& angles) const {
  Values values = held_;
  std::copy(angles.begin(), angles.end(), values.begin());
  put(values, *position_);
  return machine_.getMatrix(*position_, SphericalArm::jointOf(machine_, 2)) * arm_.centre;
}

UVec3d ArmSearch::axisAt(const Values& values, int joint) const {
  put(values, *position_);
  UVec3d direction;
  machine_.getElemAxis(*position_, joint + 1, direction);
  return direction.normalised();
}

// --- the first three joints

bool ArmSearch::canHold(const Cell& cell, double half, const UVec3d& to) const {
  const double way = (reach_[0] + reach_[1] + reach_[2]) * half * kDegree;
  return cell.centre.distanceTo(to) <= way * 1.0001 + 1e-6;
}

std::vector<ArmSearch::Cell> ArmSearch::cut(const std::vector<Cell>& cells, double half,
                                            const UVec3d& to) const {
  std::vector<Cell> smaller;
  for (const Cell& cell : cells) {
    for (int corner = 0; corner < 8; ++corner) {
      Cell part = cell;
      for (int k = 0; k < 3; ++k) {
        part.middle[static_cast<std::size_t>(k)] += (corner >> k) % 2 == 0 ? -half : half;
      }
      part.centre = centreAt(part.middle);
      if (canHold(part, half, to)) smaller.push_back(part);
    }
  }
  return smaller;
}

double ArmSearch::followDown(Angles& angles, const UVec3d& to) const {
  constexpr double kStep = 1e-3;
  double share = 0.0;
  for (int round = 0; round < 40; ++round) {
    UVec3d d[3];  // mm for each degree
    for (std::size_t i = 0; i < 3; ++i) {
      Angles more = angles, less = angles;
      more[i] += kStep, less[i] -= kStep;
      d[i] = (centreAt(more) - centreAt(less)) / (2 * kStep);
    }
    const double volume = d[0] * (d[1] ^ d[2]);
    share = std::abs(volume) / (reach_[0] * reach_[1] * reach_[2] * std::pow(kDegree, 3));
    if (!(share > 1e-9)) return 0.0;
    const UVec3d way = to - centreAt(angles);
    const double by[3] = {way * (d[1] ^ d[2]) / volume, d[0] * (way ^ d[2]) / volume,
                          d[0] * (d[1] ^ way) / volume};
    const double longest = std::max({std::abs(by[0]), std::abs(by[1]), std::abs(by[2])});
    for (std::size_t i = 0; i < 3; ++i) angles[i] += by[i] * std::min(1.0, 2.0 / longest);
    if (longest < 1e-9) break;
  }
  return share;
}

std::optional<std::vector<ArmSearch::Angles>> ArmSearch::shoulders(const UVec3d& to) const {
  std::vector<Cell> cells;
  std::copy_if(first_.begin(), first_.end(), std::back_inserter(cells),
               [&](const Cell& cell) { return canHold(cell, kCoarse, to); });
  for (double half = kCoarse / 2; half > kFine / 2; half /= 2) {
    cells = cut(cells, half, to);
    if (cells.size() > kMost) return {};
  }
  std::vector<Angles> found;
  for (const Cell& cell : cells) {
    Angles angles = cell.middle;
    const double share = followDown(angles, to);
    if (centreAt(angles).distanceTo(to) > 1e-6) continue;  // not from here
    if (share < kFlat) return {};
    if (std::none_of(found.begin(), found.end(), [&](const Angles& other) {
          return turnApart(angles[0], other[0]) < 1e-4 && turnApart(angles[1], other[1]) < 1e-4 &&
                 turnApart(angles[2], other[2]) < 1e-4;
        })) {
      found.push_back(angles);
    }
  }
  return found;
}

// --- the wrist

std::optional<int> ArmSearch::wrists(const Angles& angles, const UVec3d& last) const {
  Values values = held_;
  std::copy(angles.begin(), angles.end(), values.begin());
  const double wanted = axisAt(values, 3) * last;
  int changes = 0;
  for (std::size_t i = 0; i < bends_.size(); ++i) {
    const double now = bends_[i] - wanted, next = bends_[(i + 1) % bends_.size()] - wanted;
    if (std::abs(now) < 3e-3 && std::abs(next - now) < 3e-4) return {};  // next to an extreme
    changes += (now < 0) != (next < 0);
  }
  return changes;
}

std::optional<int> ArmSearch::count(const Values& made) const {
  put(made, *position_);
  const UVec3d to =
      machine_.getMatrix(*position_, SphericalArm::jointOf(machine_, 2)) * arm_.centre;
  const UVec3d last = axisAt(made, 5);
  const auto carried = shoulders(to);
  if (!carried) return {};
  int count = 0;
  for (const Angles& angles : *carried) {
    const auto turns = wrists(angles, last);
    if (!turns) return {};
    count += *turns;
  }
  return count;
}

}  // namespace korvo::test
