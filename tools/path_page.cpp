// The report of a path as one HTML page with a plot of every axis.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

#include "tools/Checked.h"
#include "tools/path_report.h"
#include "tools/path_words.h"

namespace korvo::tools {
namespace {

constexpr std::size_t kMostRows = 200;  // of a table
constexpr std::size_t kMostMarks = 300;
constexpr double kHeight = 100.0;  // of a plot, whatever it is shown at

// Colours of both schemes are told apart by people who see no red or no green.
constexpr const char* kStyle = R"(
:root{color-scheme:light dark;--bg:#f7f8fa;--card:#fff;--ink:#1b2027;--soft:#5b6572;--line:#d9dee5;
--curve:#1f6fc5;--limit:#b26a00;--break:#c4281c;--good:#1b7a43;--bad:#b3261e}
@media(prefers-color-scheme:dark){:root{--bg:#12161b;--card:#1b2129;--ink:#e8ecf1;--soft:#9aa6b4;
--line:#323b46;--curve:#6cb2ff;--limit:#f0ad4e;--break:#ff7b6e;--good:#63d297;--bad:#ff8a80}}
*{box-sizing:border-box}
body{margin:0;background:var(--bg);color:var(--ink);
font:16px/1.5 system-ui,-apple-system,"Segoe UI",Roboto,sans-serif}
main{max-width:1000px;margin:0 auto;padding:1rem}
h1{font-size:1.35rem;margin:.4rem 0;overflow-wrap:anywhere}
h2{font-size:1.1rem;margin:1.6rem 0 .6rem}
section h2{margin-top:.2rem}
section,.verdict{background:var(--card);border:1px solid var(--line);border-radius:10px;
padding:.8rem 1rem;margin:.7rem 0}
.verdict{border-left:6px solid var(--good);font-size:1.1rem}
.verdict.bad{border-left-color:var(--bad)}
.verdict b{display:block}
.soft{color:var(--soft);font-size:.9rem;overflow-wrap:anywhere}
ul{padding-left:1.2rem;margin:.4rem 0}
li{margin:.25rem 0;overflow-wrap:anywhere}
.figures{display:grid;grid-template-columns:repeat(auto-fit,minmax(150px,1fr));gap:.6rem}
.figures div{border:1px solid var(--line);border-radius:8px;padding:.5rem .7rem}
.figures b{display:block;font-size:1.15rem;font-variant-numeric:tabular-nums}
.plot h3{margin:0;font-size:1rem;display:flex;flex-wrap:wrap;gap:0 .8rem;align-items:baseline}
.plot h3 span{font-weight:400;color:var(--soft);font-size:.85rem}
.frame{position:relative;height:170px;margin:.5rem 3rem 0 4.2rem;border:1px solid var(--line);
border-width:0 0 1px 1px}
.frame svg{position:absolute;inset:0;width:100%;height:100%;overflow:visible}
.frame span{position:absolute;right:100%;margin-right:6px;font-size:.72rem;line-height:1;
color:var(--soft);white-space:nowrap;transform:translateY(-50%);font-variant-numeric:tabular-nums}
.frame span.limit{right:auto;left:100%;margin:0 0 0 6px;color:var(--limit)}
.scale{display:flex;justify-content:space-between;margin:0 3rem 0 4.2rem;font-size:.72rem;
color:var(--soft);font-variant-numeric:tabular-nums}
path,line{fill:none;vector-effect:non-scaling-stroke}
.curve{stroke:var(--curve);stroke-width:1.6;stroke-linejoin:round}
.limit{stroke:var(--limit);stroke-width:1.4;stroke-dasharray:7 5}
.break{stroke:var(--break);stroke-width:1.2}
.grid{stroke:var(--line);stroke-width:1}
.key{display:inline-block;width:1.6em;border-top:2px solid;vertical-align:middle;margin:0 .3em 0 .8em}
.wide{overflow-x:auto}
table{border-collapse:collapse;font-size:.9rem;font-variant-numeric:tabular-nums;width:100%}
th,td{text-align:right;padding:.3rem .6rem;border-bottom:1px solid var(--line);white-space:nowrap}
th:first-child,td:first-child{text-align:left}
)";

// The names of axes and files are anybody's.
std::string escaped(std::string_view text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\'':
        out += "&#39;";
        break;
      default:
        // Control characters have no place in a page.
        out += static_cast<unsigned char>(c) < 0x20 || c == 0x7F ? ' ' : c;
    }
  }
  return out;
}

/// What an axis' plot shows from bottom to top.
struct Range {
  double low = 0.0;
  double high = 1.0;

