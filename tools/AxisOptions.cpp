#include "tools/AxisOptions.h"

#include <set>

#include "tools/AnswerText.h"
#include "tools/Failure.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/Verb.h"

namespace korvo::tools {
namespace {

// A target determines all others: sampled they would reach it nowhere or everywhere the same.
void checkSampled(const Session& session, const SolverOptions& options) {
  const Solver solver(session.machine(), options);
  if (solver.solvedSamples().empty()) return;
  failUsage("axes that a target leaves free after --sample",
            joined(namesOf(session, solver.solvedSamples())));
}

}  // namespace

void forEachAxis(const Session& session, const std::vector<std::string>& given, const char* option,
                 const std::function<void(int place, const std::string& text)>& take) {
  std::set<int> seen;
  for (const std::string& list : given) {
    for (const std::string& item : split(list, ',')) {
      const std::size_t equals = item.find('=');
      if (equals == std::string::npos) {
        failUsage(std::string("AXIS=NUMBER after ") + option, inQuotes(item));
      }
      const AxisNames& names = session.machine().axisNames();
      const int place = names.find(trimmed(std::string_view(item).substr(0, equals)));
      if (place < 0) {
        failUsage("axes among " + joined(names.all()) + " after " + option, inQuotes(item));
      }
      if (session.isLocked(place)) {
        failUsage(std::string("axes that are not locked after ") + option, inQuotes(item));
      }
      if (!seen.insert(place).second) {
        failUsage(std::string("each axis once in ") + option, inQuotes(names[place]) + " again");
      }
      take(place, item.substr(equals + 1));
    }
  }
}

void addFreeAxisOptions(Verb& verb, std::vector<std::string>& hold,
                        std::vector<std::string>& sample) {
  verb.addOption("--hold", hold,
                 "Values of axes (W=120,V=0): they stand there, as if locked, instead of where "
                 "--from has them")
      .oneValue();
  verb.addOption("--sample", sample,
                 "How many places of axes that a target leaves free are tried (RAIL=21), from "
                 "one limit to the other")
      .oneValue();
}

SolverOptions solverOptionsOf(const std::vector<std::string>& hold,
                              const std::vector<std::string>& sample, const Session& session) {
  constexpr int kMost = 10'000;
  SolverOptions options;
  const auto ruleAt = [&](int place) -> Redundancy& {
    return options.redundancy[static_cast<std::size_t>(place)];
  };
  forEachAxis(session, hold, "--hold", [&](int place, const std::string& text) {
    const std::optional<double> value = numberOf(text);
    if (!value) failUsage("a finite decimal number in --hold", inQuotes(text));
    ruleAt(place) = {Redundancy::Rule::value, *value, 2};
  });
  forEachAxis(session, sample, "--sample", [&](int place, const std::string& text) {
    const std::optional<int> samples = integerOf(text);
    if (!samples || *samples < 2 || *samples > kMost) {
      failUsage("a number from 2 to " + std::to_string(kMost) + " in --sample", inQuotes(text));
    }
    const zkin::KMachineElem& axis = *session.machine()->getAxisElem(place + 1);
    if (!axis.hasMin() || !axis.hasMax()) {
      failUsage("axes with both limits after --sample",
                inQuotes(session.machine().axisNames()[place]));
    }
    if (ruleAt(place).rule == Redundancy::Rule::value) {
      failUsage("--hold or --sample of an axis",
                "both of " + inQuotes(session.machine().axisNames()[place]));
    }
    ruleAt(place) = {Redundancy::Rule::sampled, 0.0, *samples};
  });
  checkSampled(session, options);
  return options;
}

}  // namespace korvo::tools
