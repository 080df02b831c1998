#include "platform/zgeo/UVec2d.h"

#include "platform/zgeo/UTools.h"

namespace zgeo {

void UVec2d::dump(const wchar_t* label, bool keep) const {
  UTools::_traceTS(L"%s(%.3lf, %.3lf)", label == nullptr ? L"" : label, x, y);
  if (!keep) UTools::_traceTF();
}

}  // namespace zgeo
