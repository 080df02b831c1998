#pragma once

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>

#include "tools/PathPlot.h"
#include "tools/path.h"

namespace korvo::tools {

/// The report of a path in its three forms.
void printPath(std::ostream& out, const PathOutcome& path);
nlohmann::json pathJson(const PathOutcome& path);

/// One page that needs nothing else: no network, no files beside it.
std::string pathPage(const PathOutcome& path, const PathPlot& plot);

}  // namespace korvo::tools
