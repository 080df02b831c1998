#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tools/CheckText.h"

namespace korvo::tools {

/// A text of a rule for people: "..." where a finding says what it found.
std::string inWords(const std::string& text);

/// The pages of the rule `code`, or of all rules for "all". Throws Failure, with the nearest code.
std::vector<RulePage> pagesOf(const std::string& code, Language language);

/// One page for a terminal.
void printPage(std::ostream& out, const RulePage& page, const TextStyle& style);

/// All pages, with what is said of each wrong example.
nlohmann::json pagesJson(const std::vector<RulePage>& pages, Language language);

}  // namespace korvo::tools
