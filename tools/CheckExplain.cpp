#include "tools/CheckExplain.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "toolkit/Text.h"
#include "tools/Failure.h"
#include "tools/Messages.h"
#include "tools/Session.h"

using nlohmann::json;

namespace korvo::tools {
namespace {

// " (did you mean 'X'?)" when a code is as near as a slip of the pen: a third of the letters.
std::string nearestCode(const std::vector<RulePage>& pages, const std::string& code,
                        Language language) {
  const auto nearest =
      std::min_element(pages.begin(), pages.end(), [&](const RulePage& a, const RulePage& b) {
        return letterDistance(a.code, code) < letterDistance(b.code, code);
      });
  const auto allowed = static_cast<int>(code.size() / 3);
  if (static_cast<int>(letterDistance(nearest->code, code)) > allowed) return "";
  return in(language, " (did you mean '", " (vouliez-vous dire '") + nearest->code +
         in(language, "'?)", "' ?)");
}

[[noreturn]] void failCode(const std::vector<RulePage>& pages, const std::string& code,
                           Language language) {
  throw Failure(Exit::usage, in(language,
                                "korvo: expected the code of a rule or 'all' after --explain, "
                                "found ",
                                "korvo: code d'une règle ou « all » attendu après --explain, "
                                "trouvé : ") +
                                 inQuotes(code) + nearestCode(pages, code, language));
}

std::string titled(const std::string& title, const RulePage& page, Language language) {
  const int version = static_cast<int>(page.format);
  return title + (version ? " (format " + std::to_string(version) + ")" : "") +
         in(language, ":", " :") + "\n";
}

std::string indented(const std::string& text) {
  std::istringstream in(text);
  std::string out;
  for (std::string line; std::getline(in, line);) out += (line.empty() ? "" : "    ") + line + "\n";
  return out;
}

// Examples may hold line ends of other systems, or bytes that are no UTF-8.
std::string utf8(const std::string& bytes) { return toUtf8(toWide(bytes)); }

std::string exampleText(const std::string& lines) { return indented(spelled(utf8(lines))); }

// The folder is none that exists, so that geometry files of an example are not found wherever this
// runs. An example is read from a temporary file; without one there is nothing to say of it.
std::vector<Diagnostic> findingsOf(const RulePage& page, Language language) {
  const std::filesystem::path example = std::filesystem::path("no-such-folder") / "example.def";
  try {
    return checkText(page.wrong, example, page.format, language).diagnostics;
  } catch (const std::filesystem::filesystem_error&) {
    return {};
  }
}

// What the rule says of its wrong example.
std::string findingText(const RulePage& page, const TextStyle& style) {
  std::ostringstream out;
  for (Diagnostic& d : findingsOf(page, style.language)) {
    if (d.code != page.code) continue;
    d.file = "example.def";
    printFinding(out, d, style);
  }
  return out.str();
}

json pageJson(const RulePage& page, Language language) {
  return {{"code", page.code},
          {"severity", toString(page.severity)},
          {"severityText", severityText(page.severity, language)},
          {"sentence", inWords(page.sentence)},
          {"suggestion", inWords(page.suggestion)},
          {"meaning", page.meaning},
          {"wrong", utf8(page.wrong)},
          {"right", utf8(page.right)},
          {"format", static_cast<int>(page.format)},
          {"finding", page.wrong.empty() ? "" : findingText(page, {language, false})}};
}

void printExamples(std::ostream& out, const RulePage& page, const TextStyle& style) {
  const Language language = style.language;
  out << '\n'
      << titled(in(language, "Wrong", "Faux"), page, language) << exampleText(page.wrong)
      << titled(in(language, "Right", "Juste"), page, language) << exampleText(page.right);
  const std::string finding = findingText(page, style);
  if (finding.empty()) return;
  out << in(language, "Of the wrong one it is said:\n", "Message pour l'exemple faux :\n")
      << indented(finding);
}

}  // namespace

std::string inWords(const std::string& text) {
  std::string words;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isPlace = text[i] == '{' && i + 2 < text.size() && text[i + 2] == '}' &&
                         std::isdigit(static_cast<unsigned char>(text[i + 1]));
    words += isPlace ? "..." : text.substr(i, 1);
    if (isPlace) i += 2;
  }
  return words;
}

std::vector<RulePage> pagesOf(const std::string& code, Language language) {
  std::vector<RulePage> pages = rulePages(language);
  if (code == "all") return pages;
  const auto page =
      std::find_if(pages.begin(), pages.end(), [&](const RulePage& p) { return p.code == code; });
  if (page == pages.end()) failCode(pages, code, language);
  return {*page};
}

void printPage(std::ostream& out, const RulePage& page, const TextStyle& style) {
  const Language language = style.language;
  out << painted(page.code, "1", style) << " (" << severityText(page.severity, language) << ")\n"
      << inWords(page.sentence) << "\n\n"
      << page.meaning << '\n';
  if (!page.suggestion.empty()) {
    out << in(language, "\nHow to mend it: ", "\nComment corriger : ") << inWords(page.suggestion)
        << '\n';
  }
  if (!page.wrong.empty()) printExamples(out, page, style);
}

json pagesJson(const std::vector<RulePage>& pages, Language language) {
  json rules = json::array();
  for (const RulePage& page : pages) rules.push_back(pageJson(page, language));
  return {{"schema", "korvo.check.rules/1"},
          {"units", unitsJson()},
          {"language", tagOf(language)},
          {"rules", std::move(rules)}};
}

}  // namespace korvo::tools
