// Queries of the limits and between positions, against the cost of asking where the tool is.
#include <algorithm>
#include <cmath>
#include <memory>

#include "benchmarks/Bench.h"
#include "benchmarks/Machines.h"

namespace korvo::bench {
namespace {

using zgeo::UVec3d;
using zkin::KMachineElem, zkin::KMachineValueBase;

constexpr int kQueries = 2000, kPairs = 61;
constexpr double kSame = 1e-6;  // mm
const UVec3d kShift(0.5, -1, 2);

struct Work {
  Machine machine = example("table-ac");
  std::vector<Position> all = positions(machine, kQueries);
  Position out = machine.position();
  UVec3d tip, direction;

  UVec3d tipAt(const KMachineValueBase& v) {
    machine->getTool(v, tip, direction, 1);
    return tip;
  }
  const Position& next(std::size_t i) const { return all[(i + 1) % all.size()]; }
};

using Shared = std::shared_ptr<Work>;

template <typename Ask>
std::function<void()> each(const Shared& w, Ask ask) {
  return [w, ask] {
    for (std::size_t i = 0; i < w->all.size(); ++i) ask(*w, i);
  };
}

Pair againstTool(const Shared& w, std::function<void()> ours) {
  return {std::move(ours),
          each(w, [](Work& k, std::size_t i) { use(k.tipAt(k.all[i]).x); }),
          kQueries,
          {}};
}

// Every fourth position is put outside the travel of X.
Pair limits() {
  const auto w = std::make_shared<Work>();
  for (std::size_t i = 0; i < w->all.size(); i += 4) w->all[i]["X"] = 301;
  Pair pair = againstTool(w, each(w, [](Work& k, std::size_t i) {
                            use(k.machine->checkLimitsFull(k.all[i], nullptr));
                          }));
  for (std::size_t i = 0; i < w->all.size(); ++i) {
    const int wanted = i % 4 == 0 ? 1 : 0;
    if (w->machine->checkLimitsFull(w->all[i], nullptr) != wanted) {
      pair.disagreement = "results disagree: another number of axes outside";
    }
  }
  return pair;
}

// The tip moves on the straight line between the two tips.
Pair between() {
  const auto w = std::make_shared<Work>();
  Pair pair = againstTool(w, each(w, [](Work& k, std::size_t i) {
                            k.machine->interpolate(k.all[i], k.next(i), 0.3, k.out);
                          }));
  double worst = 0;
  for (std::size_t i = 0; i < w->all.size(); ++i) {
    w->machine->interpolate(w->all[i], w->next(i), 0.3, w->out);
    const UVec3d from = w->tipAt(w->all[i]), to = w->tipAt(w->next(i)), at = w->tipAt(w->out);
    worst = std::max(worst, (at - (from + (to - from) * 0.3)).norm());
  }
  if (worst > kSame) pair.disagreement = disagree("the tip is off its line", worst);
  return pair;
}

Pair translation() {
  const auto w = std::make_shared<Work>();
  Pair pair = againstTool(w, each(w, [](Work& k, std::size_t i) {
                            KMachineValueBase* increment =
                                k.machine->axisTranslation(&*k.all[i], kShift);
                            use((*increment)[0]);
                            KMachineValueBase::_release(increment);
                          }));
  double worst = 0;
  for (const Position& v : w->all) {
    KMachineValueBase* increment = w->machine->axisTranslation(&*v, kShift);
    Position moved = v;
    *moved += *increment;
    KMachineValueBase::_release(increment);
    const UVec3d from = w->tipAt(v);
    worst = std::max(worst, (w->tipAt(moved) - from - kShift).norm());
  }
  if (worst > kSame) pair.disagreement = disagree("the tip is shifted otherwise", worst);
  return pair;
}

}  // namespace

void addLimits() {
  const std::string peer = "one getTool";
  add(Row{"limits/check", "checkLimitsFull, five-axis machine", peer, atMost(0.3), limits, kPairs});
  add(Row{"limits/interpolate", "interpolate, five-axis machine", peer, atMost(6), between,
          kPairs});
  add(Row{"limits/translation", "axisTranslation, five-axis machine", peer, atMost(8), translation,
          kPairs});
}

}  // namespace korvo::bench
