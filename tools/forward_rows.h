#pragma once

#include "tools/Csv.h"
#include "tools/Failure.h"
#include "tools/Session.h"
#include "tools/forward.h"

namespace korvo::tools {

/// Answers `korvo forward --positions`: one output row per input row, in their order, batch by
/// batch, so that memory stays flat.
/// @return  `no` when some rows had no answer, `refused` when --strict stopped at one.
Exit answerRows(const ForwardOptions& options, const Session& session, LineBlocks& table);

}  // namespace korvo::tools
