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
/// @owner  The sink is called when the library is unloaded, too: at the end of the program after
///         `main` and after static objects of the host are gone. A host unsets its sink before that
///         or keeps it alive to the end.
void traceLoadReason(unsigned long reason);

}  // namespace zkin
