#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/Language.h"
#include "toolkit/check/Check.h"

namespace korvo::tools {

/// A definition file and what the rules say of it.
struct CheckedFile {
  std::string name;  ///< As in the diagnostics, UTF-8.
  CheckResult result;
};

/// How many findings there are.
struct Counts {
  int errors = 0;
  int warnings = 0;
  int notes = 0;
  int fixes = 0;  ///< How many of them `--fix` mends.
};

/// Of some diagnostics.
Counts countsOf(const std::vector<Diagnostic>& diagnostics);

/// Of all files together.
Counts countsOf(const std::vector<CheckedFile>& files);

/// "en" or "fr".
const char* tagOf(Language language);

/// One of two texts.
inline std::string in(Language language, std::string_view english, std::string_view french) {
  return std::string(language == Language::french ? french : english);
}

}  // namespace korvo::tools
