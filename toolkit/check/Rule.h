#pragma once

#include <filesystem>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/Format.h"
#include "toolkit/Machine.h"
#include "toolkit/Sentence.h"
#include "toolkit/check/Diagnostic.h"
#include "toolkit/check/Document.h"
#include "toolkit/check/Links.h"

namespace korvo::checking {

/// What the rules look at.
struct Source {
  const Document& document;          ///< The lines of the file.
  const LinkedElements& linked;      ///< The elements that they declare; empty at Stage::file.
  FormatChoice format;               ///< Taken.
  FormatChoice likely;               ///< What the axis lines speak for.
  std::filesystem::path folder;      ///< Of the definition file: geometry files may lie there.
  Words unreadable = "";             ///< Why there are no lines; empty for a file that was read.
  const Machine* machine = nullptr;  ///< Loaded, at Stage::machine; null when the library refused.
};

/// When a rule is asked. Later stages are reached only without errors in the earlier ones.
enum class Stage {
  file,     ///< Can the lines be read at all?
  lines,    ///< Lines, and the elements linked of them.
  machine,  ///< The machine that the library made of them.
};

/// Instead of the bytes of `place`, `text`. Inserts where the length is 0.
struct Edit {
  Place place;
  std::string text;
};

/// Where a rule is broken, and what is there instead of what the rule wants.
struct Finding {
  explicit Finding(Place where, std::initializer_list<Words> words = {})
      : place(where), found(words) {}

  Finding& suggest(std::initializer_list<Words> words) {
    suggested = words;
    return *this;
  }

  Finding& advise(Words instead) {
    advice = std::move(instead);
    return *this;
  }

  Finding& mend(Place gone, std::string text) {
    fix = Edit{gone, std::move(text)};
    return *this;
  }

  Place place;
  std::vector<Words> found;      ///< For the sentence's {0}, {1}, ...
  std::vector<Words> suggested;  ///< For the suggestion's; a suggestion with {0} needs it.
  std::optional<Words> advice;   ///< Instead of the rule's suggestion, where that does not fit.
  std::optional<Edit> fix;       ///< Only what cannot do harm.
};
using Findings = std::vector<Finding>;

/// A rule. Adding one means adding its function and its row to a table in rules/.
struct Rule {
  const char* code;
  Severity severity;
  Stage stage = Stage::lines;
  bool isEndless = false;  ///< The library would never end on what it finds, or fill the memory.
  Text sentence;           ///< "expected ..., found ...".
  Text suggestion;         ///< How to mend it; may be empty.
  Text meaning;            ///< What it means and why it matters: a few sentences.
  const char* wrong;       ///< Lines that break it, and only as many as that takes.
  const char* right;       ///< The same mended: this rule finds nothing.
  Format exampleFormat = Format::automatic;
  Findings (*find)(const Source& source);
};

/// The tables by topic; each is defined in the file of rules/ that has its name.
std::span<const Rule> fileRules();       ///< Encoding, length, keywords: is it what it looks like?
std::span<const Rule> operandRules();    ///< Numbers, vectors, names of element lines.
std::span<const Rule> misreadRules();    ///< Operands that are not read as they were meant.
std::span<const Rule> axisRules();       ///< Numbers, names, directions of axes.
std::span<const Rule> limitRules();      ///< Travels.
std::span<const Rule> structureRules();  ///< Frame, part, tools, links, chains, hooks.
std::span<const Rule> settingRules();    ///< Strategy, mode, rotation points, collision pairs.
std::span<const Rule> geometryRules();   ///< Geometry files and colours.
std::span<const Rule> unitRules();       ///< Radians, metres, places far away.
std::span<const Rule> solverRules();     ///< What the loaded machine answers.

/// All rules: the tables above in their order.
std::vector<const Rule*> rules();

/// A name in quotes, as UTF-8.
std::string inQuotes(std::wstring_view text);

}  // namespace korvo::checking
