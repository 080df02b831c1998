#include "platform/solidra/Mesher.h"

namespace solidra {

bool triangulate(const Surface&, const Region&, double, UvMesh&) { return false; }

}  // namespace solidra
