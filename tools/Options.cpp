#include "tools/Options.h"

#include <algorithm>

#include "tools/Failure.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/Verb.h"

namespace korvo::tools {
namespace {

int toolOf(const std::string& text) {
  const std::optional<int> tool = integerOf(text);
  if (!tool || *tool < 1) failUsage("a tool number from 1 up after --tool", inQuotes(text));
  return *tool;
}

double lengthOf(const std::string& text) {
  const std::optional<double> length = numberOf(text);
  if (!length || *length < 0.0)
    failUsage("a length in mm from 0 up after --tool-length", inQuotes(text));
  return *length;
}

int strategyOf(const std::string& text) {
  const std::optional<int> strategy = integerOf(text);
  if (!strategy) failUsage("a whole number after --strategy", inQuotes(text));
  return *strategy;
}

PartZero partZeroOf(const std::string& text) {
  const std::vector<std::string> parts = split(text, ',');
  PartZero zero;
  bool good = parts.size() == 3 || parts.size() == 6;
  for (std::size_t i = 0; good && i < parts.size(); ++i) {
    const std::optional<double> value = numberOf(parts[i]);
    good = value.has_value();
    zero.values[i] = value.value_or(0.0);
  }
  if (!good) failUsage("x,y,z or x,y,z,a,b,c (mm and degrees) after --frame", inQuotes(text));
  return zero;
}

std::vector<std::string> locksOf(const std::vector<std::string>& given) {
  std::vector<std::string> names;
  for (const std::string& list : given) {
    for (const std::string& item : split(list, ',')) {
      names.emplace_back(trimmed(item));
      if (names.back().empty()) failUsage("axis names (A,B) after --lock", inQuotes(list));
    }
  }
  return names;
}

void makeIdle(Verb& verb, const std::string& name) {
  verb.hide(name, [name, word = verb.name()] {
    say("korvo: warning: " + name + " plays no part in '" + word + "'");
  });
}

}  // namespace

Format formatOf(const std::string& word) {
  if (word == "auto") return Format::automatic;
  if (word == "1") return Format::version1;
  if (word == "2") return Format::version2;
  failUsage("auto, 1 or 2 after --format", inQuotes(word));
}

Language languageOf(const std::string& word) {
  if (word == "en") return Language::english;
  if (word == "fr") return Language::french;
  failUsage("en or fr after --lang", inQuotes(word));
}

void addCommonOptions(Verb& verb, CommonOptions& o, std::initializer_list<const char*> idle) {
  verb.addOption("MACHINE", o.machine)
      .required()
      .text("Definition file, or the name of an installed example");
  verb.addOption("--format", o.format, "Format version: auto, 1 or 2 [auto: from the axis lines]");
  verb.addOption("--tool", o.tool, "Number of the current tool [1]");
  verb.addOption("--tool-length", o.toolLength,
                 "Length of that tool from nose to tip, mm [0]. A gun's slides its nose by as much "
                 "along its direction; its tip stays where the file has the gun");
  verb.addOption("--frame", o.frame,
                 "Part zero x,y,z[,a,b,c]: its place in the machine frame (mm) and its turn about "
                 "the machine's X, then Y, then Z (degrees). Points are answered in it");
  verb.addOption("--lock", o.lock,
                 "Names of axes that the solvers leave at their value (A,B, or one a use)")
      .oneValue();
  verb.addOption(
      "--strategy", o.strategy,
      "Which of two ways to a tool direction is taken: 1 the one with the smaller turn of "
      "the axis nearer the part, 2 of the axis nearer the tool, any other number: the one "
      "with the smallest single turn [as in the file]");
  verb.addOption("--trace", o.trace, "Write the library's trace to FILE, - for standard error");
  verb.addFlag("--no-check", o.noCheck,
               "Load what the library accepts, whatever 'korvo check' says of it; files that "
               "would never end loading are refused still");
  verb.addFlag("--json", o.json, "Answer in JSON (schemas in share/korvo/schemas)");
  for (const char* name : idle) makeIdle(verb, name);
}

void refuseCommonOptions(Verb& verb) {
  static constexpr const char* kNames[] = {"--format", "--tool",     "--tool-length", "--frame",
                                           "--lock",   "--strategy", "--trace"};
  for (const char* name : kNames) {
    verb.refuse(name, "does not apply to 'new', which reads no machine");
  }
}

CheckedOptions checked(const CommonOptions& o) {
  CheckedOptions c;
  c.format = formatOf(o.format);
  c.checks = o.noCheck ? Checks::endless : Checks::all;
  c.hasTool = o.tool.has_value();
  if (o.tool) c.tool = toolOf(*o.tool);
  if (o.toolLength) c.toolLength = lengthOf(*o.toolLength);
  if (o.frame) c.partZero = partZeroOf(*o.frame);
  c.lock = locksOf(o.lock);
  if (o.trace && o.trace->empty()) failUsage("a file or - after --trace", "''");
  if (o.strategy) c.strategy = strategyOf(*o.strategy);
  return c;
}

}  // namespace korvo::tools
