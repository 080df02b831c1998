#pragma once

#include <vector>

namespace korvo::tools {

class Verb;

/// What computes an answer.
enum class Engine {
  solver,    ///< The toolkit's own solver, which knows every position.
  library,   ///< The loaded machine itself.
  external,  ///< The machine made into one of the external kinematics library.
};

/// Adds --engine, which takes the words of `engines`; without it `engine` stays. Other words throw
/// Failure (usage).
void addEngineOption(Verb& verb, Engine& engine, const std::vector<Engine>& engines);

}  // namespace korvo::tools
