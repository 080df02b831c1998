#include "tools/Engine.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "tools/Failure.h"
#include "tools/Messages.h"
#include "tools/Verb.h"

namespace korvo::tools {
namespace {

// One row for each engine.
struct Word {
  Engine engine;
  const char* word;
  const char* meaning;
};
constexpr Word kWords[] = {
    {Engine::solver, "solver", "the solver of all positions, and of why there is none"},
    {Engine::library, "library", "the library itself"},
    {Engine::external, "external",
     "the external kinematics library, by the machine made into one of its own"},
};

const Word& rowOf(Engine engine) {
  return *std::find_if(std::begin(kWords), std::end(kWords),
                       [engine](const Word& row) { return row.engine == engine; });
}

Engine engineOf(const std::string& word, const std::vector<Engine>& engines) {
  std::string wanted;
  for (const Engine engine : engines) {
    if (word == rowOf(engine).word) return engine;
    wanted += (wanted.empty() ? "" : " or ") + std::string(rowOf(engine).word);
  }
  failUsage(wanted + " after --engine", inQuotes(word));
}

std::string helpOf(Engine engine, const std::vector<Engine>& engines) {
  std::string text = "What computes:";
  for (const Engine e : engines) {
    text +=
        std::string(e == engines.front() ? " " : "; ") + rowOf(e).word + ", " + rowOf(e).meaning;
  }
  return text + " [" + rowOf(engine).word + "]";
}

}  // namespace

void addEngineOption(Verb& verb, Engine& engine, const std::vector<Engine>& engines) {
  const auto take = [&engine, engines](const std::string& word) {
    engine = engineOf(word, engines);
  };
  verb.addOption("--engine", take, helpOf(engine, engines));
}

}  // namespace korvo::tools
