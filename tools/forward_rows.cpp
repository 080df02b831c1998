#include "tools/forward_rows.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "tools/TableRun.h"
#include "tools/ToolPoint.h"
#include "tools/Travel.h"

namespace korvo::tools {
namespace {

struct Row {
  double values[12] = {};
  unsigned outside = 0;  // Travel's bits
  ToolPoint at;
};

bool isFinite(const zgeo::UVec3d& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool isFinite(const ToolPoint& at) {
  return isFinite(at.nose) && isFinite(at.tip) && isFinite(at.direction);
}

class ForwardRows : public TableRun {
 public:
  ForwardRows(const ForwardOptions& options, const Session& session, LineBlocks& table)
      : TableRun(session, table, {options.common.json, options.strict, options.stats}),
        options_(options),
        machine_(*session.machine()),
        position_(session.machine().position()),
        length_(machine_.getTHELength(session.tool())),
        rows_(kBatch),
        travel_(session.machine()) {}

 private:
  CsvHeader readHeaderLine(std::string_view line) override {
    return readHeader(lines(), line, session().machine().axisNames());
  }
  std::string columns() const override {
    return ",nose_x,nose_y,nose_z,tip_x,tip_y,tip_z,i,j,k,outside_limits";
  }
  const char* rowSchema() const override { return "korvo.forward.row/1"; }
  std::string rowWord() const override { return "positions"; }

  std::optional<std::string> read(std::size_t i, std::string_view line) override {
    Row& row = rows_[i];
    std::fill(std::begin(row.values), std::end(row.values), 0.0);
    return readRow(line, header(), row.values);
  }

  void query(std::size_t i) override {
    Row& row = rows_[i];
    (*position_).set(row.values);
    row.at = toolPoint(machine_, *position_, session().tool(), length_);
    row.outside = travel_.outside(row.values);
  }

  // Values near the end of the range of doubles can put the tool beyond it.
  Verdict verdict(std::size_t i) override {
    if (isFinite(rows_[i].at)) return {};
    return {"not-finite", "expected a tool point within the range of numbers, found none"};
  }

  void printCsv(std::size_t i, const Verdict& verdict, std::string& out) override;
  void printJson(std::size_t i, const Verdict& verdict, std::string& out) override;

  const ForwardOptions& options_;
  const zkin::KMachine& machine_;
  Position position_;
  double length_;
  std::vector<Row> rows_;
  Travel travel_;
};

void ForwardRows::printCsv(std::size_t i, const Verdict& verdict, std::string& out) {
  const char separator = header().separator;
  const Row& row = rows_[i];
  if (!verdict.isAnswered()) {
    out.append(10, separator);
    return;
  }
  appendCells(out, row.at.nose, separator);
  appendCells(out, row.at.tip, separator);
  appendCells(out, row.at.direction, separator);
  out += separator;
  if (row.outside) appendNames(out, travel_.namesOf(row.outside), separator);
}

void ForwardRows::printJson(std::size_t i, const Verdict& verdict, std::string& out) {
  if (!verdict.isAnswered()) return;
  const Row& row = rows_[i];
  out += R"(,"nose":)";
  appendJson(out, row.at.nose);
  out += R"(,"tip":)";
  appendJson(out, row.at.tip);
  out += R"(,"direction":)";
  appendJson(out, row.at.direction);
  out += R"(,"outsideLimits":)";
  out += row.outside ? nlohmann::json(travel_.namesOf(row.outside)).dump() : "[]";
  if (!options_.elements) return;
  (*position_).set(row.values);
  out += R"(,"elements":)" + elementsJson(machine_, *position_).dump();
}

}  // namespace

Exit answerRows(const ForwardOptions& options, const Session& session, LineBlocks& table) {
  return ForwardRows(options, session, table).run();
}

}  // namespace korvo::tools
