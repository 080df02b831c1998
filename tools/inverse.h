#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/solve/Solver.h"
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
  Engine engine = Engine::solver;
  std::string language = "en";
  std::vector<std::string> hold;
  std::vector<std::string> sample;
  bool all = false;
  bool strict = false;
  bool stats = false;
};

/// How many of all positions are answered; throws Failure (usage) for what is no number.
std::size_t mostOf(const InverseOptions& options);

/// Divides a direction by the largest of its components, so that its square is a number whatever
/// they are; false for a null one.
bool scaleDirection(double* direction);

/// What --hold and --sample say of axes that targets leave free; throws Failure (usage).
SolverOptions solverOptionsOf(const InverseOptions& options, const Session& session);

/// Answers `korvo inverse --targets`: every row from where the row before ended, the first from
/// `from`.
Exit answerTargets(const InverseOptions& options, const Session& session, const Position& from,
                   LineBlocks& table);

}  // namespace korvo::tools
