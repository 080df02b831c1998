#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvo::tools {

/// `text` for a terminal: control bytes but line feeds are spelled out ("\r", "\x1b").
std::string printable(std::string_view text);

/// What was found, for messages: between quotes, cut when long, every control byte spelled out.
std::string inQuotes(std::string_view text);

/// "a, b, c"; "none" when there is nothing.
std::string joined(const std::vector<std::string>& words);

/// One message to standard error, printable.
void say(std::string_view message);

/// How many letters to insert, drop or change (Levenshtein's distance).
int letterDistance(std::string_view a, std::string_view b);

}  // namespace korvo::tools
