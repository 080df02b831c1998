#include "toolkit/check/Check.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <set>
#include <system_error>
#include <tuple>
#include <utility>

#include "kinematics/KMachine.h"
#include "toolkit/Path.h"
#include "toolkit/TemporaryFile.h"
#include "toolkit/check/Characters.h"
#include "toolkit/check/Checking.h"
#include "toolkit/check/Document.h"
#include "toolkit/check/FormatGuess.h"
#include "toolkit/check/Links.h"
#include "toolkit/check/Misread.h"
#include "toolkit/check/Rule.h"

namespace korvo {
namespace checking {
namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// Of what openRead does not open.
Words whatIsThere(const std::filesystem::path& path) {
  Words noPermission("no permission", "aucun droit de lecture");
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (error == std::errc::permission_denied) return noPermission;
  if (!std::filesystem::exists(status)) return {"none", "aucun"};
  if (std::filesystem::is_directory(status)) return {"a folder", "un dossier"};
  if (std::filesystem::is_regular_file(status)) return noPermission;
  return {"a pipe or a device", "un tube ou un périphérique"};
}

File openRead(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return nullptr;  // a pipe would block
#if defined(_WIN32)
  return File(_wfopen(path.c_str(), L"rb"));
#else
  return File(std::fopen(path.c_str(), "rbe"));
#endif
}

// The lines before a place that cannot be read are no document: what they lack may stand behind it.
Document documentOf(std::FILE* file, Words& unreadable) {
  Document document = readDocument(file);
  if (std::ferror(file) == 0) return document;
  unreadable = Words("one that the system failed to read to its end",
                     "un fichier que le système n'a pas pu lire jusqu'au bout");
  return {};
}

const Words kChanged("one that changed while it was read", "un fichier modifié pendant la lecture");

// --- findings to diagnostics

const SourceLine* lineOf(const Document& document, int number) {
  const auto at = std::lower_bound(document.lines.begin(), document.lines.end(), number,
                                   [](const SourceLine& l, int n) { return l.number < n; });
  return at != document.lines.end() && at->number == number ? &*at : nullptr;
}

std::string suggestionOf(const Rule& rule, const Finding& finding, Language language) {
  if (finding.advice) {
    return language == Language::french ? finding.advice->french : finding.advice->english;
  }
  const bool needsWords =
      std::string_view(rule.suggestion.english).find("{0}") != std::string_view::npos;
  if (needsWords && finding.suggested.empty()) return {};
  return filled(rule.suggestion, finding.suggested, language);
}

std::optional<Fix> fixOf(const Edit& edit, const Document& document) {
  const SourceLine* line = lineOf(document, edit.place.line);
  if (!line) return {};
  const Stretch gone = inCharacters(line->raw, edit.place.column, edit.place.length);
  return Fix{edit.place.line, gone.column, gone.length, edit.text};
}

Diagnostic diagnosticOf(const Rule& rule, const Finding& finding, const Source& source,
                        const std::string& file, Language language) {
  Diagnostic d;
  d.file = file;
  d.line = finding.place.line;
  d.code = rule.code;
  d.severity = rule.severity;
  d.text = filled(rule.sentence, finding.found, language);
  d.suggestion = suggestionOf(rule, finding, language);
  d.isEndless = rule.isEndless;
  const SourceLine* line = lineOf(source.document, finding.place.line);
  if (!line) return d;
  d.source = utf8OfLine(line->raw);
  const Stretch where = inCharacters(line->raw, finding.place.column, finding.place.length);
  d.column = where.column;
  d.length = where.length;
  if (finding.fix) d.fix = fixOf(*finding.fix, source.document);
  return d;
}

// One run of the rules over a file.
class Run {
 public:
  Run(std::string file, Language language, Checks checks)
      : file_(std::move(file)), language_(language), checks_(checks) {}

  // Whether the next stage may be reached.
  bool ask(Stage stage, const Source& source) {
    for (const Rule* rule : rules()) {
      if (rule->stage != stage) continue;
      if (checks_ == Checks::endless && !isNeeded(*rule)) continue;
      for (const Finding& finding : rule->find(source)) {
        found_.push_back(diagnosticOf(*rule, finding, source, file_, language_));
      }
    }
    return !hasError(found_);
  }

  // Of a file that is read as the other format than it is written in, only that is told: not what
  // its lines lack in this format alone. What they lack in both stays, and what would never end.
  void keepWhatHoldsIn(const Run& other) {
    std::set<std::pair<int, std::string>> both;
    for (const Diagnostic& d : other.found_) both.emplace(d.line, d.code);
    bool isErrorLost = false;
    std::vector<Diagnostic> kept;
    for (Diagnostic& d : found_) {
      const bool isKept = d.isEndless || d.code == kFormatCode || both.count({d.line, d.code}) > 0;
      isErrorLost = isErrorLost || (!isKept && d.severity == Severity::error);
      if (isKept) kept.push_back(std::move(d));
    }
    found_ = std::move(kept);
    for (Diagnostic& d : found_) {
      if (isErrorLost && d.code == kFormatCode) d.severity = Severity::error;
    }
  }

