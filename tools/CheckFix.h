#pragma once

#include <filesystem>
#include <ostream>

#include "tools/CheckText.h"

namespace korvo::tools {

/// Applies the fixes that `result` brings for the file at `path`, writes the file and shows the
/// difference; checks again, and once more when that brings fixes.
///
/// @return What the rules say at the end. A file with nothing to fix is not touched.
CheckResult fixFile(std::ostream& out, const std::filesystem::path& path, CheckResult result,
                    Format format, const TextStyle& style);

}  // namespace korvo::tools
