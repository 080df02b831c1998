#pragma once

#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "tools/Checked.h"

namespace korvo::tools {

/// The answer of `korvo check --json`: every field of every diagnostic.
nlohmann::json checkJson(const std::vector<CheckedFile>& files, Language language);

}  // namespace korvo::tools
