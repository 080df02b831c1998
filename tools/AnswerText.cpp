#include "tools/AnswerText.h"

#include <cmath>
#include <iostream>
#include <limits>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>

#include "tools/Checked.h"
#include "tools/InfoJson.h"
#include "tools/Label.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/PositionText.h"
#include "tools/ToolPoint.h"

using nlohmann::json;
using zgeo::UVec3d;

namespace korvo::tools {
namespace {

bool isOutside(const std::optional<double>& margin) { return margin && *margin < 0; }

std::string toMinimum(Language l) { return in(l, " to the minimum", " jusqu'au minimum"); }
std::string toMaximum(Language l) { return in(l, " to the maximum", " jusqu'au maximum"); }

std::string marginText(const Margin& m, const std::string& unit, Language l) {
  if (!m.toMin && !m.toMax) return in(l, "no limits", "sans limites");
  std::string text;
  if (m.toMin) text = rounded(*m.toMin) + toMinimum(l);
  if (m.toMax) text += (text.empty() ? "" : ", ") + rounded(*m.toMax) + toMaximum(l);
  return text + " (" + unit + ")";
}

// What is left of the verification: most often less than would be said of a coordinate.
std::string smallText(double value, Language l) {
  const std::string text = rounded(value);
  return text == "0" && value > 0 ? in(l, "below 0.000001", "moins de 0.000001") : text;
}

std::string branchText(std::string branch, Language l) {
  if (l == Language::english) return branch;
  for (const auto& [english, french] :
       {std::pair{"shoulder", "épaule"}, std::pair{"elbow", "coude"},
        std::pair{"wrist", "poignet"}}) {
    const std::size_t at = branch.find(english);
    if (at != std::string::npos) branch.replace(at, std::string_view(english).size(), french);
  }
  return branch;
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

// "RAIL to 999, B to 20"
std::string standText(const Session& session, const std::vector<AxisWanted>& axes, Language l) {
  std::vector<std::string> stands;
  stands.reserve(axes.size());
  for (const AxisWanted& axis : axes) {
    stands.push_back(session.machine().axisNames()[axis.place] + in(l, " to ", " à ") +
                     rounded(axis.value));
  }
  return joined(stands);
}

void printSolved(std::ostream& out, const Session& session, const Answer& answer, Language l) {
  if (hasBranches(answer.solver)) {
    out << label(l, "Branch", "Branche") << branchText(answer.branch, l) << '\n';
  }
  if (!answer.freeAxes.empty()) {
    out << label(l, "Family", "Famille") << joined(namesOf(session, answer.freeAxes))
        << in(l, " free: the member nearest to the start",
              " libre : le membre le plus proche du départ")
        << '\n';
  }
  if (!answer.moved.empty()) {
    out << label(l, "Moved", "Déplacé") << standText(session, answer.moved, l)
        << in(l, ": as near to the start as the target is reached",
              " : au plus près du départ où la cible est atteinte")
        << '\n';
  }
  const SingularDistance& singular = answer.singular;
  if (std::isfinite(singular.elbowRad)) {
    const std::string angle = rounded(singular.elbowRad * kRadToDeg);
    out << label(l, "Elbow", "Coude")
        << in(l, angle + " degrees from straight or folded",
              "à " + angle + " degrés de tendu ou replié")
        << '\n';
  }
  if (std::isfinite(singular.shoulderMm)) {
    const std::string away = rounded(singular.shoulderMm);
    out << label(l, "Shoulder", "Épaule")
        << in(l, "wrist centre " + away + " mm from where its two sides meet",
              "centre du poignet à " + away + " mm de là où ses deux côtés se rejoignent")
        << '\n';
  }
}

// "Z below by 19.9 mm"
std::string outsideText(const Session& session, const std::vector<AxisOutside>& axes,
                        Language language) {
  std::vector<std::string> list;
  list.reserve(axes.size());
  for (const AxisOutside& axis : axes) {
    const bool isBelow = axis.by < 0;
    std::string text = session.machine().axisNames()[axis.place];
    text += isBelow ? in(language, " below by ", " descend de ")
                    : in(language, " above by ", " dépasse de ");
    text += rounded(std::abs(axis.by)) + ' ';
    text += isRotary(session, axis.place) ? in(language, "degrees", "degrés") : "mm";
    text += isBelow ? in(language, "", " sous son minimum") : in(language, "", " son maximum");
    list.push_back(std::move(text));
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
          {"branch", hasBranches(answer.solver) ? json(answer.branch) : json()},
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

void printSingularity(std::ostream& out, const Session& session, const Answer& answer, Language l) {
  if (!answer.singularity) return;
  const AxisNames& names = session.machine().axisNames();
  const std::string& first = names[answer.singularity->first];
  const std::string& second = names[answer.singularity->second];
  const std::string angle = rounded(answer.singularity->angleRad * kRadToDeg);
  out << label(l, "Singular", "Singulier")
      << in(l,
            angle + " degrees from the nearest direction where " + first + " and " + second +
                " lose a degree of freedom",
            "à " + angle + " degrés de la direction la plus proche où " + first + " et " + second +
                " perdent un degré de liberté")
      << '\n';
}

struct LeastMargin {
  double value = std::numeric_limits<double>::infinity();
  int place = -1;
  bool isToMin = false;

  void take(const std::optional<double>& margin, int axis, bool toMin) {
    if (margin && *margin < value) *this = {*margin, axis, toMin};
  }
};

// Of a list, where the margins of every axis would bury the positions.
void printLeastMargin(std::ostream& out, const Session& session, const Answer& answer, Language l) {
  LeastMargin least;
  for (std::size_t i = 0; i < answer.margins.size(); ++i) {
    least.take(answer.margins[i].toMin, static_cast<int>(i), true);
    least.take(answer.margins[i].toMax, static_cast<int>(i), false);
  }
  out << label(l, "Margin", "Marge");
  if (least.place < 0) {
    out << in(l, "no limits", "sans limites") << '\n';
    return;
  }
  out << session.machine().axisNames()[least.place] << ' ' << rounded(least.value) << ' '
      << unitWord(session, least.place, l) << (least.isToMin ? toMinimum(l) : toMaximum(l))
      << in(l, ", the least", ", la plus petite") << '\n';
}

// --- directions that programs round

std::string listedExactly(const UVec3d& v) {
  return plain(v.x) + "," + plain(v.y) + "," + plain(v.z);
}

// What is nothing beside the other components comes of turning by a quarter.
UVec3d withoutDust(UVec3d direction) {
  constexpr double kDust = 1e-15;
  for (double* value : {&direction.x, &direction.y, &direction.z}) {
    if (std::abs(*value) < kDust) *value = 0.0;
  }
  return direction;
}

// Whether the direction alone misses, by as little as a program loses that writes a few decimals.
bool isRounding(const Session& session, const Answer& answer) {
  constexpr double kRoundedDegrees = 1e-4;
  const bool isDirection =
      answer.reason == Reason::outsideCone || answer.reason == Reason::noRotaryAxis;
  return isDirection && answer.nearestDirection && answer.by < kRoundedDegrees &&
         answer.residual.pointMm <= kReachedMm && namesOf(session, answer.margins).empty();
}

}  // namespace

bool hasBranches(SolverKind kind) {
  return kind == SolverKind::twoRotary || kind == SolverKind::moreRotary || kind == SolverKind::arm;
}

bool isRotary(const Session& session, int place) {
  return session.machine()->getAxisElem(place + 1)->getElemType() ==
         zkin::KMachineElem::KMET_TYPE_AROT;
}

std::string unitWord(const Session& session, int place, Language language) {
  return isRotary(session, place) ? in(language, "degrees", "degrés") : "mm";
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
                  const std::vector<Margin>& margins, Language l) {
  for (int i = 0; i < at.size(); ++i) {
    const Margin& m = margins[static_cast<std::size_t>(i)];
    const std::string side = isOutside(m.toMin)   ? in(l, "BELOW", "SOUS")
                             : isOutside(m.toMax) ? in(l, "ABOVE", "SUR")
                                                  : in(l, "inside", "dedans");
    out << "  " << padded(side, 6) << "  " << at.names()[i] << '=' << rounded(at[i]) << "  "
        << marginText(m, unitWord(session, i, l), l) << '\n';
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

void printFound(std::ostream& out, const Session& session, const Answer& answer, Language l,
                bool isListed) {
  const ToolPoint at = pointOf(session, answer.position);
  out << label(l, "Position", "Position") << roundedText(answer.position) << '\n';
  if (answer.isLinearOnly) {
    out << label(l, "", "")
        << in(l, "by the linear axes alone: no rotary axis is free, and the tool points so",
              "par les seuls axes linéaires : aucun axe rotatif libre, et l'outil est orienté "
              "ainsi")
        << '\n';
  }
  out << label(l, "Tip", "Pointe") << textOf(at.tip) << '\n'
      << label(l, "Direction", "Direction") << textOf(at.direction) << '\n'
      << label(l, "Residual", "Résidu") << "point " << smallText(answer.residual.pointMm, l)
      << " mm, direction " << smallText(answer.residual.directionRad * kRadToDeg, l) << ' '
      << in(l, "degrees", "degrés") << '\n';
  printSolved(out, session, answer, l);
  printSingularity(out, session, answer, l);
  if (isListed) return printLeastMargin(out, session, answer, l);
  out << in(l, "Margins", "Marges") << '\n';
  printMargins(out, session, answer.position, answer.margins, l);
}

std::string reasonText(const Session& session, const Answer& answer, Language l) {
  if (!isRounding(session, answer)) return answer.text;
  return answer.text + in(l, "; that is rounding, --dir ", " ; ce n'est qu'un arrondi, --dir ") +
         listedExactly(withoutDust(directionInPartZero(session, *answer.nearestDirection))) +
         in(l, " is reached", " est atteinte");
}

// What is nearest is said with all digits: less of them, and it is not reached.
void printNone(std::ostream& out, const Session& session, const Answer& answer, Language l) {
  out << in(l, "No position: ", "Aucune position : ") << reasonText(session, answer, l) << '\n';
  for (const std::string& condition : answer.conditions) out << "  - " << condition << '\n';
  if (answer.reason == Reason::noDirection) return;
  const ToolPoint at = pointOf(session, answer.position);
  out << label(l, "Best found", "Au mieux") << roundedText(answer.position) << '\n'
      << label(l, "Tip", "Pointe") << textOf(at.tip) << '\n'
      << label(l, "Direction", "Direction") << textOf(at.direction) << '\n';
  if (!answer.outside.empty()) {
    out << label(l, "Outside", "Dehors") << outsideText(session, answer.outside, l) << '\n';
  }
  if (answer.nearestTip) {
    out << label(l, "Nearest", "Proche") << "point "
        << listedExactly(pointInPartZero(session, *answer.nearestTip)) << '\n';
  }
  if (answer.nearestDirection) {
    out << label(l, "Nearest", "Proche") << "direction "
        << listedExactly(withoutDust(directionInPartZero(session, *answer.nearestDirection)))
        << '\n';
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

json reasonJson(const Session& session, const Answer& answer, Language language) {
  const AxisNames& names = session.machine().axisNames();
  json outside = json::array();
  for (const AxisOutside& axis : answer.outside) {
    outside.push_back({{"axis", names[axis.place]}, {"by", axis.by}});
  }
  const std::string unit = unitOf(answer);
  json reason = {{"code", toString(answer.reason)},
                 {"by", unit.empty() ? json() : json(answer.by)},
                 {"unit", unit.empty() ? json() : json(unit)},
                 {"text", reasonText(session, answer, language)},
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
