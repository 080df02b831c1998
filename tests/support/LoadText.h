#pragma once

#include <string>

#include "kinematics/KMachine.h"
#include "tests/support/TempFile.h"
#include "tests/support/TraceCapture.h"

namespace korvo::test {

/// The machine that a definition file with this text gives. The file is gone afterwards: the
/// machine remembers only its path.
inline zkin::KMachine loadText(const std::string& text, int version, int* result = nullptr) {
  const TempDir folder;
  zkin::KMachine machine;
  machine.setDataFilePNE(folder.write("machine.def", text).wstring(), version);
  const int answer = machine.readDataFile();
  if (result) *result = answer;
  return machine;
}

/// What is traced when a machine has no position of its dimension.
inline std::wstring noPositionLine(int axes) {
  return L"zkin::KMachineValueBase::_newMachineValue, unhandled dimension<" +
         std::to_wstring(axes) + L">";
}

/// A test that loads machines. Every element is dumped to the trace at each finalisation: these
/// lines are claimed here, all others are the test's.
class LoadingTest : public TracedTest {
 protected:
  /// Loads and claims, for a machine without positions, the line that says so.
  zkin::KMachine load(const std::string& text, int version) {
    zkin::KMachine machine = loadText(text, version, &result);
    claimFinalise(machine);
    return machine;
  }

  void claimFinalise(const zkin::KMachine& machine) {
    trace.claimAll(L"e[");
    if (machine.getAxisNum() == 0) {
      EXPECT_TRUE(trace.claim(noPositionLine(0)));
    }
  }

  int result = -99;  ///< Of the last load.
};

}  // namespace korvo::test
