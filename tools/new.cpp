#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "tools/Options.h"
#include "tools/Session.h"
#include "tools/Verbs.h"
#include "tools/starts.h"

using nlohmann::json;

namespace korvo::tools {
namespace {

struct NewOptions {
  std::string name;
  bool json = false;
};

json startJson(const Start& s, bool withText) {
  json start = {{"name", s.name}, {"summary", s.summary}, {"format", s.version}};
  if (withText) start["text"] = s.text;
  return start;
}

json answerJson(json list) {
  return {{"schema", "korvo.new/1"}, {"units", unitsJson()}, {"starts", std::move(list)}};
}

void listStarts(bool asJson) {
  json list = json::array();
  for (const Start& s : starts()) {
    if (asJson) {
      list.push_back(startJson(s, false));
    } else {
      std::cout << s.name << std::string(12 - s.name.size(), ' ') << s.summary << '\n';
    }
  }
  if (asJson) std::cout << answerJson(std::move(list)).dump(2) << '\n';
}

const Start& startOf(const std::string& name) {
  std::string names;
  for (const Start& s : starts()) {
    if (s.name == name) return s;
    names += (names.empty() ? "" : ", ") + std::string(s.name);
  }
  failUsage("one of " + names, "'" + name + "'");
}

void run(const NewOptions& o) {
  if (o.name.empty()) return listStarts(o.json);
  const Start& start = startOf(o.name);
  if (o.json) {
    std::cout << answerJson(json::array({startJson(start, true)})).dump(2) << '\n';
  } else {
    std::cout << start.text;
  }
}

}  // namespace

void addNew(CLI::App& app, Exit&) {
  CLI::App* verb = app.add_subcommand("new", "Print a commented start for a machine of your own");
  const auto o = std::make_shared<NewOptions>();
  verb->add_option("start", o->name, "Which start; without it, the list of starts");
  verb->add_flag("--json", o->json, "Answer in JSON");
  refuseCommonOptions(*verb);
  verb->callback([o] { run(*o); });
}

}  // namespace korvo::tools
