#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/LspFrames.h"
#include "tools/LspServer.h"
#include "tools/Messages.h"
#include "tools/Options.h"
#include "tools/Verb.h"
#include "tools/Verbs.h"

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#endif

using nlohmann::json;

namespace korvo::tools {
namespace {

struct Given {
  std::string language = "en";
  std::string format = "auto";
  bool stdio = false;
};

// Lengths count bytes: no line end may change on the way.
void useBytes() {
#if defined(_WIN32)
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
#endif
}

// A client may send names that are no UTF-8 in escapes of a URI: what is no character is replaced.
void send(const json& message) {
  writeFrame(std::cout, message.dump(-1, ' ', false, json::error_handler_t::replace));
}

Exit run(const Given& given) {
  LspServer server({languageOf(given.language), formatOf(given.format)}, send);
  useBytes();
  while (!server.isEnded() && std::cout) {
    const std::optional<std::string> message = readFrame(std::cin);
    if (!message) break;
    server.take(*message);
  }
  return server.wasShutDown() ? Exit::answered : Exit::no;
}

}  // namespace

void addLsp(CLI::App& app, Exit& exit) {
  Verb verb(app, "lsp",
            "Serve an editor: findings, hover texts and completion while a file is written");
  const auto given = std::make_shared<Given>();
  verb.addOption("--lang", given->language, "Language of the texts: en or fr [en]");
  verb.addOption("--format", given->format,
                 "Format version: auto, 1 or 2 [auto: from the axis lines]");
  verb.addFlag("--stdio", given->stdio,
               "Use standard input and output: always so, for editors that ask for it");
  verb.setFooter(
      "A language server (Language Server Protocol 3.17) on standard input and output; the editor "
      "starts it.\nIts initializationOptions may hold \"language\" and \"format\", which go before "
      "the options here.\nExit codes: 0 ended as the protocol wants it, 1 without shutdown, 2 bad "
      "usage, 3 what was read is no message.");
  verb.setAction([given, &exit] { exit = run(*given); });
}

}  // namespace korvo::tools
