#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/Text.h"
#include "tools/CheckExplain.h"
#include "tools/CheckFix.h"
#include "tools/CheckJson.h"
#include "tools/CheckText.h"
#include "tools/Examples.h"
#include "tools/Messages.h"
#include "tools/Options.h"
#include "tools/Sarif.h"
#include "tools/Verb.h"
#include "tools/Verbs.h"

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

using nlohmann::json;

namespace korvo::tools {
namespace {

struct CheckOptions {
  std::vector<std::string> machines;
  std::string format = "auto";
  std::string language = "en";
  std::string colour = "auto";
  std::optional<std::string> explain;
  bool json = false;
  bool sarif = false;
  bool fix = false;
};

// --- options

bool isTerminal() {
#if defined(_WIN32)
  return _isatty(1) != 0;
#else
  return isatty(1) != 0;
#endif
}

// https://no-color.org: set, and not empty.
bool isColourUnwanted() {
  const char* set = std::getenv("NO_COLOR");
  return set && *set;
}

bool colourOf(const std::string& word) {
  if (word == "always") return true;
  if (word == "never") return false;
  if (word == "auto") return isTerminal() && !isColourUnwanted();
  failUsage("auto, always or never after --colour", inQuotes(word));
}

void refuseTogether(bool both, const char* wanted, const char* found) {
  if (both) failUsage(wanted, found);
}

void requireSense(const CheckOptions& o) {
  refuseTogether(o.json && o.sarif, "one of --json and --sarif", "both");
  refuseTogether(o.fix && (o.json || o.sarif), "--fix alone: it answers in text",
                 "--json or --sarif with it");
  refuseTogether(o.explain && (o.fix || o.sarif), "--explain without --fix and --sarif", "both");
  refuseTogether(o.explain && !o.machines.empty(), "--explain without a MACHINE", "both");
  refuseTogether(!o.explain && o.machines.empty(), "a MACHINE to check, or --explain CODE", "none");
}

// What is not there is a finding like any other.
std::filesystem::path pathOf(const std::string& machine) {
  try {
    return findMachine(machine);
  } catch (const Failure& e) {
    if (e.exit == Exit::usage) throw;
    return machine;
  }
}

std::vector<std::filesystem::path> pathsOf(const std::vector<std::string>& machines) {
  std::vector<std::filesystem::path> paths;
  paths.reserve(machines.size());
  for (const std::string& machine : machines) paths.push_back(pathOf(machine));
  return paths;
}

// --- answers

// Bytes of other encodings may stand in names of files.
void printJson(const json& answer) {
  std::cout << answer.dump(2, ' ', false, json::error_handler_t::replace) << '\n';
}

void explain(const CheckOptions& o, const TextStyle& style) {
  const std::vector<RulePage> pages = pagesOf(*o.explain, style.language);
  if (o.json) return printJson(pagesJson(pages, style.language));
  for (const RulePage& page : pages) {
    if (&page != &pages.front()) std::cout << '\n';
    printPage(std::cout, page, style);
  }
}

CheckedFile checkedFile(const std::filesystem::path& path, Format format, Language language) {
  return {shownText(path.string()), check(path, format, language)};
}

void printSummary(const Counts& counts, bool hasFixed, Language language) {
  std::cout << countText(counts, language);
  if (counts.fixes > 0 && !hasFixed) {
    std::cout << in(language, "; --fix mends ", " ; --fix en corrige ") << counts.fixes;
  }
  std::cout << '\n';
}

Counts checkAsText(const CheckOptions& o, Format format, const TextStyle& style) {
  std::vector<CheckedFile> files;
  for (const std::filesystem::path& path : pathsOf(o.machines)) {
    CheckedFile file = checkedFile(path, format, style.language);
    if (o.fix) file.result = fixFile(std::cout, path, std::move(file.result), format, style);
    for (const Diagnostic& d : file.result.diagnostics) printFinding(std::cout, d, style);
    files.push_back(std::move(file));
  }
  printSummary(countsOf(files), o.fix, style.language);
  return countsOf(files);
}

Counts checkAsData(const CheckOptions& o, Format format, Language language) {
  std::vector<CheckedFile> files;
  for (const std::filesystem::path& path : pathsOf(o.machines)) {
    files.push_back(checkedFile(path, format, language));
  }
  printJson(o.sarif ? sarif(files, language) : checkJson(files, language));
  return countsOf(files);
}

Exit run(const CheckOptions& o) {
  const TextStyle style{languageOf(o.language), colourOf(o.colour)};
  const Format format = formatOf(o.format);
  requireSense(o);
  if (o.explain) {
    explain(o, style);
    return Exit::answered;
  }
  const Counts counts =
      o.json || o.sarif ? checkAsData(o, format, style.language) : checkAsText(o, format, style);
  return counts.errors > 0 ? Exit::no : Exit::answered;
}

void addFlags(Verb& verb, CheckOptions& o) {
  verb.addFlag("--json", o.json, "Answer in JSON (schemas in share/korvo/schemas)");
  verb.addFlag("--sarif", o.sarif, "Answer in SARIF 2.1.0, for editors and code review");
  verb.addFlag("--fix", o.fix,
               "Mend what has one harmless remedy: write the file, show the difference, and say "
               "what is left");
}

}  // namespace

void addCheck(CLI::App& app, Exit& exit) {
  Verb verb(app, "check", "Say what is wrong in definition files, where, and how to mend it");
  const auto o = std::make_shared<CheckOptions>();
  verb.addOption("MACHINE", o->machines).text("Definition files, or names of installed examples");
  verb.addOption("--format", o->format, "Format version: auto, 1 or 2 [auto: from the axis lines]");
  addFlags(verb, *o);
  verb.addOption("--lang", o->language, "Language of the answer: en or fr [en]");
  verb.addOption("--colour,--color", o->colour,
                 "auto, always or never [auto: on a terminal, unless NO_COLOR is set]");
  verb.addOption("--explain", o->explain,
                 "Say what the rule of that code means, with a wrong and a right example; all: "
                 "every rule. No MACHINE then");
  verb.setFooter("Exit codes: 0 no errors, 1 errors, 2 bad usage, 3 --fix could not write");
  verb.setAction([o, &exit] { exit = run(*o); });
}

}  // namespace korvo::tools
