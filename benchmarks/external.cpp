// The adapter of the external kinematics library against the library's own model.
#include <algorithm>
#include <memory>

#include "adapter/NMachine.h"
#include "adapter/machineFromDefinition.h"
#include "benchmarks/Bench.h"
#include "benchmarks/Machines.h"

namespace korvo::bench {
namespace {

constexpr int kQueries = 2000;

struct Work {
  Machine machine = example("table-ac");
  std::unique_ptr<Ombra::Kin::Machine> model =
      zkin::machineFromDefinition(*machine, zkin::Bodies::none);
  zkin::NMachine external{model.get(), Ombra::Kin::HeadIndex(0), Ombra::Kin::TableIndex(0)};
  std::vector<Position> all = positions(machine, kQueries);
  std::vector<Ombra::Kin::MachinePosition> registers;
  zgeo::UVec3d point, direction;

  Work() {
    for (const Position& v : all) registers.push_back(external.axisValues(machine->axisValues(v)));
  }
  ~Work() { external.reset(true); }

  double worst() {
    double largest = 0;
    for (std::size_t i = 0; i < all.size(); ++i) {
      zgeo::UVec3d otherPoint, otherDirection;
      machine->getTool(all[i], point, direction, 1);
      external.getTool(registers[i], otherPoint, otherDirection);
      largest =
          std::max({largest, (point - otherPoint).norm(), (direction - otherDirection).norm()});
    }
    return largest;
  }
};

Pair matrices() {
  const auto w = std::make_shared<Work>();
  Pair pair;
  pair.calls = kQueries;
  if (const double worst = w->worst(); worst > 1e-9)
    pair.disagreement = disagree("the tools", worst);
  pair.ours = [w] {
    for (const auto& p : w->registers) use(w->external.getMatrix(p)(0, 3));
  };
  pair.peer = [w] {
    for (const Position& v : w->all) use(w->machine->getMatrix_H2T(v)(0, 3));
  };
  return pair;
}

}  // namespace

void addExternal() {
  add(Row{"external/matrix", "NMachine::getMatrix, five-axis machine", "KMachine::getMatrix_H2T",
          atMost(3), matrices, 61});
}

}  // namespace korvo::bench
