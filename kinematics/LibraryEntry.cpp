// What the loader runs when this library is loaded and unloaded: one trace line, nothing else.

#include "kinematics/LoadTrace.h"

#if defined(_WIN32)
extern "C" int __stdcall DllMain(void*, unsigned long reason, void*) {
  zkin::traceLoadReason(reason);
  return 1;
}
#else
// A host sees these lines when its sink is set at that time: before it loads this library. There
// is no event for threads here.
__attribute__((constructor)) static void onLoad() { zkin::traceLoadReason(zkin::kProcessAttach); }
__attribute__((destructor)) static void onUnload() { zkin::traceLoadReason(zkin::kProcessDetach); }
#endif
