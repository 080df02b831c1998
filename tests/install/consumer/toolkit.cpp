// A host that uses the toolkit: a machine by path, axes by name, every position that reaches a
// target, and reasons where there is none.
#include <cmath>
#include <filesystem>
#include <iostream>
#include <vector>

#include "toolkit/Machine.h"
#include "toolkit/answer/Reach.h"
#include "toolkit/solve/Solver.h"

namespace {

// The tool 30 degrees aside.
bool isReached(const korvo::Machine& machine) {
  const korvo::Target target{{10, 20, 150}, {0, 0.5, std::sqrt(0.75)}};
  std::vector<korvo::Solution> all;
  korvo::Solver(machine).solve(target, {}, all);
  korvo::Reach reach(machine);
  return !all.empty() && all[0].residual.isReached() &&
         reach.nearest(target, machine.position()).status == korvo::Status::reached &&
         !reach.nearest({target.tip, {}}, machine.position()).text.empty();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const std::filesystem::path machines(argv[1]);
  const korvo::Loaded loaded = korvo::load(machines / "table-ac.def");
  if (!loaded) {
    for (const auto& reason : loaded.reasons) std::cerr << korvo::toString(reason) << '\n';
    return 1;
  }
  const korvo::Machine& machine = *loaded.machine;

  // The head of this machine carries X: the nose follows it, and the direction stays upright.
  zgeo::UVec3d home, moved, direction;
  const bool found = machine->getTool(machine.position(), home, direction, 1) &&
                     machine->getTool(machine.position({{"X", 10.0}}), moved, direction, 1);
  if (!found || std::abs(moved.x - home.x - 10.0) > 1e-9 || std::abs(direction.z - 1.0) > 1e-12) {
    std::cerr << "the tool is not where X put it\n";
    return 1;
  }

  if (korvo::load(machines / "no-such-machine.def")) {
    std::cerr << "a machine was made of nothing\n";
    return 1;
  }
  if (!isReached(machine)) {
    std::cerr << "the tool does not come to the target\n";
    return 1;
  }
  std::cout << "loaded " << machine.axisNames().size() << " axes\n";
}
