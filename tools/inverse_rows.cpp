#include <nlohmann/json.hpp>

#include "toolkit/answer/Answer.h"
#include "tools/AnswerText.h"
#include "tools/Numbers.h"
#include "tools/PositionText.h"
#include "tools/TableRun.h"
#include "tools/inverse.h"

namespace korvo::tools {
namespace {

struct Row {
  explicit Row(const Position& at) : position(at) {}

  double values[6] = {};  // tip and direction, in part zero
  Position position;
  Residual residual;
  std::optional<Answer> none;
};

class InverseRows : public TableRun {
 public:
  InverseRows(const InverseOptions& options, const Session& session, const Position& from,
              LineBlocks& table)
      : TableRun(session, table, {options.common.json, options.strict, options.stats}),
        solver_(session.machine()),
        at_(from),
        rows_(kBatch, Row(from)) {}

 private:
  CsvHeader readHeaderLine(std::string_view line) override {
    return readTargetHeader(lines(), line);
  }
  std::string columns() const override {
    std::string names;
    for (const std::string& name : at_.names().all()) names += "," + name;
    return names + ",point_error,direction_error,outside_limits,reason,by";
  }
  const char* rowSchema() const override { return "korvo.inverse.row/1"; }
  const char* rowWord() const override { return "targets"; }

  std::optional<std::string> read(std::size_t i, std::string_view line) override {
    return readRow(line, header(), rows_[i].values);
  }

  void query(std::size_t i) override {
    Row& row = rows_[i];
    const double* v = row.values;
    const Target target =
        fromPartZero(session().machine(), {{v[0], v[1], v[2]}, {v[3], v[4], v[5]}});
    row.none = solver_.follow(target, at_, row.residual);
    if (!row.none) *row.position = *at_;
  }

  Verdict verdict(std::size_t i) override {
    const Row& row = rows_[i];
    if (!row.none) return {};
    return {toString(row.none->status), row.none->text};
  }

  void printCsv(std::size_t i, const Verdict& verdict, std::string& out) override;
  void printJson(std::size_t i, const Verdict& verdict, std::string& out) override;
  void printNone(const Answer& none, std::string& out);

  LibrarySolver solver_;
  Position at_;
  std::vector<Row> rows_;
};

void InverseRows::printNone(const Answer& none, std::string& out) {
  const char separator = header().separator;
  const auto axes = static_cast<std::size_t>(at_.size());
  out.append(axes + 3, separator);
  appendNames(out, namesOf(session(), none.margins), separator);
  out += separator;
  out += toString(none.reason);
  out += separator;
  if (!unitOf(session(), none).empty()) appendExact(out, none.by);
}

void InverseRows::printCsv(std::size_t i, const Verdict&, std::string& out) {
  const Row& row = rows_[i];
  if (row.none) return printNone(*row.none, out);
  const char separator = header().separator;
  for (int axis = 0; axis < row.position.size(); ++axis) {
    out += separator;
    appendExact(out, row.position[axis]);
  }
  out += separator;
  appendExact(out, row.residual.pointMm);
  out += separator;
  appendExact(out, row.residual.directionRad * kRadToDeg);
  out.append(3, separator);
}

void InverseRows::printJson(std::size_t i, const Verdict&, std::string& out) {
  const Row& row = rows_[i];
  if (row.none) {
    out += R"(,"reason":)" + reasonJson(session(), *row.none).dump();
    return;
  }
  out += R"(,"position":)" + jsonOf(row.position).dump() + R"(,"residual":{"point":)";
  appendExact(out, row.residual.pointMm);
  out += R"(,"direction":)";
  appendExact(out, row.residual.directionRad * kRadToDeg);
  out += '}';
}

}  // namespace

Exit answerTargets(const InverseOptions& options, const Session& session, const Position& from,
                   LineBlocks& table) {
  return InverseRows(options, session, from, table).run();
}

}  // namespace korvo::tools
