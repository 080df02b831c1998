#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "toolkit/answer/Answer.h"
#include "tools/AnswerText.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/PositionText.h"
#include "tools/ToolPoint.h"
#include "tools/Verb.h"
#include "tools/Verbs.h"

using nlohmann::json;
using zgeo::UVec3d;

namespace korvo::tools {
namespace {

constexpr int kMostSteps = 1'000'000;

// The linear axes that the library may correct with: it takes the first three of the chain.
int freeLinear(const Session& session) {
  int count = 0;
  for (const zkin::KMachineElem* e : session.machine()->getToolChain(false, -1)) {
    const bool isLinear = e->getElemType() == zkin::KMachineElem::KMET_TYPE_ALIN;
    count += isLinear && !e->isLocked() && e->getValueIndex() >= 0;
  }
  return count;
}

struct InterpolateOptions {
  CommonOptions common;
  std::string from, to, steps;
  bool raw = false;
};

struct Step {
  double t;
  Position position;
  ToolPoint at;
  double deviation;  // of the tip from its place on the straight line, mm
  std::vector<std::string> outside;
};

class Way {
 public:
  Way(const Session& session, const InterpolateOptions& o)
      : session_(session),
        from_(positionOf(session, o.from, "--from")),
        to_(positionOf(session, o.to, "--to")),
        isRaw_(o.raw),
        start_(tipAt(from_)),
        end_(tipAt(to_)) {}

  Step at(double t) const {
    Position v = from_;
    const zkin::KMachine& machine = *session_.machine();
    isRaw_ ? machine.interpolateRaw(from_, to_, t, v) : machine.interpolate(from_, to_, t, v);
    const ToolPoint point = toolPoint(machine, *v, session_.tool());
    const double deviation = point.tip.distanceTo(start_ * (1 - t) + end_ * t);
    return {t, v, point, deviation, namesOf(session_, margins(session_.machine(), *v))};
  }

  const Position& from() const { return from_; }
  const Position& to() const { return to_; }

 private:
  UVec3d tipAt(const Position& v) const {
    return toolPoint(*session_.machine(), *v, session_.tool()).tip;
  }

  const Session& session_;
  Position from_, to_;
  bool isRaw_;
  UVec3d start_, end_;
};

int stepsOf(const std::string& text) {
  const std::optional<int> steps = integerOf(text);
  if (!steps || *steps < 1 || *steps > kMostSteps) {
    failUsage("a number of steps from 1 to " + std::to_string(kMostSteps) + " after --steps",
              inQuotes(text));
  }
  return *steps;
}

json stepJson(const Step& step) {
  return {{"t", step.t},
          {"position", jsonOf(step.position)},
          {"tip", {step.at.tip.x, step.at.tip.y, step.at.tip.z}},
          {"direction", {step.at.direction.x, step.at.direction.y, step.at.direction.z}},
          {"deviation", step.deviation},
          {"outsideLimits", step.outside}};
}

void printStep(std::ostream& out, const Step& step) {
  out << "t " << rounded(step.t) << "  " << roundedText(step.position) << "\n    tip "
      << textOf(step.at.tip) << ", direction " << textOf(step.at.direction) << ", deviation "
      << rounded(step.deviation) << " mm";
  if (!step.outside.empty()) out << ", outside limits: " << joined(step.outside);
  out << '\n';
}

std::string correctionText(const Session& session, bool raw) {
  if (raw) return "Every axis for itself";
  const int count = freeLinear(session);
  if (count >= 3) return "The tip brought towards the straight line by one linear step";
  return "Every axis for itself: bringing the tip onto the straight line takes three free linear "
         "axes, and there " +
         std::string(count == 1 ? "is 1" : "are " + std::to_string(count));
}

void answerText(std::ostream& out, const Session& session, const Way& way, int steps, bool raw) {
  out << "Machine    " << session.file() << "\nSettings   " << session.settingsText()
      << "\nFrom       " << textOf(way.from()) << "\nTo         " << textOf(way.to()) << '\n'
      << correctionText(session, raw) << '\n';
  double largest = 0.0;
  for (int i = 0; i <= steps; ++i) {
    const Step step = way.at(static_cast<double>(i) / steps);
    largest = std::max(largest, step.deviation);
    printStep(out, step);
  }
  out << "Largest deviation " << rounded(largest) << " mm\n";
}

json answerJson(const Session& session, const Way& way, int steps, bool raw) {
  json list = json::array();
  double largest = 0.0;
  for (int i = 0; i <= steps; ++i) {
    const Step step = way.at(static_cast<double>(i) / steps);
    largest = std::max(largest, step.deviation);
    list.push_back(stepJson(step));
  }
  return {{"schema", "korvo.interpolate/1"},
          {"units", unitsJson()},
          {"machine", session.machineJson()},
          {"settings", session.settingsJson()},
          {"from", jsonOf(way.from())},
          {"to", jsonOf(way.to())},
          {"raw", raw},
          {"largestDeviation", largest},
          {"steps", std::move(list)}};
}

void run(const InterpolateOptions& o) {
  const int steps = stepsOf(o.steps);
  Session session(o.common);
  const Way way(session, o);
  if (o.common.json) {
    std::cout << answerJson(session, way, steps, o.raw).dump(2) << '\n';
  } else {
    answerText(std::cout, session, way, steps, o.raw);
  }
  session.closeTrace();
}

}  // namespace

void addInterpolate(CLI::App& app, Exit&) {
  Verb verb(app, "interpolate", "Say what lies between two positions");
  const auto o = std::make_shared<InterpolateOptions>();
  addCommonOptions(verb, o->common, {"--strategy"});  // no direction is solved for
  verb.addOption("--from", o->from,
                 "First position: X=10,C=90 (unnamed axes are 0), or all values in order")
      .required();
  verb.addOption("--to", o->to, "Last position, likewise").required();
  verb.addOption("--steps", o->steps, "Number of steps between them").required();
  verb.addFlag("--raw", o->raw, "Every axis for itself: the tip is not brought onto the line");
  verb.setFooter(
      "A rotary axis with more than half a turn to go goes one full turn less: the short way up to "
      "540\ndegrees, and one turn less beyond. Values are not brought back into any range, so the "
      "last position\nmay be a full turn from --to. Deviations are those of the tip from its place "
      "on the straight line\nbetween both ends; they stay where fewer than three linear axes are "
      "free, as on an arm. --lock keeps\nlinear axes out of the step onto the line alone: a locked "
      "axis too goes from --from to --to.");
  verb.setAction([o] { run(*o); });
}

}  // namespace korvo::tools
