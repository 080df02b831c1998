#include "toolkit/solve/Refine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

using zgeo::UMatrix;
using zgeo::UVec3d;

namespace korvo {
namespace {

constexpr double kLever = 1000.0;  ///< mm: a radian counts as what it moves at this distance.

using Column = std::array<double, 6>;  ///< mm of the tip, then mm at the lever.

Column columnOf(const UVec3d& moves, const UVec3d& turns) {
  return {moves.x, moves.y, moves.z, turns.x * kLever, turns.y * kLever, turns.z * kLever};
}

double dot(const Column& a, const Column& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < 6; ++i) sum += a[i] * b[i];
  return sum;
}

/// What is missing, and what a radian of each joint adds to it.
struct Linear {
  Column missing;
  std::array<Column, 6> joints{};  ///< Zero of one that is locked.
};

UVec3d column(const UMatrix& m, int j) { return {m(0, j), m(1, j), m(2, j)}; }

/// The small turn that carries one rotation onto another.
UVec3d turnTo(const UMatrix& from, const UMatrix& to) {
  UVec3d sum;
  for (int j = 0; j < 3; ++j) sum += column(from, j) ^ column(to, j);
  return sum * 0.5;
}

Linear linearAt(const Query& query, const Values& values) {
  const JointChain& chain = query.core.chain;
  std::array<UVec3d, 6> lines, points;
  UMatrix placed;
  for (int i = 0, next = 0; i < static_cast<int>(chain.joints.size()); ++i) {
    const Joint& joint = query.core.joint(i);
    if (next < 6 && query.core.arm->joint(next) == i) {
      lines[at(next)] = joint.direction;
      placed.applyDir(lines[at(next)]);
      points[at(next++)] = placed * joint.point;
    }
    moveBy(joint, valueOf(joint, values), placed);
  }
  const UVec3d tip = placed * (chain.toolPoint - chain.toolDirection * chain.toolLength);
  UVec3d direction = chain.toolDirection;
  placed.applyDir(direction);
  Linear out;
  out.missing = columnOf(query.target.tip - tip,
                         query.frame ? turnTo(placed, *query.frame) : direction ^ query.direction);
  for (std::size_t k = 0; k < 6; ++k) {
    if (query.core.joint(query.core.arm->joint(static_cast<int>(k))).isLocked) continue;
    const UVec3d along = query.frame ? UVec3d() : direction * (lines[k] * direction);
    out.joints[k] = columnOf(lines[k] ^ (tip - points[k]), lines[k] - along);
  }
  return out;
}

/// Solves rows . x = right, rows symmetric and positive definite, by Cholesky's decomposition.
Column solved(std::array<Column, 6> rows, Column right) {
  for (std::size_t i = 0; i < 6; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      double sum = rows[i][j];
      for (std::size_t k = 0; k < j; ++k) sum -= rows[i][k] * rows[j][k];
      rows[i][j] = i == j ? std::sqrt(sum) : sum / rows[j][j];
    }
    for (std::size_t k = 0; k < i; ++k) right[i] -= rows[i][k] * right[k];
    right[i] /= rows[i][i];
  }
  for (std::size_t i = 6; i-- > 0;) {
    for (std::size_t k = i + 1; k < 6; ++k) right[i] -= rows[k][i] * right[k];
    right[i] /= rows[i][i];
  }
  return right;
}

/// The least turns (radians) that leave the least missing; `damping` is a share of the largest
/// possible.
Column stepOf(const Linear& linear, double damping) {
  std::array<Column, 6> rows{};
  Column right{};
  double trace = 0.0;
  for (std::size_t i = 0; i < 6; ++i) {
    for (std::size_t j = 0; j < 6; ++j) rows[i][j] = dot(linear.joints[i], linear.joints[j]);
    right[i] = dot(linear.joints[i], linear.missing);
    trace += rows[i][i];
  }
  for (std::size_t i = 0; i < 6; ++i) rows[i][i] += damping * trace;
  return solved(rows, right);
}

/// What was inside the limits stays there.
Values stepped(const Query& query, Values values, const Column& step) {
  for (std::size_t k = 0; k < 6; ++k) {
    const Joint& joint = query.core.joint(query.core.arm->joint(static_cast<int>(k)));
    double& value = values[at(joint.place)];
    const double to = onLimit(joint, value + step[k] * kRadToDeg);
    const bool isKept = query.limits == Limits::kept && isInside(joint, value);
    value = isKept ? std::clamp(to, joint.min, joint.max) : to;
  }
  return values;
}

double sizeOf(const Residual& residual) {
  return std::max(residual.pointMm, residual.directionRad * kLever);
}

}  // namespace

bool isFine(const Residual& residual) {
  return residual.pointMm <= 1e-10 && residual.directionRad <= 1e-11;
}

void refine(const Query& query, Values& values, Residual& residual) {
  double damping = 1e-14;
  for (int k = 0; k < 16 && !isFine(residual); ++k) {
    const Values tried = stepped(query, values, stepOf(linearAt(query, values), damping));
    const Residual left = residualOf(query, tried);
    const bool isNearer = sizeOf(left) < sizeOf(residual);
    damping *= isNearer ? 0.1 : 100.0;
    if (!isNearer) continue;
    values = tried;
    residual = left;
  }
}

}  // namespace korvo
