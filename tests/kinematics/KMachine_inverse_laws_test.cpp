// What holds for the solutions of every machine. Targets are places of the tool at positions made
// by the generator, so that they can be reached; figures are printed for each kind of machine.
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <limits>
#include <utility>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "tests/kinematics/KMachine_inverse.h"

namespace korvo::test {
namespace {

using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;

constexpr int kMachines = 250, kTargets = 8;       // of the first law
constexpr int kFewMachines = 80, kFewTargets = 4;  // of the others
constexpr double kPointMm = 1e-8, kDirection = 1e-9;

/// Degrees by which the second solve of a position may pass a rotary limit: at the edge of what two
/// axes reach, 1e-16 of direction is 1e-8 of angle.
constexpr double kEdge = 1e-5;

using Elems = std::vector<const KMachineElem*>;

/// The axes of one type that a solver may move, in the order of the triples: from the tool.
Elems freeAxes(const KMachine& machine, KMachineElem::KME_TYPE type) {
  Elems axes = machine.getChain(-101);
  std::erase_if(axes, [type](const auto* e) { return e->getElemType() != type || e->isLocked(); });
  std::reverse(axes.begin(), axes.end());
  return axes;
}
Elems freeRotary(const KMachine& m) { return freeAxes(m, KMachineElem::KMET_TYPE_AROT); }
Elems freeLinear(const KMachine& m) { return freeAxes(m, KMachineElem::KMET_TYPE_ALIN); }

UVec3d axisAt(const KMachine& machine, const Numbers& v, const KMachineElem& e) {
  UVec3d dir;
  EXPECT_TRUE(machine.getElemAxis(*positionOf(machine, v), e.getElemIndex(), dir));
  return dir.normalised();
}

/// |det| of each triple of free linear axes at a position, in the order in which they are solved.
std::vector<double> triples(const KMachine& machine, const Numbers& v) {
  std::vector<UVec3d> a;
  for (const auto* e : freeLinear(machine)) a.push_back(axisAt(machine, v, *e));
  std::vector<double> out;
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (std::size_t j = i + 1; j < a.size(); ++j) {
      for (std::size_t k = j + 1; k < a.size(); ++k) out.push_back(std::abs(a[i] * (a[j] ^ a[k])));
    }
  }
  return out;
}

bool isIndependent(double det) { return det > 1e-9; }

/// How near the solved triple comes: nearly dependent axes travel far, and rounding with them.
double pointTolerance(const std::vector<double>& dets) {
  const auto first = std::find_if(dets.begin(), dets.end(), [](double d) { return d > 0.99e-10; });
  return first != dets.end() && *first < 1e-3 ? 1e-12 / *first : kPointMm;
}
/// The same, and axes far away carry the rounding of their values along, whatever the triple says
/// at the end of the way.
double pointTolerance(const KMachine& machine, const Numbers& v) {
  double farthest = 0.0;
  for (const double x : v) farthest = std::max(farthest, std::abs(x));
  return std::max(pointTolerance(triples(machine, v)),
                  16 * std::numeric_limits<double>::epsilon() * farthest);
}

bool isDependent(double det) { return det < 1e-11; }

/// What was tried of one kind of machine, printed at the end.
struct Figures {
  explicit Figures(std::string name) : kind(std::move(name)) {}
  Figures(const Figures&) = delete;
  Figures& operator=(const Figures&) = delete;
  ~Figures() {
    char text[200];
    std::snprintf(text, sizeof text,
                  "%d targets tried, %d solved, largest residual %.1e mm, direction %.1e; %d with "
                  "nearly dependent axes",
                  tried, solved, point, direction, nearlyDependent);
    testing::Test::RecordProperty(kind, text);
    std::cout << kind << ": " << text << "\n";
  }

  /// A miss of the point; of nearly dependent axes only their number is kept.
  void add(const UVec3d& miss, double tolerance) {
    if (tolerance > kPointMm) ++nearlyDependent;
    if (tolerance <= kPointMm) point = std::max(point, miss.norm());
  }

  std::string kind;
  int nearlyDependent = 0;
  int tried = 0, solved = 0;
  double point = 0, direction = 0;
};

/// One generated machine with tool 1 current and a tool length, where the solver of rotary and
/// linear axes is used.
struct Made {
  MachineText text;
  std::unique_ptr<KMachine> machine;

  bool isSolvable() const {
    const int kinematicClass = machine->getKine(1).kinematicClass;
    return kinematicClass >= 1 && kinematicClass <= 4;
  }
};

Made made(Choices& choices, Topology topology) {
  Made m{machineText(choices, topology), nullptr};
  m.machine = loadMachine(m.text);
  const double lengths[] = {0, 100, -12.5, 250};
  m.machine->setTHELength(choices.pick(lengths), 1);
  return m;
}

Numbers position(Choices& choices, const KMachine& machine) {
  return positionValues(choices, machine.getAxisNum());
}

class SolvedTargets : public testing::TestWithParam<int> {
 protected:
  SolvedTargets() : figures(nameOf(topology())) {}

  Topology topology() const { return static_cast<Topology>(GetParam()); }

