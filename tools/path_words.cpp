#include "tools/path_words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "toolkit/model/JointChain.h"
#include "tools/AnswerText.h"
#include "tools/Checked.h"
#include "tools/Numbers.h"

namespace korvo::tools {
namespace {

std::string axisName(const PathOutcome& path, int place) {
  return path.session.machine().axisNames()[place];
}

std::string amount(const PathOutcome& path, int place, double by) {
  return neat(by) + " " + unitWord(path.session, place, path.language);
}

// "target 17 (line 23)"
std::string placeText(const PathOutcome& path, std::size_t target) {
  const std::string number = std::to_string(target + 1);
  const std::string line = std::to_string(path.input.lineOf(target));
  return in(path.language, "target " + number + " (line " + line + ")",
            "cible " + number + " (ligne " + line + ")");
}

std::string counted(std::size_t count, const char* one, const char* more) {
  return std::to_string(count) + " " + (count == 1 ? one : more);
}

std::string partText(const PathOutcome& path, const PathAdvice& advice) {
  std::string by;
  for (const auto& [name, value] : {std::pair{"X", advice.shift.x}, std::pair{"Y", advice.shift.y},
                                    std::pair{"Z", advice.shift.z}}) {
    if (value == 0.0) continue;
    by +=
        std::string(by.empty() ? "" : ", ") + name + (value > 0 ? " +" : " ") + neat(value) + " mm";
  }
  return in(path.language, "Move the part by " + by + " (machine axes, all axes at 0)",
            "Déplacer la pièce de " + by + " (axes de la machine, tous les axes à 0)");
}

std::string limitText(const PathOutcome& path, const PathAdvice& advice) {
  const Language l = path.language;
  const std::string name = axisName(path, advice.place);
  std::string ends;
  if (advice.min) ends = in(l, "down to ", "jusqu'à ") + neat(*advice.min);
  if (advice.max) {
    ends += (ends.empty() ? "" : in(l, " and ", " et ")) + in(l, "up to ", "jusqu'à ") +
            neat(*advice.max);
  }
  const std::string more = amount(path, advice.place, advice.more);
  return in(l, "Let " + name + " go " + ends + ", " + more + " more than its limits",
            "Laisser aller " + name + " " + ends + ", " + more + " de plus que ses limites");
}

std::string whatText(const PathOutcome& path, const PathAdvice& advice) {
  const Language l = path.language;
  switch (advice.kind) {
    case PathAdvice::Kind::part:
      return partText(path, advice);
    case PathAdvice::Kind::start:
      return in(l, "Start with ", "Partir avec ") + axisName(path, advice.place) + "=" +
             rounded(advice.value);
    case PathAdvice::Kind::limit:
      return limitText(path, advice);
    default:
      return in(l, "Begin at ", "Commencer à ") + positionText(path, advice.begin) +
             in(l, ", as this path does, not with the position nearest to the start",
                ", comme ce parcours, et non par la position la plus proche du départ");
  }
}

// "LOADTL 1, SPINDL 2"
std::string countsText(const std::map<std::string, std::size_t, std::less<>>& counts) {
  std::string text;
  for (const auto& [word, count] : counts) {
    text += (text.empty() ? "" : ", ") + word + " " + std::to_string(count);
  }
  return text;
}

}  // namespace

std::string fixed(double value, int decimals) {
  std::array<char, 64> text{};
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value,
                                 std::chars_format::fixed, decimals)
                       .ptr;
  return {text.data(), end};
}

