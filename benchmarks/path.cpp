// Whole toolpaths: the best way of all positions against taking of every target the library's own
// single answer, started where the last one ended.
#include <cmath>
#include <fstream>
#include <memory>
#include <string>

#include "benchmarks/Bench.h"
#include "benchmarks/Child.h"
#include "benchmarks/Machines.h"
#include "benchmarks/Scratch.h"
#include "benchmarks/Swirl.h"

namespace korvo::bench {
namespace {

struct FiveAxes {
  explicit FiveAxes(int count) : targets(swirl(machine, count)) {}

  Machine machine = example("table-ac");
  std::vector<PathTarget> targets;
  Toolpath path{machine};
  Position at = machine.position();

  /// Largest distance, in mm, of the tip from its target.
  double worst() {
    double largest = 0.0;
    Position here = machine.position();
    const ToolpathReport report = path.run(targets, [&](const PathPosition& p) {
      for (int k = 0; k < here.size(); ++k) here[k] = p.values[static_cast<std::size_t>(k)];
      zgeo::UVec3d tip, direction;
      machine->getTool(here, tip, direction, 1);
      largest = std::max(largest, tip.distanceTo(targets[p.target].target.tip));
    });
    return report.isFitting() ? largest : HUGE_VAL;
  }

  void ours() {
    double last = 0.0;
    path.run(targets, [&last](const PathPosition& p) { last = p.values[0]; });
    use(last);
  }

  void nearestFirst() {
    for (const PathTarget& t : targets) {
      machine->getConfigPlus(at, t.target.tip, t.target.direction, at);
    }
    use(at[0]);
  }
};

Pair fiveAxes(int count) {
  const auto w = std::make_shared<FiveAxes>(count);
  Pair pair;
  pair.calls = count;
  if (const double worst = w->worst(); !(worst < 1e-6)) {
    pair.disagreement = disagree("the tip beside its target", worst);
  }
  pair.ours = [w] { w->ours(); };
  pair.peer = [w] { w->nearestFirst(); };
  return pair;
}

/// Of a small program: bytes for each target above the targets themselves.
double bytesOf(int count) {
  const Scratch said(".txt");
  run({KORVO_BENCH_CALLS, "path-peak", std::to_string(count)}, said.path());
  double bytes = 0.0;
  std::ifstream(said.path()) >> bytes;
  return bytes;
}

}  // namespace

void addPath() {
  const int count = amount(1'000'000, 20'000);
  const std::string what = "toolpath of " + grouped(count) + " targets, five axes";
  add(Row{"path/five-axis", what, "getConfigPlus, nearest first", atMost(2),
          [=] { return fiveAxes(count); }, 9});
  add(Figure{"path/peak", what + ", peak memory a target", "the targets themselves", "bytes above",
             atMost(64), [=] { return bytesOf(count); }});
}

}  // namespace korvo::bench
