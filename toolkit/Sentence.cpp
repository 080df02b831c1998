#include "toolkit/Sentence.h"

#include <string_view>

namespace korvo {

std::string filled(const Text& text, const std::vector<Words>& words, Language language) {
  std::string out;
  std::string_view rest = language == Language::french ? text.french : text.english;
  for (std::size_t open; (open = rest.find('{')) != rest.npos;) {
    const bool isPlace = rest.size() > open + 2 && rest[open + 2] == '}' && rest[open + 1] >= '0' &&
                         rest[open + 1] <= '9';
    const std::size_t i = isPlace ? static_cast<std::size_t>(rest[open + 1] - '0') : 0;
    const bool isWord = isPlace && i < words.size();
    out += rest.substr(0, isWord ? open : open + 1);
    if (isWord) out += words[i].in(language);
    rest.remove_prefix(isWord ? open + 3 : open + 1);
  }
  out += rest;
  return out;
}

Words filled(const Text& text, const std::vector<Words>& words) {
  return {filled(text, words, Language::english), filled(text, words, Language::french)};
}

}  // namespace korvo