std::string neat(double value) {
  const double size = std::abs(value);
  const int decimals = size >= 10'000 ? 0 : size >= 100 ? 1 : 3;
  std::string text = fixed(value + 0.0, decimals);
  if (text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

std::string countedTargets(std::size_t count, Language l) {
  return std::to_string(count) +
         (count == 1 ? in(l, " target", " cible") : in(l, " targets", " cibles"));
}

std::string fitText(const PathFit& fit, Language l) {
  const bool isFrench = l == Language::french;
  std::string text;
  const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
  if (fit.breaks > 0) {
    add(counted(fit.breaks, isFrench ? "rupture" : "break", isFrench ? "ruptures" : "breaks"));
  }
  if (fit.unreached > 0) {
    add(countedTargets(fit.unreached, l) + in(l, " without a position", " sans position"));
  }
  if (fit.standing > 0) {
    add(counted(fit.standing,
                isFrench ? "endroit où l'outil attend" : "place where the tool stands",
                isFrench ? "endroits où l'outil attend" : "places where the tool stands"));
  }
  return text.empty() ? in(l, "no break", "aucune rupture") : text;
}

std::string verdictText(const PathOutcome& path) {
  const Language l = path.language;
  const ToolpathReport& report = path.report;
  const PathFit fit = fitOf(report);
  std::string text;
  if (report.isStopped()) {
    text = in(l, "stopped after ", "arrêté après ") + countedTargets(report.done, l) +
           in(l, " of ", " sur ") + std::to_string(report.targets) +
           in(l, "; until there ", " ; jusque-là ");
  }
  return text + fitText(fit, l);
}

std::string breakText(const PathOutcome& path, const PathBreak& at) {
  const Language l = path.language;
  const std::string name = axisName(path, at.place), by = amount(path, at.place, at.by);
  const std::string where = placeText(path, at.target) + in(l, ": ", " : ");
  switch (at.kind) {
    case PathBreak::Kind::unwound:
      return where + in(l, name + " has to be unwound by " + by + " before it",
                        name + " doit être déroulé de " + by + " avant");
    case PathBreak::Kind::sideChanged:
      return where + in(l, "the machine has to change its side before it; " + name + " goes " + by,
                        "la machine doit changer de côté avant ; " + name + " parcourt " + by);
    default:
      return where + in(l, name + " steps by " + by, name + " saute de " + by);
  }
}

std::string standingText(const PathOutcome& path, const PathStanding& at) {
  const Language l = path.language;
  const std::string percent = std::to_string(std::lround(at.way * 100));
  return in(l, "on the way to ", "sur le chemin vers ") + placeText(path, at.target) +
         in(l, ", after " + percent + " percent: the tool stands while ",
            ", après " + percent + " pour cent : l'outil attend pendant que ") +
         axisName(path, at.place) + in(l, " goes ", " parcourt ") + amount(path, at.place, at.by);
}

std::vector<UnreachedRun> unreachedRuns(const PathOutcome& path) {
  std::vector<UnreachedRun> runs;
  auto reason = path.report.reasons.begin();
  for (const std::size_t target : path.report.unreached) {
    if (runs.empty() || runs.back().last + 1 != target) {
      runs.push_back({target, target, nullptr});
      while (reason != path.report.reasons.end() && reason->first < target) ++reason;
      const bool isKnown = reason != path.report.reasons.end() && reason->first == target;
      if (isKnown) runs.back().reason = &reason->second;
    }
    runs.back().last = target;
  }
  return runs;
}

std::string unreachedText(const PathOutcome& path, const UnreachedRun& run) {
  const Language l = path.language;
  std::string text = placeText(path, run.first);
  if (run.last > run.first) {
    text += in(l, " and the ", " et les ") + std::to_string(run.last - run.first) +
            in(l, " behind it", " suivantes");
  }
  text += in(l, ": no position", " : pas de position");
  if (!run.reason) return text;
  // Others of the run may miss for other reasons, or by more.
  text += run.last == run.first ? in(l, "; ", " ; ")
                                : in(l, "; of the first: ", " ; de la première : ");
  return text + reasonText(path.session, *run.reason, l);
}

std::string adviceText(const PathOutcome& path, const PathAdvice& advice) {
  const Language l = path.language;
  const bool isWhole = advice.after.isFitting();
  const std::string now = fitText(advice.after, l), was = fitText(advice.before, l);
  const std::string saved =
      isWhole ? in(l, "then it fits (now ", "alors il passe (sans cela : ") + was + ")"
              : in(l, "then ", "alors ") + now + in(l, " (now ", " (sans cela : ") + was + ")";
  if (advice.kind == PathAdvice::Kind::side) {
    return whatText(path, advice) + in(l, ": nearest first has ", " : au plus proche il y a ") +
           was + in(l, ", this path ", ", ce parcours : ") + now;
  }
  return whatText(path, advice) + in(l, ": ", " : ") + saved;
}

std::string cutShortText(const PathOutcome& path) {
  if (!path.isCutShort) return "";
  return in(path.language, "stopped by a signal before all of it was tried",
            "arrêté par un signal avant que tout soit essayé");
}

std::string singularText(const PathOutcome& path) {
  const Language l = path.language;
  const ToolpathReport& r = path.report;
  const double direction = r.nearestSingular.directionRad * kRadToDeg;
  const double elbow = r.nearestSingular.elbowRad * kRadToDeg;
  std::string text = countedTargets(r.singularTargets, l);
  const std::string within = neat(path.options.singularDegrees);
  const bool isOne = path.options.singularDegrees == 1.0;
  text += in(l, " within " + within + (isOne ? " degree" : " degrees"),
             " à moins de " + within + (isOne ? " degré" : " degrés"));
  if (std::isfinite(r.nearestSingular.shoulderMm)) {
    text += in(l, " or ", " ou ") + neat(path.options.singularMm) + " mm";
  }
  const double least = std::min(direction, elbow);
  if (std::isfinite(least)) {
    text += in(l, "; the nearest at ", " ; la plus proche à ") + neat(least) +
            in(l, " degrees, ", " degrés, ") + placeText(path, r.nearestSingularTarget);
  }
  return text;
}

std::string nearestLimitText(const PathOutcome& path) {
  const ToolpathReport& r = path.report;
  if (r.marginPlace < 0) return "";
  return axisName(path, r.marginPlace) + ", " + amount(path, r.marginPlace, r.margin) + ", " +
         placeText(path, r.marginTarget);
}

std::string positionText(const PathOutcome& path, const Values& values) {
  const AxisNames& names = path.session.machine().axisNames();
  std::string text;
  for (int i = 0; i < names.size(); ++i) {
    text += (i ? " " : "") + names[i] + "=" + neat(values[static_cast<std::size_t>(i)]);
  }
  return text;
}

std::string skippedText(const PathInput& input) { return countsText(input.skipped); }

std::string notFollowedText(const PathInput& input, Language l) {
  if (input.notFollowed.empty()) return "";
  std::size_t count = 0;
  for (const auto& [word, times] : input.notFollowed) count += times;
  const bool isOne = count == 1;
  return std::to_string(count) +
         in(l,
            isOne ? " statement changes where the tool goes and was not followed: "
                  : " statements change where the tool goes and were not followed: ",
            isOne ? " instruction change le chemin de l'outil et n'a pas été suivie : "
                  : " instructions changent le chemin de l'outil et n'ont pas été suivies : ") +
         countsText(input.notFollowed);
}

std::string inputText(const PathOutcome& path) {
  const Language l = path.language;
  const PathInput& input = path.input;
  std::string text = input.name + in(l, ": ", " : ") + countedTargets(input.targets.size(), l) +
                     (input.isApt ? ", APT/CL" : ", CSV");
  if (!input.skipped.empty()) {
    text += in(l, "; skipped: ", " ; passés : ") + skippedText(input);
  }
  return text;
}

std::vector<PathAxisView> axisViews(const PathOutcome& path) {
  const AxisNames& names = path.session.machine().axisNames();
  std::vector<PathAxisView> views;
  for (const Joint& joint : JointChain::of(*path.session.machine()).joints) {
    if (joint.place < 0) continue;
    views.push_back({joint.place, names[joint.place], joint.motion == Joint::Motion::turn,
                     joint.min, joint.max,
                     &path.report.axes[static_cast<std::size_t>(joint.place)]});
  }
  std::sort(views.begin(), views.end(),
            [](const auto& a, const auto& b) { return a.place < b.place; });
  return views;
}

std::string shortUnit(const PathAxisView& axis) { return axis.isTurn ? "°" : "mm"; }

}  // namespace korvo::tools
