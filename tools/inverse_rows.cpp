#include <cmath>
#include <nlohmann/json.hpp>

#include "toolkit/answer/Answer.h"
#include "toolkit/answer/Reach.h"
#include "tools/AnswerText.h"
#include "tools/Checked.h"
#include "tools/Numbers.h"
#include "tools/PositionText.h"
#include "tools/TableRun.h"
#include "tools/inverse.h"

namespace korvo::tools {
namespace {

/// What is said of a position in a table.
struct Cells {
  explicit Cells(const Position& at) : position(at) {}

  Position position;
  Residual residual;
  std::string branch;
  std::vector<int> freeAxes;
  double margin = std::numeric_limits<double>::infinity();
  int marginPlace = -1;
  SingularDistance singular;
};

struct Row {
  double values[6] = {};     // tip and direction, in part zero
  std::vector<Cells> found;  // one, or all
  std::size_t shown = 0;
  std::optional<Answer> none;
};

void takeMargin(const std::optional<double>& margin, int place, Cells& cells) {
  if (!margin || *margin >= cells.margin) return;
  cells.margin = *margin;
  cells.marginPlace = place;
}

Cells cellsOf(const Answer& answer) {
  Cells cells(answer.position);
  cells.residual = answer.residual;
  cells.branch = hasBranches(answer.solver) ? answer.branch : "";
  cells.freeAxes = answer.freeAxes;
  cells.singular = answer.singular;
  for (std::size_t i = 0; i < answer.margins.size(); ++i) {
    takeMargin(answer.margins[i].toMin, static_cast<int>(i), cells);
    takeMargin(answer.margins[i].toMax, static_cast<int>(i), cells);
  }
  return cells;
}

class InverseRows : public TableRun {
 public:
  InverseRows(const InverseOptions& options, const Session& session, const Position& from,
              LineBlocks& table)
      : TableRun(
            session, table,
            {options.common.json, options.strict, options.stats, languageOf(options.language)}),
        at_(from),
        most_(options.all ? mostOf(options) : 0),
        rows_(kBatch) {
    if (options.engine == Engine::library) {
      library_.emplace(session.machine(), language());
    } else {
      reach_.emplace(session.machine(), solverOptionsOf(options, session), language());
    }
  }

 private:
  CsvHeader readHeaderLine(std::string_view line) override {
    return readTargetHeader(lines(), line, language());
  }
  std::string columns() const override {
    std::string names;
    for (const std::string& name : at_.names().all()) names += "," + name;
    names += ",point_error,direction_error,outside_limits,reason,by";
    return reach_ ? names + ",branch,free_axes,margin,margin_axis,singular" : names;
  }
  const char* rowSchema() const override { return "korvo.inverse.row/1"; }
  std::string rowWord() const override { return in(language(), "targets", "cibles"); }
  std::string lastNote() const override;

  std::optional<std::string> read(std::size_t i, std::string_view line) override {
    if (auto problem = readRow(line, header(), rows_[i].values)) return problem;
    if (scaleDirection(rows_[i].values + 3)) return {};
    return in(language(), "expected i, j, k, not all 0, found 0, 0, 0",
              "i, j, k, pas tous nuls, attendus, trouvé : 0, 0, 0");
  }

  void query(std::size_t i) override;
  void queryAll(const Target& target, Row& row);
  void queryNearest(const Target& target, Row& row);
  void queryLibrary(const Target& target, Row& row);
  void queryLibraryList(const Target& target, Row& row);

  bool moveOn(std::size_t i) override {
    return !rows_[i].none && ++rows_[i].shown < rows_[i].found.size();
  }

  Verdict verdict(std::size_t i) override {
    const Row& row = rows_[i];
    if (!row.none) return {};
    return {toString(row.none->status), reasonText(session(), *row.none, language())};
  }

  void printCsv(std::size_t i, const Verdict& verdict, std::string& out) override;
  void printJson(std::size_t i, const Verdict& verdict, std::string& out) override;
  void printNone(const Answer& none, std::string& out);
  void printSolved(const Cells& cells, std::string& out);
  std::string solvedJson(const Cells& cells) const;

