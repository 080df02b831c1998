#include "tools/path.h"

#include <filesystem>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "toolkit/export/WholeFile.h"
#include "toolkit/path/NearestFirst.h"
#include "tools/AxisOptions.h"
#include "tools/Checked.h"
#include "tools/Failure.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/PositionText.h"
#include "tools/Progress.h"
#include "tools/Stop.h"
#include "tools/Verb.h"
#include "tools/Verbs.h"
#include "tools/path_notes.h"
#include "tools/path_report.h"
#include "tools/path_table.h"

namespace fs = std::filesystem;

namespace korvo::tools {
namespace {

// --- what was asked

// "0.01,0.1" with `count` positive numbers, or the first alone.
std::vector<double> numbersOf(const std::string& text, const std::string& wanted) {
  std::vector<double> numbers;
  for (const std::string& part : split(text, ',')) {
    const std::optional<double> number = numberOf(part);
    if (!number || *number <= 0) failUsage(wanted, inQuotes(text));
    numbers.push_back(*number);
  }
  return numbers;
}

Tolerance toleranceOf(const std::string& text) {
  constexpr double kMostDegrees = 90.0;
  const std::string wanted = "mm,degrees, both above 0 (degrees below 90), after --tolerance";
  const std::vector<double> numbers = numbersOf(text, wanted);
  if (numbers.size() != 2 || numbers[1] >= kMostDegrees) failUsage(wanted, inQuotes(text));
  return {numbers[0], numbers[1]};
}

void setSingular(const std::string& text, ToolpathOptions& options) {
  const std::string wanted = "degrees or degrees,mm, above 0, after --singular";
  const std::vector<double> numbers = numbersOf(text, wanted);
  if (numbers.size() > 2) failUsage(wanted, inQuotes(text));
  options.singularDegrees = numbers[0];
  if (numbers.size() == 2) options.singularMm = numbers[1];
}

int wholeOf(const std::optional<std::string>& text, int otherwise, int most, const char* option) {
  if (!text) return otherwise;
  const std::optional<int> number = integerOf(*text);
  if (!number || *number < 1 || *number > most) {
    failUsage("a number from 1 to " + std::to_string(most) + " after " + option, inQuotes(*text));
  }
  return *number;
}

// "C=5,X=1" after `option`, each number from 0 up.
template <typename Set>
void setWishes(const Session& session, const std::vector<std::string>& given, const char* option,
               ToolpathOptions& options, Set set) {
  forEachAxis(session, given, option, [&](int place, const std::string& text) {
    const std::optional<double> number = numberOf(text);
    if (!number || *number < 0) {
      failUsage(std::string("a finite decimal number from 0 up in ") + option, inQuotes(text));
    }
    set(options.axes[static_cast<std::size_t>(place)], *number);
  });
}

ToolpathOptions toolpathOptionsOf(const PathOptions& o, const Session& session) {
  constexpr int kMostPlaces = 360, kMostJobs = 256;
  ToolpathOptions options;
  options.solver = solverOptionsOf(o.hold, o.sample, session);
  setWishes(session, o.weight, "--weight", options, [](AxisWish& w, double n) { w.weight = n; });
  setWishes(session, o.step, "--step", options, [](AxisWish& w, double n) { w.largestStep = n; });
  setWishes(session, o.margin, "--margin", options, [](AxisWish& w, double n) { w.margin = n; });
  setWishes(session, o.marginCost, "--margin-cost", options,
            [](AxisWish& w, double n) { w.marginCost = n; });
  if (o.from) {
    const Position from = positionOf(session, *o.from, "--from");
    options.start = Values{};
    for (int i = 0; i < from.size(); ++i) (*options.start)[static_cast<std::size_t>(i)] = from[i];
  }
  if (o.tolerance) options.tolerance = toleranceOf(*o.tolerance);
  if (o.singular) setSingular(*o.singular, options);
  options.familySamples = wholeOf(o.places, options.familySamples, kMostPlaces, "--places");
  options.jobs = wholeOf(o.jobs, 1, kMostJobs, "--jobs");
  options.language = languageOf(o.language);
  return options;
}

bool isSameFile(const fs::path& a, const fs::path& b) {
  std::error_code error;
  return a == b || (fs::equivalent(a, b, error) && !error);
}

void checkFiles(const PathOptions& o) {
  if (o.targets.empty()) failUsage("a file of targets, or -", "''");
  for (const auto& [file, option] : {std::pair{o.output, "-o"}, std::pair{o.page, "--report"}}) {
    if (!file) continue;
    if (file->empty() || *file == "-") {
      failUsage(std::string("a file after ") + option, inQuotes(*file));
    }
    if (isSameFile(*file, o.targets)) {
      failUsage(std::string("a file of its own after ") + option,
                inQuotes(*file) + ", which is read");
    }
  }
  if (o.output && o.page && isSameFile(*o.output, *o.page)) {
    failUsage("two files after -o and --report", "the same");
  }
}

void checkTogether(const PathOptions& o) {
  if (o.input != "auto" && o.input != "csv" && o.input != "apt") {
    failUsage("auto, csv or apt after --input", inQuotes(o.input));
  }
  languageOf(o.language);
  checkFiles(o);
}

void refuseMachineFile(const PathOptions& o, const Session& session) {
  for (const auto& file : {o.output, o.page}) {
    if (file && isSameFile(*file, session.path())) {
      failUsage("a file of its own to write", inQuotes(*file) + ", which is read");
    }
  }
}

// --- the run

Exit exitOf(const ToolpathReport& report) {
  if (report.isStopped()) return Exit::stopped;
  return report.isFitting() ? Exit::answered : Exit::no;
}

class PathRun {
 public:
  PathRun(const PathOptions& asked, const Session& session, const PathInput& input,
          const ToolpathOptions& options, Stop& stop)
      : input_(input),
        options_(options),
        plot_(input.targets.size()),
        path_{asked, session, input, options, options.language, {}, {}, {}},
        stop_(stop) {
    const Stop::Delay delay;
    if (asked.output) {
      table_.emplace(*asked.output, input, session.machine().axisNames());
      stop_.removeAtEnd(table_->temporary());
    }
    if (asked.page) openPage(*asked.page);
  }

