#pragma once

#include <optional>
#include <string>
#include <string_view>

/// File names as text: encodings and case. Pure functions; no file is looked at.
namespace korvo::os {

/// Lower case of the ASCII and Latin-1 letters by a fixed table; other characters unchanged.
wchar_t lowered(wchar_t c);

/// UTF-8 bytes of a wide name; nothing when it holds a NUL or what is no character (a surrogate, a
/// number above 0x10FFFF).
std::optional<std::string> utf8Of(std::wstring_view name);

/// The characters of a wide name as one byte each; nothing when one does not fit or is NUL.
std::optional<std::string> bytesOf(std::wstring_view name);

/// Characters of a narrow name: of its UTF-8, or one a byte when it is not valid UTF-8.
std::wstring charactersOf(std::string_view name);

/// Whether two narrow names differ in the case of their letters at most.
bool isSameIgnoringCase(std::string_view a, std::string_view b);

}  // namespace korvo::os