  /// Runs `law(made, choices)` on machines of the kind, a few targets each.
  template <typename Law>
  void onMachines(Law law, unsigned machines = kFewMachines, int targets = kFewTargets) {
    for (unsigned seed = 0; seed < machines; ++seed) {
      Choices choices(seed);
      const Made m = made(choices, topology());
      for (int i = 0; m.isSolvable() && i < targets; ++i) {
        Choices numbers(seed * 1000 + static_cast<unsigned>(i));
        law(m, numbers);
        if (HasFailure()) FAIL() << "seed " << seed << ", " << m.text;
      }
    }
  }

  Figures figures;
};

TEST_P(SolvedTargets, AreReachedWhereTheSolverCan) {
  onMachines(
      [this](const Made& m, Choices& choices) {
        const Tip target = tipAt(*m.machine, position(choices, *m.machine));
        const Numbers start = position(choices, *m.machine);
        const Solved s = solve(*m.machine, start, target.point, target.dir);
        ++figures.tried;
        if (freeRotary(*m.machine).empty()) {
          EXPECT_EQ(s.code, -1);
          EXPECT_EQ(s.v, start);
          return;
        }
        const Tip tip = tipAt(*m.machine, s.v);
        EXPECT_THAT(tip.dir, Near(target.dir, kDirection));
        figures.direction = std::max(figures.direction, (tip.dir - target.dir).norm());
        const auto dets = triples(*m.machine, s.v);
        if (std::any_of(dets.begin(), dets.end(), isIndependent)) {
          const double tolerance = pointTolerance(*m.machine, s.v);
          EXPECT_THAT(tip.point, Near(target.point, tolerance));
          figures.add(tip.point - target.point, tolerance);
        }
        if (isIndependent(dets.back())) {
          EXPECT_EQ(s.code, 0);
          ++figures.solved;
        }
        if (isDependent(dets.back())) {
          EXPECT_NE(s.code, 0);
        }
      },
      kMachines, kTargets);
}

TEST_P(SolvedTargets, AreTheSameEveryTime) {
  onMachines([this](const Made& m, Choices& choices) {
    const Tip target = tipAt(*m.machine, position(choices, *m.machine));
    const Numbers start = position(choices, *m.machine);
    const Solved one = solve(*m.machine, start, target.point, target.dir);
    const Solved two = solve(*m.machine, start, target.point, target.dir);
    EXPECT_EQ(one.code, two.code);
    EXPECT_EQ(one.v, two.v);
    ++figures.tried;
  });
}

TEST_P(SolvedTargets, AreTurnedToOnlyWithFewerThanThreeLinearAxes) {
  onMachines([this](const Made& m, Choices& choices) {
    const Elems linear = freeLinear(*m.machine);
    if (freeRotary(*m.machine).empty()) return;
    for (std::size_t i = 2; i < linear.size(); ++i) {
      m.machine->getElemByIndex(linear[i]->getElemIndex())->setLocked(true);
    }
    const Tip target = tipAt(*m.machine, position(choices, *m.machine));
    const Numbers start = position(choices, *m.machine);
    const Solved s = solve(*m.machine, start, target.point, target.dir);
    EXPECT_EQ(s.code, 0);
    EXPECT_THAT(tipAt(*m.machine, s.v).dir, Near(target.dir, kDirection));
    for (const auto* e : linear) {
      const auto place = static_cast<std::size_t>(e->getValueIndex());
      EXPECT_EQ(s.v[place], start[place]);
    }
    ++figures.tried, ++figures.solved;
  });
}

/// By how much the axes of a type are outside their limits; 0 inside and on a limit.
double excess(const KMachine& machine, const Numbers& v, KMachineElem::KME_TYPE type) {
  double most = 0.0;
  for (int i = 0; i < machine.getAxisNum(); ++i) {
    const KMachineElem& e = *machine.getAxisElem(i + 1);
    const double x = v[static_cast<std::size_t>(i)];
    if (e.getElemType() != type) continue;
    if (e.hasMin()) most = std::max(most, e.getMin() - x);
    if (e.hasMax()) most = std::max(most, x - e.getMax());
  }
  return most;
}

bool isEqual(const Numbers& a, const Numbers& b) {
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (!(std::abs(a[i] - b[i]) < 1e-5)) return false;
  }
  return true;
}

TEST_P(SolvedTargets, AreListedInsideTheLimitsOnceEach) {
  onMachines([this](const Made& m, Choices& choices) {
    const KMachine& machine = *m.machine;
    const UVec3d dir = tipAt(machine, position(choices, machine)).dir;
    Entries entries, again;
    EXPECT_EQ(machine.getPossibleAngles(dir, entries.list, 1), 0);
    EXPECT_EQ(machine.getPossibleAngles(dir, again.list, 0), 0);
    const auto all = entries.numbers();
    EXPECT_EQ(all, again.numbers());
    ++figures.tried;
    figures.solved += all.empty() ? 0 : 1;
    for (std::size_t i = 0; i < all.size(); ++i) {
      EXPECT_EQ(excess(machine, all[i], KMachineElem::KMET_TYPE_AROT), 0);
      EXPECT_THAT(tipAt(machine, all[i]).dir, Near(dir, kDirection));
      for (std::size_t j = 0; j < i; ++j) EXPECT_FALSE(isEqual(all[i], all[j]));
    }
  });
}