  double y(double value) const { return kHeight * (high - value) / (high - low); }
  bool holds(double value) const { return value >= low && value <= high; }
};

/// Limits are in it unless the line would be squeezed flat by them.
Range rangeOf(const PathAxisView& axis) {
  constexpr double kMostEmpty = 3.0, kPadding = 0.06, kLeast = 1.0;
  double low = axis.travel->low, high = axis.travel->high;
  const double span = std::max(high - low, kLeast);
  if (std::isfinite(axis.min) && low - axis.min <= kMostEmpty * span) low = std::min(low, axis.min);
  if (std::isfinite(axis.max) && axis.max - high <= kMostEmpty * span)
    high = std::max(high, axis.max);
  const double padding = std::max(kPadding * (high - low), kLeast / 2);
  return {low - padding, high + padding};
}

/// Round numbers: of angles the parts of a turn.
double roundStep(double least, bool isTurn) {
  constexpr double kParts[] = {5, 10, 15, 30, 45, 90, 180, 360};
  if (isTurn && least > 1 && least <= 360)
    return *std::lower_bound(kParts, std::end(kParts), least);
  const double power = std::pow(10.0, std::floor(std::log10(least)));
  for (const double digit : {1.0, 2.0, 5.0}) {
    if (digit * power >= least) return digit * power;
  }
  return 10.0 * power;
}

/// What is written at the left of a plot, but not where it would lie on a limit or the edge.
std::vector<double> ticksOf(const PathAxisView& axis, const Range& range) {
  constexpr double kTicks = 4.5, kClear = 7.0;  // of the height
  const double step = roundStep((range.high - range.low) / kTicks, axis.isTurn);
  const auto yOf = [&](double limit) { return std::isinf(limit) ? 2 * kHeight : range.y(limit); };
  std::vector<double> ticks;
  for (double k = std::ceil(range.low / step); k * step <= range.high; ++k) {
    const double y = range.y(k * step);
    const bool isFree = std::abs(y - yOf(axis.min)) > kClear &&
                        std::abs(y - yOf(axis.max)) > kClear && y > kClear && y < kHeight - kClear;
    if (isFree) ticks.push_back(k * step);
  }
  return ticks;
}

class Page {
 public:
  Page(const PathOutcome& path, const PathPlot& plot)
      : path_(path), plot_(plot), l_(path.language) {}

  std::string text() {
    head();
    notFollowed();
    verdict();
    advice();
    figures();
    plots();
    axisTable();
    placeTables();
    out_ += "<p class=\"soft\">korvo " KORVO_VERSION "</p>\n</main>\n</body>\n</html>\n";
    return std::move(out_);
  }

 private:
  std::string in(std::string_view english, std::string_view french) const {
    return tools::in(l_, english, french);
  }

  void head() {
    const std::string title = in("Toolpath report", "Rapport de parcours");
    out_ += std::string("<!DOCTYPE html>\n<html lang=\"") + tagOf(l_) +
            "\">\n<head>\n<meta charset=\"utf-8\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
            title + ": " + escaped(path_.input.name) + "</title>\n<style>" + kStyle +
            "</style>\n</head>\n<body>\n<main>\n<h1>" + title + "</h1>\n<p class=\"soft\">" +
            escaped(inputText(path_)) + "<br>" + escaped(path_.session.file()) + "<br>" +
            escaped(path_.session.settingsText(l_)) + "</p>\n";
  }

