// One line of a definition file, read as an element in both format versions and dumped.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include "kinematics/KMachineElem.h"
#include "platform/zgeo/UTools.h"

namespace {

using zkin::KMachineElem;

/// Bytes as the reader makes characters of them.
std::wstring lineOf(const std::uint8_t* data, std::size_t size) {
  return std::wstring(data, data + size);
}

void require(bool holds) {
  if (!holds) std::abort();
}

/// Reading says whether there is an element, and does not depend on what the element was before.
void readAndCompare(const std::wstring& line, int version) {
  const KMachineElem fresh(line, version);
  KMachineElem used(L"tool=z,1,2,3,holder.stl,1,2,3", 1);
  require(used.setFromLine(line, version) == (used.getElemType() != 0));
  require(used.getElemType() == fresh.getElemType());
  require(used.getElemName() == fresh.getElemName());
  require(used.getElemIndex() == fresh.getElemIndex());
  require(used.getGeomFile() == fresh.getGeomFile());
  fresh.dump(L"e");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::ostringstream traced;
  zgeo::UStreamTraceSink sink(traced);
  zgeo::UTools::_setTraceSink(&sink);
  const std::wstring line = lineOf(data, size);
  for (const int version : {1, 2}) readAndCompare(line, version);
  zgeo::UTools::_setTraceSink(nullptr);
  return 0;
}
