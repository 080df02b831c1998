#include "tests/solve/DenseSearch.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "tests/solve/Machines.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValueBase;

constexpr double kDegree = std::numbers::pi / 180.0;
constexpr double kInf = std::numeric_limits<double>::infinity();

constexpr double kCoarse = 2.0;  // half widths of cells, degrees
constexpr double kFine = 0.02;
constexpr std::size_t kSuspect = 4000;  // cells: a curve of solutions, or a narrow turn
constexpr std::size_t kMost = 60000;
constexpr double kReachable = 1e-9;  // rad: what a solver lets a direction miss
constexpr double kRounding = 1e-13;  // rad
constexpr double kFlat = 1e-3;       // least singular value where branches stand apart
constexpr double kDependent = 1e-6;  // volume of the linear directions

double turnApart(double a, double b) { return std::abs(std::remainder(a - b, 360.0)); }

}  // namespace

Target tipAt(const KMachine& machine, const KMachineValueBase& v) {
  Target target;
  machine.getTool(v, target.tip, target.direction, 0);
  target.tip -= target.direction * machine.getTHELength(0);
  return target;
}

Target tipAt(const KMachine& machine, const Values& values) {
  return tipAt(machine, *positionOf(machine, {values.begin(), values.end()}));
}

DenseSearch::DenseSearch(const KMachine& machine, const Values& start, std::vector<int> held)
    : machine_(machine), start_(start), position_(positionOf(machine)) {
  for (const KMachineElem* e : machine.getToolChain(false, 0)) {
    const bool isRotary = e->getElemType() == KMachineElem::KMET_TYPE_AROT;
    const bool isLinear = e->getElemType() == KMachineElem::KMET_TYPE_ALIN;
    const int place = e->getValueIndex();
    if (!(isRotary || isLinear) || place < 0) continue;
    const Axis axis{place, e->hasMin() ? e->getMin() : -kInf, e->hasMax() ? e->getMax() : kInf};
    const double value = start[static_cast<std::size_t>(place)];
    if (e->isLocked() || std::find(held.begin(), held.end(), place) != held.end()) {
      isHeldOutside_ = isHeldOutside_ || value < axis.min || value > axis.max;
    } else {
      (isRotary ? rotary_ : linear_).push_back(axis);
    }
  }
  for (const Axis& axis : linear_) start_[static_cast<std::size_t>(axis.place)] = 0.0;
  first_ = firstCells();
}

Target DenseSearch::at(Values values) const {
  for (int i = 0; i < position_->size(); ++i) {
    (*position_)[i] = values[static_cast<std::size_t>(i)];
  }
  return tipAt(machine_, *position_);
}

Target DenseSearch::at(const Angles& angles) const {
  Values values = start_;
  for (std::size_t i = 0; i < rotary_.size(); ++i) {
    values[static_cast<std::size_t>(rotary_[i].place)] = angles[i];
  }
  return at(values);
}

// --- directions

std::vector<DenseSearch::Cell> DenseSearch::firstCells() const {
  const int count = static_cast<int>(180 / kCoarse);
  std::vector<Cell> cells;
  for (int i = 0; i < (rotary_.empty() ? 1 : count); ++i) {
    for (int j = 0; j < (rotary_.size() < 2 ? 1 : count); ++j) {
      const Angles middle{kCoarse * (2 * i + 1), kCoarse * (2 * j + 1)};
      cells.push_back({middle, at(middle).direction});
    }
  }
  return cells;
}

bool DenseSearch::canHold(const Cell& cell, double half, const UVec3d& to) const {
  const double reach = static_cast<double>(rotary_.size()) * half * kDegree;
  return radiansBetween(cell.direction, to) <= reach * 1.0001 + 10 * kReachable;
}

std::vector<DenseSearch::Cell> DenseSearch::cut(const std::vector<Cell>& cells, double half,
                                                const UVec3d& to) const {
  std::vector<Cell> smaller;
  for (const Cell& cell : cells) {
    for (const double i : {-half, half}) {
      for (const double j : {-half, half}) {
        if (rotary_.size() < 2 && j > 0) continue;
        Cell part{{cell.middle[0] + i, cell.middle[1] + j}, {}};
        part.direction = at(part.middle).direction;
        if (canHold(part, half, to)) smaller.push_back(part);
      }
    }
  }
  return smaller;
}

