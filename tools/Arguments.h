#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace korvo::tools {

/// The arguments with the verb in front, as the parser wants them: "help VERB" becomes
/// "VERB --help". Throws Failure (usage) with a hint when the first one is no verb of `app`.
std::vector<std::string> withVerbFirst(const CLI::App& app, std::vector<std::string> arguments);

}  // namespace korvo::tools
