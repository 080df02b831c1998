// Which position puts the tool there: one, and all from a grid of starts, beside an iterative
// solver and beside the formulas of the one machine. LMA is given a chain with a free spindle joint
// about the tool, so that its six-dimensional frames can be met by five axes, and metres, which
// suit its weights; starts stand off the singular direction. All results are verified forward.
#include <algorithm>
#include <cmath>
#include <kdl/chainfksolverpos_recursive.hpp>
#include <kdl/chainiksolverpos_lma.hpp>
#include <memory>
#include <numbers>

#include "benchmarks/Bench.h"
#include "benchmarks/Machines.h"
#include "benchmarks/Scratch.h"
#include "tests/support/KdlChain.h"

namespace korvo::bench {
namespace {

using test::kdl, test::kdlChain, test::turns;
using zgeo::UVec3d;
using zkin::KMachineElem, zkin::KMachineValueBase;

constexpr double kMetre = 1e-3;  // KDL's unit in mm's
constexpr double kDegree = std::numbers::pi / 180;
constexpr double kEps = 1e-8;     // LMA's goal
constexpr double kSameMm = 1e-6;  // a result that is further from its target has failed
constexpr double kSameRad = 1e-8;
// LMA weighs turns by a hundredth: 1e-6 rad, of which C takes more the nearer A is to 0. Other
// positions stand half a turn apart.
constexpr double kSameTurn = 0.1;             // degrees
constexpr double kStartA = -30;               // degrees
constexpr unsigned kJointC = 0, kJointA = 1;  // table-ac's chain is C, A, X, Y, Z

KDL::Chain metricChain(const Machine& machine, bool hasSpindle) {
  KDL::Chain chain = kdlChain(*machine, kMetre);
  if (!hasSpindle) return chain;
  const KDL::Vector tool = kdl(machine->getToolChain(true, 1).back()->getElemAxis());
  chain.addSegment(KDL::Segment(KDL::Joint(KDL::Vector::Zero(), tool, KDL::Joint::RotAxis)));
  return chain;
}

/// A machine, targets inside its travels, a start for each, all of it for KDL too.
struct Targets {
  Targets(Machine m, bool hasSpindle, int count, double degrees)
      : machine(std::move(m)),
        at(positions(machine, count, degrees)),
        aim(aims(machine, at)),
        start(at),
        solved(at.size(), machine.position()),
        codes(at.size()),
        chain(metricChain(machine, hasSpindle)),
        forward(chain),
        lma(chain, kEps),
        frame(at.size()),
        joints(at.size(), KDL::JntArray(chain.getNrOfJoints())) {
    for (std::size_t i = 0; i < at.size(); ++i) forward.JntToCart(jointsOf(at[i]), frame[i]);
  }

  void startAt(std::size_t i, const Position& v) {
    start[i] = v;
    starts.resize(at.size());
    starts[i] = jointsOf(v);
  }

  KDL::JntArray jointsOf(const Position& v) const {
    KDL::JntArray q(chain.getNrOfJoints());
    unsigned joint = 0;
    for (const KMachineElem* e : machine->getToolChain(true, 1)) {
      if (e->getValueIndex() < 0) continue;
      q(joint++) = v[e->getValueIndex()] * (turns(*e) ? kDegree : kMetre);
    }
    return q;
  }

  void solveOurs() {
    for (std::size_t i = 0; i < at.size(); ++i) {
      codes[i] = machine->getConfigPlus(start[i], aim[i].tip, aim[i].direction, solved[i]);
    }
  }
  void solveLma() {
    for (std::size_t i = 0; i < at.size(); ++i) lma.CartToJnt(starts[i], frame[i], joints[i]);
  }

  /// Shares of the targets that are reached.
  double oursReached() {
    solveOurs();
    double count = 0;
    for (std::size_t i = 0; i < at.size(); ++i) {
      UVec3d tip, direction;
      machine->getTool(solved[i], tip, direction, 1);
      count += codes[i] == 0 && (tip - aim[i].tip).norm() < kSameMm &&
               (direction - aim[i].direction).norm() < kSameRad;
    }
    return count / static_cast<double>(at.size());
  }
  double lmaReached() {
    solveLma();
    double count = 0;
    for (std::size_t i = 0; i < at.size(); ++i) {
      KDL::Frame f;
      forward.JntToCart(joints[i], f);
      count += (f.p - frame[i].p).Norm() < kEps * 10;
    }
    return count / static_cast<double>(at.size());
  }

