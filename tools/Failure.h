#pragma once

#include <stdexcept>
#include <string>

namespace korvo::tools {

/// What the command line answers with its exit code.
enum class Exit {
  answered = 0,  ///< The question was answered.
  no = 1,        ///< The answer is "no", or some rows have none.
  usage = 2,     ///< The command line itself is wrong.
  refused = 3,   ///< A file cannot be read, or is refused.
  stopped = 4,   ///< Ended by a signal before its end; what was done is kept.
};

/// Ends a verb with a message for standard error: what was wanted, what was found.
class Failure : public std::runtime_error {
 public:
  Failure(Exit code, const std::string& message) : std::runtime_error(message), exit(code) {}
  Exit exit;
};

/// The command line is wrong: "korvo: expected `wanted`, found `found`".
[[noreturn]] inline void failUsage(const std::string& wanted, const std::string& found) {
  throw Failure(Exit::usage, "korvo: expected " + wanted + ", found " + found);
}

}  // namespace korvo::tools
