#include "tools/AnswerText.h"

#include <cmath>
#include <iostream>

#include "tools/Checked.h"
#include "tools/InfoJson.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/PositionText.h"
#include "tools/ToolPoint.h"

using nlohmann::json;
using zgeo::UVec3d;

namespace korvo::tools {
namespace {

bool isOutside(const std::optional<double>& margin) { return margin && *margin < 0; }

std::string marginText(const Margin& m, const std::string& unit) {
  if (!m.toMin && !m.toMax) return "no limits";
  std::string text;
  if (m.toMin) text = rounded(*m.toMin) + " to the minimum";
  if (m.toMax) text += (text.empty() ? "" : ", ") + rounded(*m.toMax) + " to the maximum";
  return text + " (" + unit + ")";
}

ToolPoint pointOf(const Session& session, const Position& at) {
  return toolPoint(*session.machine(), *at, session.tool());
}

UVec3d pointInPartZero(const Session& session, UVec3d point) {
  session.machine()->getMAC2UNI().apply(point);
  return point;
}

UVec3d directionInPartZero(const Session& session, UVec3d direction) {
  session.machine()->getMAC2UNI().applyDir(direction);
  return direction;
}

bool hasBranches(const Answer& answer) {
  return answer.solver == SolverKind::twoRotary || answer.solver == SolverKind::moreRotary ||
         answer.solver == SolverKind::arm;
}

// "RAIL to 999, B to 20"
std::string standText(const Session& session, const std::vector<AxisWanted>& axes) {
  std::vector<std::string> stands;
  for (const AxisWanted& axis : axes) {
    stands.push_back(session.machine().axisNames()[axis.place] + " to " + rounded(axis.value));
  }
  return joined(stands);
}

void printSolved(std::ostream& out, const Session& session, const Answer& answer) {
  if (hasBranches(answer)) out << "Branch     " << answer.branch << '\n';
  if (!answer.freeAxes.empty()) {
    out << "Family     " << joined(namesOf(session, answer.freeAxes))
        << " free: the member nearest to the start\n";
  }
  if (!answer.moved.empty()) {
    out << "Moved      " << standText(session, answer.moved)
        << ": as near to the start as the target is reached\n";
  }
  const SingularDistance& singular = answer.singular;
  if (std::isfinite(singular.elbowRad)) {
    out << "Elbow      " << rounded(singular.elbowRad * kRadToDeg)
        << " degrees from straight or folded\n";
  }
  if (std::isfinite(singular.shoulderMm)) {
    out << "Shoulder   wrist centre " << rounded(singular.shoulderMm)
        << " mm from where its two sides meet\n";
  }
}

// "Z below by 19.9 mm"
std::string outsideText(const Session& session, const std::vector<AxisOutside>& axes,
                        Language language) {
  std::vector<std::string> list;
  for (const AxisOutside& axis : axes) {
    const std::string by =
        rounded(std::abs(axis.by)) + ' ' +
        (isRotary(session, axis.place) ? in(language, "degrees", "degrés") : "mm");
    const std::string& name = session.machine().axisNames()[axis.place];
    list.push_back(axis.by < 0
                       ? name + in(language, " below by ", " sous son minimum, de ") + by
                       : name + in(language, " above by ", " au-dessus de son maximum, de ") + by);
  }
  return joined(list);
}

json standsJson(const Session& session, const std::vector<AxisWanted>& axes) {
  json list = json::array();
  for (const AxisWanted& axis : axes) {
    list.push_back({{"axis", session.machine().axisNames()[axis.place]}, {"value", axis.value}});
  }
  return list;
}

json finiteOrNull(double value) { return std::isfinite(value) ? json(value) : json(); }

json solvedJson(const Session& session, const Answer& answer) {
  const SingularDistance& singular = answer.singular;
  return {{"kind", toString(answer.solver)},
          {"branch", hasBranches(answer) ? json(answer.branch) : json()},
          {"freeAxes", namesOf(session, answer.freeAxes)},
          {"moved", standsJson(session, answer.moved)},
          {"singular",
           {{"direction", finiteOrNull(singular.directionRad * kRadToDeg)},
            {"elbow", finiteOrNull(singular.elbowRad * kRadToDeg)},
            {"shoulder", finiteOrNull(singular.shoulderMm)}}}};
}

json numberOrNull(const std::optional<double>& value) { return value ? json(*value) : json(); }

json singularityJson(const Session& session, const Answer& answer) {
  if (!answer.singularity) return {};
  const AxisNames& names = session.machine().axisNames();
  return {{"axes", {names[answer.singularity->first], names[answer.singularity->second]}},
          {"angle", answer.singularity->angleRad * kRadToDeg}};
}

void printSingularity(std::ostream& out, const Session& session, const Answer& answer) {
  if (!answer.singularity) return;
  const AxisNames& names = session.machine().axisNames();
  out << "Singular   " << rounded(answer.singularity->angleRad * kRadToDeg)
      << " degrees from the nearest direction where " << names[answer.singularity->first] << " and "
      << names[answer.singularity->second] << " lose a degree of freedom\n";
}

}  // namespace

bool isRotary(const Session& session, int place) {
  return session.machine()->getAxisElem(place + 1)->getElemType() ==
         zkin::KMachineElem::KMET_TYPE_AROT;
}

const char* unitWord(const Session& session, int place) {
  return isRotary(session, place) ? "degrees" : "mm";
}

std::vector<std::string> namesOf(const Session& session, const std::vector<Margin>& margins) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < margins.size(); ++i) {
    const bool isOut = isOutside(margins[i].toMin) || isOutside(margins[i].toMax);
    if (isOut) names.push_back(session.machine().axisNames()[static_cast<int>(i)]);
  }
  return names;
}

