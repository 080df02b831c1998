#pragma once

#include <functional>
#include <string>
#include <vector>

#include "toolkit/solve/Solver.h"
#include "tools/Session.h"

namespace korvo::tools {

class Verb;

/// What is said of axes in "W=120,V=0": `take` gets the place of each and the text behind `=`.
/// Throws Failure (usage) that names `option` for what is no axis, or a locked one.
void forEachAxis(const Session& session, const std::vector<std::string>& given, const char* option,
                 const std::function<void(int place, const std::string& text)>& take);

/// Adds --hold and --sample: what axes do that a target leaves free.
void addFreeAxisOptions(Verb& verb, std::vector<std::string>& hold,
                        std::vector<std::string>& sample);

/// What these two say; throws Failure (usage) for what is no number.
SolverOptions solverOptionsOf(const std::vector<std::string>& hold,
                              const std::vector<std::string>& sample, const Session& session);

}  // namespace korvo::tools