  void notFollowed() {
    if (path_.input.notFollowed.empty()) return;
    out_ += "<div class=\"verdict bad\"><b>" + in("Not followed", "Non suivi") + "</b>" +
            escaped(notFollowedText(path_.input, l_)) + "</div>\n";
  }

  void verdict() {
    const bool isGood = path_.report.isFitting();
    out_ += std::string("<div class=\"verdict") + (isGood ? "" : " bad") + "\"><b>" +
            (isGood ? in("It fits", "Il passe")
             : path_.report.isStopped() && fitOf(path_.report).isFitting()
                 ? in("Stopped before its end", "Arrêté avant la fin")
                 : in("It does not fit", "Il ne passe pas")) +
            "</b>" + escaped(verdictText(path_)) + "</div>\n";
  }

  void advice() {
    if (path_.advice.empty() && !path_.isCutShort) return;
    out_ += "<section><h2>" + in("What helps", "Ce qui aide") + "</h2>\n<ul>\n";
    for (const PathAdvice& one : path_.advice) {
      out_ += "<li>" + escaped(adviceText(path_, one)) + "</li>\n";
    }
    if (path_.isCutShort) out_ += "<li>" + escaped(cutShortText(path_)) + "</li>\n";
    out_ += "</ul>\n<p class=\"soft\">" +
            in("Each was tried alone, by a run over all targets.",
               "Chaque conseil a été essayé seul, sur toutes les cibles.") +
            "</p></section>\n";
  }

  void figure(const std::string& name, const std::string& value, const std::string& note = "") {
    out_ += "<div>" + name + "<b>" + escaped(value) + "</b>";
    if (!note.empty()) out_ += "<span class=\"soft\">" + escaped(note) + "</span>";
    out_ += "</div>\n";
  }

  void figures() {
    const ToolpathReport& report = path_.report;
    out_ += "<section class=\"figures\">\n";
    figure(in("Targets", "Cibles"), std::to_string(report.done),
           report.isStopped() ? in("of ", "sur ") + std::to_string(report.targets) : "");
    figure(in("Positions added", "Positions ajoutées"), std::to_string(report.added));
    figure(in("Breaks", "Ruptures"), std::to_string(report.breaks.size()));
    figure(in("Without a position", "Sans position"), std::to_string(report.unreached.size()));
    figure(in("Cost", "Coût"), neat(report.cost), in("weighted travel", "course pondérée"));
    const std::string nearest = nearestLimitText(path_);
    if (!nearest.empty()) {
      figure(in("Nearest limit", "Limite la plus proche"), neat(report.margin), nearest);
    }
    figure(in("Near a singular direction", "Près d'une singularité"),
           std::to_string(report.singularTargets), singularText(path_));
    if (path_.nearestFirst) {
      figure(in("Nearest-first", "Au plus proche"), fitText(fitOf(*path_.nearestFirst), l_),
             in("cost ", "coût ") + neat(path_.nearestFirst->cost));
    }
    out_ += "</section>\n";
    if (report.first) {
      out_ += "<p class=\"soft\">" + in("Begins at ", "Commence à ") +
              escaped(positionText(path_, report.first->values)) + "</p>\n";
    }
  }

  // --- plots

  void plots() {
    if (path_.report.positions == 0) return;
    out_ += "<h2>" + in("Axes over the path", "Axes le long du parcours") +
            "</h2>\n<p class=\"soft\"><span class=\"key\" style=\"color:var(--curve)\"></span>" +
            in("value", "valeur") + "<span class=\"key\" style=\"color:var(--limit)\"></span>" +
            in("limit", "limite") + "<span class=\"key\" style=\"color:var(--break)\"></span>" +
            in("break", "rupture") + "</p>\n";
    for (const PathAxisView& axis : axisViews(path_)) plot(axis);
  }

