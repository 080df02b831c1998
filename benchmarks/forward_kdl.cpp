// Forward kinematics against Orocos KDL: the same chain, the same positions, one run. At most half
// of KDL's time is wanted; storage and chain walk are judged by it.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <kdl/chainfksolverpos_recursive.hpp>
#include <random>
#include <string>
#include <vector>

#include "benchmarks/KdlChain.h"
#include "benchmarks/Measure.h"
#include "toolkit/Machine.h"

namespace {

using korvo::bench::kdlChain, korvo::bench::median, korvo::bench::secondsOf;

constexpr int kRounds = 201, kQueries = 2000;

/// The same position twice: as the library and as KDL (chain order, radians) take it.
struct Query {
  korvo::Position v;
  KDL::JntArray q;
};

std::vector<Query> queries(const korvo::Machine& machine) {
  std::mt19937 random(1);
  std::vector<Query> out(kQueries, {machine.position(), KDL::JntArray(machine->getAxisNum())});
  for (auto& [v, q] : out) {
    unsigned joint = 0;
    for (const zkin::KMachineElem* e : machine->getToolChain(true, 1)) {
      if (e->getValueIndex() < 0) continue;
      const double value = static_cast<int>(random() % 360000) / 1000.0 - 180.0;
      v[e->getValueIndex()] = value;
      q(joint++) =
          e->getElemType() == zkin::KMachineElem::KMET_TYPE_AROT ? value * M_PI / 180 : value;
    }
  }
  return out;
}

double difference(const zgeo::UMatrix& m, const KDL::Frame& f) {
  double largest = 0.0;
  for (int i = 0; i < 12; ++i) {
    largest = std::max(largest, std::abs(m(i / 4, i % 4) - f(i / 4, i % 4)));
  }
  return largest;
}

void compare(const char* file) {
  const korvo::Loaded loaded = korvo::load(std::string(KORVO_MACHINES "/") + file);
  if (!loaded) return void(std::printf("%s: not loaded\n", file));
  const korvo::Machine& machine = *loaded.machine;
  const std::vector<Query> all = queries(machine);
  const KDL::Chain chain = kdlChain(*machine);
  KDL::ChainFkSolverPos_recursive solver(chain);
  std::vector<zgeo::UMatrix> ours(kQueries);
  std::vector<KDL::Frame> theirs(kQueries);
  std::vector<double> ourTime, theirTime, ratio;
  for (int round = 0; round < kRounds; ++round) {
    ourTime.push_back(secondsOf([&] {
      for (int i = 0; i < kQueries; ++i) ours[i] = machine->getMatrix_H2T(all[i].v);
    }));
    theirTime.push_back(secondsOf([&] {
      for (int i = 0; i < kQueries; ++i) solver.JntToCart(all[i].q, theirs[i]);
    }));
    ratio.push_back(ourTime.back() / theirTime.back());
  }
  double worst = 0.0;
  for (int i = 0; i < kQueries; ++i) worst = std::max(worst, difference(ours[i], theirs[i]));
  std::printf(
      "%-20s %7.1f ns a query, KDL %7.1f ns, ratio %.2f (median of %d), results within %.1e\n",
      file, median(ourTime) / kQueries * 1e9, median(theirTime) / kQueries * 1e9, median(ratio),
      kRounds, worst);
}

}  // namespace

int main() {
  compare("table-ac.def");
  compare("arm-irb2400.def");
}
