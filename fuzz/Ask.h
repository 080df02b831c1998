#pragma once

#include <cstdlib>
#include <vector>

#include "kinematics/KMachine.h"

/// What every machine that was loaded must answer, however odd its file.
namespace korvo::fuzz {

inline void require(bool holds) {
  if (!holds) std::abort();
}

inline void askElements(const zkin::KMachine& machine, const zkin::KMachineValueBase& v) {
  std::vector<zgeo::UMatrix> all;
  machine.getMatrices(v, all);
  require(static_cast<int>(all.size()) == machine.getElemNumber());
  zgeo::UVec3d a, b;
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    const zkin::KMachineElem* const e = machine.getElemByRank(rank);
    machine.getMatrix(v, e);
    require(machine.getElemAxis(v, e->getElemIndex(), a, b));
    require(machine.getElemRank(e) <= rank);  // -1 for one with a NaN: it does not equal itself
  }
}

inline void askTools(const zkin::KMachine& machine, const zkin::KMachineValueBase& v) {
  zgeo::UVec3d a, b;
  for (int tool = 0; tool <= machine.getToolNumber(); ++tool) {
    machine.getTool(v, a, b, tool);
    machine.getToolChain(true, tool);
    machine.getKine(tool);
    machine.setTHELength(12.5, tool);
    machine.updateDHm(v, tool);
  }
  machine.getMatrix_TP2U(v);
}

inline void ask(zkin::KMachine& machine) {
  machine.setCurrentTool(1);
  zkin::KMachineValue<12> v;
  for (int i = 0; i < v.size(); ++i) v[i] = 37.5 * i - 90.0;
  askElements(machine, v);
  askTools(machine, v);
  const zkin::KMachine copy(machine);
  askElements(copy, v);
}

}  // namespace korvo::fuzz
