#include "kinematics/LoadTrace.h"

#include "platform/zgeo/UTools.h"

namespace zkin {

void traceLoadReason(unsigned long reason) {
  switch (reason) {
    case kProcessAttach:
      return zgeo::UTools::_trace(L"korvo_kinematics | DllMain (PROCESS_ATTACH)");
    case kProcessDetach:
      return zgeo::UTools::_trace(L"korvo_kinematics | DllMain (PROCESS_DETACH)");
    case kThreadAttach:
      return zgeo::UTools::_trace(L"korvo_kinematics | DllMain (THREAD_ATTACH)");
    case kThreadDetach:
      return zgeo::UTools::_trace(L"korvo_kinematics | DllMain (THREAD_DETACH)");
    default:
      return;
  }
}

}  // namespace zkin
