#include "tools/Sarif.h"

#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>

#include "toolkit/Text.h"
#include "tools/CheckExplain.h"

using nlohmann::json;

namespace korvo::tools {
namespace {

// --- rules

json textJson(const std::string& text) { return {{"text", text}}; }

// Severities are called alike there.
json levelJson(Severity severity) { return {{"level", toString(severity)}}; }

std::string helpText(const RulePage& page, Language language) {
  std::string text = inWords(page.suggestion);
  if (page.wrong.empty()) return text.empty() ? page.meaning : text;
  if (!text.empty()) text += "\n\n";
  return text + in(language, "Wrong:\n", "Faux :\n") + toUtf8(toWide(page.wrong)) +
         in(language, "Right:\n", "Juste :\n") + toUtf8(toWide(page.right));
}

json ruleJson(const RulePage& page, Language language) {
  return {{"id", page.code},
          {"shortDescription", textJson(inWords(page.sentence))},
          {"fullDescription", textJson(page.meaning)},
          {"help", textJson(helpText(page, language))},
          {"defaultConfiguration", levelJson(page.severity)}};
}

// --- places

bool staysInUri(char c) {
  constexpr std::string_view kMarks = "-._~/";
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         kMarks.find(c) != std::string_view::npos;
}

// A relative path is a relative reference; a colon in it would read as a scheme (RFC 3986, 4.2).
std::string uriOf(const std::string& path) {
  constexpr const char* kHex = "0123456789ABCDEF";
  std::string uri = path.starts_with('/') ? "file://" : "";
  for (const char c : path) {
    if (staysInUri(c)) {
      uri += c;
    } else {
      uri += {'%', kHex[(c >> 4) & 0xF], kHex[c & 0xF]};
    }
  }
  return uri;
}

json artifactJson(const std::string& file) { return {{"uri", uriOf(file)}}; }

json regionJson(int line, int column, int length) {
  if (column < 1) return {{"startLine", line}};
  return {{"startLine", line}, {"startColumn", column}, {"endColumn", column + length}};
}

json locationJson(const Diagnostic& d) {
  json place = {{"artifactLocation", artifactJson(d.file)}};
  if (d.line > 0) {
    place["region"] = regionJson(d.line, d.column, d.length);
    if (!d.source.empty()) place["region"]["snippet"] = textJson(d.source);
  }
  return {{"physicalLocation", std::move(place)}};
}

// --- results

json fixJson(const Diagnostic& d) {
  json fix = {{"artifactChanges",
               {{{"artifactLocation", artifactJson(d.file)},
                 {"replacements",
                  {{{"deletedRegion", regionJson(d.fix->line, d.fix->column, d.fix->length)},
                    {"insertedContent", textJson(d.fix->text)}}}}}}}};
  if (!d.suggestion.empty()) fix["description"] = textJson(d.suggestion);
  return fix;
}

json resultJson(const Diagnostic& d, int ruleIndex) {
  json result = {{"ruleId", d.code},
                 {"ruleIndex", ruleIndex},
                 {"level", toString(d.severity)},
                 {"message", textJson(d.text + (d.suggestion.empty() ? "" : "; " + d.suggestion))},
                 {"locations", json::array({locationJson(d)})}};
  if (d.fix) result["fixes"] = json::array({fixJson(d)});
  return result;
}

json resultsJson(const std::vector<CheckedFile>& files, const std::map<std::string, int>& ranks) {
  json results = json::array();
  for (const CheckedFile& file : files) {
    for (const Diagnostic& d : file.result.diagnostics) {
      results.push_back(resultJson(d, ranks.at(d.code)));
    }
  }
  return results;
}

}  // namespace

json sarif(const std::vector<CheckedFile>& files, Language language) {
  json rules = json::array();
  std::map<std::string, int> ranks;
  for (const RulePage& page : rulePages(language)) {
    ranks[page.code] = static_cast<int>(rules.size());
    rules.push_back(ruleJson(page, language));
  }
  json driver = {{"name", "korvo"},
                 {"version", KORVO_VERSION},
                 {"language", tagOf(language)},
                 {"rules", std::move(rules)}};
  json run = {{"tool", {{"driver", std::move(driver)}}},
              {"columnKind", "unicodeCodePoints"},
              {"results", resultsJson(files, ranks)}};
  return {{"$schema",
           "https://docs.oasis-open.org/sarif/sarif/v2.1.0/os/schemas/sarif-schema-2.1.0.json"},
          {"version", "2.1.0"},
          {"runs", json::array({std::move(run)})}};
}

}  // namespace korvo::tools
