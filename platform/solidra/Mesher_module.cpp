// OpenCASCADE is thirty libraries: loading them takes longer than most programs run, and most never
// mesh a face.
#include "platform/os/Modules.h"
#include "platform/solidra/Mesher.h"

namespace solidra {

namespace {

// Lies in this library, beside which the module is.
void here() {}

}  // namespace

Mesher mesher() {
  static const auto found = reinterpret_cast<Mesher>(
      korvo::os::symbolBeside(here, KORVO_SOLIDRA_MODULE, "solidra_triangulate"));
  return found;
}

}  // namespace solidra
