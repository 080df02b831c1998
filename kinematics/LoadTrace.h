#pragma once

namespace zkin {

/// Why the loader calls the library; the numbers are those of a Windows DllMain.
enum LoadReason : unsigned long {
  kProcessDetach = 0,
  kProcessAttach = 1,
  kThreadAttach = 2,
  kThreadDetach = 3,
};

/// Traces the one line of a load reason; nothing for other numbers.
void traceLoadReason(unsigned long reason);

}  // namespace zkin
