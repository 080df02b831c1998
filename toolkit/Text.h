#pragma once

#include <string>
#include <string_view>

#include "toolkit/Export.h"

namespace korvo {

/// UTF-8 of wide text; what is no character becomes U+FFFD. So it always is valid UTF-8.
KORVO_TOOLKIT_API std::string toUtf8(std::wstring_view text);

/// Wide text of UTF-8 (of Latin-1 when the bytes are not UTF-8). A NUL ends the text.
KORVO_TOOLKIT_API std::wstring toWide(const std::string& text);

}  // namespace korvo
