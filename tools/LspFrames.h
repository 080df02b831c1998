#pragma once

#include <istream>
#include <optional>
#include <ostream>
#include <string>

namespace korvo::tools {

/// Longest message that a language client may send, in bytes.
inline constexpr int kMaxLspMessage = 64 * 1024 * 1024;

/// The next message: a header with its Content-Length, an empty line, so many bytes. Nothing at the
/// end of the input.
/// @errors  Throws Failure (refused) for a header without a length from 0 to kMaxLspMessage, and
/// for
///          a message that ends early: where the next one begins is not known then.
std::optional<std::string> readFrame(std::istream& in);

/// Writes a message with its header, at once.
void writeFrame(std::ostream& out, const std::string& message);

}  // namespace korvo::tools
