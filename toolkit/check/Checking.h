#pragma once

#include <optional>

#include "toolkit/Machine.h"
#include "toolkit/check/Check.h"

namespace korvo::checking {

/// A check and the machine that it loaded on the way.
struct Checked {
  CheckResult result;
  std::optional<Machine> machine;  ///< Tool 1 is set. Only without errors.
};

/// Checks and loads a definition file.
///
/// With Checks::endless only what the library would not survive is looked for, and everything else
/// that it accepts is loaded.
Checked checkAndLoad(const std::filesystem::path& path, Format format, Language language,
                     Checks checks);

}  // namespace korvo::checking
