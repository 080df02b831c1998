#include "kinematics/inverse/Pairs.h"

#include <algorithm>
#include <cmath>

using zgeo::UVec2d;

namespace zkin {

namespace {

void bindFree(double& angle) {
  if (std::fabs(angle - kFreeAngle) < kFreeAngleTolerance) angle = 0.0;
}

double cost(const UVec2d& pair, int strategy) {
  const double first = std::fabs(pair.x) * kRadToDeg;
  const double second = std::fabs(pair.y) * kRadToDeg;
  if (strategy == 1) return first;
  if (strategy == 2) return second;
  return std::min(first, second);
}

}  // namespace

UVec2d choosePair(std::vector<UVec2d>& pairs, int strategy) {
  for (UVec2d& pair : pairs) bindFree(pair.x), bindFree(pair.y);
  const UVec2d* best = &pairs.front();
  for (const UVec2d& pair : pairs) {
    if (cost(pair, strategy) < cost(*best, strategy)) best = &pair;
  }
  return *best;
}

Increments turnsOf(const KMachineElem& first, const KMachineElem& second, const UVec2d& pair) {
  Increments result;
  result[first.getValueIndex()] = pair.x * kRadToDeg;
  result[second.getValueIndex()] = pair.y * kRadToDeg;
  return result;
}

void add(KMachineValueBase& v, const Increments& increments, int axisNum) {
  for (int i = 0; i < std::min(axisNum, kMaxAxes); ++i) v[i] += increments[i];
}

std::vector<UVec2d>& pairList() {
  thread_local std::vector<UVec2d> pairs;
  return pairs;
}

}  // namespace zkin
