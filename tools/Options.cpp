#include "tools/Options.h"

#include <algorithm>

#include "tools/Failure.h"
#include "tools/Numbers.h"

namespace korvo::tools {
namespace {

std::string quoted(const std::string& text) { return "'" + text + "'"; }

Format formatOf(const std::string& word) {
  if (word == "auto") return Format::automatic;
  if (word == "1") return Format::version1;
  if (word == "2") return Format::version2;
  failUsage("auto, 1 or 2 after --format", quoted(word));
}

int toolOf(const std::string& text) {
  const std::optional<int> tool = integerOf(text);
  if (!tool || *tool < 1) failUsage("a tool number from 1 up after --tool", quoted(text));
  return *tool;
}

double lengthOf(const std::string& text) {
  const std::optional<double> length = numberOf(text);
  if (!length || *length < 0.0) failUsage("a length in mm after --tool-length", quoted(text));
  return *length;
}

int strategyOf(const std::string& text) {
  const std::optional<int> strategy = integerOf(text);
  if (!strategy || *strategy < 0 || *strategy > 2) {
    failUsage("0, 1 or 2 after --strategy", quoted(text));
  }
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
  if (!good) failUsage("x,y,z or x,y,z,a,b,c (mm and degrees) after --frame", quoted(text));
  return zero;
}

std::vector<std::string> locksOf(const std::vector<std::string>& given) {
  std::vector<std::string> names;
  for (const std::string& list : given) {
    for (const std::string& name : split(list, ',')) {
      if (name.empty()) failUsage("axis names after --lock", quoted(list));
      names.push_back(name);
    }
  }
  return names;
}

}  // namespace

void addCommonOptions(CLI::App& verb, CommonOptions& o) {
  verb.add_option("machine", o.machine, "Definition file, or the name of an example")
      ->required()
      ->type_name("MACHINE")
      ->option_text("Definition file, or the name of an installed example");
  verb.add_option("--format", o.format, "Format version: auto, 1 or 2 [auto: from the axis lines]");
  verb.add_option("--tool", o.tool, "Number of the current tool [1]");
  verb.add_option("--tool-length", o.toolLength, "Length of that tool from nose to tip, mm [0]");
  verb.add_option("--frame", o.frame,
                  "Part zero x,y,z[,a,b,c]: its place in the machine frame (mm) and its turn about "
                  "the machine's X, then Y, then Z (degrees). Points are answered in it");
  verb.add_option("--lock", o.lock, "Names of axes that must not move (repeat, or A,B)");
  verb.add_option("--strategy", o.strategy,
                  "Which of two rotary solutions costs less: 1 by the first rotary axis, 2 by the "
                  "second, 0 by the smaller of both [as in the file]");
  verb.add_option("--trace", o.trace, "Write the library's trace to FILE, - for standard error");
  verb.add_flag("--json", o.json, "Answer in JSON (schemas in share/korvo/schemas)");
}

void refuseCommonOptions(CLI::App& verb) {
  static constexpr const char* kNames[] = {"--format", "--tool",     "--tool-length", "--frame",
                                           "--lock",   "--strategy", "--trace"};
  for (const char* name : kNames) {
    const auto refuse = [name](const std::string&) {
      throw CLI::ValidationError(name, "does not apply to 'new', which reads no machine");
    };
    verb.add_option_function<std::string>(name, refuse)->group("");
  }
}

CheckedOptions checked(const CommonOptions& o) {
  CheckedOptions c;
  c.format = formatOf(o.format);
  c.hasTool = o.tool.has_value();
  if (o.tool) c.tool = toolOf(*o.tool);
  if (o.toolLength) c.toolLength = lengthOf(*o.toolLength);
  if (o.frame) c.partZero = partZeroOf(*o.frame);
  c.lock = locksOf(o.lock);
  if (o.strategy) c.strategy = strategyOf(*o.strategy);
  return c;
}

}  // namespace korvo::tools
