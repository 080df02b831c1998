// Inverse kinematics against Orocos KDL's LMA on the table-ac machine: the same chain, the same
// targets from the same start, one run. 200 times faster is wanted. KDL's chain gets a free spindle
// joint about the tool, so that its six-dimensional targets can be met, and metres, which suit its
// weights; both start at A = -30, off the singular direction; both results are verified forward.
// Then the list of all angles against its single solves: at most 1.1 times is wanted.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <kdl/chainfksolverpos_recursive.hpp>
#include <kdl/chainiksolverpos_lma.hpp>
#include <random>
#include <string>
#include <vector>

#include "benchmarks/KdlChain.h"
#include "benchmarks/Measure.h"
#include "toolkit/Machine.h"

namespace {

using korvo::bench::kdl, korvo::bench::median, korvo::bench::secondsOf, korvo::bench::turns;
using zgeo::UVec3d;
using zkin::KMachineElem;
using zkin::KMachineValueBase;

constexpr int kTargets = 2000, kListRounds = 2000;

constexpr double kMetre = 1e-3;  ///< KDL's unit in mm's.
constexpr double kStartA = -30;  ///< Degrees.

/// The machine in metres, then the spindle about the tool line.
KDL::Chain withSpindle(const zkin::KMachine& machine) {
  KDL::Chain chain = korvo::bench::kdlChain(machine, kMetre);
  const KDL::Vector tool = kdl(machine.getToolChain(true, 1).back()->getElemAxis());
  chain.addSegment(KDL::Segment(KDL::Joint(KDL::Vector::Zero(), tool, KDL::Joint::RotAxis)));
  return chain;
}

struct Target {
  UVec3d point, dir;
  KDL::Frame frame;
};

/// Places of the tool at positions inside the travels; C within half a turn.
std::vector<Target> targets(const korvo::Machine& machine, const KDL::Chain& chain) {
  std::mt19937 random(1);
  const auto between = [&random](double low, double high) {
    return low + (high - low) * (static_cast<double>(random()) / 4294967296.0);
  };
  KDL::ChainFkSolverPos_recursive forward(chain);
  std::vector<Target> out(kTargets);
  for (Target& target : out) {
    korvo::Position v = machine.position();
    KDL::JntArray q(chain.getNrOfJoints());
    unsigned joint = 0;
    for (const KMachineElem* e : machine->getToolChain(true, 1)) {
      if (e->getValueIndex() < 0) continue;
      const double value =
          between(e->hasMin() ? e->getMin() : -180, e->hasMax() ? e->getMax() : 180);
      v[e->getValueIndex()] = value;
      q(joint++) = turns(*e) ? value * M_PI / 180 : value * kMetre;
    }
    machine->getTool(v, target.point, target.dir, 1);
    forward.JntToCart(q, target.frame);
  }
  return out;
}

void compare(const korvo::Machine& machine, const KDL::Chain& chain,
             const std::vector<Target>& all) {
  const korvo::Position start = machine.position({{"A", kStartA}});
  std::vector<korvo::Position> ours(kTargets, start);
  std::vector<KDL::JntArray> theirs(kTargets, KDL::JntArray(chain.getNrOfJoints()));
  KDL::JntArray theirStart(chain.getNrOfJoints());
  theirStart(1) = kStartA * M_PI / 180;  // the chain is C, A, X, Y, Z
  std::vector<int> codes(kTargets), theirCodes(kTargets);
  const auto solveOurs = [&] {
    for (int i = 0; i < kTargets; ++i) {
      codes[i] = machine->getConfigPlus(start, all[i].point, all[i].dir, ours[i]);
    }
  };
  solveOurs();
  const double ourTime = secondsOf(solveOurs);
  KDL::ChainIkSolverPos_LMA lma(chain, 1e-8);
  const double theirTime = secondsOf([&] {
    for (int i = 0; i < kTargets; ++i)
      theirCodes[i] = lma.CartToJnt(theirStart, all[i].frame, theirs[i]);
  });
  int solved = 0, theirSolved = 0;
  double point = 0, dir = 0;
  KDL::ChainFkSolverPos_recursive forward(chain);
  for (int i = 0; i < kTargets; ++i) {
    UVec3d p, n;
    machine->getTool(ours[i], p, n, 1);
    solved += codes[i] == 0;
    point = std::max(point, (p - all[i].point).norm());
    dir = std::max(dir, (n - all[i].dir).norm());
    KDL::Frame f;
    forward.JntToCart(theirs[i], f);
    theirSolved += theirCodes[i] >= 0 && (f.p - all[i].frame.p).Norm() < 1e-6;
  }
  std::printf(
      "table-ac: %.2f us a target, %d of %d solved, within %.1e mm and %.1e rad; LMA %.1f us, %d "
      "solved; ratio %.0f\n",
      ourTime / kTargets * 1e6, solved, kTargets, point, dir, theirTime / kTargets * 1e6,
      theirSolved, theirTime / ourTime);
}

/// Nine starts for each rotary axis: the list, and as many single solves.
void compareList(korvo::Machine& machine, const std::vector<Target>& all) {
  const double angles[] = {0, -360, 360, -180, 180, -90, 90, -270, 270};
  int rotary[2] = {}, found = 0;
  for (KMachineElem* e : {machine->getElemByName(L"A"), machine->getElemByName(L"C")}) {
    e->setMin(0, false), e->setMax(0, false);
    rotary[found++] = e->getValueIndex();
  }
  std::vector<korvo::Position> seeds(81, machine.position());
  for (int i = 0; i < 81; ++i) {
    seeds[i][rotary[1]] = angles[i % 9];  // C is the first of the chain
    seeds[i][rotary[0]] = angles[i / 9];
  }
  std::vector<double> listTime, ratio;
  std::size_t entries = 0;
  korvo::Position out = machine.position();
  std::vector<KMachineValueBase*> list;
  for (int round = 0; round < kListRounds; ++round) {
    const UVec3d dir = all[round].dir;
    const auto solveAll = [&] {
      for (const auto& seed : seeds) machine->getConfigPlus(seed, {}, dir, out);
    };
    solveAll();  // who comes second finds the processor trained
    listTime.push_back(secondsOf([&] { machine->getPossibleAngles(dir, list, 1); }));
    ratio.push_back(listTime.back() / secondsOf(solveAll));
    entries += list.size();
    KMachineValueBase::_release(list);
  }
  std::printf("list of 81 starts: %.1f us, %.1f entries, ratio to its single solves %.2f\n",
              median(listTime) * 1e6, static_cast<double>(entries) / kListRounds, median(ratio));
}

}  // namespace

int main() {
  korvo::Loaded loaded = korvo::load(std::string(KORVO_MACHINES "/table-ac.def"));
  if (!loaded) return 1;
  const KDL::Chain chain = withSpindle(**loaded.machine);
  const std::vector<Target> all = targets(*loaded.machine, chain);
  compare(*loaded.machine, chain, all);
  compareList(*loaded.machine, all);
}
