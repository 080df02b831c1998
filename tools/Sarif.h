#pragma once

#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "tools/Checked.h"

namespace korvo::tools {

/// Findings in the Static Analysis Results Interchange Format, version 2.1.0 (OASIS Standard, 27
/// March 2020): one run, with every rule of the table and one result for each finding.
nlohmann::json sarif(const std::vector<CheckedFile>& files, Language language);

}  // namespace korvo::tools
