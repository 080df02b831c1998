#pragma once

#include <string>
#include <vector>

#include "toolkit/Export.h"
#include "toolkit/Language.h"
#include "toolkit/Machine.h"
#include "toolkit/solve/Solver.h"

namespace korvo {

/// Which closed form serves a machine's current tool, or why none does. Axes by their places.
struct Served {
  SolverKind kind = SolverKind::none;
  Unserved unserved = Unserved::served;
  std::vector<int> turning;    ///< Rotary axes that turn the tool, the one nearest the part first.
  std::vector<int> carrying;   ///< Axes that carry its tip, of an arm its wrist.
  std::vector<int> redundant;  ///< Axes that a target leaves free to choose.
  std::vector<int> locked;
  std::vector<int> unsuited;  ///< Axes that keep a closed form away; empty where it is not theirs.
  double apartMm = 0.0;       ///< How far the lines of the last three joints miss each other.
  std::string text;           ///< All of it in words.
};

/// @param options  As the solver's: an axis that stands as they say is redundant.
/// @units  Of linear axes those carry that do at the zero position.
KORVO_TOOLKIT_API Served servedBy(const Machine& machine, const Solver& solver,
                                  const SolverOptions& options = {},
                                  Language language = Language::english);

}  // namespace korvo
