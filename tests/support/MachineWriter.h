#pragma once

#include <string>

#include "kinematics/KMachine.h"

namespace korvo::test {

/// A definition text that, read with the machine's version, gives its elements again.
///
/// Lines come in rank order, with a link line wherever an element does not hang on the one before;
/// the part side is written from the frame outwards, as its author wrote it. What a definition
/// cannot say is left out: tool lengths, locks, laws, and collision pairs of an element that is not
/// the first of its name. Elements have to hang on the element before or on one found by its name.
std::string definitionText(const zkin::KMachine& machine);

}  // namespace korvo::test
