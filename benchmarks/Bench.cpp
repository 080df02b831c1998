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

/// What the repetitions of one pair took, for each call.
struct Times {
  std::vector<double> ours, peer, ratios;  ///< Ratio: ours over the peer's.

  void take(const Pair& pair) {
    ours.push_back(secondsOf(pair.ours) / pair.calls);
    if (!pair.peer) return;
    peer.push_back(secondsOf(pair.peer) / pair.calls);
    ratios.push_back(ours.back() / peer.back());
  }
};

// Files and code come into memory.
void warm(const Pair& pair) {
  pair.ours();
  if (pair.peer) pair.peer();
}

void runRow(benchmark::State& state, const Row& row) {
  source.seed(1);
  const Pair pair = row.prepare();
  if (!pair.disagreement.empty()) return skip(state, pair.disagreement);
  warm(pair);
  Times times;
  for (auto _ : state) {
    times.take(pair);
    state.SetIterationTime(times.ours.back());
  }
  if (row.goal.sense == Goal::Sense::atLeast) {
    for (double& ratio : times.ratios) ratio = 1 / ratio;
  }
  state.counters["ours"] = quantile(times.ours, 0.5);
  state.counters["peer"] = quantile(times.peer, 0.5);
  state.counters["ratio"] = quantile(times.ratios, 0.5);
  state.counters["low"] = quantile(times.ratios, 0.25);
  state.counters["high"] = quantile(times.ratios, 0.75);
  say(state, row.goal);
  state.SetLabel(row.what + "|" + row.peer);
}

void runCurve(benchmark::State& state, const Curve& curve) {
  std::vector<Pair> pairs;
  for (const int size : curve.sizes) {
    source.seed(1);
    pairs.push_back(curve.prepare(size));
    if (!pairs.back().disagreement.empty()) return skip(state, pairs.back().disagreement);
    warm(pairs.back());
  }
  std::vector<Times> times(pairs.size());
  for (auto _ : state) {
    for (std::size_t i = 0; i < pairs.size(); ++i) times[i].take(pairs[i]);
    state.SetIterationTime(times.back().ours.back());
  }
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    const std::string size = "/" + std::to_string(curve.sizes[i]);
    state.counters["ours" + size] = quantile(times[i].ours, 0.5);
    if (pairs[i].peer) state.counters["peer" + size] = quantile(times[i].peer, 0.5);
  }
  say(state, curve.goal);
  state.SetLabel(curve.what + "|" + curve.peer);
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

template <typename Line>
void enter(int iterations, Line line, void (*run)(benchmark::State&, const Line&)) {
  const std::string name = line.name;
  benchmark::RegisterBenchmark(
      name.c_str(), [line = std::move(line), run](benchmark::State& state) { run(state, line); })
      ->Iterations(isQuick() ? std::min(iterations, 3) : iterations)
      ->UseManualTime();
}

}  // namespace

void add(Row row) { enter(row.pairs, std::move(row), runRow); }

void add(Curve curve) { enter(curve.rounds, std::move(curve), runCurve); }

void add(Figure figure) { enter(1, std::move(figure), runFigure); }

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