  void plot(const PathAxisView& axis) {
    const Range range = rangeOf(axis);
    const std::string unit = shortUnit(axis);
    out_ += "<section class=\"plot\"><h3>" + escaped(axis.name) + " <span>" +
            neat(axis.travel->low) + in(" to ", " à ") + neat(axis.travel->high) + " " + unit +
            in(", travel ", ", course ") + neat(axis.travel->travel) + " " + unit + "</span>" +
            beyondText(axis, range) + "</h3>\n<div class=\"frame\">\n<svg viewBox=\"0 0 1000 " +
            fixed(kHeight, 0) + "\" preserveAspectRatio=\"none\" role=\"img\" aria-label=\"" +
            escaped(axis.name) + "\">\n";
    const std::vector<double> ticks = ticksOf(axis, range);
    for (const double tick : ticks) level("grid", range.y(tick));
    for (const double limit : {axis.min, axis.max}) {
      if (isShown(limit, range)) level("limit", range.y(limit));
    }
    breakMarks();
    out_ += "<path class=\"curve\" d=\"" + curve(axis, range) + "\"/>\n</svg>\n";
    for (const double tick : ticks) label("", range.y(tick), neat(tick) + " " + unit);
    for (const double limit : {axis.min, axis.max}) {
      if (isShown(limit, range)) label(" class=\"limit\"", range.y(limit), neat(limit));
    }
    out_ += "</div>\n";
    scale();
    out_ += "</section>\n";
  }

  static bool isShown(double limit, const Range& range) {
    return std::isfinite(limit) && range.holds(limit);
  }

  // Limits that lie too far away to be drawn.
  std::string beyondText(const PathAxisView& axis, const Range& range) const {
    if (std::isinf(axis.min) && std::isinf(axis.max)) {
      return "<span>" + in("no limits", "sans limites") + "</span>";
    }
    std::string text;
    for (const double limit : {axis.min, axis.max}) {
      if (std::isinf(limit) || range.holds(limit)) continue;
      text += "<span>" + in("limit ", "limite ") + neat(limit) +
              in(" beyond the plot", " hors du tracé") + "</span>";
    }
    return text;
  }

  void level(const char* style, double y) {
    out_ += std::string("<line class=\"") + style + "\" x1=\"0\" x2=\"1000\" y1=\"" + fixed(y, 2) +
            "\" y2=\"" + fixed(y, 2) + "\"/>\n";
  }

  void label(const char* attributes, double y, const std::string& text) {
    out_ += std::string("<span") + attributes + " style=\"top:" + fixed(y / kHeight * 100, 1) +
            "%\">" + text + "</span>\n";
  }

  double xOf(double target) const { return 1000.0 * plot_.shareOf(target); }

  void breakMark(std::size_t target, const std::string& text) {
    const std::string x = fixed(xOf(static_cast<double>(target)), 1);
    out_ += "<line class=\"break\" x1=\"" + x + "\" x2=\"" + x + "\" y1=\"0\" y2=\"" +
            fixed(kHeight, 0) + "\"><title>" + escaped(text) + "</title></line>\n";
  }

  // More of them than a picture shows apart are thinned out.
  void breakMarks() {
    const auto& breaks = path_.report.breaks;
    const std::size_t step = breaks.size() / kMostMarks + 1;
    for (std::size_t i = 0; i < breaks.size(); i += step) {
      breakMark(breaks[i].target, breakText(path_, breaks[i]));
    }
    const std::vector<UnreachedRun> runs = unreachedRuns(path_);
    for (std::size_t i = 0; i < runs.size(); i += runs.size() / kMostMarks + 1) {
      breakMark(runs[i].first, unreachedText(path_, runs[i]));
    }
  }

