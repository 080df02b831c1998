// One trace line when the library is loaded and when it is unloaded; nothing else happens then.

#include "platform/zgeo/UTools.h"

namespace {

enum Reason { processDetach = 0, processAttach = 1, threadAttach = 2, threadDetach = 3 };

// The numbers are those with which a Windows loader calls DllMain.
void traceReason(unsigned long reason) {
  switch (reason) {
    case processAttach:
      return zgeo::UTools::_trace(L"korvo_kinematics | DllMain (PROCESS_ATTACH)");
    case processDetach:
      return zgeo::UTools::_trace(L"korvo_kinematics | DllMain (PROCESS_DETACH)");
    case threadAttach:
      return zgeo::UTools::_trace(L"korvo_kinematics | DllMain (THREAD_ATTACH)");
    case threadDetach:
      return zgeo::UTools::_trace(L"korvo_kinematics | DllMain (THREAD_DETACH)");
    default:
      return;
  }
}

}  // namespace

#if defined(_WIN32)
extern "C" int __stdcall DllMain(void*, unsigned long reason, void*) {
  traceReason(reason);
  return 1;
}
#else
// A host sees these lines when its sink is set at that time: before it loads this library.
__attribute__((constructor)) static void onLoad() { traceReason(processAttach); }
__attribute__((destructor)) static void onUnload() { traceReason(processDetach); }
#endif