  bool hasErrors() const { return hasError(found_); }

  // By place; what is about the same one stays in the order of the table.
  std::vector<Diagnostic> take() {
    std::vector<std::tuple<int, int, std::size_t>> order;
    order.reserve(found_.size());
    for (const Diagnostic& d : found_) order.emplace_back(d.line, d.column, order.size());
    std::sort(order.begin(), order.end());
    std::vector<Diagnostic> sorted;
    sorted.reserve(found_.size());
    for (const auto& place : order) sorted.push_back(std::move(found_[std::get<2>(place)]));
    return sorted;
  }

 private:
  static constexpr std::string_view kFormatCode = "format-version";

  // Without them there is no machine, whatever is left out.
  static bool isNeeded(const Rule& rule) {
    const std::string_view code = rule.code;
    return rule.isEndless || code == "file-unreadable" || code == "not-loaded";
  }

  std::string file_;
  Language language_;
  Checks checks_;
  std::vector<Diagnostic> found_;
};

std::optional<Machine> loaded(const std::filesystem::path& path, int version) {
  zkin::KMachine machine(wideOf(path).c_str(), version);
  if (machine.readDataFile() != 0) return std::nullopt;
  machine.setCurrentTool(1);  // the library leaves it unset, and then most queries answer nothing
  return Machine(machine);
}

// Whether the machine may be loaded.
bool askLines(Run& run, const Run& fresh, const Source& source, Checks checks) {
  run.ask(Stage::lines, source);
  if (checks == Checks::all && isOfOtherFormat(source.format, source.likely)) {
    Run other = fresh;
    const LinkedElements linked = linkElements(source.document, source.likely.version);
    other.ask(Stage::lines, {source.document, linked, source.likely, source.likely, source.folder});
    run.keepWhatHoldsIn(other);
  }
  return !run.hasErrors();
}

// What tells a file from one that took its place.
struct Stamp {
  std::filesystem::file_time_type time;
  std::uintmax_t size = 0;
  bool operator==(const Stamp&) const = default;
};

Stamp stampOf(const std::filesystem::path& path) {
  std::error_code none;
  return {std::filesystem::last_write_time(path, none), std::filesystem::file_size(path, none)};
}

struct Names {
  std::filesystem::path path;   ///< What is read.
  std::filesystem::path shown;  ///< What messages say, and where geometry files may lie.
};

Checked checkFile(const Names& names, Format format, Language language, Checks checks) {
  Checked checked;
  const Run fresh(utf8Of(names.shown), language, checks);
  Run run = fresh;
  const Stamp stamp = stampOf(names.path);
  const File file = openRead(names.path);
  Words unreadable = "";
  if (!file) unreadable = whatIsThere(names.path);
  const Document document = file ? documentOf(file.get(), unreadable) : Document{};
  LinkedElements linked;
  Source source{document, linked, {}, {}, names.shown.parent_path()};
  source.unreadable = unreadable;
  if (run.ask(Stage::file, source)) {
    source.format = chooseFormat(document, format);
    source.likely = chooseFormat(document, Format::automatic);
    linked = linkElements(document, source.format.version);
    if (askLines(run, fresh, source, checks)) {
      checked.machine = loaded(names.path, source.format.version);
      source.machine = checked.machine ? &*checked.machine : nullptr;
      run.ask(Stage::machine, source);
    }
  }
  // The library has read the file once more: its machine may be one that no rule has seen.
  if (!(stampOf(names.path) == stamp)) {
    run = fresh;
    run.ask(Stage::file, {Document{}, linked, {}, {}, {}, kChanged});
  }
  checked.result = {source.format, source.likely, run.take()};
  if (hasError(checked.result.diagnostics)) checked.machine.reset();
  return checked;
}

}  // namespace

Checked checkAndLoad(const std::filesystem::path& path, Format format, Language language,
                     Checks checks) {
  return checkFile({path, path}, format, language, checks);
}

}  // namespace checking

CheckResult check(const std::filesystem::path& path, Format format, Language language) {
  return checking::checkAndLoad(path, format, language, Checks::all).result;
}

CheckResult checkText(const std::string& text, const std::filesystem::path& path, Format format,
                      Language language) {
  const TemporaryFile file(text);
  return checking::checkFile({file.path(), path}, format, language, Checks::all).result;
}

std::vector<RulePage> rulePages(Language language) {
  std::vector<RulePage> pages;
  for (const checking::Rule* rule : checking::rules()) {
    const auto said = [language](const Text& text) { return filled(text, {}, language); };
    pages.push_back({rule->code, rule->severity, said(rule->sentence), said(rule->suggestion),
                     said(rule->meaning), rule->wrong, rule->right, rule->exampleFormat});
  }
  return pages;
}

}  // namespace korvo