  std::string curve(const PathAxisView& axis, const Range& range) const {
    const auto& columns = plot_.columns();
    const double width = columns.size() > 1 ? 1000.0 / static_cast<double>(columns.size() - 1) : 0;
    std::string path;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (columns[i].isEmpty) continue;
      const PathPlot::Span& span = columns[i].axes[static_cast<std::size_t>(axis.place)];
      const std::string x = fixed(width * static_cast<double>(i), 1);
      char word = path.empty() || columns[i].isAfterBreak ? 'M' : 'L';
      std::string last;
      for (const float value : {span.first, span.least, span.most, span.last}) {
        const std::string y = fixed(range.y(static_cast<double>(value)), 2);
        if (y == last) continue;
        path += word;
        path += x;
        path += ' ';
        path += y;
        word = 'L';
        last = y;
      }
    }
    return path;
  }

  void scale() {
    constexpr std::size_t kTicks = 5;
    const std::size_t count = path_.input.targets.size();
    out_ += "<div class=\"scale\">";
    for (std::size_t i = 0; i < kTicks; ++i) {
      out_ += "<span>" + std::to_string(1 + (count - 1) * i / (kTicks - 1)) + "</span>";
    }
    out_ += "</div>\n";
  }

  // --- tables

  void axisTable() {
    if (path_.report.positions == 0) return;
    out_ += "<h2>" + in("Axes", "Axes") + "</h2>\n<section class=\"wide\"><table>\n<tr>";
    for (const std::string& name :
         {in("axis", "axe"), in("travel", "course"), in("least", "minimum"), in("most", "maximum"),
          in("lower limit", "limite basse"), in("upper limit", "limite haute"),
          in("largest step", "plus grand pas"), in("to target", "vers la cible")}) {
      out_ += "<th>" + name + "</th>";
    }
    out_ += "</tr>\n";
    for (const PathAxisView& axis : axisViews(path_)) axisRow(axis);
    out_ += "</table></section>\n";
  }

  void axisRow(const PathAxisView& axis) {
    const AxisTravel& travel = *axis.travel;
    const std::string unit = " " + shortUnit(axis);
    const auto limit = [&](double value) { return std::isinf(value) ? "–" : neat(value) + unit; };
    out_ += "<tr>";
    for (const std::string& cell :
         {escaped(axis.name), neat(travel.travel) + unit, neat(travel.low) + unit,
          neat(travel.high) + unit, limit(axis.min), limit(axis.max),
          neat(travel.largestStep) + unit,
          travel.largestStep > 0 ? std::to_string(travel.largestStepTarget + 1)
                                 : std::string("–")}) {
      out_ += "<td>" + cell + "</td>";
    }
    out_ += "</tr>\n";
  }

  template <typename List, typename Say>
  void list(const std::string& title, const List& all, Say say) {
    if (all.empty()) return;
    out_ += "<h2>" + title + "</h2>\n<section><ul>\n";
    for (std::size_t i = 0; i < all.size() && i < kMostRows; ++i) {
      out_ += "<li>" + escaped(say(all[i])) + "</li>\n";
    }
    out_ += "</ul>\n";
    if (all.size() > kMostRows) {
      out_ += "<p class=\"soft\">" + in("and ", "et encore ") +
              std::to_string(all.size() - kMostRows) + in(" more", "") + "</p>\n";
    }
    out_ += "</section>\n";
  }

  void placeTables() {
    list(in("Breaks", "Ruptures"), path_.report.breaks,
         [this](const PathBreak& at) { return breakText(path_, at); });
    list(in("Targets without a position", "Cibles sans position"), unreachedRuns(path_),
         [this](const UnreachedRun& run) { return unreachedText(path_, run); });
    list(in("Where the tool stands", "Où l'outil attend"), path_.report.standing,
         [this](const PathStanding& at) { return standingText(path_, at); });
  }

  const PathOutcome& path_;
  const PathPlot& plot_;
  Language l_;
  std::string out_;
};

}  // namespace

std::string pathPage(const PathOutcome& path, const PathPlot& plot) {
  return Page(path, plot).text();
}

}  // namespace korvo::tools
