#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "toolkit/Export.h"
#include "toolkit/Format.h"
#include "toolkit/Language.h"
#include "toolkit/check/Diagnostic.h"

namespace korvo {

/// What the rules say about a definition file, and the format that was taken.
struct CheckResult {
  FormatChoice format;
  FormatChoice likely;  ///< The format that the axis lines speak for, whatever was asked for.
  std::vector<Diagnostic> diagnostics;  ///< By line, those about the whole file first.
};

/// Checks the definition file at `path`: ends on every input.
///
/// Its lines come first. When nothing in them is an error the library loads the file, and rules
/// about the machine follow: its class, its solver, its geometry files.
/// @errors  A file that cannot be read gives one diagnostic with the code "file-unreadable".
/// @cost    Linear in the file, but for look-ups by name and index among its elements; a loaded
///          machine is solved 100 times.
KORVO_TOOLKIT_API CheckResult check(const std::filesystem::path& path,
                                    Format format = Format::automatic,
                                    Language language = Language::english);

/// The same for the `text` of a file that an editor holds and has not saved at `path`, whose name
/// and folder (for geometry files) are taken. Writes a file to the temporary folder and removes it.
KORVO_TOOLKIT_API CheckResult checkText(const std::string& text, const std::filesystem::path& path,
                                        Format format = Format::automatic,
                                        Language language = Language::english);

/// What a rule says, for people: `korvo check --explain` and the pages of the documentation.
struct RulePage {
  std::string code;
  Severity severity = Severity::error;
  std::string sentence;               ///< The message, with {0}, {1}, ... for what is found.
  std::string suggestion;             ///< How to mend it, likewise; may be empty.
  std::string meaning;                ///< What it means and why it matters.
  std::string wrong;                  ///< Lines of a definition file that break the rule.
  std::string right;                  ///< The same lines mended.
  Format format = Format::automatic;  ///< Of both.
};

/// The pages of all rules, in the order of the table.
KORVO_TOOLKIT_API std::vector<RulePage> rulePages(Language language = Language::english);

}  // namespace korvo
