#pragma once

#include <string>
#include <string_view>

#include "toolkit/Language.h"

namespace korvo::tools {

/// One of two words at the head of a line, with blanks up to where its values stand: `width`
/// letters of UTF-8.
std::string label(Language language, std::string_view english, std::string_view french,
                  std::size_t width = 11);

/// A word with blanks behind it, to `width` letters of UTF-8.
std::string padded(std::string_view word, std::size_t width);

}  // namespace korvo::tools