  std::optional<Reach> reach_;  // one of both
  std::optional<LibrarySolver> library_;
  Position at_;
  std::size_t most_ = 0;         // of all; 0: the nearest alone
  std::uint64_t shortened_ = 0;  // targets with more positions than that
  std::vector<Row> rows_;
};

void InverseRows::query(std::size_t i) {
  Row& row = rows_[i];
  const double* v = row.values;
  const Target target = fromPartZero(session().machine(), {{v[0], v[1], v[2]}, {v[3], v[4], v[5]}});
  row.shown = 0;
  row.none.reset();
  if (library_) return queryLibrary(target, row);
  most_ > 0 ? queryAll(target, row) : queryNearest(target, row);
}

void InverseRows::queryLibrary(const Target& target, Row& row) {
  row.found.assign(1, Cells(at_));
  row.none = library_->follow(target, at_, row.found[0].residual);
  if (row.none) queryLibraryList(target, row);
  if (!row.none) *row.found[0].position = *at_;
}

// As of one target alone: of the list of all positions the nearest.
void InverseRows::queryLibraryList(const Target& target, Row& row) {
  const Answer answer = library_->nearest(target, at_);
  if (answer.status != Status::reached) return;
  row.none.reset();
  row.found[0].residual = answer.residual;
  *at_ = *answer.position;
}

void InverseRows::queryNearest(const Target& target, Row& row) {
  Solution found;
  row.none = reach_->follow(target, at_, found);
  if (row.none) return;
  if (row.found.size() != 1) row.found.assign(1, Cells(at_));
  Cells& cells = row.found[0];
  *cells.position = *at_;
  cells.residual = found.residual;
  const SolverKind kind = reach_->solver().kind();
  cells.branch = hasBranches(kind) ? found.branch.label(kind) : "";
  cells.freeAxes.clear();
  for (const int place : found.freePlaces) {
    if (place >= 0) cells.freeAxes.push_back(place);
  }
  cells.margin = found.margin;
  cells.marginPlace = found.marginPlace;
  cells.singular = found.singular;
}

std::string InverseRows::lastNote() const {
  if (shortened_ == 0) return "";
  const std::string rows = std::to_string(shortened_), most = std::to_string(most_);
  return in(language(),
            "targets with more than " + most + " positions, of which the nearest " + most +
                " are written (--max): " + rows,
            "cibles avec plus de " + most + " positions, dont les " + most +
                " plus proches sont écrites (--max) : " + rows);
}

// The next row starts from the nearest.
void InverseRows::queryAll(const Target& target, Row& row) {
  Answers all = reach_->all(target, at_, most_);
  row.none = std::move(all.none);
  shortened_ += all.total > all.positions.size();
  row.found.clear();
  for (const Answer& answer : all.positions) row.found.push_back(cellsOf(answer));
  if (!row.found.empty()) *at_ = *row.found[0].position;
}

void InverseRows::printNone(const Answer& none, std::string& out) {
  const char separator = header().separator;
  const auto axes = static_cast<std::size_t>(at_.size());
  out.append(axes + 3, separator);
  appendNames(out, namesOf(session(), none.margins), separator);
  out += separator;
  out += toString(none.reason);
  out += separator;
  if (!unitOf(none).empty()) appendExact(out, none.by);
  if (reach_) out.append(5, separator);
}

void InverseRows::printSolved(const Cells& cells, std::string& out) {
  const char separator = header().separator;
  out += separator + cells.branch + separator;
  appendNames(out, namesOf(session(), cells.freeAxes), separator);
  out += separator;
  if (cells.marginPlace >= 0) appendExact(out, cells.margin);
  out += separator;
  if (cells.marginPlace >= 0) {
    appendNames(out, namesOf(session(), std::vector<int>{cells.marginPlace}), separator);
  }
  out += separator;
  const double angle = cells.singular.directionRad;
  if (std::isfinite(angle)) appendExact(out, angle * kRadToDeg);
}

void InverseRows::printCsv(std::size_t i, const Verdict&, std::string& out) {
  const Row& row = rows_[i];
  if (row.none) return printNone(*row.none, out);
  const Cells& cells = row.found[row.shown];
  const char separator = header().separator;
  for (int axis = 0; axis < cells.position.size(); ++axis) {
    out += separator;
    appendExact(out, cells.position[axis]);
  }
  out += separator;
  appendExact(out, cells.residual.pointMm);
  out += separator;
  appendExact(out, cells.residual.directionRad * kRadToDeg);
  out.append(3, separator);
  if (reach_) printSolved(cells, out);
}

std::string InverseRows::solvedJson(const Cells& cells) const {
  nlohmann::json margin;
  if (cells.marginPlace >= 0) {
    margin = {{"axis", session().machine().axisNames()[cells.marginPlace]},
              {"value", cells.margin}};
  }
  const double angle = cells.singular.directionRad * kRadToDeg;
  return R"(,"branch":)" + nlohmann::json(cells.branch).dump() + R"(,"freeAxes":)" +
         nlohmann::json(namesOf(session(), cells.freeAxes)).dump() + R"(,"margin":)" +
         margin.dump() + R"(,"singular":)" +
         (std::isfinite(angle) ? nlohmann::json(angle) : nlohmann::json()).dump();
}

void InverseRows::printJson(std::size_t i, const Verdict&, std::string& out) {
  const Row& row = rows_[i];
  if (row.none) {
    out += R"(,"reason":)" + reasonJson(session(), *row.none, language()).dump();
    return;
  }
  const Cells& cells = row.found[row.shown];
  out += R"(,"position":)" + jsonOf(cells.position).dump() + R"(,"residual":{"point":)";
  appendExact(out, cells.residual.pointMm);
  out += R"(,"direction":)";
  appendExact(out, cells.residual.directionRad * kRadToDeg);
  out += '}';
  if (reach_) out += solvedJson(cells);
}

}  // namespace

Exit answerTargets(const InverseOptions& options, const Session& session, const Position& from,
                   LineBlocks& table) {
  return InverseRows(options, session, from, table).run();
}

}  // namespace korvo::tools
