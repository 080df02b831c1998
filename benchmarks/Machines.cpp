#include "benchmarks/Machines.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "benchmarks/Bench.h"
#include "tests/support/KdlChain.h"

namespace korvo::bench {

using test::turns;
using zkin::KMachineElem;

Machine loaded(const std::string& path, Format format) {
  Loaded result = load(path, format);
  if (!result) {
    std::fprintf(stderr, "%s is no machine\n", path.c_str());
    for (const auto& reason : result.reasons)
      std::fprintf(stderr, "%s\n", toString(reason).c_str());
    std::exit(2);
  }
  return std::move(*result.machine);
}

Machine example(const std::string& name) {
  return loaded(KORVO_MACHINES "/" + name + ".def", Format::automatic);
}

void limitTurns(Machine& machine, double degrees) {
  for (int i = 0; i < machine->getElemNumber(); ++i) {
    KMachineElem* e = machine->getElemByRank(i);
    if (!turns(*e)) continue;
    e->setMin(-degrees, true);
    e->setMax(degrees, true);
  }
}

namespace {

Position position(const Machine& machine, double degrees) {
  Position v = machine.position();
  for (int i = 0; i < machine->getElemNumber(); ++i) {
    const KMachineElem& e = *machine->getElemByRank(i);
    if (e.getValueIndex() < 0) continue;
    const double most = turns(e) ? degrees : 1000;
    v[e.getValueIndex()] = drawn(e.hasMin() ? std::max(e.getMin(), -most) : -most,
                                 e.hasMax() ? std::min(e.getMax(), most) : most);
  }
  return v;
}

}  // namespace

std::vector<Position> positions(const Machine& machine, int count, double degrees) {
  std::vector<Position> all;
  for (int i = 0; i < count; ++i) all.push_back(position(machine, degrees));
  return all;
}

std::vector<TableAc::Entry> entriesOf(const std::vector<Position>& all) {
  std::vector<TableAc::Entry> out;
  for (const Position& v : all) out.push_back({v["X"], v["Y"], v["Z"], v["A"], v["C"]});
  return out;
}

std::vector<Aim> aims(const Machine& machine, const std::vector<Position>& all) {
  std::vector<Aim> out(all.size());
  for (std::size_t i = 0; i < all.size(); ++i) {
    machine->getTool(all[i], out[i].tip, out[i].direction, 1);
  }
  return out;
}

double difference(const zgeo::UMatrix& a, const zgeo::UMatrix& b) {
  double largest = 0;
  for (int i = 0; i < 12; ++i) {
    largest = std::max(largest, std::abs(a(i / 4, i % 4) - b(i / 4, i % 4)));
  }
  return largest;
}

}  // namespace korvo::bench
