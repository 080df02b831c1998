#include <algorithm>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "toolkit/answer/Answer.h"
#include "tools/AnswerText.h"
#include "tools/Messages.h"
#include "tools/Numbers.h"
#include "tools/PositionText.h"
#include "tools/TableRun.h"
#include "tools/Verb.h"
#include "tools/Verbs.h"

using nlohmann::json;

namespace korvo::tools {
namespace {

struct LimitsOptions {
  CommonOptions common;
  std::optional<std::string> at;
  std::optional<std::string> positions;
  bool strict = false;
  bool stats = false;
};

// The axis that is nearest to a limit, or furthest outside; a degree counts as a mm.
struct Narrowest {
  int place = -1;  // -1: no axis has limits
  double margin = 0.0;
};

Narrowest narrowestOf(const std::vector<Margin>& margins) {
  Narrowest least;
  for (std::size_t i = 0; i < margins.size(); ++i) {
    for (const std::optional<double>& m : {margins[i].toMin, margins[i].toMax}) {
      if (m && (least.place < 0 || *m < least.margin)) least = {static_cast<int>(i), *m};
    }
  }
  return least;
}

// --- one position

json answerJson(const Session& session, const Position& at, const std::vector<Margin>& all) {
  return {{"schema", "korvo.limits/1"},
          {"units", unitsJson()},
          {"machine", session.machineJson()},
          {"settings", session.settingsJson()},
          {"position", jsonOf(at)},
          {"inside", namesOf(session, all).empty()},
          {"outsideLimits", namesOf(session, all)},
          {"margins", marginsJson(session, all)}};
}

Exit answerOne(const LimitsOptions& o, const Session& session) {
  const Position at = o.at ? positionOf(session, *o.at, "--at") : session.machine().position();
  const std::vector<Margin> all = margins(session.machine(), *at);
  const std::vector<std::string> outside = namesOf(session, all);
  if (o.common.json) {
    std::cout << answerJson(session, at, all).dump(2) << '\n';
  } else {
    std::cout << "Machine    " << session.file() << "\nSettings   " << session.settingsText()
              << "\nPosition   " << textOf(at)
              << (outside.empty() ? "\nInside all limits\n"
                                  : "\nOutside limits: " + joined(outside) + "\n");
    printMargins(std::cout, session, at, all);
  }
  return outside.empty() ? Exit::answered : Exit::no;
}

// --- a table

class LimitRows : public TableRun {
 public:
  LimitRows(const LimitsOptions& options, const Session& session, LineBlocks& table)
      : TableRun(session, table, {options.common.json, options.strict, options.stats}),
        position_(session.machine().position()),
        rows_(kBatch) {}

 private:
  struct Row {
    double values[12] = {};
    std::vector<Margin> margins;
  };

  CsvHeader readHeaderLine(std::string_view line) override {
    return readHeader(lines(), line, session().machine().axisNames());
  }
  std::string columns() const override { return ",outside_limits,axis,margin"; }
  const char* rowSchema() const override { return "korvo.limits.row/1"; }
  std::string rowWord() const override { return "positions"; }

  std::optional<std::string> read(std::size_t i, std::string_view line) override {
    std::fill(std::begin(rows_[i].values), std::end(rows_[i].values), 0.0);
    return readRow(line, header(), rows_[i].values);
  }

  void query(std::size_t i) override {
    (*position_).set(rows_[i].values);
    rows_[i].margins = margins(session().machine(), *position_);
  }

  Verdict verdict(std::size_t i) override {
    const std::vector<std::string> outside = namesOf(session(), rows_[i].margins);
    if (outside.empty()) return {};
    return {"outside", "outside limits: " + joined(outside)};
  }

  void printCsv(std::size_t i, const Verdict&, std::string& out) override {
    const char separator = header().separator;
    const Narrowest least = narrowestOf(rows_[i].margins);
    out += separator;
    appendNames(out, namesOf(session(), rows_[i].margins), separator);
    out += separator;
    if (least.place >= 0) {
      appendNames(out, {session().machine().axisNames()[least.place]}, separator);
    }
    out += separator;
    if (least.place >= 0) appendExact(out, least.margin);
  }

  void printJson(std::size_t i, const Verdict&, std::string& out) override {
    out += R"(,"outsideLimits":)" + json(namesOf(session(), rows_[i].margins)).dump() +
           R"(,"margins":)" + marginsJson(session(), rows_[i].margins).dump();
  }

  Position position_;
  std::vector<Row> rows_;
};

void checkTogether(const LimitsOptions& o) {
  if (o.positions && o.at) failUsage("--at or --positions", "both");
  if (o.positions && o.positions->empty()) failUsage("a file or - after --positions", "''");
  if (o.strict && !o.positions) failUsage("--strict with --positions", "it alone");
  if (o.stats && !o.positions) failUsage("--stats with --positions", "it alone");
}

Exit run(const LimitsOptions& o) {
  checkTogether(o);
  std::optional<LineBlocks> table;
  if (o.positions) table.emplace(*o.positions);
  Session session(o.common, o.positions);
  const Exit exit = table ? LimitRows(o, session, *table).run() : answerOne(o, session);
  session.closeTrace();
  return exit;
}

}  // namespace

void addLimits(CLI::App& app, Exit& exit) {
  Verb verb(app, "limits", "Say whether axis values are inside the travels");
  const auto o = std::make_shared<LimitsOptions>();
  addCommonOptions(verb, o->common, {"--tool", "--tool-length", "--frame", "--lock", "--strategy"});
  verb.addOption("--at", o->at,
                 "Position: X=10,C=90 (unnamed axes are 0), or all values in order [all 0]");
  verb.addOption("--positions", o->positions,
                 "Many positions: CSV file as of forward, - for standard input");
  verb.addFlag("--strict", o->strict, "Stop at the first row outside, or bad");
  verb.addFlag("--stats", o->stats,
               "Say on standard error what was taken and how fast the rows were answered");
  verb.setFooter(
      "On a limit is inside. Exit code 1 when an axis is outside. Margins are mm or degrees,\n"
      "negative outside.");
  verb.setAction([o, &exit] { exit = run(*o); });
}

}  // namespace korvo::tools
