// The command line on tables, files in and out: against a plain loop of from_chars, query,
// to_chars.
#include <fstream>
#include <iterator>
#include <memory>

#include "benchmarks/Bench.h"
#include "benchmarks/Child.h"
#include "benchmarks/Machines.h"
#include "benchmarks/Scratch.h"
#include "benchmarks/peers/PlainTable.h"

namespace korvo::bench {
namespace {

/// So many positions inside the travels, in thousandths of a mm or a degree.
std::string positionTable(int rows) {
  std::string text = "X,Y,Z,A,C\n";
  char line[128];
  for (int i = 0; i < rows; ++i) {
    text.append(line, static_cast<std::size_t>(std::snprintf(
                          line, sizeof line, "%.3f,%.3f,%.3f,%.3f,%.3f\n", drawn(-300, 300),
                          drawn(-255, 255), drawn(-20, 440), drawn(-120, 30), drawn(-180, 180))));
  }
  return text;
}

/// Tool tips and directions that positions inside the travels have.
std::string targetTable(int rows) {
  const Machine machine = example("table-ac");
  std::string text = "tip_x,tip_y,tip_z,i,j,k\n";
  char line[256];
  for (const Aim& aim : aims(machine, positions(machine, rows))) {
    const auto& [p, d] = aim;
    text.append(line, static_cast<std::size_t>(std::snprintf(line, sizeof line,
                                                             "%.6f,%.6f,%.6f,%.12f,%.12f,%.12f\n",
                                                             p.x, p.y, p.z, d.x, d.y, d.z)));
  }
  return text;
}

std::string textOf(const Scratch& file) {
  std::ifstream stream(file.path(), std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

struct Work {
  Scratch table{".csv"}, ours{".csv"}, plain{".csv"};
  Machine machine = example("table-ac");

  void forward() const {
    run({KORVO_TOOL, "forward", KORVO_MACHINES "/table-ac.def", "--positions", table.path()},
        ours.path());
  }
};

Pair forward(int rows) {
  const auto w = std::make_shared<Work>();
  w->table.write(positionTable(rows));
  Pair pair;
  pair.calls = rows;
  pair.ours = [w] { w->forward(); };
  pair.peer = [w] { plainForward(*w->machine, w->table.path(), w->plain.path()); };
  pair.ours();
  pair.peer();
  if (textOf(w->ours) != textOf(w->plain))
    pair.disagreement = "results disagree: other bytes than the plain loop's";
  return pair;
}

double peakOfForward(int rows) {
  const Scratch table(".csv"), out(".csv");
  table.write(positionTable(rows));
  return peakOf(
      {KORVO_TOOL, "forward", KORVO_MACHINES "/table-ac.def", "--positions", table.path()},
      out.path());
}

// Whether every target got its row is what the exit code says.
Pair inverse(int rows) {
  const auto table = std::make_shared<Scratch>(".csv"), out = std::make_shared<Scratch>(".csv");
  table->write(targetTable(rows));
  Pair pair;
  pair.ours = [table, out] {
    run({KORVO_TOOL, "inverse", KORVO_MACHINES "/table-ac.def", "--targets", table->path()},
        out->path());
  };
  return pair;
}

}  // namespace

void addTables() {
  const int rows = amount(1'000'000, 10'000);
  const std::string what = "korvo forward --positions, " + grouped(rows) + " rows";
  add(Row{"tables/forward", what, "a plain from_chars, query, to_chars loop", atMost(1.5),
          [=] { return forward(rows); }, 7});
  add(Figure{"tables/forward/peak", what + ", peak resident memory", "that of a tenth of the rows",
             "MB above", atMost(1),
             [=] { return peakOfForward(rows) - peakOfForward(rows / 10); }});
  add(Curve{"growth/targets",
            "korvo inverse --targets by targets",
            "",
            kLinear,
            {100, 1000, 10'000, 100'000, amount(1'000'000, 200'000)},
            inverse,
            5});
}

}  // namespace korvo::bench
