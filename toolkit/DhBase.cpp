#include "toolkit/DhBase.h"

#include <cmath>
#include <vector>

using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

namespace korvo {
namespace {

// Below this a direction (or an offset, mm) says nothing about a turn: it is rounding.
constexpr double kNoTurn = 1e-6;

// The same axis line twice: from the base of the table, and from the machine frame.
struct Joint {
  UVec3d z, origin;
};
struct JointPair {
  Joint table, machine;
};

std::vector<JointPair> jointsOf(const KMachine& machine, int tool) {
  std::vector<JointPair> joints;
  UMatrix product;
  for (const KMachineElem* e : machine.getToolChain(true, tool)) {
    product = product * KMachineElem::_transitionMatrix(e->getDHmRef());
    if (e->getElemType() == KMachineElem::KMET_TYPE_PART) continue;
    UVec3d z(0, 0, 1);
    product.applyDir(z);
    joints.push_back(
        {{z, product.getOrigin()}, {e->getElemAxis().normalised(), e->getElemPivot()}});
  }
  return joints;
}

// The vectors that say how the table is turned about the first line: another direction, else an
// offset sideways.
struct Sides {
  UVec3d table{1, 0, 0}, machine{1, 0, 0};
  double turn = 0.0;
};

void takeIfWider(Sides& best, const JointPair& first, const UVec3d& table, const UVec3d& machine) {
  const double turn = (first.machine.z ^ machine).norm();
  if (turn > best.turn) best = {table, machine, turn};
}

Sides sidesOf(const std::vector<JointPair>& joints) {
  const JointPair& first = joints.front();
  Sides best;
  for (const JointPair& j : joints) takeIfWider(best, first, j.table.z, j.machine.z);
  if (best.turn > kNoTurn) return best;
  for (const JointPair& j : joints) {
    takeIfWider(best, first, j.table.origin - first.table.origin,
                j.machine.origin - first.machine.origin);
  }
  return best.turn > kNoTurn ? best : Sides();
}

// Right-handed frame at the joint: its Z along the line, its X towards `side`.
UMatrix frameOf(const Joint& joint, const UVec3d& side) {
  UVec3d y = joint.z ^ side;
  if (y.norm() < kNoTurn) y = joint.z ^ UVec3d(0, 1, 0);
  y.normalise();
  const UVec3d x = y ^ joint.z;
  const UVec3d &z = joint.z, &p = joint.origin;
  UMatrix frame;
  frame.set(x.x, y.x, z.x, p.x, x.y, y.y, z.y, p.y, x.z, y.z, z.z, p.z, 0, 0, 0, 1);
  return frame;
}

}  // namespace

std::optional<UMatrix> dhBase(const KMachine& machine, int tool) {
  const std::vector<JointPair> joints = jointsOf(machine, tool);
  if (joints.empty()) return {};
  for (const JointPair& j : joints) {
    if (!(j.machine.z.norm2() > 0.0)) return {};
  }
  const Sides sides = sidesOf(joints);
  return frameOf(joints.front().machine, sides.machine) *
         frameOf(joints.front().table, sides.table).inverse();
}

}  // namespace korvo
