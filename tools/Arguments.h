#pragma once

#include <string>
#include <vector>

namespace korvo::tools {

/// The arguments with the verb in front, as the parser wants them: "help VERB" becomes
/// "VERB --help". Throws Failure (usage) with a hint when the first one is none of `verbs`.
std::vector<std::string> withVerbFirst(const std::vector<std::string>& verbs,
                                       std::vector<std::string> arguments);

}  // namespace korvo::tools
