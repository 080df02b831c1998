#pragma once

#include "toolkit/path/Toolpath.h"
#include "tools/path.h"

namespace korvo::tools {

/// Says on standard error what was asked and cannot be meant so: axes put outside their limits,
/// wishes that change nothing.
void sayNotes(const ToolpathOptions& options, const Session& session);

/// Says on standard error that statements which change where the tool goes were not followed.
void sayNotFollowed(const PathInput& input, Language language);

}  // namespace korvo::tools
