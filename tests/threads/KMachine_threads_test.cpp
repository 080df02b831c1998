// Queries that may run on one machine from many threads at once.
#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "kinematics/KMachine.h"
#include "tests/support/MachineGenerator.h"

namespace {

using korvo::test::Topology;
using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineValueBase;

constexpr int kThreads = 8;
constexpr int kPositions = 40;

void add(std::vector<double>& out, const UVec3d& p) { out.insert(out.end(), {p.x, p.y, p.z}); }

void add(std::vector<double>& out, const UMatrix& m) {
  for (int i = 0; i < 16; ++i) out.push_back(m(i / 4, i % 4));
}

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

bool isSameBits(const std::vector<double>& a, const std::vector<double>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(double)) == 0;
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
  std::atomic<int> waiting = kThreads, different = 0;
  const auto work = [&] {
    for (--waiting; waiting > 0;) std::this_thread::yield();
    for (const Query& q : queries) {
      if (!isSameBits(answersOf(machine, *q.position), q.answers)) ++different;
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();
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
