#include "platform/solidra/Mesher.h"

namespace solidra {

bool triangulate(const Surface&, const std::vector<Region>&, double, const Deadline&,
                 std::vector<UvMesh>&) {
  return false;
}

}  // namespace solidra
