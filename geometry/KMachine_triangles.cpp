// The machine's bodies, placed.

#include <exception>
#include <new>

#include "geometry/ExpectedTriangles.h"
#include "geometry/GeometryFile.h"
#include "kinematics/KMachine.h"
#include "platform/os/Memory.h"

using zgeo::UTri;

namespace zkin {
namespace {

/// Makes room for all bodies at once: a list that grew from body to body would be copied each time,
/// and with large bodies that costs as much as reading them.
/// @return  Whether there was; if not, some bodies may still fit.
bool makeRoom(const std::vector<KMachineElem>& elements, std::vector<UTri>& triangles) try {
  std::size_t count = 0;
  for (const KMachineElem& e : elements) count += expectedTriangles(e.getGeomFile());
  triangles.reserve(count);
  korvo::os::wishLargePages(triangles.data(), triangles.capacity() * sizeof(UTri));
  return true;
} catch (const std::exception&) {
  return false;
}

/// Appends all of `body` or, when there is no memory for it, nothing.
/// @return  Whether there was.
bool append(const std::vector<UTri>& body, std::vector<UTri>& triangles) try {
  triangles.insert(triangles.end(), body.begin(), body.end());
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace

// Deliberate: files are read anew at every call, so one that changes on disk shows at the next.
// Test: MachineTriangles.ChangedFileShowsAtTheNextCall.
void KMachine::getTrianglesU(const KMachineValueBase& value, std::vector<UTri>& triangles) const {
  triangles.clear();
  makeRoom(elements_, triangles);
  std::vector<UTri> body;
  for (const KMachineElem& e : elements_) {
    loadGeometryFile(e.getGeomFile(), body);
    if (body.empty()) continue;
    UTri::_applyMatrix(getMatrix(value, &e), body);
    append(body, triangles);  // what memory is short for is left out, as what cannot be read is
  }
}

}  // namespace zkin
