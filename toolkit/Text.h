#pragma once

#include <string>
#include <string_view>

#include "toolkit/Export.h"

namespace korvo {

/// UTF-8 of wide text; what is no character becomes U+FFFD. So it always is valid UTF-8.
KORVO_TOOLKIT_API std::string toUtf8(std::wstring_view text);

/// UTF-8 of names, paths and lines as the library holds them: it keeps a definition file one byte a
/// character, beside names that programs gave in characters. Bytes above 127 in a row that are
/// UTF-8 become its characters, others those of Latin-1. That of format 2, which the library put in
/// upper case byte by byte, is told by what follows its bytes and comes back as it was written.
KORVO_TOOLKIT_API std::string shownText(std::wstring_view text);

/// The same of bytes, for paths that are no UTF-8 as a whole.
KORVO_TOOLKIT_API std::string shownText(std::string_view bytes);

/// Wide text of UTF-8 (of Latin-1 when the bytes are not UTF-8). A NUL ends the text.
KORVO_TOOLKIT_API std::wstring toWide(const std::string& text);

}  // namespace korvo
