#pragma once

#include <functional>
#include <string>
#include <vector>

/// What every family of rows is made of.
///
/// A row is one Google Benchmark of manual time whose iterations are pairs: one repetition of ours,
/// then one of the peer's. Two benchmarks of their own, even interleaved at random, would give two
/// medians of different moments; the ratio of a pair is of one moment, so what else the machine
/// does cancels out, and the spread of the ratios says how far it does. All of Google Benchmark's
/// options work: --benchmark_filter runs some rows, --benchmark_out keeps them as JSON.
///
/// Time is that which the process and its children spend on a processor: on a quiet machine the
/// same as that of the clock on the wall, and on a busy one without what others take.
namespace korvo::bench {

/// What is wanted of a ratio: our time over the peer's is at most `bound`, or the peer's over ours
/// at least. `step`, where it is not 0, is the goal after that.
struct Goal {
  enum class Sense { none, atMost, atLeast };

  Sense sense = Sense::none;
  double bound = 0;
  double step = 0;
};

inline Goal atMost(double bound, double step = 0) { return {Goal::Sense::atMost, bound, step}; }
inline Goal atLeast(double bound, double step = 0) { return {Goal::Sense::atLeast, bound, step}; }

/// Of a curve: cost grows with the size to the power of at most this. Linear but for
/// what caches make dearer.
inline const Goal kLinear = atMost(1.1);

/// Two ways to the same result. Inputs are drawn before; each call does the whole work.
struct Pair {
  std::function<void()> ours;
  std::function<void()> peer;  ///< Empty where growth alone is asked for.
  double calls = 1;            ///< In a repetition: times are said for each.
  std::string disagreement;    ///< Of the results, looked at before; empty: they agree.
};

/// One line of the table.
struct Row {
  std::string name;  ///< "family/machine/query"
  std::string what;
  std::string peer;
  Goal goal;
  std::function<Pair()> prepare;
  int pairs = 41;
};
void add(Row row);

/// Cost against size. Each iteration is a pair of every size, one after the other, so that all
/// points see the same moods of the machine.
struct Curve {
  std::string name;  ///< "growth/family"
  std::string what, peer;
  Goal goal;
  std::vector<int> sizes;
  std::function<Pair(int size)> prepare;
  int rounds = 41;
};
void add(Curve curve);

/// A line whose figure is no time.
struct Figure {
  std::string name, what, against, unit;
  Goal goal;
  std::function<double()> measure;
};
void add(Figure figure);

/// Runs what the arguments choose; 1 when a row's results disagree, or nothing was chosen.
int runAll(int argc, char** argv);

/// The full amount, or a small one where the environment has KORVO_BENCH_QUICK: a trial of the
/// programs, no measurement.
int amount(int full, int quick);

/// Between the two, evenly; always the same in a row, whichever rows run before.
double drawn(double low, double high);

/// Keeps what was computed: the optimiser has to believe that it is looked at.
void use(double value);

/// "2,000,000".
std::string grouped(int count);

/// The sentence of a disagreement, for `Pair`.
std::string disagree(const char* what, double by);

// Each family of rows is a source file of its own.
void addForward();
void addInverse();
void addLimits();
void addLoad();
void addStl();
void addGeometry();
void addFaces();
void addBodies();
void addExternal();
void addTables();
void addSolver();
void addPath();
void addExport();

}  // namespace korvo::bench
