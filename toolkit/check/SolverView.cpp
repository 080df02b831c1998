#include "toolkit/check/SolverView.h"

#include <algorithm>
#include <cmath>
#include <random>

#include "platform/zgeo/UAlgo.h"
#include "toolkit/answer/ArmLayout.h"

using zgeo::UAlgo;
using zgeo::UVec3d;
using zkin::KMachineElem;

namespace korvo::checking {
namespace {

// Twice what a position has values, and ten times what real machines have.
constexpr std::ptrdiff_t kMostAxes = 24;
constexpr int kMostElements = 500;

constexpr int kArmJoints = 4;

}  // namespace

bool isAnswering(const Machine& machine) { return machine->getElemNumber() <= kMostElements; }

View::View(const Machine& loaded) : machine(loaded), zero(machine.position()) {
  const std::vector<const KMachineElem*> chain = machine->getToolChain(false, -1);
  const auto isMoving = [](const KMachineElem* e) { return e->getValueIndex() >= 0; };
  isSane = !chain.empty() && std::count_if(chain.begin(), chain.end(), isMoving) <= kMostAxes;
  if (!isSane) return;
  tool = chain.back();
  rotary = freeAxes(*machine, zero, KMachineElem::KMET_TYPE_AROT);
  linear = freeAxes(*machine, zero, KMachineElem::KMET_TYPE_ALIN);
  std::reverse(linear.begin(), linear.end());
  kine = machine->analysis(machine->getCurrentTool());
}

bool View::isArm() const {
  return kine.kinematicClass == 5 && kine.armType == 1 && std::ssize(rotary) >= kArmJoints;
}

bool View::isUnknownArm() const {
  return kine.kinematicClass == 5 && !isArm() && std::ssize(rotary) >= kArmJoints;
}

bool areIndependent(const StandingAxis& a, const StandingAxis& b, const StandingAxis& c) {
  UVec3d xyz;
  return UAlgo::_solveXYZ(UVec3d(), a.direction, b.direction, c.direction, xyz) == 0;
}

bool View::hasTriple() const {
  for (auto a = linear.begin(); a != linear.end(); ++a) {
    for (auto b = a + 1; b != linear.end(); ++b) {
      for (auto c = b + 1; c != linear.end(); ++c) {
        if (areIndependent(*a, *b, *c)) return true;
      }
    }
  }
  return false;
}

bool View::isLinearMissing() const {
  return !rotary.empty() && !isArm() && !isUnknownArm() && !hasTriple();
}

Target View::targetAt(const Position& at) const {
  Target target;
  machine->getTool(at, target.tip, target.direction, -1);
  return target;
}

// --- there and back

namespace {

class Positions {
 public:
  explicit Positions(const Machine& machine) : machine_(machine) {}

  Position inside() {
    Position at = machine_.position();
    for (int i = 0; i < at.size(); ++i) {
      const KMachineElem& axis = *machine_->getAxisElem(i + 1);
      const bool isRotary = axis.getElemType() == KMachineElem::KMET_TYPE_AROT;
      const double range = isRotary ? 180.0 : 1000.0, most = isRotary ? 720.0 : 20'000.0;
      const double low = bounded(axis.hasMin() ? axis.getMin() : -range, most);
      const double high = bounded(axis.hasMax() ? axis.getMax() : range, most);
      at[i] = low + (high - low) * share();
    }
    return at;
  }

  // Near enough for the same branch of every solver.
  Position beside(const Position& from) {
    Position at = from;
    for (int i = 0; i < at.size(); ++i) at[i] += 10.0 * share() - 5.0;
    return at;
  }

 private:
  static double bounded(double limit, double most) {
    return std::isfinite(limit) ? std::clamp(limit, -most, most) : 0.0;
  }

  // From 0 to 1. The generator's sequence is fixed by the standard, that of distributions is not.
  double share() { return static_cast<double>(random_()) / 4294967295.0; }

  const Machine& machine_;
  std::mt19937 random_{1};
};

void add(Trips& trips, const Residual& residual) {
  ++trips.tried;
  if (residual.isReached()) ++trips.back;
  trips.worst.pointMm = std::max(trips.worst.pointMm, residual.pointMm);
  trips.worst.directionRad = std::max(trips.worst.directionRad, residual.directionRad);
}

}  // namespace

Trips View::trips() {
  constexpr int kTrips = 100;
  Trips trips;
  Positions positions(machine);
  for (int i = 0; i < kTrips; ++i) {
    const Position at = positions.inside(), start = positions.beside(at);
    const Target target = targetAt(at);
    if (isArm() && !ArmLayout(*machine).isTargetSolvable(target, start)) continue;
    Position out = start;
    machine->getConfigPlus(start, target.tip, target.direction, out);
    add(trips, residual(machine, out, target));
  }
  return trips;
}

}  // namespace korvo::checking
