#include "benchmarks/Bench.h"

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <random>
#include <utility>
#include <vector>

namespace korvo::bench {
namespace {

bool hasFailed = false;
std::mt19937 source;

double secondsOf(const timeval& t) {
  return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
}

/// Spent so far by this process and by those that it started and waited for.
double spentSeconds() {
  timespec own{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &own);
  rusage children{};
  getrusage(RUSAGE_CHILDREN, &children);
  return static_cast<double>(own.tv_sec) + 1e-9 * static_cast<double>(own.tv_nsec) +
         secondsOf(children.ru_utime) + secondsOf(children.ru_stime);
}

double secondsOf(const std::function<void()>& work) {
  const double start = spentSeconds();
  work();
  return spentSeconds() - start;
}

/// The value below which a share of the values lies.
double quantile(std::vector<double> values, double share) {
  const auto place =
      static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1) + 0.5);
  std::nth_element(values.begin(), values.begin() + place, values.end());
  return values[static_cast<std::size_t>(place)];
}

void say(benchmark::State& state, const Goal& goal) {
  if (goal.sense == Goal::Sense::none) return;
  state.counters[goal.sense == Goal::Sense::atMost ? "at_most" : "at_least"] = goal.bound;
  if (goal.step != 0) state.counters["step"] = goal.step;
}

void skip(benchmark::State& state, const std::string& why) {
  hasFailed = true;
  state.SkipWithError(why.c_str());
}

void runRow(benchmark::State& state, const Row& row) {
  source.seed(1);
  const Pair pair = row.prepare();
  if (!pair.disagreement.empty()) return skip(state, pair.disagreement);
  const bool hasPeer = static_cast<bool>(pair.peer);
  std::vector<double> ours, peer, ratios;
  pair.ours();  // files and code come into memory
  if (hasPeer) pair.peer();
  for (auto _ : state) {
    ours.push_back(secondsOf(pair.ours) / pair.calls);
    state.SetIterationTime(ours.back());
    if (!hasPeer) continue;
    peer.push_back(secondsOf(pair.peer) / pair.calls);
    const double ratio = ours.back() / peer.back();
    ratios.push_back(row.goal.sense == Goal::Sense::atLeast ? 1 / ratio : ratio);
  }
  state.counters["ours"] = quantile(ours, 0.5);
  if (hasPeer) {
    state.counters["peer"] = quantile(peer, 0.5);
    state.counters["ratio"] = quantile(ratios, 0.5);
    state.counters["low"] = quantile(ratios, 0.25);
    state.counters["high"] = quantile(ratios, 0.75);
  }
  if (row.size != 0) state.counters["size"] = row.size;
  say(state, row.goal);
  state.SetLabel(row.what + "|" + row.peer);
}

void runFigure(benchmark::State& state, const Figure& figure) {
  source.seed(1);
  for (auto _ : state) {
    state.counters["value"] = figure.measure();
    state.SetIterationTime(1e-9);
  }
  say(state, figure.goal);
  state.SetLabel(figure.what + "|" + figure.against + "|" + figure.unit);
}

bool isQuick() { return std::getenv("KORVO_BENCH_QUICK") != nullptr; }

}  // namespace

void add(Row row) {
  const int pairs = isQuick() ? std::min(row.pairs, 3) : row.pairs;
  const std::string name = row.name;
  benchmark::RegisterBenchmark(
      name.c_str(), [row = std::move(row)](benchmark::State& state) { runRow(state, row); })
      ->Iterations(pairs)
      ->UseManualTime();
}

void add(Figure figure) {
  const std::string name = figure.name;
  benchmark::RegisterBenchmark(
      name.c_str(),
      [figure = std::move(figure)](benchmark::State& state) { runFigure(state, figure); })
      ->Iterations(1)
      ->UseManualTime();
}

int runAll(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  const bool hasRun = benchmark::RunSpecifiedBenchmarks() > 0;
  return hasRun && !hasFailed ? 0 : 1;
}

int amount(int full, int quick) { return isQuick() ? quick : full; }

double drawn(double low, double high) {
  return low + (high - low) * (static_cast<double>(source()) / 4294967296.0);
}

void use(double value) { benchmark::DoNotOptimize(value); }

std::string grouped(int count) {
  std::string text = std::to_string(count);
  for (int at = static_cast<int>(text.size()) - 3; at > 0; at -= 3) {
    text.insert(static_cast<std::size_t>(at), ",");
  }
  return text;
}

std::string disagree(const char* what, double by) {
  return std::string("results disagree: ") + what + " by " + std::to_string(by);
}

}  // namespace korvo::bench
