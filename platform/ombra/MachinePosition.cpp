#include "platform/ombra/MachinePosition.h"

namespace Ombra::Kin {

MachinePosition::~MachinePosition() = default;

}  // namespace Ombra::Kin
