// All positions of a target: of five axes against the closed form of that one machine, of a
// six-joint arm, all eight branches verified, against one forward computation of KDL.
#include <algorithm>
#include <cmath>
#include <kdl/chainfksolverpos_recursive.hpp>
#include <memory>
#include <numbers>

#include "benchmarks/Bench.h"
#include "benchmarks/Machines.h"
#include "tests/support/KdlChain.h"
#include "toolkit/solve/Solver.h"

namespace korvo::bench {
namespace {

using test::kdl, test::kdlChain;

constexpr int kTargets = 1000, kPairs = 61;
constexpr double kDegree = std::numbers::pi / 180;

Machine limited(const char* name, double degrees) {
  Machine machine = example(name);
  limitTurns(machine, degrees);
  return machine;
}

struct FiveAxes {
  Machine machine = limited("table-ac", 360);
  Solver solver{machine};
  std::vector<Aim> all = aims(machine, positions(machine, kTargets));
  TableAc byHand;
  std::vector<Solution> ours;

  /// Whether both have the same positions, in whatever order.
  bool agree() const {
    const auto isOurs = [this](const TableAc::Entry& e) {
      const Position at =
          machine.position({{"X", e.x}, {"Y", e.y}, {"Z", e.z}, {"A", e.a}, {"C", e.c}});
      return std::any_of(ours.begin(), ours.end(), [&](const Solution& s) {
        for (int k = 0; k < at.size(); ++k) {
          if (std::abs(s.values[static_cast<std::size_t>(k)] - at[k]) > 1e-7) return false;
        }
        return true;
      });
    };
    return static_cast<std::size_t>(byHand.count) == ours.size() &&
           std::all_of(byHand.entries.begin(), byHand.entries.begin() + byHand.count, isOurs);
  }
};

Pair fiveAxes() {
  const auto w = std::make_shared<FiveAxes>();
  Pair pair;
  pair.calls = kTargets;
  for (const Aim& aim : w->all) {
    w->byHand.solve(aim.tip, aim.direction);
    w->solver.solve(Target{aim.tip, aim.direction}, {}, w->ours);
    if (!w->agree()) pair.disagreement = "results disagree: other positions than by hand";
  }
  pair.ours = [w] {
    for (const Aim& aim : w->all) {
      w->solver.solve(Target{aim.tip, aim.direction}, {}, w->ours);
      use(w->ours.empty() ? 0 : w->ours[0].values[0]);
    }
  };
  pair.peer = [w] {
    for (const Aim& aim : w->all) {
      w->byHand.solve(aim.tip, aim.direction);
      use(w->byHand.entries[0].x);
    }
  };
  return pair;
}

struct Arm {
  Machine machine = limited("arm-irb2400", 180);
  Solver solver{machine};
  KDL::Chain chain = kdlChain(*machine);
  KDL::ChainFkSolverPos_recursive forward{chain};
  std::vector<FrameTarget> targets;
  std::vector<KDL::JntArray> joints;
  std::vector<Solution> ours;
  KDL::Frame frame;

  /// Keeps the frames that all eight branches reach.
  void add(const Position& at) {
    KDL::JntArray q(6);
    for (unsigned k = 0; k < 6; ++k) q(k) = at[static_cast<int>(k)] * kDegree;
    zgeo::UVec3d tip, direction;
    machine->getTool(at, tip, direction, 1);
    FrameTarget target{machine->getMatrix_H2T(at)};
    target.frame.setOrigin(tip);
    solver.solve(target, {}, ours);
    if (ours.size() != 8) return;
    targets.push_back(target);
    joints.push_back(q);
  }

  /// Largest distance, in mm, of KDL's tip at a solution from the target's.
  double worst() {
    double largest = 0;
    for (const FrameTarget& target : targets) {
      solver.solve(target, {}, ours);
      for (const Solution& s : ours) {
        KDL::JntArray q(6);
        for (unsigned k = 0; k < 6; ++k) q(k) = s.values[k] * kDegree;
        forward.JntToCart(q, frame);
        largest = std::max(largest, (frame.p - kdl(target.frame.getOrigin())).Norm());
      }
    }
    return largest;
  }
};

Pair arm() {
  const auto w = std::make_shared<Arm>();
  for (const Position& at : positions(w->machine, kTargets)) w->add(at);
  Pair pair;
  pair.calls = static_cast<double>(w->targets.size());
  if (w->targets.empty()) pair.disagreement = "results disagree: no frame has eight positions";
  if (const double worst = w->worst(); worst > 1e-6)
    pair.disagreement = disagree("KDL's tip", worst);
  pair.ours = [w] {
    for (const FrameTarget& target : w->targets) {
      w->solver.solve(target, {}, w->ours);
      use(w->ours[0].values[0]);
    }
  };
  pair.peer = [w] {
    for (const KDL::JntArray& q : w->joints) {
      w->forward.JntToCart(q, w->frame);
      use(w->frame.p.x());
    }
  };
  return pair;
}

}  // namespace

void addSolver() {
  add(Row{"solver/five-axis", "Solver, all positions of a five-axis target",
          "the machine's closed form by hand", atMost(10), fiveAxes, kPairs});
  add(Row{"solver/arm", "Solver, all eight positions of an arm's frame",
          "one KDL ChainFkSolverPos_recursive", atMost(4), arm, kPairs});
}

}  // namespace korvo::bench
