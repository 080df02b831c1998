#include "tools/AnswerText.h"

#include <iostream>

#include "tools/Numbers.h"
#include "tools/PositionText.h"
#include "tools/ToolPoint.h"

using nlohmann::json;

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

std::string unitOf(const Session& session, const Answer& answer) {
  switch (answer.reason) {
    case Reason::none:
    case Reason::noDirection:
    case Reason::lockedAxis:
      return "";
    case Reason::noRotaryAxis:
    case Reason::outsideCone:
      return "degree";
    case Reason::outsideLimits:
      return isRotary(session, answer.outside.front().place) ? "degree" : "mm";
    default:
      return "mm";
  }
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
  printSingularity(out, session, answer);
  out << "Margins\n";
  printMargins(out, session, answer.position, answer.margins);
}

void printNone(std::ostream& out, const Session& session, const Answer& answer) {
  out << "No position: " << answer.text << '\n';
  for (const std::string& condition : answer.conditions) out << "  - " << condition << '\n';
  if (answer.reason == Reason::noDirection) return;
  out << "Best found " << roundedText(answer.position) << "\nTip        "
      << textOf(pointOf(session, answer.position).tip) << "\nDirection  "
      << textOf(pointOf(session, answer.position).direction) << '\n';
}

json foundJson(const Session& session, const Answer& answer) {
  const ToolPoint at = pointOf(session, answer.position);
  return {{"position", jsonOf(answer.position)},
          {"tip", {at.tip.x, at.tip.y, at.tip.z}},
          {"direction", {at.direction.x, at.direction.y, at.direction.z}},
          {"residual",
           {{"point", answer.residual.pointMm},
            {"direction", answer.residual.directionRad * kRadToDeg}}},
          {"margins", marginsJson(session, answer.margins)},
          {"singularity", singularityJson(session, answer)},
          {"linearOnly", answer.isLinearOnly}};
}

json reasonJson(const Session& session, const Answer& answer) {
  json outside = json::array();
  for (const AxisOutside& axis : answer.outside) {
    outside.push_back({{"axis", session.machine().axisNames()[axis.place]}, {"by", axis.by}});
  }
  const std::string unit = unitOf(session, answer);
  return {{"code", toString(answer.reason)},
          {"by", unit.empty() ? json() : json(answer.by)},
          {"unit", unit.empty() ? json() : json(unit)},
          {"text", answer.text},
          {"outside", std::move(outside)},
          {"conditions", answer.conditions}};
}

}  // namespace korvo::tools
