// One solver, asked from many threads at once.
#include <gtest/gtest.h>

#include <vector>

#include "tests/support/Dice.h"
#include "tests/support/MachineGenerator.h"
#include "tests/support/SphericalArm.h"
#include "tests/threads/Threads.h"
#include "toolkit/solve/Solver.h"

namespace korvo::test {
namespace {

using zkin::KMachine;

constexpr int kTargets = 9;

/// Where the tool is at some positions, and what starts are solved from.
struct Questions {
  std::vector<Target> targets;
  std::vector<FrameTarget> frames;
  std::vector<Values> starts;
};

Questions questionsOf(const KMachine& machine, Dice& dice) {
  Questions questions;
  for (int i = 0; i < kTargets; ++i) {
    Values start{};
    std::vector<double> values;
    for (std::size_t k = 0; k < static_cast<std::size_t>(machine.getAxisNum()); ++k) {
      values.push_back(i % 3 == 0 ? 0.0 : dice.between(-200, 200));  // singular ones among them
      start[k] = dice.between(-200, 200);
    }
    const Position v = positionOf(machine, values);
    Target target;
    machine.getTool(*v, target.tip, target.direction, 1);
    questions.targets.push_back(target);
    questions.frames.push_back({machine.getMatrix_H2T(*v)});
    questions.starts.push_back(start);
  }
  return questions;
}

void add(std::vector<double>& out, const std::vector<Solution>& solutions) {
  out.push_back(static_cast<double>(solutions.size()));
  for (const Solution& s : solutions) {
    out.insert(out.end(), s.values.begin(), s.values.end());
    out.insert(out.end(), {s.residual.pointMm, s.residual.directionRad, s.margin,
                           s.singular.directionRad, 1.0 * s.branch.wrist});
  }
}

std::vector<double> answersOf(const Solver& solver, const Questions& questions) {
  std::vector<double> out;
  std::vector<Solution> solutions;
  for (std::size_t i = 0; i < questions.targets.size(); ++i) {
    for (const Limits limits : {Limits::kept, Limits::ignored}) {
      solver.solve(questions.targets[i], questions.starts[i], solutions, limits);
      add(out, solutions);
      solver.solve(questions.frames[i], questions.starts[i], solutions, limits);
      add(out, solutions);
    }
  }
  return out;
}

void expectSameInThreads(const KMachine& machine, unsigned seed) {
  Dice dice(seed);
  SolverOptions options;
  options.toolTurns = 4;  // and every one with all its turns
  const Solver solver(Machine(machine), options);
  const Questions questions = questionsOf(machine, dice);
  const std::vector<double> once = answersOf(solver, questions);
  EXPECT_GT(once.size(), questions.targets.size() * 4);
  std::atomic<int> different = 0;
  runTogether([&] {
    const Solver copy = solver;
    different += !isSameBits(answersOf(solver, questions), once);
    different += !isSameBits(answersOf(copy, questions), once);
  });
  EXPECT_EQ(different, 0);
}

class SolverThreads : public testing::TestWithParam<int> {};

TEST_P(SolverThreads, EightThreadsGetTheAnswersOfOneBitByBit) {
  Choices choices(static_cast<unsigned>(GetParam()));
  const auto machine = loadMachine(machineText(choices, static_cast<Topology>(GetParam())));
  expectSameInThreads(*machine, static_cast<unsigned>(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(EveryTopology, SolverThreads,
                         testing::Range(0, static_cast<int>(Topology::arm)), [](const auto& kind) {
                           return std::string(nameOf(static_cast<Topology>(kind.param)));
                         });

TEST(SolverThreadsOfArms, EightThreadsGetTheAnswersOfOneBitByBit) {
  for (unsigned seed = 0; seed < 4; ++seed) {
    Dice dice(seed);
    const SphericalArm arm = sphericalArm(dice, {.isUsual = seed == 0,
                                                 .hasRail = seed == 1,
                                                 .hasLimits = true,
                                                 .isCoaxial = seed % 2 == 0});
    expectSameInThreads(*arm.load(), seed);
  }
}

}  // namespace
}  // namespace korvo::test
