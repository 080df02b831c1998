#pragma once

#include <vector>

#include "toolkit/answer/Answer.h"
#include "toolkit/answer/FreeAxes.h"

namespace korvo::checking {

/// What came of positions that were computed forward and solved again.
struct Trips {
  int tried = 0;
  int back = 0;    ///< How many reached the tool point and direction that they had.
  Residual worst;  ///< The largest misses.
};

/// Whether a machine is small enough to be asked: chains cost the square of their length.
bool isAnswering(const Machine& machine);

/// A loaded machine as its solvers see it: the chain of tool 1, which is current after a load.
///
/// Works on a copy, since solving writes the start into the elements of a machine.
struct View {
  explicit View(const Machine& loaded);

  Machine machine;
  Position zero;
  const zkin::KMachineElem* tool = nullptr;
  std::vector<StandingAxis> rotary;  ///< Root first.
  std::vector<StandingAxis> linear;  ///< As the solver tries them: counted from the tool.
  zkin::KMachine::_sUKine kine;

  /// Whether solvers may be asked at all: they try all pairs and triples of axes, which takes for
  /// ever in chains in which many elements share a few numbers. False: only `machine` is set.
  bool isSane = false;

  /// Whether the arm solver answers. Fewer joints than four are a head.
  bool isArm() const;

  /// Whether it has the joints of an arm, in an order that the solvers do not know.
  bool isUnknownArm() const;

  /// Whether three linear axes reach every point.
  bool hasTriple() const;

  /// Whether the tool is turned, but no solver carries it to a point.
  bool isLinearMissing() const;

  /// Tool point and direction at a position.
  Target targetAt(const Position& at) const;

  /// A hundred random positions inside the limits, the same ones every time, each solved from close
  /// by. What an arm is known to miss is not tried.
  Trips trips();
};

/// Whether three directions are independent for the solver.
bool areIndependent(const StandingAxis& a, const StandingAxis& b, const StandingAxis& c);

}  // namespace korvo::checking
