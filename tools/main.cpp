#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "tools/Arguments.h"
#include "tools/Examples.h"
#include "tools/Failure.h"
#include "tools/Messages.h"
#include "tools/Verbs.h"

using korvo::tools::Exit;

namespace {

int codeOf(Exit exit) { return static_cast<int>(exit); }

int report(Exit exit, const std::string& message) {
  korvo::tools::say(message);
  return codeOf(exit);
}

std::vector<std::string> verbsOf(const CLI::App& app) {
  std::vector<std::string> verbs;
  for (const CLI::App* verb : app.get_subcommands({})) verbs.push_back(verb->get_name());
  return verbs;
}

// What no option took, in the order in which it was typed; the parser has it backwards.
std::string unexpectedText(const CLI::App& app, const std::vector<std::string>& arguments) {
  std::vector<std::string> left = app.remaining(true);
  std::string text;
  bool hasComma = false;
  for (const std::string& argument : arguments) {
    const auto at = std::find(left.begin(), left.end(), argument);
    if (at == left.end()) continue;
    left.erase(at);
    text += (text.empty() ? "" : " ") + argument;
  }
  for (const std::string& argument : arguments) {
    hasComma = hasComma || argument.ends_with(',') || argument.starts_with(',');
  }
  return "found what belongs to no option: " + text +
         (hasComma ? " (a list has no blanks behind its commas, or stands in quotes)" : "");
}

// Help and version are answers; anything else is a wrong command line.
Exit exitOf(CLI::App& app, const CLI::ParseError& e, const std::vector<std::string>& arguments) {
  if (e.get_exit_code() != 0) {
    const bool isExtra = dynamic_cast<const CLI::ExtrasError*>(&e) != nullptr;
    korvo::tools::say("korvo: " + (isExtra ? unexpectedText(app, arguments) : e.what()) +
                      "\nRun with --help for more information.");
    return Exit::usage;
  }
  app.exit(e);
  return Exit::answered;
}

int run(int argc, char** argv) {
  CLI::App app(
      "Machine-tool kinematics: what machine it is, where the tool stands, and what puts it there",
      "korvo");
  app.set_version_flag("--version", KORVO_VERSION);
  app.require_subcommand(1);
  app.footer(
      "korvo VERB --help says more about a verb.\n"
      "Exit codes: 0 answered, 1 answered \"no\", 2 bad usage, 3 unreadable or refused input,\n"
      "4 stopped by a signal with what was done kept (path)");
  Exit exit = Exit::answered;
  korvo::tools::addInfo(app, exit);
  korvo::tools::addForward(app, exit);
  korvo::tools::addInverse(app, exit);
  korvo::tools::addPath(app, exit);
  korvo::tools::addLimits(app, exit);
  korvo::tools::addInterpolate(app, exit);
  korvo::tools::addTranslate(app, exit);
  korvo::tools::addMesh(app, exit);
  korvo::tools::addGeometry(app, exit);
  korvo::tools::addNew(app, exit);
  korvo::tools::addCheck(app, exit);
  korvo::tools::addLsp(app, exit);
  const std::vector<std::string> arguments =
      korvo::tools::withVerbFirst(verbsOf(app), {argv + std::min(argc, 1), argv + argc});
  try {
    app.parse(
        std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // as the parser wants it
  } catch (const CLI::ParseError& e) {
    exit = exitOf(app, e, arguments);
  }
  std::cout.flush();
  if (std::cout.fail())
    return report(Exit::refused,
                  "korvo: expected to write the answer, found a closed or full output");
  return codeOf(exit);
}

}  // namespace

int main(int argc, char** argv) {
  korvo::tools::setProgramPath(argv[0]);
  try {
    return run(argc, argv);
  } catch (const korvo::tools::Failure& e) {
    std::cout.flush();
    return report(e.exit, e.what());
  } catch (const std::bad_alloc&) {
    return report(Exit::refused, "korvo: expected enough memory, found too little");
  } catch (const std::exception& e) {
    return report(Exit::refused, std::string("korvo: ") + e.what());
  }
}
