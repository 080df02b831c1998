#pragma once

#include "toolkit/answer/ArmLayout.h"
#include "toolkit/check/Rule.h"

namespace korvo::checking {

/// A condition of the arm solver that is not met, with the angle or the distance that is off.
Words wordsOf(const ArmFault& fault);

}  // namespace korvo::checking
