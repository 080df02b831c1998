// Queries that may run on one machine from many threads at once, and all queries on machines of the
// threads' own.
#include <atomic>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "kinematics/KMachine.h"
#include "tests/support/MachineGenerator.h"
#include "tests/threads/Threads.h"

namespace {

using korvo::test::add;
using korvo::test::isSameBits;
using korvo::test::kThreads;
using korvo::test::runTogether;
using korvo::test::Topology;
using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineValueBase;

constexpr int kPositions = 40;
constexpr int kSolved = 10;  ///< Positions of the queries on copies, lists among them.

/// Where every element and every tool stands.
std::vector<double> answersOf(const KMachine& machine, const KMachineValueBase& v) {
  std::vector<double> out;
  UVec3d a, b;
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    const int index = machine.getElemByRank(rank)->getElemIndex();
    add(out, machine.getMatrix(v, index));
    if (machine.getElemAxis(v, index, a, b)) add(out, a), add(out, b);
  }
  for (int tool = 0; tool <= machine.getToolNumber(); ++tool) {
    if (machine.getTool(v, a, b, tool)) add(out, a), add(out, b);
  }
  add(out, machine.getMatrix_H2T(v));
  add(out, machine.getMatrix_TP2U(v));
  return out;
}

struct Query {
  korvo::test::Position position;
  std::vector<double> answers;
};

std::vector<Query> queriesOf(const KMachine& machine, korvo::test::Choices& choices) {
  std::vector<Query> queries;
  for (int i = 0; i < kPositions; ++i) {
    auto v = korvo::test::positionOf(machine,
                                     korvo::test::positionValues(choices, machine.getAxisNum()));
    auto answers = answersOf(machine, *v);
    queries.push_back({std::move(v), std::move(answers)});
  }
  return queries;
}

/// Number of queries that any thread answered differently, all threads starting together.
int differencesInThreads(const KMachine& machine, const std::vector<Query>& queries) {
  std::atomic<int> different = 0;
  runTogether([&] {
    for (const Query& q : queries) {
      if (!isSameBits(answersOf(machine, *q.position), q.answers)) ++different;
    }
  });
  return different;
}

class KMachineThreads : public testing::TestWithParam<int> {};

TEST_P(KMachineThreads, EightThreadsGetTheAnswersOfOneBitByBit) {
  korvo::test::Choices choices(static_cast<unsigned>(GetParam()));
  const auto machine = korvo::test::loadMachine(
      korvo::test::machineText(choices, static_cast<Topology>(GetParam())));
  ASSERT_NE(machine, nullptr);
  EXPECT_EQ(differencesInThreads(*machine, queriesOf(*machine, choices)), 0);
}

INSTANTIATE_TEST_SUITE_P(EveryTopology, KMachineThreads,
                         testing::Range(0, korvo::test::kTopologies), [](const auto& kind) {
                           return std::string(nameOf(static_cast<Topology>(kind.param)));
                         });

// --- a copy of the machine for every thread: all queries

void add(std::vector<double>& out, int code) { out.push_back(code); }

void add(std::vector<double>& out, const KMachineValueBase& v) {
  out.insert(out.end(), v.get(), v.get() + v.size());
}

/// The list's numbers; it is empty afterwards.
void addList(std::vector<double>& out, std::vector<KMachineValueBase*>& list) {
  for (const KMachineValueBase* v : list) add(out, *v);
  KMachineValueBase::_release(list);
}

/// Six free joints have half a million starts: only arms with few free joints are listed.
bool isListed(const KMachine& machine) {
  int rotary = 0;
  for (const auto* e : machine.getChain(-101)) {
    rotary += e->getElemType() == zkin::KMachineElem::KMET_TYPE_AROT;
  }
  return rotary <= 2;
}

void addLists(std::vector<double>& out, const KMachine& machine, const UVec3d& p, const UVec3d& n) {
  std::vector<KMachineValueBase*> list;
  add(out, machine.getPossibleAngles(n, list, 1));
  addList(out, list);
  add(out, machine.getPossibleConfigs(n, p, list, 0));
  addList(out, list);
}

/// What the queries from a target to positions answer, the target being where tool 1 is at `v`.
void addSolutions(std::vector<double>& out, const KMachine& machine, const KMachineValueBase& v) {
  const auto start = korvo::test::positionOf(machine), solved = korvo::test::positionOf(machine);
  UVec3d p, n;
  machine.getTool(v, p, n, 1);
  add(out, machine.getConfigPlus(*start, p, n, *solved)), add(out, *solved);
  add(out, machine.getConfig(v, p, UVec3d(1, 2, 3), *solved)), add(out, *solved);
  if (isListed(machine)) addLists(out, machine, p, n);
}

/// Limits, what lies between two positions, and translations.
void addMoves(std::vector<double>& out, const KMachine& machine, const KMachineValueBase& v) {
  const auto zero = korvo::test::positionOf(machine), between = korvo::test::positionOf(machine);
  std::vector<int> sides;
  add(out, machine.checkLimitsFull(v, &sides));
  out.insert(out.end(), sides.begin(), sides.end());
  add(out, machine.interpolate(*zero, v, 0.3, *between)), add(out, *between);
  const korvo::test::Position shift(machine.axisTranslation(&v, UVec3d(1, 2, 3)));
  if (shift) add(out, *shift);
}

std::vector<double> allAnswersOf(const KMachine& machine, const KMachineValueBase& v) {
  std::vector<double> out = answersOf(machine, v);
  std::vector<UMatrix> matrices;
  machine.getMatrices(v, matrices);
  for (const UMatrix& m : matrices) add(out, m);
  addSolutions(out, machine, v);
  addMoves(out, machine, v);
  return out;
}

TEST_P(KMachineThreads, EightThreadsWithCopiesGetAllAnswersOfOneBitByBit) {
  korvo::test::Choices choices(static_cast<unsigned>(GetParam()));
  const auto machine = korvo::test::loadMachine(
      korvo::test::machineText(choices, static_cast<Topology>(GetParam())));
  ASSERT_NE(machine, nullptr);
  std::vector<Query> queries;
  for (int i = 0; i < kSolved; ++i) {
    auto v = korvo::test::positionOf(*machine,
                                     korvo::test::positionValues(choices, machine->getAxisNum()));
    auto answers = allAnswersOf(*machine, *v);
    queries.push_back({std::move(v), std::move(answers)});
  }
  std::atomic<int> different = 0;
  runTogether([&] {
    const KMachine own(*machine);
    for (const Query& q : queries) {
      if (!isSameBits(allAnswersOf(own, *q.position), q.answers)) ++different;
    }
  });
  EXPECT_EQ(different, 0);
}

TEST(KMachineThreads, MachinesOfTheirOwnCanBeLoadedAtOnce) {
  std::atomic<int> loaded = 0;
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kThreads; ++i) {
    threads.emplace_back([&loaded, i] {
      for (unsigned seed = i; seed < i + 20; ++seed) {
        korvo::test::Choices choices(seed);
        if (korvo::test::loadMachine(korvo::test::machineText(choices)) != nullptr) ++loaded;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(loaded, kThreads * 20);
}

}  // namespace