/// Whether places all over the cells lead to as many solutions.
bool DenseSearch::isContinuous(const std::vector<Cell>& cells, const UVec3d& to) const {
  constexpr std::size_t kTried = 24;
  std::vector<Angles> found;
  for (std::size_t i = 0; i < kTried; ++i) {
    const Lowest lowest = followedDown(cells[i * cells.size() / kTried].middle, to);
    const bool isNew = std::none_of(found.begin(), found.end(), [&](const Angles& other) {
      return turnApart(lowest.angles[0], other[0]) < 0.1 &&
             turnApart(lowest.angles[1], other[1]) < 0.1;
    });
    if (lowest.miss < kReachable && isNew) found.push_back(lowest.angles);
  }
  return found.size() > 8;
}

DenseSearch::Lowest DenseSearch::followedDown(Angles angles, const UVec3d& to) const {
  constexpr double kStep = 1e-3;  // degrees
  Lowest lowest{angles, radiansBetween(at(angles).direction, to), 1.0};
  for (int round = 0; round < 80; ++round) {
    UVec3d d[2];
    for (std::size_t i = 0; i < rotary_.size(); ++i) {
      Angles more = lowest.angles, less = lowest.angles;
      more[i] += kStep, less[i] -= kStep;
      d[i] = (at(more).direction - at(less).direction) / (2 * kStep * kDegree);
    }
    const UVec3d miss = to - at(lowest.angles).direction;
    const double a = d[0] * d[0], b = d[0] * d[1], c = d[1] * d[1];
    lowest.least = rotary_.size() < 2
                       ? std::sqrt(a)
                       : std::sqrt(std::max(0.0, (a + c - std::hypot(a - c, 2 * b)) / 2));
    const double raised = 1e-15 * (a + c) + 1e-300;
    const double p = a + raised, q = c + raised;
    const double determinant = p * q - b * b;
    if (!(determinant > 0)) break;
    const double step[2] = {(q * (d[0] * miss) - b * (d[1] * miss)) / determinant / kDegree,
                            (p * (d[1] * miss) - b * (d[0] * miss)) / determinant / kDegree};
    double share = std::min(1.0, 3.0 / (std::hypot(step[0], step[1]) + 1e-300));
    bool isBetter = false;
    for (int halving = 0; halving < 12 && !isBetter; ++halving, share /= 2) {
      const Angles next{lowest.angles[0] + share * step[0], lowest.angles[1] + share * step[1]};
      const double left = radiansBetween(at(next).direction, to);
      isBetter = left < lowest.miss;
      if (isBetter) lowest.angles = next, lowest.miss = left;
    }
    if (!isBetter) break;
  }
  return lowest;
}

DenseSearch::Result DenseSearch::search(const Target& target) const {
  if (isHeldOutside_) return {};
  const UVec3d to = target.direction.normalised();
  std::vector<Cell> cells;
  std::copy_if(first_.begin(), first_.end(), std::back_inserter(cells),
               [&](const Cell& cell) { return canHold(cell, kCoarse, to); });
  bool isSuspected = false;
  for (double half = kCoarse / 2; half > kFine / 2 && !rotary_.empty(); half /= 2) {
    cells = cut(cells, half, to);
    if (!isSuspected && cells.size() > kSuspect) {
      isSuspected = true;
      if (isContinuous(cells, to)) return {{}, true};
    }
    if (cells.size() > kMost) return {{}, true};
  }
  std::vector<Lowest> lowest;
  for (const Cell& cell : cells) {
    const Lowest l = followedDown(cell.middle, to);
    const double same = l.least < kFlat ? 1e-4 / kDegree : 1e-6;
    const bool isNew = std::none_of(lowest.begin(), lowest.end(), [&](const Lowest& other) {
      return turnApart(l.angles[0], other.angles[0]) < same &&
             turnApart(l.angles[1], other.angles[1]) < same;
    });
    if (l.miss < 5 * kReachable && isNew) lowest.push_back(l);
  }
  if (lowest.size() > 8) return {{}, true};  // all along a curve
  Result result;
  for (const Lowest& l : lowest) addTurns(l, target, result.found);
  return result;
}

// --- turns and points

void DenseSearch::addTurns(const Lowest& lowest, const Target& target,
                           std::vector<Found>& out) const {
  Found found;
  found.values = start_;
  found.tolerance = lowest.least < kFlat ? 1e-4 / kDegree : 1e-6;
  found.tolerancePerMm = 3 * found.tolerance * kDegree + 1e-12;
  found.isAtEdge = lowest.miss > 100 * kRounding;
  for (std::size_t i = 0; i < rotary_.size(); ++i) {
    found.values[static_cast<std::size_t>(rotary_[i].place)] = lowest.angles[i];
  }
  found.isCarried = carry(target, found);
  if (found.isCarried && !isInside(found, target.tip)) return;
  const std::vector<Turn> first = turnsOf(0, lowest.angles[0], found.tolerance);
  const std::vector<Turn> second = turnsOf(1, lowest.angles[1], found.tolerance);
  for (const Turn& t0 : first) {
    for (const Turn& t1 : second) {
      Found one = found;
      one.isAtEdge = found.isAtEdge || t0.isAtEdge || t1.isAtEdge;
      if (!rotary_.empty()) one.values[static_cast<std::size_t>(rotary_[0].place)] = t0.value;
      if (rotary_.size() > 1) one.values[static_cast<std::size_t>(rotary_[1].place)] = t1.value;
      out.push_back(one);
    }
  }
}

