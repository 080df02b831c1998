#include "toolkit/check/Rule.h"

#include "toolkit/check/Characters.h"

namespace korvo::checking {

std::vector<const Rule*> rules() {
  std::vector<const Rule*> all;
  for (const std::span<const Rule> table :
       {fileRules(), operandRules(), axisRules(), limitRules(), structureRules(), settingRules(),
        geometryRules(), unitRules(), solverRules()}) {
    for (const Rule& rule : table) all.push_back(&rule);
  }
  return all;
}

std::string filled(const Text& text, const std::vector<Words>& words, Language language) {
  std::string out;
  for (const char* c = language == Language::french ? text.french : text.english; *c; ++c) {
    const bool isPlace = c[0] == '{' && c[1] >= '0' && c[1] <= '9' && c[2] == '}';
    const std::size_t i = isPlace ? static_cast<std::size_t>(c[1] - '0') : 0;
    if (!isPlace || i >= words.size()) {
      out += *c;
      continue;
    }
    out += language == Language::french ? words[i].french : words[i].english;
    c += 2;
  }
  return out;
}

std::string inQuotes(std::wstring_view text) { return "'" + utf8OfText(text) + "'"; }

}  // namespace korvo::checking
