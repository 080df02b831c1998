#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/path.h"

namespace korvo::tools {

/// The sentences of a report, the same in every form of it.

/// With so many decimals.
std::string fixed(double value, int decimals);

/// For people: three decimals at most, fewer of what is large.
std::string neat(double value);

/// "1200 targets".
std::string countedTargets(std::size_t count, Language language);

/// What is in the way, in one line; of a stopped path how far it came.
std::string verdictText(const PathOutcome& path);

/// "2 breaks, 1 target without a position".
std::string fitText(const PathFit& fit, Language language);

/// Of a line: "target 17 (line 23): C goes back by 350 degrees".
std::string breakText(const PathOutcome& path, const PathBreak& at);
std::string standingText(const PathOutcome& path, const PathStanding& at);

/// The targets without a position, each run of them once, the first ones with their reason.
struct UnreachedRun {
  std::size_t first = 0;
  std::size_t last = 0;
  const Answer* reason = nullptr;
};
std::vector<UnreachedRun> unreachedRuns(const PathOutcome& path);
std::string unreachedText(const PathOutcome& path, const UnreachedRun& run);

/// What to do, and what it saves.
std::string adviceText(const PathOutcome& path, const PathAdvice& advice);

/// Where not all was tried, or nothing was compared, because a signal came; else empty.
std::string cutShortText(const PathOutcome& path);

/// "12 targets within 1 degrees of a singular direction ...".
std::string singularText(const PathOutcome& path);

/// "X 12.5 mm, at target 17"; empty without limits.
std::string nearestLimitText(const PathOutcome& path);

/// "X=1 Y=2", of the axes at these values.
std::string positionText(const PathOutcome& path, const Values& values);

/// "LOADTL 1, SPINDL 2"; empty when nothing was skipped.
std::string skippedText(const PathInput& input);

/// "2 statements change where the tool goes and were not followed: CIRCLE 1, TRANS 1"; empty when
/// there are none.
std::string notFollowedText(const PathInput& input, Language language);

/// "cavity.cl: 20000 targets, APT/CL".
std::string inputText(const PathOutcome& path);

/// Places of all axes that the current tool's chain moves, in value order, with their limits.
struct PathAxisView {
  int place = 0;
  std::string name;
  bool isTurn = false;
  double min = 0.0;  ///< Infinite without one.
  double max = 0.0;
  const AxisTravel* travel = nullptr;
};
std::vector<PathAxisView> axisViews(const PathOutcome& path);

std::string shortUnit(const PathAxisView& axis);  ///< "mm" or "°"

}  // namespace korvo::tools
