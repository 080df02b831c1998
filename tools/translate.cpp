#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "toolkit/answer/Answer.h"
#include "tools/AnswerText.h"
#include "tools/PositionText.h"
#include "tools/Verb.h"
#include "tools/Verbs.h"

using nlohmann::json;
using zgeo::UVec3d;

namespace korvo::tools {
namespace {

struct TranslateOptions {
  CommonOptions common;
  std::optional<std::string> at;
  std::string by;
};

struct Shift {
  Position at;
  UVec3d delta;  // in part zero
  Answer answer;

  bool isReached() const { return answer.status == Status::reached; }
  Position increments() const {
    Position v = answer.position;
    for (int i = 0; i < v.size(); ++i) v[i] -= at[i];
    return v;
  }
};

void print(std::ostream& out, const Session& session, const Shift& shift) {
  out << "Machine    " << session.file() << "\nSettings   " << session.settingsText()
      << "\nAt         " << textOf(shift.at) << "\nBy         " << textOf(shift.delta) << '\n';
  if (!shift.isReached()) return printNone(out, session, shift.answer);
  out << "Increments " << roundedText(shift.increments()) << '\n';
  printFound(out, session, shift.answer);
}

json answerJson(const Session& session, const Shift& shift) {
  const bool isReached = shift.isReached();
  return {{"schema", "korvo.translate/1"},
          {"units", unitsJson()},
          {"machine", session.machineJson()},
          {"settings", session.settingsJson()},
          {"at", jsonOf(shift.at)},
          {"by", {shift.delta.x, shift.delta.y, shift.delta.z}},
          {"status", toString(shift.answer.status)},
          {"increments", isReached ? jsonOf(shift.increments()) : json()},
          {"reached", isReached ? foundJson(session, shift.answer) : json()},
          {"reason", isReached ? json() : reasonJson(session, shift.answer)}};
}

Exit run(const TranslateOptions& o) {
  Session session(o.common);
  const Position at = o.at ? positionOf(session, *o.at, "--at") : session.machine().position();
  const UVec3d delta = vectorOf(o.by, "dx,dy,dz (mm) after --by");
  UVec3d inMachine = delta;
  session.machine()->getUNI2MAC().applyDir(inMachine);
  const Shift shift{at, delta, LibrarySolver(session.machine()).translate(inMachine, at)};
  if (o.common.json) {
    std::cout << answerJson(session, shift).dump(2) << '\n';
  } else {
    print(std::cout, session, shift);
  }
  session.closeTrace();
  return shift.isReached() ? Exit::answered : Exit::no;
}

}  // namespace

void addTranslate(CLI::App& app, Exit& exit) {
  Verb verb(app, "translate", "Say which increments shift the tip at the same direction");
  const auto o = std::make_shared<TranslateOptions>();
  addCommonOptions(verb, o->common);
  verb.addOption("--at", o->at,
                 "Position: X=10,C=90 (unnamed axes are 0), or all values in order [all 0]");
  verb.addOption("--by", o->by, "Shift of the tool tip: dx,dy,dz in part zero, mm").required();
  verb.setFooter(
      "The position reached is verified forward. Exit code 1 and the reason when it is not, or is\n"
      "outside the limits.");
  verb.setAction([o, &exit] { exit = run(*o); });
}

}  // namespace korvo::tools
