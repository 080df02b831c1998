#pragma once

#include <string>

#include "kinematics/KMachine.h"

namespace korvo::bench {

/// Answers a table of positions as `korvo forward --positions` does, for columns X, Y, Z, A, C of a
/// five-axis machine, without checks: every row is taken for a good one inside the limits.
void plainForward(const zkin::KMachine& machine, const std::string& table, const std::string& out);

}  // namespace korvo::bench
