#pragma once

#include <vector>

#include "toolkit/Machine.h"
#include "toolkit/path/Toolpath.h"

namespace korvo::bench {

/// A toolpath of table-ac: a spiral whose turns the table follows, the tool leaning to and fro.
std::vector<PathTarget> swirl(const Machine& machine, int count);

}  // namespace korvo::bench
