// The machine's bodies, placed.

#include <new>

#include "geometry/GeometryFile.h"
#include "kinematics/KMachine.h"

using zgeo::UTri;

namespace zkin {
namespace {

/// Appends all of `body` or, when there is no memory for it, nothing.
void append(const std::vector<UTri>& body, std::vector<UTri>& triangles) try {
  triangles.insert(triangles.end(), body.begin(), body.end());
} catch (const std::bad_alloc&) {
}

}  // namespace

// Deliberate: files are read anew at every call, so one that changes on disk shows at the next.
// Test: MachineTriangles.ChangedFileShowsAtTheNextCall.
void KMachine::getTrianglesU(const KMachineValueBase& value, std::vector<UTri>& triangles) const {
  triangles.clear();
  std::vector<UTri> body;
  for (const KMachineElem& e : elements_) {
    loadGeometryFile(e.getGeomFile(), body);
    if (body.empty()) continue;
    UTri::_applyMatrix(getMatrix(value, &e), body);
    append(body, triangles);
  }
}

}  // namespace zkin
