#include "toolkit/answer/Turns.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "toolkit/answer/Candidates.h"
#include "toolkit/answer/FreeAxes.h"

using zkin::KMachineElem;

namespace korvo {
namespace {

constexpr double kTurn = 360.0;
constexpr double kMostTurnsOfAxis = 100.0;
constexpr double kOnLimit = 1e-9;

struct Range {
  double low, high;
};

std::vector<Range> rangesOf(const KMachineElem& axis, double from) {
  constexpr double kEndless = std::numeric_limits<double>::infinity();
  const double low = axis.hasMin() ? axis.getMin() : -kEndless;
  const double high = axis.hasMax() ? axis.getMax() : kEndless;
  if (high - low <= kMostTurnsOfAxis * kTurn) return {{low, high}};
  return {{std::max(low, -kTurn), std::min(high, kTurn)},
          {std::max(low, from - kTurn), std::min(high, from + kTurn)}};
}

// Counted in whole numbers: far out a turn more may be the same floating point number.
void addTurns(const Range& range, double value, std::vector<double>& out) {
  const double first = std::ceil((range.low - value - kOnLimit) / kTurn);
  const double count = std::floor((range.high - value + kOnLimit) / kTurn) - first + 1;
  for (int k = 0; k < count; ++k) {
    const double turned = value + (first + k) * kTurn;
    const auto isSame = [&](double known) { return std::abs(known - turned) < kTurn / 2; };
    if (std::none_of(out.begin(), out.end(), isSame)) out.push_back(turned);
  }
}

std::vector<double> valuesOf(const KMachineElem& axis, double value, double from) {
  std::vector<double> values;
  for (const Range& range : rangesOf(axis, from)) addTurns(range, value, values);
  if (values.empty()) values.push_back(value);
  return values;
}

const KMachineElem& axisAt(const Machine& machine, int place) {
  return *machine->getAxisElem(place + 1);
}

}  // namespace

std::vector<int> turningPlaces(const Machine& machine, bool isArm) {
  std::vector<int> places;
  const Position zero = machine.position();
  const auto free = freeAxes(*machine, zero, KMachineElem::KMET_TYPE_AROT);
  const std::size_t joints = isArm ? std::min<std::size_t>(free.size(), 3) : free.size();
  places.reserve(joints);
  for (std::size_t i = 0; i < joints; ++i) places.push_back(free[i].place());
  if (!isArm) return places;
  for (const StandingAxis& axis : wristAxes(*machine, zero)) {
    const bool isKnown = std::find(places.begin(), places.end(), axis.place()) != places.end();
    if (!isKnown && !axis.element->isLocked()) places.push_back(axis.place());
  }
  return places;
}

double mostTurns(const Machine& machine, const std::vector<int>& places, const Position& from) {
  double most = 1.0;
  for (const int place : places) {
    double count = 0.0;
    for (const Range& range : rangesOf(axisAt(machine, place), from[place])) {
      count += std::max(std::floor((range.high - range.low) / kTurn) + 1, 1.0);
    }
    most *= count;
  }
  return most;
}

std::vector<Position> turnsOf(const Machine& machine, const std::vector<int>& places,
                              const Position& from, const Position& at) {
  std::vector<Position> all{at};
  for (const int place : places) {
    const auto values = valuesOf(axisAt(machine, place), at[place], from[place]);
    std::vector<Position> turned;
    for (const Position& position : all) {
      for (const double value : values) {
        turned.push_back(position);
        turned.back()[place] = value;
      }
    }
    all = std::move(turned);
  }
  for (Position& position : all) bringInside(machine, from, position);
  return all;
}

void unwind(const Machine& machine, const std::vector<int>& places, const Position& from,
            Position& at) {
  for (const int place : places) {
    at[place] += kTurn * std::round((from[place] - at[place]) / kTurn);
  }
  bringInside(machine, from, at);
}

bool Met::isNew(const Position& at) {
  std::vector<double> key;
  key.reserve(static_cast<std::size_t>(at.size()));
  for (int i = 0; i < at.size(); ++i) key.push_back(std::round(at[i] * 1e4) + 0.0);
  return keys_.insert(std::move(key)).second;
}

}  // namespace korvo
