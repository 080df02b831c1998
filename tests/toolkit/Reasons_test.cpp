// No query without a position is without its reason, and what a reason says is so: on the machines
// of the examples and on generated ones, with limits and locks of all kinds.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <random>
#include <set>

#include "tests/support/MachineGenerator.h"
#include "tests/toolkit/Answers.h"
#include "toolkit/answer/Reach.h"

using korvo::Answer;
using korvo::AxisOutside;
using korvo::Joint;
using korvo::JointChain;
using korvo::kMostAxes;
using korvo::Language;
using korvo::Machine;
using korvo::Reach;
using korvo::Reason;
using korvo::Solution;
using korvo::Solver;
using korvo::SolverKind;
using korvo::Status;
using korvo::Target;
using korvo::Unit;
using korvo::Values;
using zgeo::UVec3d;
using namespace korvo::test;

namespace {

using Random = std::mt19937_64;

double between(Random& random, double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(random);
}

bool oneIn(Random& random, int n) { return random() % static_cast<unsigned>(n) == 0; }

UVec3d anyDirection(Random& random) {
  return {between(random, -1, 1), between(random, -1, 1), between(random, -1, 1)};
}

Values valuesOf(const korvo::Position& at) {
  Values values{};
  for (int i = 0; i < at.size(); ++i) values[static_cast<std::size_t>(i)] = at[i];
  return values;
}

double angleBetween(const UVec3d& a, const UVec3d& b) { return std::atan2((a ^ b).norm(), a * b); }

// Limits about zero on half of the axes, a lock on some.
void fence(Random& random, Machine& machine) {
  for (int place = 0; place < machine.axisNames().size(); ++place) {
    zkin::KMachineElem& axis = axisAt(machine, place);
    if (oneIn(random, 2)) {
      axis.setMin(between(random, -250, -10), true);
      axis.setMax(between(random, 10, 250), true);
    }
    axis.setLocked(oneIn(random, 8));
  }
}

korvo::Position anyPosition(Random& random, const Machine& machine, double size) {
  korvo::Position at = machine.position();
  for (int i = 0; i < at.size(); ++i) at[i] = between(random, -size, size);
  return at;
}

// Where a position has the tool; now and then another direction, or another place.
Target anyTarget(Random& random, const Machine& machine) {
  const korvo::Position at = anyPosition(random, machine, oneIn(random, 2) ? 100 : 2000);
  UVec3d nose, direction;
  machine->getTool(at, nose, direction, -1);
  Target target{nose - direction * machine->getTHELength(-1), direction};
  if (oneIn(random, 3)) target.direction = anyDirection(random);
  if (oneIn(random, 4)) target.tip = anyDirection(random) * 1000;
  if (oneIn(random, 50)) target.direction = UVec3d();
  return target;
}

struct Asked {
  const Machine& machine;
  const Target& target;
  const Answer& answer;
  const korvo::Position& from;
};

std::vector<Solution> ignoringLimits(const Asked& asked, const Target& target) {
  std::vector<Solution> found;
  Solver(asked.machine)
      .solve(target, valuesOf(asked.answer.position), found, korvo::Limits::ignored);
  return found;
}

UVec3d tipOf(const Asked& asked) {
  const JointChain chain = JointChain::of(*asked.machine);
  return chain.tipOf(chain.pose(valuesOf(asked.answer.position)));
}

void expectDirection(const Asked& asked) {
  ASSERT_TRUE(asked.answer.nearestDirection);
  const UVec3d& nearest = *asked.answer.nearestDirection;
  EXPECT_NEAR(angleBetween(nearest, asked.target.direction) / kDegToRad, asked.answer.by, 1e-9);
  EXPECT_FALSE(ignoringLimits(asked, {tipOf(asked), nearest}).empty());
}

void expectPoint(const Asked& asked) {
  ASSERT_TRUE(asked.answer.nearestTip);
  EXPECT_NEAR(asked.answer.nearestTip->distanceTo(asked.target.tip), asked.answer.by,
              1e-9 * (1 + asked.answer.by));
  EXPECT_FALSE(ignoringLimits(asked, {*asked.answer.nearestTip, asked.target.direction}).empty());
}

void expectLimits(const Asked& asked) {
  EXPECT_EQ(asked.answer.status, Status::outsideLimits);
  EXPECT_LE(asked.answer.residual.pointMm, 1e-6 + 1e-12 * asked.target.tip.norm());
  std::set<int> outside;
  for (const AxisOutside& axis : asked.answer.outside) {
    const zkin::KMachineElem& e = *asked.machine->getAxisElem(axis.place + 1);
    EXPECT_EQ(asked.answer.position[axis.place] - (axis.by < 0 ? e.getMin() : e.getMax()), axis.by);
    EXPECT_TRUE(axis.by < 0 ? e.hasMin() : e.hasMax());
    outside.insert(axis.place);
  }
  ASSERT_FALSE(outside.empty());
  EXPECT_EQ(asked.answer.by, std::abs(asked.answer.outside.front().by));
  for (const Joint& joint : JointChain::of(*asked.machine).joints) {
    if (joint.place < 0) continue;
    const double value = asked.answer.position[joint.place];
    EXPECT_EQ(outside.count(joint.place) == 1, value < joint.min || value > joint.max);
  }
}

// From the same start with the axes where they are wanted, locked there, the target is reached.
void expectWanted(const Asked& asked) {
  korvo::Position from = asked.from;
  ASSERT_FALSE(asked.answer.wanted.empty());
  const korvo::AxisWanted& first = asked.answer.wanted.front();
  EXPECT_EQ(std::abs(first.value - from[first.place]), asked.answer.by);
  for (const int place : asked.answer.axes) {
    EXPECT_EQ(asked.machine->getAxisElem(place + 1)->isLocked(),
              asked.answer.reason == Reason::lockedAxis);
  }
  for (const korvo::AxisWanted& axis : asked.answer.wanted) from[axis.place] = axis.value;
  EXPECT_EQ(Reach(asked.machine).nearest(asked.target, from).status, Status::reached)
      << asked.answer.text;
}

void expectReason(const Asked& asked) {
  const Answer& answer = asked.answer;
  EXPECT_FALSE(answer.text.empty());
  EXPECT_TRUE(std::isfinite(answer.by));
  EXPECT_EQ(answer.unit != Unit::none, answer.by > 0);
  switch (answer.reason) {
    case Reason::noRotaryAxis:
    case Reason::outsideCone:
      return expectDirection(asked);
    case Reason::linearAxes:
    case Reason::outOfReach:
      return expectPoint(asked);
    case Reason::outsideLimits:
      return expectLimits(asked);
    case Reason::lockedAxis:
    case Reason::heldAxis:
      return expectWanted(asked);
    case Reason::noDirection:
    case Reason::noSolver:
      return;
    default:
      ADD_FAILURE() << toString(answer.reason);
  }
}

// An arm with locked joints may get the reason that it would have without: the same machine, free.
Machine asExplained(const Machine& machine, Reason reason) {
  Machine free = machine;
  if (Solver(machine).kind() != SolverKind::arm || reason == Reason::lockedAxis) return free;
  for (int place = 0; place < free.axisNames().size(); ++place)
    axisAt(free, place).setLocked(false);
  return free;
}

// A position that reaches the target leaves locked axes where they start, and all inside.
void expectKept(const Machine& machine, const korvo::Position& at, const korvo::Position& from) {
  for (const Joint& joint : JointChain::of(*machine).joints) {
    if (joint.place < 0) continue;
    const double value = at[joint.place];
    EXPECT_TRUE(value >= joint.min && value <= joint.max) << value;
    EXPECT_TRUE(!joint.isLocked || value == from[joint.place]) << joint.place;
  }
}

// Fails with the definition's number.
void ask(Random& random, const Machine& machine, int targets, std::multiset<Reason>& reasons) {
  Reach english(machine), french(machine, {}, Language::french);
  for (int i = 0; i < targets; ++i) {
    const Target target = anyTarget(random, machine);
    const korvo::Position from = anyPosition(random, machine, 5);
    const Answer answer = english.nearest(target, from);
    reasons.insert(answer.reason);
    if (answer.status == Status::reached) {
      EXPECT_TRUE(korvo::residual(machine, *answer.position, target).isReached());
      expectKept(machine, answer.position, from);
      continue;
    }
    expectReason({asExplained(machine, answer.reason), target, answer, from});
    const Answer translated = french.nearest(target, from);
    EXPECT_EQ(translated.reason, answer.reason);
    EXPECT_EQ(translated.by, answer.by);
    EXPECT_FALSE(translated.text.empty());
    EXPECT_NE(translated.text, answer.text);
  }
}

// Every reason that such machines can have is met, so the checks above are asked.
void expectMet(const std::multiset<Reason>& reasons) {
  for (const Reason reason :
       {Reason::none, Reason::noDirection, Reason::noRotaryAxis, Reason::outsideCone,
        Reason::outsideLimits, Reason::linearAxes, Reason::lockedAxis}) {
    EXPECT_GT(reasons.count(reason), 0u) << korvo::toString(reason);
  }
}

TEST(Reasons, OfTheExamplesAreSaidAndTrue) {
  Random random(20251122);
  std::multiset<Reason> reasons;
  for (const auto& file : std::filesystem::directory_iterator(KORVO_MACHINES)) {
    if (file.path().extension() != ".def") continue;
    SCOPED_TRACE(file.path());
    ask(random, example(file.path().stem()), 200, reasons);
    for (int i = 0; i < 5; ++i) {
      Machine fenced = example(file.path().stem());
      fence(random, fenced);
      ask(random, fenced, 40, reasons);
    }
  }
  expectMet(reasons);
  EXPECT_GT(reasons.count(Reason::outOfReach), 0u);
}

TEST(Reasons, OfGeneratedMachinesAreSaidAndTrue) {
  std::multiset<Reason> reasons;
  for (unsigned seed = 0; seed < 500; ++seed) {
    SCOPED_TRACE(seed);
    Choices choices(seed);
    const auto loaded = loadMachine(machineText(choices));
    ASSERT_TRUE(loaded);
    Random random(seed);
    Machine machine(*loaded);
    if (oneIn(random, 2)) fence(random, machine);
    ask(random, machine, 20, reasons);
    if (HasFailure()) break;
  }
  expectMet(reasons);
}

}  // namespace
