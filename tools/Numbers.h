#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvo::tools {

/// Reads the finite decimal number that `text` begins with, blanks before it allowed.
/// @return  How many characters it has; 0 for none. Stricter than the files' scanner, for what
///          people type: no hexadecimal, no exponent without digits ("1e").
std::size_t scanNumber(std::string_view text, double& value);

/// The finite number that the whole of `text` spells, blanks around it allowed; nothing otherwise.
std::optional<double> numberOf(std::string_view text);

/// The whole number that all of `text` spells.
std::optional<int> integerOf(std::string_view text);

/// Without the blanks and tabs around it.
std::string_view trimmed(std::string_view text);

/// Parts of `text` between the separators, empty ones included.
std::vector<std::string> split(std::string_view text, char separator);

/// The shortest text that reads back as the same number; no "-0".
std::string exact(double value);

/// The same, of ordinary size without an exponent.
std::string plain(double value);

/// With at most six decimals and no exponent, for people to read; no "-0".
std::string rounded(double value);

/// Appends the shortest text of `value` to `out`; what is not finite as "nan" or "inf".
void appendExact(std::string& out, double value);

}  // namespace korvo::tools
