#pragma once

#include "platform/ombra/MachinePosition.h"

namespace zkin {

/// Appends "NMP<size> (label) [ v0 | v1 ... ]" to the open trace line: the first `count` registers.
void tracePosition(int size, const wchar_t* label, const Ombra::Kin::MachinePosition& p, int count);

}  // namespace zkin
