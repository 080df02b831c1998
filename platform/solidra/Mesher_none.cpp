#include "platform/solidra/Mesher.h"

namespace solidra {

Mesher mesher() { return nullptr; }

}  // namespace solidra
