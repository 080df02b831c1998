#include "benchmarks/Swirl.h"

#include <cmath>

namespace korvo::bench {

std::vector<PathTarget> swirl(const Machine& machine, int count) {
  Position at = machine.position();
  std::vector<PathTarget> targets(static_cast<std::size_t>(count));
  double step = 0.0;
  for (PathTarget& target : targets) {
    step += 1.0;
    at["X"] = 120.0 * std::sin(0.00031 * step);
    at["Y"] = 80.0 * std::cos(0.00047 * step);
    at["Z"] = 150.0 + 60.0 * std::sin(0.0011 * step);
    at["A"] = -35.0 + 25.0 * std::sin(0.0017 * step);
    at["C"] = 0.9 * step;
    machine->getTool(at, target.target.tip, target.target.direction, 1);
  }
  return targets;
}

}  // namespace korvo::bench
