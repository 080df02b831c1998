#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/path/Advice.h"
#include "toolkit/path/Toolpath.h"
#include "tools/Csv.h"
#include "tools/Options.h"
#include "tools/Session.h"

namespace korvo::tools {

/// What `korvo path` was asked.
struct PathOptions {
  CommonOptions common;
  std::string targets;
  std::string input = "auto";
  std::optional<std::string> output;
  std::optional<std::string> page;
  std::optional<std::string> from;
  std::optional<std::string> tolerance;
  std::optional<std::string> singular;
  std::optional<std::string> places;
  std::optional<std::string> jobs;
  std::vector<std::string> hold, sample, weight, step, margin, marginCost;
  std::string language = "en";
  bool noAdvice = false;
  bool compare = false;
};

/// A toolpath as it was read.
struct PathInput {
  std::string name;  ///< Of the file, for messages.
  bool isApt = false;
  char separator = ',';  ///< Of its columns.
  std::vector<PathTarget> targets;
  std::vector<std::uint32_t> lines;                             ///< Of each target.
  std::map<std::string, std::size_t, std::less<>> skipped;      ///< Statements that were not read.
  std::map<std::string, std::size_t, std::less<>> notFollowed;  ///< That change the tool's way.

  std::size_t lineOf(std::size_t target) const { return lines[target]; }
};

/// Reads all targets into the machine frame. Throws Failure (refused) for the first thing that
/// cannot be read, with its place.
PathInput readTargets(const PathOptions& options, const Session& session, LineBlocks& lines);

/// What a path came to, with all that is said of it.
struct PathOutcome {
  const PathOptions& asked;
  const Session& session;
  const PathInput& input;
  const ToolpathOptions& options;
  Language language;
  ToolpathReport report;
  std::vector<PathAdvice> advice;
  std::optional<ToolpathReport> nearestFirst;
  bool isCutShort = false;  ///< Stopped behind the path itself, in comparing or trying what helps.
};

}  // namespace korvo::tools
