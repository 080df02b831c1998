// Where the tool is: the matrices of the chain, one query and all elements at once.
#include <algorithm>
#include <cmath>
#include <kdl/chainfksolverpos_recursive.hpp>
#include <memory>
#include <numbers>

#include "benchmarks/Bench.h"
#include "benchmarks/Machines.h"
#include "benchmarks/Scratch.h"
#include "tests/support/KdlChain.h"

namespace korvo::bench {
namespace {

using test::kdl, test::kdlChain, test::turns;
using zgeo::UMatrix, zgeo::UVec3d;
using zkin::KMachineElem;

constexpr int kQueries = 2000;
constexpr int kPairs = 101;
constexpr double kSame = 1e-9;  // mm, at coordinates of a metre

/// A machine, positions, and what KDL needs to answer the same.
struct Queries {
  explicit Queries(Machine m, int count = kQueries)
      : machine(std::move(m)),
        all(positions(machine, count)),
        chain(kdlChain(*machine)),
        solver(chain),
        frame(static_cast<std::size_t>(count)),
        matrix(frame.size()) {
    for (const Position& v : all) joints.push_back(jointsOf(v));
  }

  // Chain order, radians.
  KDL::JntArray jointsOf(const Position& v) const {
    KDL::JntArray q(chain.getNrOfJoints());
    unsigned joint = 0;
    for (const KMachineElem* e : machine->getToolChain(true, 1)) {
      if (e->getValueIndex() < 0) continue;
      const double value = v[e->getValueIndex()];
      q(joint++) = turns(*e) ? value * std::numbers::pi / 180 : value;
    }
    return q;
  }

  void askMatrices() {
    for (std::size_t i = 0; i < all.size(); ++i) matrix[i] = machine->getMatrix_H2T(all[i]);
  }
  void askTools() {
    for (const Position& v : all) {
      machine->getTool(v, point, direction, 1);
      use(point.x + direction.z);
    }
  }
  void askKdl() {
    for (std::size_t i = 0; i < all.size(); ++i) solver.JntToCart(joints[i], frame[i]);
  }