std::vector<std::string> namesOf(const Session& session, const std::vector<int>& places) {
  std::vector<std::string> names;
  names.reserve(places.size());
  for (const int place : places) names.push_back(session.machine().axisNames()[place]);
  return names;
}

std::string unitOf(const Answer& answer) {
  return answer.unit == Unit::mm ? "mm" : answer.unit == Unit::degree ? "degree" : "";
}

void printMargins(std::ostream& out, const Session& session, const Position& at,
                  const std::vector<Margin>& margins) {
  for (int i = 0; i < at.size(); ++i) {
    const Margin& m = margins[static_cast<std::size_t>(i)];
    const char* side = isOutside(m.toMin)   ? "  BELOW "
                       : isOutside(m.toMax) ? "  ABOVE "
                                            : "  inside";
    out << side << "  " << at.names()[i] << '=' << rounded(at[i]) << "  "
        << marginText(m, unitWord(session, i)) << '\n';
  }
}

json marginsJson(const Session& session, const std::vector<Margin>& margins) {
  json list = json::array();
  for (std::size_t i = 0; i < margins.size(); ++i) {
    list.push_back({{"axis", session.machine().axisNames()[static_cast<int>(i)]},
                    {"toMin", numberOrNull(margins[i].toMin)},
                    {"toMax", numberOrNull(margins[i].toMax)}});
  }
  return list;
}

void printFound(std::ostream& out, const Session& session, const Answer& answer) {
  const ToolPoint at = pointOf(session, answer.position);
  out << "Position   " << roundedText(answer.position) << '\n';
  if (answer.isLinearOnly) {
    out << "           by the linear axes alone: no rotary axis is free, and the tool points so\n";
  }
  out << "Tip        " << textOf(at.tip) << "\nDirection  " << textOf(at.direction)
      << "\nResidual   point " << exact(answer.residual.pointMm) << " mm, direction "
      << exact(answer.residual.directionRad * kRadToDeg) << " degrees\n";
  printSolved(out, session, answer);
  printSingularity(out, session, answer);
  out << "Margins\n";
  printMargins(out, session, answer.position, answer.margins);
}

void printNone(std::ostream& out, const Session& session, const Answer& answer, Language language) {
  out << in(language, "No position: ", "Aucune position : ") << answer.text << '\n';
  for (const std::string& condition : answer.conditions) out << "  - " << condition << '\n';
  if (answer.reason == Reason::noDirection) return;
  const ToolPoint at = pointOf(session, answer.position);
  out << in(language, "Best found ", "Au mieux   ") << roundedText(answer.position) << '\n'
      << in(language, "Tip        ", "Pointe     ") << textOf(at.tip) << "\nDirection  "
      << textOf(at.direction) << '\n';
  if (!answer.outside.empty()) {
    out << in(language, "Outside    ", "Hors course ")
        << outsideText(session, answer.outside, language) << '\n';
  }
  if (answer.nearestTip) {
    out << in(language, "Nearest point      ", "Point le plus proche      ")
        << textOf(pointInPartZero(session, *answer.nearestTip)) << '\n';
  }
  if (answer.nearestDirection) {
    out << in(language, "Nearest direction  ", "Direction la plus proche  ")
        << textOf(directionInPartZero(session, *answer.nearestDirection)) << '\n';
  }
}

json foundJson(const Session& session, const Answer& answer) {
  const ToolPoint at = pointOf(session, answer.position);
  json found = {{"position", jsonOf(answer.position)},
                {"tip", vectorJson(at.tip)},
                {"direction", vectorJson(at.direction)},
                {"residual",
                 {{"point", answer.residual.pointMm},
                  {"direction", answer.residual.directionRad * kRadToDeg}}},
                {"margins", marginsJson(session, answer.margins)},
                {"singularity", singularityJson(session, answer)},
                {"linearOnly", answer.isLinearOnly}};
  if (answer.solver != SolverKind::none) found["solver"] = solvedJson(session, answer);
  return found;
}

json reasonJson(const Session& session, const Answer& answer) {
  const AxisNames& names = session.machine().axisNames();
  json outside = json::array();
  for (const AxisOutside& axis : answer.outside) {
    outside.push_back({{"axis", names[axis.place]}, {"by", axis.by}});
  }
  const std::string unit = unitOf(answer);
  json reason = {{"code", toString(answer.reason)},
                 {"by", unit.empty() ? json() : json(answer.by)},
                 {"unit", unit.empty() ? json() : json(unit)},
                 {"text", answer.text},
                 {"axes", namesOf(session, answer.axes)},
                 {"outside", std::move(outside)},
                 {"wanted", standsJson(session, answer.wanted)},
                 {"nearestTip", json()},
                 {"nearestDirection", json()},
                 {"conditions", answer.conditions}};
  if (answer.nearestTip) {
    reason["nearestTip"] = vectorJson(pointInPartZero(session, *answer.nearestTip));
  }
  if (answer.nearestDirection) {
    reason["nearestDirection"] = vectorJson(directionInPartZero(session, *answer.nearestDirection));
  }
  return reason;
}

}  // namespace korvo::tools
