#include "tools/forward.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "toolkit/Describe.h"
#include "tools/Csv.h"
#include "tools/External.h"
#include "tools/InfoJson.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/PositionText.h"
#include "tools/ToolPoint.h"
#include "tools/Travel.h"
#include "tools/Verb.h"
#include "tools/Verbs.h"
#include "tools/forward_rows.h"

using nlohmann::json;
using zgeo::UMatrix;

namespace korvo::tools {
namespace {

// --- the answer

/// Where the tool stands, by either engine.
struct Stand {
  ToolPoint at;
  UMatrix toolFrame;  ///< In the machine frame.
  UMatrix tipFrame;   ///< In part zero.
};

Stand standOf(const ForwardOptions& o, const Session& session, const Position& v) {
  if (o.engine == Engine::external) {
    const External external(session);
    return {external.toolPoint(v), external.toolFrame(v), external.tipFrame(v)};
  }
  const zkin::KMachine& machine = *session.machine();
  return {toolPoint(machine, *v, session.tool()), machine.getMatrix_H2T(v),
          machine.getMatrix_TP2U(v)};
}

bool isFinite(const UMatrix& m) {
  for (int i = 0; i < 16; ++i) {
    if (!std::isfinite(m(i / 4, i % 4))) return false;
  }
  return true;
}

std::size_t columnWidth(const UMatrix& m, int column) {
  std::size_t width = 0;
  for (int r = 0; r < 3; ++r) width = std::max(width, rounded(m(r, column)).size());
  return width;
}

void printMatrix(std::ostream& out, const UMatrix& m) {
  for (int r = 0; r < 3; ++r) {
    out << ' ';
    for (int c = 0; c < 4; ++c) {
      out << "  " << std::setw(static_cast<int>(columnWidth(m, c))) << rounded(m(r, c));
    }
    out << '\n';
  }
}

std::string elementName(const zkin::KMachine& machine, int rank) {
  return korvo::elementName(*machine.getElemByRank(rank));
}

void printElements(std::ostream& out, const Session& session, const Position& v) {
  std::vector<UMatrix> matrices;
  session.machine()->getMatrices(v, matrices);
  out << "Motion of each element (machine frame)\n";
  for (std::size_t r = 0; r < matrices.size(); ++r) {
    out << "  " << elementName(*session.machine(), static_cast<int>(r)) << '\n';
    printMatrix(out, matrices[r]);
  }
}

void print(std::ostream& out, const Session& session, const Position& v, const Stand& stand,
           bool elements) {
  const ToolPoint& at = stand.at;
  out << "Machine    " << session.file() << "\nSettings   " << session.settingsText()
      << "\nPosition   " << textOf(v);
  const std::vector<std::string> outside = outsideLimits(session.machine(), v);
  if (!outside.empty()) out << "\nOutside limits: " << joined(outside);
  out << "\nNose       " << textOf(at.nose) << "\nTip        " << textOf(at.tip) << "\nDirection  "
      << textOf(at.direction) << "\nTool frame (machine frame)\n";
  printMatrix(out, stand.toolFrame);
  out << "Tip frame (part-zero frame)\n";
  printMatrix(out, stand.tipFrame);
  if (elements) printElements(out, session, v);
}

json answerJson(const Session& session, const Position& v, const Stand& stand, bool elements) {
  const ToolPoint& at = stand.at;
  json answer = {{"schema", "korvo.forward/1"},
                 {"units", unitsJson()},
                 {"machine", session.machineJson()},
                 {"settings", session.settingsJson()},
                 {"position", jsonOf(v)},
                 {"outsideLimits", outsideLimits(session.machine(), v)},
                 {"nose", vectorJson(at.nose)},
                 {"tip", vectorJson(at.tip)},
                 {"direction", vectorJson(at.direction)},
                 {"toolFrame", matrixJson(stand.toolFrame)},
                 {"tipFrame", matrixJson(stand.tipFrame)}};
  if (elements) answer["elements"] = elementsJson(*session.machine(), *v);
  return answer;
}

Exit answerOne(const ForwardOptions& o, const Session& session) {
  const Position v = o.at ? positionOf(session, *o.at, "--at") : session.machine().position();
  const Stand stand = standOf(o, session, v);
  if (!isFinite(stand.tipFrame)) {
    throw Failure(Exit::no, "korvo: expected a tool point within the range of numbers, found none");
  }
  if (o.common.json) {
    std::cout << answerJson(session, v, stand, o.elements).dump(2) << '\n';
  } else {
    print(std::cout, session, v, stand, o.elements);
  }
  return Exit::answered;
}

void checkTogether(const ForwardOptions& o) {
  if (o.positions && o.at) failUsage("--at or --positions", "both");
  if (o.positions && o.positions->empty()) failUsage("a file or - after --positions", "''");
  if (o.strict && !o.positions) failUsage("--strict with --positions", "it alone");
  if (o.stats && !o.positions) failUsage("--stats with --positions", "it alone");
  if (o.engine == Engine::external && (o.positions || o.elements)) {
    failUsage("--engine external with one position (--at)",
              o.positions ? "--positions" : "--elements");
  }
  if (o.positions && o.elements && !o.common.json) {
    failUsage("--json for --elements with --positions (a table has no place for matrices)", "none");
  }
}

Exit run(const ForwardOptions& o) {
  checkTogether(o);
  std::optional<LineBlocks> table;  // first: nothing is written when it cannot be read
  if (o.positions) table.emplace(*o.positions);
  Session session(o.common, o.positions);
  const Exit exit = table ? answerRows(o, session, *table) : answerOne(o, session);
  session.closeTrace();
  return exit;
}

}  // namespace

json elementsJson(const zkin::KMachine& machine, const zkin::KMachineValueBase& v) {
  std::vector<UMatrix> matrices;
  machine.getMatrices(v, matrices);
  json elements = json::array();
  for (int r = 0; r < machine.getElemNumber(); ++r) {
    elements.push_back({{"rank", r},
                        {"name", elementName(machine, r)},
                        {"index", machine.getElemByRank(r)->getElemIndex()},
                        {"motion", matrixJson(matrices[static_cast<std::size_t>(r)])}});
  }
  return elements;
}

void addForward(CLI::App& app, Exit& exit) {
  Verb verb(app, "forward", "Say where the tool stands at axis values");
  const auto o = std::make_shared<ForwardOptions>();
  addCommonOptions(verb, o->common, {"--lock", "--strategy"});  // it solves nothing
  verb.addOption("--at", o->at, "Position: X=10,C=90 (unnamed axes are 0), or all values in order");
  verb.addFlag("--elements", o->elements, "Also the motion matrices of all elements");
  verb.addOption("--positions", o->positions,
                 "Many positions: CSV file (, or ; between columns) with axis names in its header, "
                 "- for standard input; axes without a column are 0");
  verb.addFlag("--strict", o->strict, "Stop at the first bad row");
  verb.addFlag("--stats", o->stats,
               "Say on standard error what was taken and how fast the rows were answered");
  addEngineOption(verb, o->engine, {Engine::library, Engine::external});
  verb.setFooter(
      "Frames: the columns of a frame are the turned X, Y, Z of the machine, so they are its axes "
      "at the\nzero position. Its Z column is the tool direction only of a tool that stands along "
      "Z "
      "there; with --engine external it always is.\nLimits: positions outside them are answered "
      "too, and the axes outside are named.");
  verb.setAction([o, &exit] { exit = run(*o); });
}

}  // namespace korvo::tools
