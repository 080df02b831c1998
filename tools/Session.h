#pragma once

#include <filesystem>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/Machine.h"
#include "tools/Options.h"

namespace korvo::tools {

/// A machine with the common options applied: what every verb works on.
class Session {
 public:
  /// Finds, checks and loads the machine; throws Failure with every reason why not.
  /// @param table  Another file that the verb reads, "-" for standard input, or nothing.
  explicit Session(const CommonOptions& options, const std::optional<std::string>& table = {});
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// Ends the trace. Throws Failure when not all of it could be written.
  void closeTrace();

  const Machine& machine() const { return *machine_; }
  const FormatChoice& format() const { return format_; }
  const std::vector<Diagnostic>& findings() const { return findings_; }  ///< Of the check.
  const std::filesystem::path& path() const { return path_; }
  const std::string& file() const { return file_; }  ///< The path for messages.
  int tool() const { return options_.tool; }
  bool hasToolOption() const { return options_.hasTool; }
  const PartZero& partZero() const { return options_.partZero; }

  /// Whether the axis at place `i` of a position is locked.
  bool isLocked(int i) const { return locked_[static_cast<std::size_t>(i)]; }

  /// "format 2 (all axes ...); tool 1; ...": what was taken, for people to read.
  std::string settingsText(Language language = Language::english) const;
  nlohmann::json settingsJson() const;
  nlohmann::json machineJson() const;

 private:
  class Trace;

  void openTrace(const std::optional<std::string>& table, const std::optional<std::string>& trace);
  void loadMachine();
  void loadAgain();
  void setTool();
  void setPartZero();
  void lockAxes();

  CheckedOptions options_;
  std::unique_ptr<Trace> trace_;
  std::optional<Machine> machine_;
  FormatChoice format_;
  std::vector<Diagnostic> findings_;
  std::filesystem::path path_;
  std::string file_;
  std::vector<bool> locked_;
};

/// The "units" of every JSON answer.
nlohmann::json unitsJson();

}  // namespace korvo::tools
