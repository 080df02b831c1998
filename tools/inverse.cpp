#include "tools/inverse.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "toolkit/answer/Answer.h"
#include "toolkit/answer/Reach.h"
#include "tools/AnswerText.h"
#include "tools/AxisOptions.h"
#include "tools/Checked.h"
#include "tools/External.h"
#include "tools/Label.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/PositionText.h"
#include "tools/Verb.h"
#include "tools/Verbs.h"

using nlohmann::json;
using zgeo::UVec3d;

namespace korvo::tools {
namespace {

struct Asked {
  Target target;  // in part zero
  Position from;
};

std::string countText(const Answers& all, std::size_t shown, Language l) {
  std::string text = std::to_string(all.total) + (all.total == 1 ? " position" : " positions");
  const std::string few = std::to_string(shown);
  if (shown < all.total) {
    text +=
        in(l, ", the nearest " + few + " shown",
           shown == 1 ? ", la plus proche affichée" : ", les " + few + " plus proches affichées");
  }
  return text;
}

std::string tooManyText(const Answers& all, Language l) {
  const std::string most = std::to_string(kMostSeeds), found = std::to_string(*all.tooManySeeds);
  return "korvo: " +
         in(l,
            "expected up to " + most + " starts for the list of all positions, found " + found +
                " (limits on the rotary axes, or --lock, make it shorter); the nearest position "
                "alone is answered",
            "au plus " + most +
                " départs attendus pour la liste de toutes les positions, trouvé : " + found +
                " (des limites sur les axes rotatifs, ou --lock, la raccourcissent) ; seule la "
                "position la plus proche est donnée");
}

void printTop(std::ostream& out, const Session& session, const Asked& asked, Language l) {
  out << label(l, "Machine", "Machine") << session.file() << '\n'
      << label(l, "Settings", "Réglages") << session.settingsText(l) << '\n'
      << label(l, "Target", "Cible") << in(l, "tip ", "pointe ") << textOf(asked.target.tip)
      << ", direction " << textOf(asked.target.direction.normalised()) << '\n'
      << label(l, "From", "Départ") << textOf(asked.from) << '\n';
}

void print(std::ostream& out, const Session& session, const Asked& asked, const Answers& all,
           bool isList, Language l) {
  printTop(out, session, asked, l);
  if (all.none) return printNone(out, session, *all.none, l);
  if (isList) {
    out << label(l, "Found", "Trouvé") << countText(all, all.positions.size(), l) << '\n';
  }
  for (std::size_t i = 0; i < all.positions.size(); ++i) {
    if (isList) {
      out << '\n'
          << in(l, "Number ", "Numéro ") << i + 1
          << in(l, ", distance from the start ", ", distance du départ ")
          << rounded(all.distances[i]) << '\n';
    }
    printFound(out, session, all.positions[i], l, isList);
  }
}

json answerJson(const Session& session, const Asked& asked, const Answers& all, bool isList,
                Language language) {
  json positions = json::array();
  for (std::size_t i = 0; i < all.positions.size(); ++i) {
    json found = foundJson(session, all.positions[i]);
    found["distance"] = all.distances[i];
    positions.push_back(std::move(found));
  }
  const UVec3d direction = asked.target.direction.normalised();
  return {
      {"schema", "korvo.inverse/1"},
      {"units", unitsJson()},
      {"machine", session.machineJson()},
      {"settings", session.settingsJson()},
      {"tip", {asked.target.tip.x, asked.target.tip.y, asked.target.tip.z}},
      {"direction", {direction.x, direction.y, direction.z}},
      {"from", jsonOf(asked.from)},
      {"status", toString(all.none ? all.none->status : Status::reached)},
      {"total", isList ? json(all.total) : json()},
      {"positions", std::move(positions)},
      {"reason", all.none ? reasonJson(session, *all.none, language) : json()},
      {"best", all.none && all.none->reason != Reason::noDirection ? foundJson(session, *all.none)
                                                                   : json()}};
}

template <typename AnySolver>
Answers answersBy(AnySolver solver, const InverseOptions& o, const Target& target,
                  const Position& from) {
  if (o.all) return solver.all(target, from, mostOf(o));
  Answers one;
  Answer answer = solver.nearest(target, from);
  if (answer.status != Status::reached) {
    one.none.emplace(std::move(answer));
    return one;
  }
  one.total = 1;
  one.distances.push_back(distance(answer.position, from));
  one.positions.push_back(std::move(answer));
  return one;
}

Answers answersOf(const InverseOptions& o, const Session& session, const Target& target,
                  const Position& from) {
  const Machine& machine = session.machine();
  const Language language = languageOf(o.language);
  switch (o.engine) {
    case Engine::external: {
      const External external(session, zkin::Bodies::none, language);
      return o.all ? external.all(target, from, mostOf(o)) : external.nearest(target, from);
    }
    case Engine::library:
      return answersBy(LibrarySolver(machine, language), o, target, from);
    default:
      return answersBy(Reach(machine, solverOptionsOf(o, session), language), o, target, from);
  }
}

UVec3d directionOf(const std::string& text) {
  const char* wanted = "i,j,k, not all 0, after --dir";
  const UVec3d given = vectorOf(text, wanted);
  double direction[] = {given.x, given.y, given.z};
  if (!scaleDirection(direction)) failUsage(wanted, inQuotes(text));
  return {direction[0], direction[1], direction[2]};
}

Exit answerOne(const InverseOptions& o, const Session& session, const Position& from) {
  const Asked asked{{vectorOf(*o.point, "x,y,z (mm) after --point"), directionOf(*o.direction)},
                    from};
  const Target target = fromPartZero(session.machine(), asked.target);
  const Answers all = answersOf(o, session, target, from);
  const Language language = languageOf(o.language);
  if (all.tooManySeeds) say(tooManyText(all, language));
  if (o.common.json) {
    std::cout << answerJson(session, asked, all, o.all, language).dump(2) << '\n';
  } else {
    print(std::cout, session, asked, all, o.all, language);
  }
  return all.none ? Exit::no : Exit::answered;
}

void checkTogether(const InverseOptions& o) {
  const bool isOne = o.point || o.direction;
  if (o.targets && isOne) failUsage("--targets, or --point and --dir", "both");
  if (o.targets && o.targets->empty()) failUsage("a file or - after --targets", "''");
  if (!o.targets && !(o.point && o.direction)) {
    failUsage("--point x,y,z and --dir i,j,k, or --targets FILE", o.point       ? "no --dir"
                                                                  : o.direction ? "no --point"
                                                                                : "neither");
  }
  if (o.engine == Engine::external && o.targets) {
    failUsage("--engine external with one target (--point and --dir)", "--targets");
  }
  if (o.engine != Engine::solver) {
    if (o.targets && o.all) failUsage("--targets with --all by --engine solver", "another engine");
    if (!o.hold.empty() || !o.sample.empty()) {
      failUsage("--hold and --sample with --engine solver", "another engine");
    }
  }
  if (o.engine != Engine::library && o.common.strategy) {
    say("korvo: warning: --strategy plays no part in 'inverse' without --engine library");
  }
  if (o.most && !o.all) failUsage("--max with --all", "it alone");
  if (o.strict && !o.targets) failUsage("--strict with --targets", "it alone");
  if (o.stats && !o.targets) failUsage("--stats with --targets", "it alone");
}

Exit run(const InverseOptions& o) {
  checkTogether(o);
  languageOf(o.language);
  std::optional<LineBlocks> table;  // first: nothing is written when it cannot be read
  if (o.targets) table.emplace(*o.targets);
  Session session(o.common, o.targets);
  const Position from =
      o.from ? positionOf(session, *o.from, "--from") : session.machine().position();
  const Exit exit = table ? answerTargets(o, session, from, *table) : answerOne(o, session, from);
  session.closeTrace();
  return exit;
}

}  // namespace

bool scaleDirection(double* direction) {
  double largest = 0.0;
  for (int i = 0; i < 3; ++i) largest = std::max(largest, std::abs(direction[i]));
  for (int i = 0; i < 3 && largest > 0; ++i) direction[i] /= largest;
  return largest > 0;
}

std::size_t mostOf(const InverseOptions& o) {
  if (!o.most) return 20;
  const std::optional<int> most = integerOf(*o.most);
  if (!most || *most < 1) failUsage("a number from 1 up after --max", inQuotes(*o.most));
  return static_cast<std::size_t>(*most);
}

SolverOptions solverOptionsOf(const InverseOptions& o, const Session& session) {
  return solverOptionsOf(o.hold, o.sample, session);
}

void addInverse(CLI::App& app, Exit& exit) {
  Verb verb(app, "inverse", "Say which axis values put the tool on a point and direction");
  const auto o = std::make_shared<InverseOptions>();
  addCommonOptions(verb, o->common);
  verb.addOption("--point", o->point, "Where the tool tip shall be: x,y,z in part zero, mm");
  verb.addOption("--dir", o->direction,
                 "Which way the tool shall point, from tip to spindle: i,j,k of any length");
  verb.addOption("--from", o->from,
                 "Start: X=10,C=90 (unnamed axes are 0), or all values in order [all 0]. It picks "
                 "the turn; locked axes stay at its values");
  verb.addFlag("--all", o->all,
               "All positions, nearest to --from first: every branch with all full turns inside "
               "the limits; without limits those within one turn of --from");
  verb.addOption("--max", o->most, "How many of all are answered [20]");
  addFreeAxisOptions(verb, o->hold, o->sample);
  verb.addOption("--targets", o->targets,
                 "Many targets: CSV file (, or ; between columns) with the columns tip_x, tip_y, "
                 "tip_z (or x, y, z), i, j, k, - for standard input; others are passed over. Each "
                 "is solved from where the row before ended, the first from --from");
  verb.addFlag("--strict", o->strict, "Stop at the first row without a position");
  verb.addFlag("--stats", o->stats,
               "Say on standard error what was taken and how fast the rows were answered");
  addEngineOption(verb, o->engine, {Engine::solver, Engine::library, Engine::external});
  verb.addOption("--lang", o->language,
                 "Language of the answer, in JSON of the reason alone: en, fr [en]");
  verb.setFooter(
      "Without --all: the position nearest to --from. Axes that a target leaves free, as linear "
      "axes "
      "beyond\nthree, a third rotary one or a rail, stay at --from unless the others do not reach "
      "it then; they move\nfrom there by as little as reaches it. Distances are the sum over "
      "all\naxes, a degree counted as a mm. Every position is verified forward: tip "
      "within "
      "1e-6 mm, direction\nwithin 1e-8 rad. Exit code 1 and the reason when there is none.\n"
      "With --engine library: the position that the machine takes from --from, its strategy "
      "choosing between\ntwo branches; when that is outside the limits, the nearest one inside.");
  verb.setAction([o, &exit] { exit = run(*o); });
}

}  // namespace korvo::tools