/// By measured displacements; nothing without three linear axes.
DenseSearch::Ways DenseSearch::waysOf(const Values& values) const {
  constexpr double kWay = 1024.0;
  Ways ways;
  if (linear_.size() != 3) return ways;
  Values still = values;
  for (const Axis& axis : linear_) still[static_cast<std::size_t>(axis.place)] = 0.0;
  const UVec3d tip = at(still).tip;
  double product = 1.0;
  for (std::size_t i = 0; i < 3; ++i) {
    Values moved = still;
    moved[static_cast<std::size_t>(linear_[i].place)] = kWay;
    ways.unit[i] = (at(moved).tip - tip) / kWay;
    product *= ways.unit[i].norm();
  }
  ways.volume = ways.unit[0] * (ways.unit[1] ^ ways.unit[2]);
  ways.share = product > 0 ? std::abs(ways.volume) / product : 0.0;
  return ways;
}

bool DenseSearch::areIndependent(const Values& values) const {
  return waysOf(values).share > kDependent;
}

/// The linear values by what the tip misses, the rest twice more.
bool DenseSearch::carry(const Target& target, Found& found) const {
  const Ways ways = waysOf(found.values);
  if (!(ways.share > kDependent)) return false;
  const UVec3d* const u = ways.unit;
  for (int round = 0; round < 3; ++round) {
    const UVec3d way = target.tip - at(found.values).tip;
    const double by[3] = {way * (u[1] ^ u[2]) / ways.volume, u[0] * (way ^ u[2]) / ways.volume,
                          u[0] * (u[1] ^ way) / ways.volume};
    for (std::size_t i = 0; i < 3; ++i) {
      found.values[static_cast<std::size_t>(linear_[i].place)] += by[i];
    }
  }
  found.tolerancePerMm /= ways.share;
  return true;
}

bool DenseSearch::isCarriedInside(const Target& target, double clear, Values& values) const {
  Found found;
  found.values = values;
  for (const Axis& axis : linear_) found.values[static_cast<std::size_t>(axis.place)] = 0.0;
  if (!carry(target, found)) return false;
  values = found.values;
  return std::all_of(linear_.begin(), linear_.end(), [&](const Axis& axis) {
    const double value = values[static_cast<std::size_t>(axis.place)];
    return value > axis.min + clear && value < axis.max - clear;
  });
}

/// Whether the linear values are inside their limits; those at a limit are told.
bool DenseSearch::isInside(Found& found, const UVec3d& tip) const {
  double size = 1000.0 + tip.norm();
  for (const Axis& axis : linear_) {
    size += std::abs(found.values[static_cast<std::size_t>(axis.place)]);
  }
  const double tolerance = found.tolerancePerMm * size;
  for (const Axis& axis : linear_) {
    const double value = found.values[static_cast<std::size_t>(axis.place)];
    const double over = std::max(axis.min - value, value - axis.max);
    if (over > tolerance) return false;
    if (over > -tolerance) found.isAtEdge = true;
  }
  return true;
}

/// The values that differ by full turns and are inside what is listed; 0 for an axis that is not
/// there.
std::vector<DenseSearch::Turn> DenseSearch::turnsOf(std::size_t i, double degrees,
                                                    double tolerance) const {
  if (i >= rotary_.size()) return {{0.0, false}};
  const Axis& axis = rotary_[i];
  const double start = start_[static_cast<std::size_t>(axis.place)];
  const bool isEndless = !std::isfinite(axis.max - axis.min);
  const double low = isEndless ? std::max(axis.min, start - 360) : axis.min;
  const double high = isEndless ? std::min(axis.max, start + 360) : axis.max;
  std::vector<Turn> turns;
  double value = degrees + 360 * std::ceil((low - tolerance - degrees) / 360);
  for (; value <= high + tolerance; value += 360) {
    turns.push_back({value, value < low + tolerance || value > high - tolerance});
  }
  return turns;
}

}  // namespace korvo::test
