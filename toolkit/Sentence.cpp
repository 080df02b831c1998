#include "toolkit/Sentence.h"

namespace korvo {

std::string filled(const Text& text, const std::vector<Words>& words, Language language) {
  std::string out;
  for (const char* c = language == Language::french ? text.french : text.english; *c; ++c) {
    const bool isPlace = c[0] == '{' && c[1] >= '0' && c[1] <= '9' && c[2] == '}';
    const std::size_t i = isPlace ? static_cast<std::size_t>(c[1] - '0') : 0;
    if (!isPlace || i >= words.size()) {
      out += *c;
      continue;
    }
    out += words[i].in(language);
    c += 2;
  }
  return out;
}

Words filled(const Text& text, const std::vector<Words>& words) {
  return {filled(text, words, Language::english), filled(text, words, Language::french)};
}

}  // namespace korvo
