#include "tools/Arguments.h"

#include <algorithm>

#include "tools/Failure.h"
#include "tools/Messages.h"

namespace korvo::tools {
namespace {

bool holds(const std::vector<std::string>& words, const std::string& word) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

std::string didYouMean(const std::vector<std::string>& verbs, const std::string& word) {
  constexpr int kMistypedLetters = 2;
  for (const std::string& verb : verbs) {
    if (letterDistance(verb, word) <= kMistypedLetters) return " (did you mean '" + verb + "'?)";
  }
  return "";
}

[[noreturn]] void failVerb(const std::vector<std::string>& verbs,
                           const std::vector<std::string>& arguments) {
  const std::string wanted = "a verb (" + joined(verbs) + ") first";
  if (arguments.empty()) failUsage(wanted, "nothing; 'korvo --help' says more");
  const std::string& first = arguments.front();
  const auto verb =
      std::find_first_of(arguments.begin(), arguments.end(), verbs.begin(), verbs.end());
  if (verb == arguments.end()) failUsage(wanted, inQuotes(first) + didYouMean(verbs, first));
  failUsage(wanted, inQuotes(first) + " before '" + *verb + "'; write 'korvo " + *verb + " ...'");
}

}  // namespace

std::vector<std::string> withVerbFirst(const std::vector<std::string>& verbs,
                                       std::vector<std::string> arguments) {
  if (!arguments.empty() && arguments.front() == "help") {
    arguments.erase(arguments.begin());
    arguments.insert(arguments.begin() + !arguments.empty(), "--help");
  }
  const bool isAnswered = !arguments.empty() && holds({"--help", "-h", "--version"}, arguments[0]);
  if (!isAnswered && (arguments.empty() || !holds(verbs, arguments.front()))) {
    failVerb(verbs, arguments);
  }
  return arguments;
}

}  // namespace korvo::tools
