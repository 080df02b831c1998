// A whole definition file: checked, read by the library, and asked where everything stands.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "kinematics/KMachine.h"
#include "tests/support/MemoryFile.h"
#include "toolkit/Machine.h"
#include "toolkit/check/Check.h"

namespace {

using korvo::test::MemoryFile;
using zgeo::UMatrix;
using zgeo::UVec3d;
using zkin::KMachine;
using zkin::KMachineElem;
using zkin::KMachineValueBase;

void require(bool holds) {
  if (!holds) std::abort();
}

/// Whether the library reads it in bounded time and memory: it follows a cycle of links and a
/// rotation-point operand that is no number for ever, and tabulates axis numbers.
bool isBounded(const std::vector<korvo::Diagnostic>& diagnostics) {
  constexpr std::string_view endless[] = {"rotation-point-number", "element-cycle", "axis-number",
                                          "file-unreadable"};
  return std::none_of(diagnostics.begin(), diagnostics.end(), [&](const korvo::Diagnostic& d) {
    return std::find(std::begin(endless), std::end(endless), d.code) != std::end(endless);
  });
}

void askElements(const KMachine& machine, const KMachineValueBase& v) {
  std::vector<UMatrix> all;
  machine.getMatrices(v, all);
  require(static_cast<int>(all.size()) == machine.getElemNumber());
  UVec3d a, b;
  for (int rank = 0; rank < machine.getElemNumber(); ++rank) {
    const KMachineElem* const e = machine.getElemByRank(rank);
    machine.getMatrix(v, e);
    require(machine.getElemAxis(v, e->getElemIndex(), a, b));
    require(machine.getElemRank(e) <= rank);  // -1 for one with a NaN: it does not equal itself
  }
}

void askTools(const KMachine& machine, const KMachineValueBase& v) {
  UVec3d a, b;
  for (int tool = 0; tool <= machine.getToolNumber(); ++tool) {
    machine.getTool(v, a, b, tool);
    machine.getToolChain(true, tool);
    machine.getKine(tool);
    machine.setTHELength(12.5, tool);
    machine.updateDHm(v, tool);
  }
  machine.getMatrix_TP2U(v);
}

void ask(KMachine& machine) {
  machine.setCurrentTool(1);
  zkin::KMachineValue<12> v;
  for (int i = 0; i < v.size(); ++i) v[i] = 37.5 * i - 90.0;
  askElements(machine, v);
  askTools(machine, v);
  const KMachine copy(machine);
  askElements(copy, v);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const int version = data[0] % 2 == 1 ? 1 : 2;
  const MemoryFile file(data + 1, size - 1);
  const auto format = static_cast<korvo::Format>(version);
  const korvo::CheckResult checked = korvo::check(file.path(), format);
  if (!isBounded(checked.diagnostics)) return 0;

  KMachine machine;
  machine.setDataFilePNE(file.path(), version);
  const int result = machine.readDataFile();
  ask(machine);

  korvo::Loaded loaded = korvo::load(file.path(), format);
  require(!loaded || result == 0);
  if (loaded) ask(**loaded.machine);
  return 0;
}
