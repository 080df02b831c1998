#pragma once

#include <filesystem>
#include <vector>

#include "toolkit/Export.h"
#include "toolkit/Format.h"
#include "toolkit/check/Diagnostic.h"

namespace korvo {

/// What the rules say about a definition file, and the format that was taken.
struct CheckResult {
  FormatChoice format;
  std::vector<Diagnostic> diagnostics;  ///< Rule by rule, each in file order.
};

/// Checks the definition file at `path` without loading it: ends on every input.
///
/// @errors  A file that cannot be read gives one diagnostic with the code "file-unreadable".
/// @cost    Linear in the file, but for look-ups by name and index among its elements.
KORVO_TOOLKIT_API CheckResult check(const std::filesystem::path& path,
                                    Format format = Format::automatic);

}  // namespace korvo
