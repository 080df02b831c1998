#include "toolkit/check/Rule.h"

#include "toolkit/Text.h"

namespace korvo::checking {

std::vector<const Rule*> rules() {
  std::vector<const Rule*> all;
  for (const std::span<const Rule> table :
       {fileRules(), operandRules(), misreadRules(), axisRules(), limitRules(), structureRules(),
        settingRules(), geometryRules(), unitRules(), solverRules()}) {
    for (const Rule& rule : table) all.push_back(&rule);
  }
  return all;
}

std::string inQuotes(std::wstring_view text) { return "'" + shownText(text) + "'"; }

}  // namespace korvo::checking