  Exit run() {
    const Toolpath toolpath(machine(), options_);
    path_.report = toolpath.run(
        input_.targets, [this](const PathPosition& p) { take(p); },
        [this](const ToolpathProgress& p) { return look(p.searched + p.given, 2 * p.targets); });
    if (table_) table_->commit();
    isHeeded_ = false;
    compare();
    if (!path_.asked.noAdvice)
      path_.advice = advise(machine(), options_, input_.targets, path_.report, watch());
    path_.isCutShort = isHeeded_ && !path_.report.isStopped();
    progress_.wipe();
    report();
    return path_.isCutShort ? Exit::stopped : exitOf(path_.report);
  }

 private:
  const Machine& machine() const { return path_.session.machine(); }

  void take(const PathPosition& position) {
    if (table_) table_->take(position);
    if (path_.asked.page) plot_.take(position);
  }

  // Before the run, so that it is not in vain.
  void openPage(const std::string& file) {
    try {
      page_.emplace(fs::path(file));
      stop_.removeAtEnd(page_->temporary());
    } catch (const WriteError& e) {
      throw Failure(Exit::refused, e.what());
    }
  }

  bool look(std::size_t done, std::size_t total) {
    progress_.show(done, total);
    isHeeded_ = isHeeded_ || Stop::isWanted();
    return !isHeeded_;
  }

  ToolpathWatch watch() {
    return [this](const ToolpathProgress& p) { return look(p.searched + p.given, 2 * p.targets); };
  }

  void compare() {
    if (!path_.asked.compare || path_.report.isStopped()) return;
    path_.nearestFirst = nearestFirst(machine(), options_, input_.targets, {}, watch());
    if (path_.nearestFirst->isStopped()) path_.nearestFirst.reset();
  }

  void writePage() {
    try {
      page_->write(pathPage(path_, plot_));
      page_->commit();
    } catch (const WriteError& e) {
      throw Failure(Exit::refused, e.what());
    }
  }

  void report() {
    if (page_) writePage();
    if (path_.asked.common.json) {
      std::cout << pathJson(path_).dump(2) << '\n';
    } else {
      printPath(std::cout, path_);
    }
  }

