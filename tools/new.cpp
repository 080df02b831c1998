#include <algorithm>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <vector>

#include "toolkit/Text.h"
#include "toolkit/check/Check.h"
#include "tools/Examples.h"
#include "tools/Messages.h"
#include "tools/Options.h"
#include "tools/ReplaceFile.h"
#include "tools/Session.h"
#include "tools/Verb.h"
#include "tools/Verbs.h"
#include "tools/starts.h"

using nlohmann::json;

namespace korvo::tools {
namespace {

struct NewOptions {
  std::optional<std::string> name;
  bool json = false;
};

// A start or an example machine: both are files to begin with.
struct Offer {
  std::string name, summary, text;
  int version = 0;
};

// An example begins with a comment that says what it is.
std::string summaryOf(const std::string& text) {
  const std::size_t begin = text.find_first_not_of("# ");
  return begin == std::string::npos ? "" : text.substr(begin, text.find('\n', begin) - begin);
}

// --- bodies: a copy of an example's text lies elsewhere, where their files are not

// Where the name of a file beside the examples begins in a line; what follows it is its colour.
std::size_t bodyIn(const std::string& line) {
  const std::size_t body = line.find("$ZRN_MACHINE_DEF/geometry/");
  return body < line.find('#') ? body : std::string::npos;
}

void dropComment(std::vector<std::string>& lines) {
  while (!lines.empty() && lines.back().starts_with('#')) lines.pop_back();
}

// A line without its body; one of a body alone goes, with the comment right above it.
void addWithoutBody(std::vector<std::string>& lines, const std::string& line) {
  const std::size_t body = bodyIn(line);
  if (body == std::string::npos) {
    lines.push_back(line);
  } else if (line.starts_with("geom")) {
    dropComment(lines);
  } else {
    lines.push_back(line.substr(0, body - 1));
  }
}

// Says so in the text, behind what the example begins with.
std::string withoutBodies(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) addWithoutBody(lines, line);
  const auto isOther = [](const std::string& line) { return !line.starts_with('#'); };
  const auto headEnd = std::find_if(lines.begin(), lines.end(), isOther);
  lines.insert(headEnd, {"#", "# Left out of this copy: the files of the example's bodies."});
  std::string result;
  for (const std::string& line : lines) result += line + '\n';
  return result;
}

bool hasBodies(const std::string& text) {
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (bodyIn(line) != std::string::npos) return true;
  }
  return false;
}

// --- what is offered

Offer exampleOffer(const std::string& name, const std::filesystem::path& path) {
  const std::string text = readBytes(path);
  return {name, summaryOf(text), hasBodies(text) ? withoutBodies(text) : text,
          check(path).format.version};
}

// A start hides the example of its name: it says more about how to go on.
std::vector<Offer> offers() {
  std::vector<Offer> all;
  for (const Start& s : starts()) {
    all.push_back({std::string(s.name), std::string(s.summary), std::string(s.text), s.version});
  }
  for (const std::string& name : exampleNames()) {
    const auto isName = [&](const Start& s) { return s.name == name; };
    if (std::any_of(starts().begin(), starts().end(), isName)) continue;
    if (const auto path = findExample(name)) all.push_back(exampleOffer(name, *path));
  }
  return all;
}

json offerJson(const Offer& offer, bool withText) {
  json answer = {{"name", offer.name}, {"summary", offer.summary}, {"format", offer.version}};
  if (withText) answer["text"] = toUtf8(toWide(offer.text));
  return answer;
}

json answerJson(json list) {
  return {{"schema", "korvo.new/1"}, {"units", unitsJson()}, {"starts", std::move(list)}};
}

void listOffers(bool asJson) {
  json list = json::array();
  for (const Offer& offer : offers()) {
    if (asJson) {
      list.push_back(offerJson(offer, false));
    } else {
      std::cout << std::left << std::setw(18) << offer.name << offer.summary << '\n';
    }
  }
  if (asJson) std::cout << answerJson(std::move(list)).dump(2) << '\n';
}

Offer offerOf(const std::string& name) {
  std::vector<std::string> names;
  for (const Offer& offer : offers()) {
    if (offer.name == name) return offer;
    names.push_back(offer.name);
  }
  failUsage("one of " + joined(names), inQuotes(name));
}

void run(const NewOptions& o) {
  if (!o.name) return listOffers(o.json);
  const Offer offer = offerOf(*o.name);
  if (o.json) {
    std::cout << answerJson(json::array({offerJson(offer, true)})).dump(2) << '\n';
  } else {
    std::cout << offer.text;
  }
}

}  // namespace

void addNew(CLI::App& app, Exit&) {
  Verb verb(app, "new", "Print a commented start for a machine of your own");
  const auto o = std::make_shared<NewOptions>();
  verb.addOption("NAME", o->name,
                 "Which one: a start, or an example machine; without it, the list of both");
  verb.addFlag("--json", o->json, "Answer in JSON");
  refuseCommonOptions(verb);
  verb.setAction([o] { run(*o); });
}

}  // namespace korvo::tools
