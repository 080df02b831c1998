#pragma once

#include <optional>
#include <string>

#include "tools/Csv.h"
#include "tools/Engine.h"
#include "tools/Failure.h"
#include "tools/Options.h"
#include "tools/Session.h"

namespace korvo::tools {

/// What `korvo inverse` was asked.
struct InverseOptions {
  CommonOptions common;
  std::optional<std::string> point;
  std::optional<std::string> direction;
  std::optional<std::string> from;
  std::optional<std::string> most;
  std::optional<std::string> targets;
  Engine engine = Engine::library;
  bool all = false;
  bool strict = false;
  bool stats = false;
};

/// Answers `korvo inverse --targets`: every row from where the row before ended, the first from
/// `from`.
Exit answerTargets(const InverseOptions& options, const Session& session, const Position& from,
                   LineBlocks& table);

}  // namespace korvo::tools