TEST_P(SolvedTargets, AreListedWithThePointInsideAllLimits) {
  onMachines([this](const Made& m, Choices& choices) {
    const KMachine& machine = *m.machine;
    const Tip target = tipAt(machine, position(choices, machine));
    Entries entries;
    EXPECT_EQ(machine.getPossibleConfigs(target.dir, target.point, entries.list, 1), 0);
    ++figures.tried;
    figures.solved += entries.list.empty() ? 0 : 1;
    for (const Numbers& v : entries.numbers()) {
      EXPECT_EQ(excess(machine, v, KMachineElem::KMET_TYPE_ALIN), 0);
      EXPECT_LE(excess(machine, v, KMachineElem::KMET_TYPE_AROT), kEdge);
      const Tip tip = tipAt(machine, v);
      EXPECT_THAT(tip.dir, Near(target.dir, kDirection));
      EXPECT_THAT(tip.point, Near(target.point, pointTolerance(machine, v)));
      figures.direction = std::max(figures.direction, (tip.dir - target.dir).norm());
      figures.add(tip.point - target.point, pointTolerance(machine, v));
    }
  });
}

INSTANTIATE_TEST_SUITE_P(Kinds, SolvedTargets, testing::Range(0, static_cast<int>(Topology::arm)),
                         [](const auto& kind) {
                           return std::string(nameOf(static_cast<Topology>(kind.param)));
                         });

/// Any wanted direction: the part of `n` across the axis, and that of what was reached, point the
/// same way, and the angle to the axis is that of the tool's cone.
void expectNearest(const UVec3d& reached, const UVec3d& n, const UVec3d& axis, double cone) {
  const UVec3d want = n - axis * (axis * n), have = reached - axis * (axis * reached);
  EXPECT_NEAR(axis * reached, cone, kDirection);
  EXPECT_THAT(have * want.norm(), Near(want * have.norm(), kDirection));
}

class OneAxisTargets : public SolvedTargets {};

TEST_P(OneAxisTargets, OffTheConeAreMetByItsNearestDirectionAndTheExactPoint) {
  onMachines([this](const Made& m, Choices& choices) {
    const KMachine& machine = *m.machine;
    const UVec3d point(choices.below(200) - 100, choices.below(200), choices.below(200));
    UVec3d n(choices.below(21) - 10, choices.below(21) - 10, choices.below(21) - 10);
    if (n.norm() == 0) return;
    n.normalise();
    const Elems rotary = freeRotary(machine);
    const Numbers start = position(choices, machine);
    if (rotary.size() != 1) return;
    const UVec3d axis = axisAt(machine, start, *rotary[0]);
    const double cone = axis * tipAt(machine, start).dir;
    if ((n ^ axis).norm() < 1e-3 || std::abs(cone) > 1 - 1e-6) return;  // no nearest one
    const Solved s = solve(machine, start, point, n);
    UVec3d toolPoint, dir;
    EXPECT_TRUE(machine.getTool(*positionOf(machine, s.v), toolPoint, dir, 1));
    expectNearest(dir, n, axis, cone);
    const auto dets = triples(machine, s.v);
    ++figures.tried;
    if (!std::any_of(dets.begin(), dets.end(), isIndependent)) return;
    // The tool point is one length along the wanted direction from the point, exactly.
    const UVec3d wanted = point + n * machine.getTHELength(1);
    EXPECT_THAT(toolPoint, Near(wanted, pointTolerance(dets)));
    figures.add(toolPoint - wanted, pointTolerance(dets));
    figures.solved += s.code == 0;
  });
}

INSTANTIATE_TEST_SUITE_P(Kinds, OneAxisTargets,
                         testing::Values(static_cast<int>(Topology::fourAxis),
                                         static_cast<int>(Topology::guns)),
                         [](const auto& kind) {
                           return std::string(nameOf(static_cast<Topology>(kind.param)));
                         });

// The law again, with machines that shrink to the plainest one that breaks it.
RC_GTEST_PROP(SolvedTargetsOfAnyMachine, AreReachedWhereTheCodeIsZero, ()) {
  const MachineText text = *anyMachine();
  RC_PRE(text.topology < Topology::arm);
  const auto machine = loadMachine(text);
  const Numbers at = *anyPosition(*machine), start = *anyPosition(*machine);
  const int kinematicClass = machine->getKine(1).kinematicClass;
  const Tip target = tipAt(*machine, at);
  const Solved s = solve(*machine, start, target.point, target.dir);
  if (kinematicClass < 1 || kinematicClass > 4) return;
  if (s.code != 0) return;
  const Tip tip = tipAt(*machine, s.v);
  RC_ASSERT(isNear(tip.dir, target.dir, kDirection));
  RC_ASSERT(isNear(tip.point, target.point, pointTolerance(*machine, s.v)));
}

}  // namespace
}  // namespace korvo::test
