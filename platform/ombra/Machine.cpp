#include "platform/ombra/Machine.h"

namespace Ombra::Kin {

Machine::~Machine() = default;

}  // namespace Ombra::Kin
