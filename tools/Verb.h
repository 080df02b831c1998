#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace korvo::tools {

/// An option of a verb, to say more of it.
class Option {
 public:
  explicit Option(CLI::Option& option) : option_(&option) {}

  /// Without it the command line is wrong.
  Option required();

  /// What the help says in place of the kind of value; for arguments without a name.
  Option text(const std::string& text);

  /// Takes one value a use, so that the argument behind it is none.
  Option oneValue();

 private:
  CLI::Option* option_;
};

/// A verb of the command line: what it takes, and what it does. Sources that describe a verb know
/// the parser by this alone, since its header takes seconds to compile. Copies are of the same
/// verb.
///
/// Variables that options are stored in, and what functions refer to, must live until the command
/// line is parsed. Names are written as in "-o,--output"; a name without dashes is an argument that
/// has its place.
class Verb {
 public:
  /// Adds the verb to the command line, which owns it.
  Verb(CLI::App& app, const std::string& name, const std::string& text);

  std::string name() const;

  Option addOption(const std::string& names, std::string& value, const std::string& help = "");
  Option addOption(const std::string& names, std::optional<std::string>& value,
                   const std::string& help = "");
  Option addOption(const std::string& names, std::vector<std::string>& values,
                   const std::string& help = "");

  /// An option whose value goes to `take`.
  Option addOption(const std::string& names, const std::function<void(const std::string&)>& take,
                   const std::string& help);

  /// An option that is there or not; with a value it is wrong.
  Option addFlag(const std::string& names, bool& isGiven, const std::string& help);

  /// An option that the help leaves out, and that is wrong for a reason: "NAME: reason".
  void refuse(const std::string& name, const std::string& reason);

  /// Leaves an option out of the help and calls `used` for each of its values.
  void hide(const std::string& name, const std::function<void()>& used);

  /// What stands below the options in the help.
  void setFooter(const std::string& text);

  /// What the verb does once its options have their values.
  void setAction(const std::function<void()>& action);

 private:
  CLI::App* app_;
};

}  // namespace korvo::tools