  Machine machine;
  std::vector<Position> at;
  std::vector<Aim> aim;
  std::vector<Position> start, solved;
  std::vector<int> codes;
  KDL::Chain chain;
  KDL::ChainFkSolverPos_recursive forward;
  KDL::ChainIkSolverPos_LMA lma;
  std::vector<KDL::Frame> frame;
  std::vector<KDL::JntArray> joints, starts;
};

std::shared_ptr<Targets> fiveAxes(int count) {
  const auto t = std::make_shared<Targets>(example("table-ac"), true, count, 180);
  const Position start = t->machine.position({{"A", kStartA}});
  for (std::size_t i = 0; i < t->at.size(); ++i) t->startAt(i, start);
  return t;
}

Machine wristArm() {
  const Scratch file(".def");
  file.write(wristArmText());
  return loaded(file.path(), Format::version1);
}

// Each joint starts within 0.1 rad of where the target was drawn.
std::shared_ptr<Targets> arm(int count) {
  const auto t = std::make_shared<Targets>(wristArm(), false, count, 180);
  for (std::size_t i = 0; i < t->at.size(); ++i) {
    Position start = t->at[i];
    for (int k = 0; k < start.size(); ++k) start[k] += drawn(-0.1, 0.1) / kDegree;
    t->startAt(i, start);
  }
  return t;
}

/// Both must have reached what they are timed for: ours all, LMA most of it.
std::string reached(Targets& t) {
  if (const double share = t.oursReached(); share < 1)
    return disagree("a share missed by ours", 1 - share);
  if (const double share = t.lmaReached(); share < 0.9)
    return disagree("a share missed by LMA", 1 - share);
  return {};
}

Pair againstLma(const std::shared_ptr<Targets>& t) {
  return {[t] { t->solveOurs(); }, [t] { t->solveLma(); }, static_cast<double>(t->at.size()),
          reached(*t)};
}

Pair againstFormulas() {
  const auto t = fiveAxes(amount(2000, 100));
  const auto solve = [t](std::size_t i) {
    return TableAc::nearest({0, 0, 0, kStartA, 0}, t->aim[i].tip, t->aim[i].direction);
  };
  Pair pair{[t] { t->solveOurs(); },
            [t, solve] {
              for (std::size_t i = 0; i < t->at.size(); ++i) use(solve(i).x);
            },
            static_cast<double>(t->at.size()), reached(*t)};
  const std::vector<TableAc::Entry> ours = entriesOf(t->solved);
  double worst = 0;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    const auto [x, y, z, a, c] = solve(i);
    worst = std::max({worst, std::abs(x - ours[i].x), std::abs(y - ours[i].y),
                      std::abs(z - ours[i].z), std::abs(a - ours[i].a), std::abs(c - ours[i].c)});
  }
  if (worst > kSameMm) pair.disagreement = disagree("ours and the formulas by hand", worst);
  return pair;
}

// --- The list of all positions: both rotary axes limited to a turn each way have nine starts each

constexpr double kAngles[] = {0, -360, 360, -180, 180, -90, 90, -270, 270};

struct Lists {
  explicit Lists(int count) : t(fiveAxes(count)) {
    limitTurns(t->machine, 360);
    for (int i = 0; i < 81; ++i) {
      seeds.push_back(t->machine.position({{"C", kAngles[i % 9]}, {"A", kAngles[i / 9]}}));
      KDL::JntArray q = t->jointsOf(seeds.back());
      q(kJointA) += 0.3;  // off the singular direction
      q(kJointC) += 0.3;
      starts.push_back(q);
    }
    for (const Aim& aim : t->aim) {
      angles.emplace_back();
      t->machine->getPossibleAngles(aim.direction, angles.back().raw(), 1);
    }
  }

  std::vector<KMachineValueBase*>& list(std::size_t i) {
    out.clear();
    t->machine->getPossibleConfigs(t->aim[i].direction, t->aim[i].tip, out.raw(), 1);
    return out.raw();
  }

