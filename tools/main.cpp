#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>

#include "tools/Examples.h"
#include "tools/Failure.h"
#include "tools/Verbs.h"

using korvo::tools::Exit;

namespace {

int codeOf(Exit exit) { return static_cast<int>(exit); }

int report(Exit exit, const char* message) {
  std::cerr << message << '\n';
  return codeOf(exit);
}

int run(int argc, char** argv) {
  CLI::App app("Machine-tool kinematics: what machine it is, and where the tool stands", "korvo");
  app.set_version_flag("--version", KORVO_VERSION);
  app.require_subcommand(1);
  app.footer(
      "Exit codes: 0 answered, 1 answered \"no\", 2 bad usage, 3 unreadable or refused input");
  Exit exit = Exit::answered;
  korvo::tools::addInfo(app, exit);
  korvo::tools::addForward(app, exit);
  korvo::tools::addNew(app, exit);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    return app.exit(e) == 0 ? 0 : codeOf(Exit::usage);
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
    return report(Exit::refused, e.what());
  }
}
