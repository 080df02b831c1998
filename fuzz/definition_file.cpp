// A whole definition file: read by the library, and asked where everything stands. What the checker
// says of it is the target `check`.
#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "fuzz/Ask.h"
#include "kinematics/KMachine.h"
#include "tests/support/MemoryFile.h"
#include "toolkit/Machine.h"

namespace {

using korvo::fuzz::ask;
using zkin::KMachine;

/// Whether the library reads it in bounded time and memory: it follows a cycle of links and a
/// rotation-point operand that is no number for ever, and tabulates axis numbers.
bool isBounded(const korvo::Loaded& loaded) {
  return std::none_of(loaded.reasons.begin(), loaded.reasons.end(), [](const korvo::Diagnostic& d) {
    return d.isEndless || d.code == "file-unreadable";
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const int version = data[0] % 2 == 1 ? 1 : 2;
  const korvo::test::MemoryFile file(data + 1, size - 1);
  const auto format = static_cast<korvo::Format>(version);
  if (!isBounded(korvo::load(file.path(), format, korvo::Checks::endless))) return 0;

  KMachine machine;
  machine.setDataFilePNE(file.path(), version);
  machine.readDataFile();
  ask(machine);
  return 0;
}
