// Where the tool is, against Orocos KDL: its own product of exponentials over the same lines.
#include <cmath>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>
#include <kdl/chainfksolverpos_recursive.hpp>

#include "kinematics/KMachine.h"
#include "tests/support/KdlChain.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/Matchers.h"

namespace korvo::test {
namespace {

using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

/// Points of lines that are almost parallel lie up to 1e5 mm out; each of ten turns about such a
/// line rounds at 1e-11 mm.
constexpr double kRoundOff = 1e-8;

/// Values in the order of the chain, angles in radians.
KDL::JntArray jointsOf(const KMachine& machine, const Position& v, unsigned count) {
  KDL::JntArray q(count);
  unsigned joint = 0;
  for (const KMachineElem* e : machine.getToolChain(true, 1)) {
    if (e->getValueIndex() < 0) continue;
    const double value = (*v)[e->getValueIndex()];
    q(joint++) = turns(*e) ? value * std::numbers::pi / 180 : value;
  }
  return q;
}

KDL::Frame frameByKdl(const KMachine& machine, const Position& v) {
  const KDL::Chain chain = kdlChain(machine);
  KDL::ChainFkSolverPos_recursive solver(chain);
  KDL::Frame frame;
  const int code = solver.JntToCart(jointsOf(machine, v, chain.getNrOfJoints()), frame);
  RC_ASSERT(code >= 0);
  return frame;
}

RC_GTEST_PROP(KMachineKdl, FindsTheToolWhereAChainOfKdlHasIt, ()) {
  const auto machine = loadMachine(*anyMachine());
  const Position v = positionOf(*machine, *anyPosition(*machine));
  const KDL::Frame frame = frameByKdl(*machine, v);

  // KDL's frame is parallel to the machine's at zero and ends at the tool point.
  const std::vector<const KMachineElem*> chain = machine->getToolChain(true, 1);
  const UVec3d directionAtZero = chain.back()->getElemAxis();
  const KDL::Vector direction = frame.M * kdl(directionAtZero);
  UVec3d point, pointing;
  RC_ASSERT(machine->getTool(*v, point, pointing, 1));
  RC_ASSERT(isNear(point, UVec3d(frame.p.x(), frame.p.y(), frame.p.z()), kRoundOff));
  RC_ASSERT(isNear(pointing, UVec3d(direction.x(), direction.y(), direction.z()), 1e-12));

  const UMatrix tool = machine->getMatrix_H2T(*v);
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      RC_ASSERT(std::abs(tool(row, column) - frame.M(row, column)) <= 1e-12);
    }
  }
}

}  // namespace
}  // namespace korvo::test
