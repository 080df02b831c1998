#include "platform/zgeo/UVec3d.h"

#include <algorithm>
#include <cmath>

#include "platform/zgeo/UTools.h"

namespace zgeo {

void UVec3d::dump(const wchar_t* label, bool keep) const {
  UTools::_traceTS(L"%s(%.3lf, %.3lf, %.3lf)", label == nullptr ? L"" : label, x, y, z);
  if (!keep) UTools::_traceTF();
}

UVec3d UVec3d::normalisedExtreme() const {
  const double largest = std::max({std::fabs(x), std::fabs(y), std::fabs(z)});
  if (largest == 0.0) return *this;
  const UVec3d scaled = *this / largest;
  return scaled / scaled.norm();
}

}  // namespace zgeo
