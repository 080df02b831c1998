#include "tools/Verb.h"

#include <CLI/CLI.hpp>

namespace korvo::tools {

Option Option::required() {
  option_->required();
  return *this;
}

Option Option::text(const std::string& text) {
  option_->option_text(text);
  return *this;
}

Option Option::oneValue() {
  option_->allow_extra_args(false);
  return *this;
}

Verb::Verb(CLI::App& app, const std::string& name, const std::string& text)
    : app_(app.add_subcommand(name, text)) {}

std::string Verb::name() const { return app_->get_name(); }

Option Verb::addOption(const std::string& names, std::string& value, const std::string& help) {
  return Option(*app_->add_option(names, value, help));
}

Option Verb::addOption(const std::string& names, std::optional<std::string>& value,
                       const std::string& help) {
  return Option(*app_->add_option(names, value, help));
}

Option Verb::addOption(const std::string& names, std::vector<std::string>& values,
                       const std::string& help) {
  return Option(*app_->add_option(names, values, help));
}

Option Verb::addOption(const std::string& names,
                       const std::function<void(const std::string&)>& take,
                       const std::string& help) {
  return Option(*app_->add_option_function<std::string>(names, take, help));
}

Option Verb::addFlag(const std::string& names, bool& isGiven, const std::string& help) {
  return Option(*app_->add_flag(names, isGiven, help)->disable_flag_override());
}

void Verb::refuse(const std::string& name, const std::string& reason) {
  const auto fail = [name, reason](const std::string&) {
    throw CLI::ValidationError(name, reason);
  };
  app_->add_option_function<std::string>(name, fail)->group("");
}

void Verb::hide(const std::string& name, const std::function<void()>& used) {
  app_->get_option(name)->each([used](const std::string&) { used(); })->group("");
}

void Verb::setFooter(const std::string& text) { app_->footer(text); }

void Verb::setAction(const std::function<void()>& action) { app_->callback(action); }

}  // namespace korvo::tools