  Machine machine;
  std::vector<Position> all;
  KDL::Chain chain;
  KDL::ChainFkSolverPos_recursive solver;
  std::vector<KDL::JntArray> joints;
  std::vector<KDL::Frame> frame;
  std::vector<UMatrix> matrix;
  UVec3d point, direction;
};

double difference(const UMatrix& m, const KDL::Frame& f) {
  double largest = 0;
  for (int i = 0; i < 12; ++i) {
    largest = std::max(largest, std::abs(m(i / 4, i % 4) - f(i / 4, i % 4)));
  }
  return largest;
}

double worstToKdl(Queries& q) {
  q.askMatrices();
  q.askKdl();
  double worst = 0;
  for (std::size_t i = 0; i < q.all.size(); ++i) {
    q.machine->getTool(q.all[i], q.point, q.direction, 1);
    worst = std::max(
        {worst, difference(q.matrix[i], q.frame[i]), (kdl(q.point) - q.frame[i].p).Norm()});
  }
  return worst;
}

Pair matrixToKdl(const std::shared_ptr<Queries>& q) {
  Pair pair{
      [q] { q->askMatrices(); }, [q] { q->askKdl(); }, static_cast<double>(q->all.size()), {}};
  if (const double worst = worstToKdl(*q); worst > kSame) {
    pair.disagreement = disagree("ours and KDL's frames", worst);
  }
  return pair;
}

Pair toolToKdl(const std::shared_ptr<Queries>& q) {
  Pair pair = matrixToKdl(q);
  pair.ours = [q] { q->askTools(); };
  return pair;
}

Pair byHand(bool isTool) {
  const auto q = std::make_shared<Queries>(example("table-ac"));
  const auto at = std::make_shared<std::vector<TableAc::Entry>>(entriesOf(q->all));
  Pair pair;
  pair.calls = kQueries;
  double worst = 0;
  for (std::size_t i = 0; i < at->size(); ++i) {
    UVec3d point, direction;
    TableAc::tool((*at)[i], point, direction);
    q->machine->getTool(q->all[i], q->point, q->direction, 1);
    worst = std::max(
        {worst, (point - q->point).norm(), (direction - q->direction).norm(),
         bench::difference(TableAc::motion((*at)[i]), q->machine->getMatrix_H2T(q->all[i]))});
  }
  if (worst > kSame) pair.disagreement = disagree("ours and the motions by hand", worst);
  if (isTool) {
    pair.ours = [q] { q->askTools(); };
    pair.peer = [q, at] {
      for (const auto& entry : *at) {
        TableAc::tool(entry, q->point, q->direction);
        use(q->point.x + q->direction.z);
      }
    };
  } else {
    pair.ours = [q] { q->askMatrices(); };
    pair.peer = [q, at] {
      for (std::size_t i = 0; i < at->size(); ++i) q->matrix[i] = TableAc::motion((*at)[i]);
    };
  }
  return pair;
}

// --- Growth: axes of a chain, elements of a machine

/// So many axes, every second one a rotary one; lines of version 1.
std::string chainText(int axes) {
  static const char* const directions[] = {"+x", "+y", "+z"};
  std::string text = "frame\npart=x,y,0,0,0\nlien=BATI\n";
  for (int i = 1; i <= axes; ++i) {
    const std::string head = "=N" + std::to_string(i) + "," + std::to_string(i) + ",";
    const std::string direction = directions[i % 3];
    text += i % 2 == 1
                ? "rotation" + head + direction + ",0,0," + std::to_string(10 * i) + ",20,30\n"
                : "axis" + head + direction + "\n";
  }
  return text + "tool=z,5,6,200\n";
}

Pair chainOf(int axes) {
  const Scratch file(".def");
  file.write(chainText(axes));
  return matrixToKdl(std::make_shared<Queries>(loaded(file.path(), Format::version1)));
}

Pair allAndSingle(int elements) {
  struct Work {
    Machine machine;
    std::vector<Position> all;
    std::vector<UMatrix> out, single;
  };
  const Scratch file(".def");
  file.write(bodiesText(elements));
  Machine machine = loaded(file.path(), Format::version2);
  const int queries = std::max(1, 20000 / elements);
  std::vector<Position> all = positions(machine, queries);
  const auto work = std::make_shared<Work>(Work{std::move(machine), std::move(all), {}, {}});
  const auto askSingle = [work](const Position& v) {
    work->single.resize(static_cast<std::size_t>(work->machine->getElemNumber()));
    for (int i = 0; i < work->machine->getElemNumber(); ++i) {
      work->single[static_cast<std::size_t>(i)] =
          work->machine->getMatrix(v, work->machine->getElemByRank(i));
    }
  };
  Pair pair;
  pair.calls = queries;
  pair.ours = [work] {
    for (const Position& v : work->all) work->machine->getMatrices(v, work->out);
  };
  pair.peer = [work, askSingle] {
    for (const Position& v : work->all) askSingle(v);
  };
  for (const Position& v : work->all) {
    work->machine->getMatrices(v, work->out);
    askSingle(v);
    if (work->out != work->single) pair.disagreement = "getMatrices is not the single calls' bits";
  }
  return pair;
}

}  // namespace

void addForward() {
  const std::string kdl = "KDL ChainFkSolverPos_recursive, same chain";
  const std::string hand = "the five motions' product by hand";
  const auto tableAc = [] { return std::make_shared<Queries>(example("table-ac")); };
  const auto arm = [] { return std::make_shared<Queries>(example("arm-irb2400")); };
  add(Row{"forward/five-axis/matrix", "getMatrix_H2T, five-axis machine", kdl, atMost(0.5, 0.35),
          [=] { return matrixToKdl(tableAc()); }, kPairs});
  add(Row{"forward/five-axis/tool", "getTool, five-axis machine", kdl, atMost(0.5, 0.35),
          [=] { return toolToKdl(tableAc()); }, kPairs});
  add(Row{"forward/five-axis/matrix-by-hand", "getMatrix_H2T, five-axis machine", hand, atMost(5),
          [] { return byHand(false); }, kPairs});
  add(Row{"forward/five-axis/tool-by-hand", "getTool, five-axis machine", hand, atMost(5),
          [] { return byHand(true); }, kPairs});
  add(Row{"forward/arm/matrix", "getMatrix_H2T, six-joint arm", kdl, atMost(0.6),
          [=] { return matrixToKdl(arm()); }, kPairs});
  add(Row{"forward/arm/tool", "getTool, six-joint arm", kdl, atMost(0.6),
          [=] { return toolToKdl(arm()); }, kPairs});
  add(Row{"forward/elements/all",
          "getMatrices, 100 elements",
          "the single calls",
          {},
          [] { return allAndSingle(100); },
          kPairs});
  add(Curve{"growth/axes",
            "getMatrix_H2T by axes of the chain",
            kdl,
            kLinear,
            {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12},
            chainOf});
  add(Curve{"growth/elements",
            "getMatrices by elements of the machine",
            "the single calls",
            kLinear,
            {12, 30, 100, 300, 1000},
            allAndSingle});
}

}  // namespace korvo::bench