  /// What the list does, call by call: each start towards the direction, each angle to the tip.
  void single(std::size_t i) {
    Position& v = t->solved[0];
    const Aim& aim = t->aim[i];
    for (const Position& seed : seeds) t->machine->getConfigPlus(seed, {}, aim.direction, v);
    for (const KMachineValueBase* angle : angles[i]) {
      t->machine->getConfigPlus(*angle, aim.tip, aim.direction, v);
    }
  }

  void solveLma(std::size_t i) {
    for (const KDL::JntArray& start : starts) t->lma.CartToJnt(start, t->frame[i], t->joints[0]);
  }

  /// Whether every position of LMA that is inside the linear travels is in the list, by its angles.
  std::string compare() {
    for (std::size_t i = 0; i < t->at.size(); ++i) {
      if (list(i).empty()) return "results disagree: an empty list";
      for (const KMachineValueBase* v : out.raw()) {
        UVec3d tip, direction;
        t->machine->getTool(*v, tip, direction, 1);
        if ((tip - t->aim[i].tip).norm() > kSameMm)
          return "results disagree: an entry is not at the tip";
      }
      for (const KDL::JntArray& start : starts) {
        KDL::JntArray q(start.rows());
        if (t->lma.CartToJnt(start, t->frame[i], q) < 0) continue;
        Position v = t->machine.position({{"C", q(0) / kDegree},
                                          {"A", q(1) / kDegree},
                                          {"X", q(2) / kMetre},
                                          {"Y", q(3) / kMetre},
                                          {"Z", q(4) / kMetre}});
        if (t->machine->checkLimitsLin(v, nullptr) == 0 && !holds(v))
          return "results disagree: LMA has a position that the list lacks";
      }
    }
    return {};
  }

  bool holds(const Position& v) const {
    const auto isTurned = [](double a, double b) {
      return std::abs(std::remainder(a - b, 360)) < kSameTurn;
    };
    const int a = v.names().find("A"), c = v.names().find("C");
    return std::any_of(out.begin(), out.end(), [&](const KMachineValueBase* o) {
      return isTurned((*o)[a], v[a]) && isTurned((*o)[c], v[c]);
    });
  }

  std::shared_ptr<Targets> t;
  std::vector<Position> seeds;
  std::vector<KDL::JntArray> starts;
  std::vector<PositionList> angles;
  PositionList out;
};

Pair lists(int count, bool isLma) {
  const auto work = std::make_shared<Lists>(count);
  const auto each = [count](auto ask) {
    return [count, ask] {
      for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) ask(i);
    };
  };
  Pair pair;
  pair.calls = count;
  pair.disagreement = isLma ? work->compare() : "";
  pair.ours = each([work](std::size_t i) { work->list(i); });
  if (isLma) pair.peer = each([work](std::size_t i) { work->solveLma(i); });
  if (!isLma) pair.peer = each([work](std::size_t i) { work->single(i); });
  return pair;
}

}  // namespace

void addInverse() {
  const std::string lma = "KDL ChainIkSolverPos_LMA, eps 1e-8";
  add(Row{"inverse/five-axis/lma", "getConfigPlus, five-axis machine", lma + ", free spindle joint",
          atLeast(200), [] { return againstLma(fiveAxes(amount(200, 20))); }, 31});
  add(Row{"inverse/five-axis/by-hand", "getConfigPlus, five-axis machine",
          "its closed form by hand", atMost(10), againstFormulas, 61});
  add(Row{"inverse/list/lma", "getPossibleConfigs, five-axis machine, 81 starts",
          lma + ", from as many starts", atLeast(200), [] { return lists(amount(10, 2), true); },
          15});
  add(Row{"inverse/list/single", "getPossibleConfigs, five-axis machine, 81 starts",
          "its starts and entries as single solves", atMost(1.1),
          [] { return lists(amount(20, 2), false); }, 61});
  add(Row{"inverse/arm/lma", "getConfigPlus, six-joint arm", lma + ", start within 0.1 rad",
          atLeast(40), [] { return againstLma(arm(amount(200, 20))); }, 41});
}

}  // namespace korvo::bench