  const PathInput& input_;
  const ToolpathOptions& options_;
  PathPlot plot_;
  PathOutcome path_;
  std::optional<PathTable> table_;
  std::optional<WholeFile> page_;
  Progress progress_;
  Stop& stop_;
  bool isHeeded_ = false;
};

Exit run(const PathOptions& o) {
  checkTogether(o);
  LineBlocks lines(o.targets);  // first: nothing is written when it cannot be read
  Session session(o.common, o.targets);
  refuseMachineFile(o, session);
  const ToolpathOptions options = toolpathOptionsOf(o, session);
  sayNotes(options, session);
  Stop stop;
  stop.setEndsReading(true);
  const PathInput input = readTargets(o, session, lines);
  stop.setEndsReading(false);
  sayNotFollowed(input, options.language);
  const Exit exit = PathRun(o, session, input, options, stop).run();
  session.closeTrace();
  return exit;
}

void addAxisWishes(Verb& verb, PathOptions& o) {
  const auto add = [&verb](const char* name, std::vector<std::string>& to, const char* help) {
    verb.addOption(name, to, help).oneValue();
  };
  add("--weight", o.weight, "What a mm or a degree of an axis costs (C=0.2,X=1) [1 each]");
  add("--step", o.step,
      "The largest step of an axis between two targets; more is a break (C=30) [90 for a rotary "
      "axis, none for a linear one]");
  add("--margin", o.margin,
      "How far an axis keeps from its limits where it can, mm or degrees (B=5) [0]");
  add("--margin-cost", o.marginCost,
      "What a mm or a degree inside that margin costs at every target (B=10) [1]");
}

}  // namespace

void addPath(CLI::App& app, Exit& exit) {
  Verb verb(app, "path", "Put the tool on a whole toolpath: the best continuous way of all axes");
  const auto o = std::make_shared<PathOptions>();
  addCommonOptions(verb, o->common, {"--strategy"});
  verb.addOption("TARGETS", o->targets)
      .required()
      .text(
          "CSV file with tip_x, tip_y, tip_z (or x, y, z), i, j, k and, if wanted, feed; or "
          "APT/CL text with GOTO/x,y,z,i,j,k; - for standard input");
  verb.addOption("--input", o->input, "What TARGETS is: auto, csv, apt [auto: from its text]");
  verb.addOption("-o,--output", o->output, "Write the positions to this CSV file");
  verb.addOption("--report", o->page,
                 "Write the report as one HTML page with a plot of every axis");
  verb.addOption("--from", o->from,
                 "Where the machine stands before: X=10,C=90 (unnamed axes are 0), or all values "
                 "in order. Without it the way to the first target costs nothing");
  verb.addOption("--tolerance", o->tolerance,
                 "Add positions so that between targets the tip stays within mm of the straight "
                 "line and the direction within degrees of the shortest turn (0.01,0.1)");
  addAxisWishes(verb, *o);
  addFreeAxisOptions(verb, o->hold, o->sample);
  verb.addOption("--places", o->places,
                 "How many places of a turn are tried of an axis that a target leaves free, as C "
                 "with the tool along it [12]");
  verb.addOption("--singular", o->singular,
                 "Which targets count as near a singular direction: degrees, or degrees,mm [1,1]");
  verb.addFlag("--compare", o->compare, "Say what nearest-first comes to over the same targets");
  verb.addFlag("--no-advice", o->noAdvice, "Do not look for what would make the path fit");
  verb.addOption("--jobs", o->jobs, "Threads; the result is the same bit by bit [1]");
  verb.addOption("--lang", o->language, "Language of the report: en, fr [en]");
  verb.setFooter(
      "Fewest breaks first, then least weighted travel, over all branches and turns. A break is a\n"
      "step above --step, or a target without a position.\n"
      "SIGINT (Ctrl-C) or SIGTERM stops: the targets answered so far are written and reported; a\n"
      "second one ends at once. What helps is tried by runs over all targets.\n"
      "Exit codes: 0 the path fits, 1 it does not, 2 bad usage, 3 unreadable or refused input,\n"
      "4 stopped before its end.");
  verb.setAction([o, &exit] { exit = run(*o); });
}

}  // namespace korvo::tools
