// The report of a path for programs: korvo.path/1.
#include <cmath>
#include <nlohmann/json.hpp>

#include "toolkit/Text.h"
#include "tools/AnswerText.h"
#include "tools/path_report.h"
#include "tools/path_words.h"

using nlohmann::json;

namespace korvo::tools {
namespace {

constexpr std::size_t kMostListed = 1000;  // of each kind; how many there are is said beside it

json finiteOrNull(double value) { return std::isfinite(value) ? json(value) : json(); }

std::string axisName(const PathOutcome& path, int place) {
  return path.session.machine().axisNames()[place];
}

json placeJson(const PathOutcome& path, std::size_t target) {
  return {{"target", target + 1}, {"line", path.input.lineOf(target)}};
}

json valuesJson(const PathOutcome& path, const Values& values) {
  json list = json::array();
  const AxisNames& names = path.session.machine().axisNames();
  for (int i = 0; i < names.size(); ++i) {
    list.push_back({{"axis", names[i]}, {"value", values[static_cast<std::size_t>(i)]}});
  }
  return list;
}

json fitJson(const PathFit& fit) {
  return {{"breaks", fit.breaks}, {"unreached", fit.unreached}, {"standing", fit.standing}};
}

// {"count": ..., "first": [...]}
template <typename List, typename ToJson>
json listed(const List& all, std::size_t count, ToJson toJson) {
  json first = json::array();
  for (const auto& one : all) {
    if (first.size() == kMostListed) break;
    first.push_back(toJson(one));
  }
  return {{"count", count}, {"first", std::move(first)}};
}

json breakJson(const PathOutcome& path, const PathBreak& at) {
  json one = placeJson(path, at.target);
  one["before"] = at.before + 1;
  one["kind"] = toString(at.kind);
  one["axis"] = axisName(path, at.place);
  one["by"] = at.by;
  one["text"] = breakText(path, at);
  return one;
}

json unreachedJson(const PathOutcome& path, const UnreachedRun& run) {
  json one = placeJson(path, run.first);
  one["last"] = run.last + 1;
  one["reason"] = run.reason ? reasonJson(path.session, *run.reason, path.language) : json();
  return one;
}

json standingJson(const PathOutcome& path, const PathStanding& at) {
  json one = placeJson(path, at.target);
  one["way"] = at.way;
  one["behind"] = at.behind;
  one["axis"] = axisName(path, at.place);
  one["by"] = at.by;
  return one;
}

json adviceJson(const PathOutcome& path, const PathAdvice& advice) {
  const bool isPart = advice.kind == PathAdvice::Kind::part;
  const bool isStart = advice.kind == PathAdvice::Kind::start;
  const bool isSide = advice.kind == PathAdvice::Kind::side;
  const bool isLimit = advice.kind == PathAdvice::Kind::limit;
  return {{"kind", toString(advice.kind)},
          {"shift", isPart ? json({advice.shift.x, advice.shift.y, advice.shift.z}) : json()},
          {"axis", isStart || isLimit ? json(axisName(path, advice.place)) : json()},
          {"value", isStart ? json(advice.value) : json()},
          {"min", advice.min ? json(*advice.min) : json()},
          {"max", advice.max ? json(*advice.max) : json()},
          {"more", isLimit ? json(advice.more) : json()},
          {"begin", isSide ? valuesJson(path, advice.begin) : json()},
          {"before", fitJson(advice.before)},
          {"after", fitJson(advice.after)},
          {"text", adviceText(path, advice)}};
}

json axisJson(const PathOutcome& path, const PathAxisView& axis) {
  const AxisTravel& travel = *axis.travel;
  json step;
  if (travel.largestStep > 0) {
    step = {{"by", travel.largestStep}, {"target", travel.largestStepTarget + 1}};
  }
  return {{"axis", axis.name},
          {"unit", axis.isTurn ? "degree" : "mm"},
          {"weight", path.options.axes[static_cast<std::size_t>(axis.place)].weight},
          {"travel", travel.travel},
          {"low", finiteOrNull(travel.low)},
          {"high", finiteOrNull(travel.high)},
          {"min", finiteOrNull(axis.min)},
          {"max", finiteOrNull(axis.max)},
          {"largestStep", std::move(step)}};
}

json singularJson(const PathOutcome& path) {
  const SingularDistance& nearest = path.report.nearestSingular;
  const bool isKnown = std::isfinite(nearest.directionRad) || std::isfinite(nearest.elbowRad);
  return {{"count", path.report.singularTargets},
          {"degrees", path.options.singularDegrees},
          {"mm", path.options.singularMm},
          {"direction", finiteOrNull(nearest.directionRad * kRadToDeg)},
          {"elbow", finiteOrNull(nearest.elbowRad * kRadToDeg)},
          {"shoulder", finiteOrNull(nearest.shoulderMm)},
          {"target", isKnown ? json(path.report.nearestSingularTarget + 1) : json()}};
}

json nearestLimitJson(const PathOutcome& path) {
  const ToolpathReport& report = path.report;
  if (report.marginPlace < 0) return nullptr;
  json one = placeJson(path, report.marginTarget);
  one["axis"] = axisName(path, report.marginPlace);
  one["margin"] = report.margin;
  return one;
}

json nearestFirstJson(const PathOutcome& path) {
  if (!path.nearestFirst) return nullptr;
  json travels = json::array();
  for (const PathAxisView& axis : axisViews(path)) {
    const AxisTravel& travel = path.nearestFirst->axes[static_cast<std::size_t>(axis.place)];
    travels.push_back({{"axis", axis.name}, {"travel", travel.travel}});
  }
  return {{"fit", fitJson(fitOf(*path.nearestFirst))},
          {"cost", path.nearestFirst->cost},
          {"axes", std::move(travels)}};
}

json inputJson(const PathOutcome& path) {
  json skipped = json::object(), notFollowed = json::object();
  for (const auto& [word, count] : path.input.skipped) skipped[word] = count;
  for (const auto& [word, count] : path.input.notFollowed) notFollowed[word] = count;
  return {{"file", path.input.name},
          {"format", path.input.isApt ? "apt" : "csv"},
          {"targets", path.input.targets.size()},
          {"skipped", std::move(skipped)},
          {"notFollowed", std::move(notFollowed)}};
}

json fileJson(const std::optional<std::string>& file) {
  return file ? json(shownText(*file)) : json();
}

}  // namespace

json pathJson(const PathOutcome& path) {
  const ToolpathReport& report = path.report;
  json axes = json::array();
  for (const PathAxisView& axis : axisViews(path)) axes.push_back(axisJson(path, axis));
  json advice = json::array();
  for (const PathAdvice& one : path.advice) advice.push_back(adviceJson(path, one));
  return {{"schema", "korvo.path/1"},
          {"units", unitsJson()},
          {"machine", path.session.machineJson()},
          {"settings", path.session.settingsJson()},
          {"input", inputJson(path)},
          {"fits", report.isFitting()},
          {"stopped", report.isStopped()},
          {"done", report.done},
          {"positions", report.positions},
          {"added", report.added},
          {"cost", report.cost},
          {"begin", report.first ? valuesJson(path, report.first->values) : json()},
          {"breaks", listed(report.breaks, report.breaks.size(),
                            [&](const PathBreak& at) { return breakJson(path, at); })},
          {"unreached", listed(unreachedRuns(path), report.unreached.size(),
                               [&](const UnreachedRun& run) { return unreachedJson(path, run); })},
          {"standing", listed(report.standing, report.standing.size(),
                              [&](const PathStanding& at) { return standingJson(path, at); })},
          {"advice", std::move(advice)},
          {"adviceStopped", path.isCutShort},
          {"axes", std::move(axes)},
          {"nearestLimit", nearestLimitJson(path)},
          {"singular", singularJson(path)},
          {"nearestFirst", nearestFirstJson(path)},
          {"output", fileJson(path.asked.output)},
          {"report", fileJson(path.asked.page)}};
}

}  // namespace korvo::tools
