#include "tools/Label.h"

#include <algorithm>

namespace korvo::tools {

std::string padded(std::string_view word, std::size_t width) {
  const auto isLetter = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; };
  const auto letters = static_cast<std::size_t>(std::count_if(word.begin(), word.end(), isLetter));
  return std::string(word) + std::string(letters < width ? width - letters : 0, ' ');
}

std::string label(Language language, std::string_view english, std::string_view french,
                  std::size_t width) {
  return padded(language == Language::french ? french : english, width);
}

}  // namespace korvo::tools
