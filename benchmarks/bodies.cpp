// The bodies of a machine, placed: against one loop that reads, widens and moves the corners.
#include <cmath>
#include <memory>
#include <vector>

#include "benchmarks/Bench.h"
#include "benchmarks/Machines.h"
#include "benchmarks/StlFiles.h"
#include "benchmarks/peers/Triangles.h"

namespace korvo::bench {
namespace {

/// A five-axis machine each of whose axes carries a fifth of the triangles.
struct Work {
  explicit Work(int triangles) {
    std::string text = "frame=z\n";
    for (const char* axis : {"rotation=A,+x,0,0,0,-0.5,60,", "rotation=C,+z,0,0,0,0,0,"}) {
      text += axis + body(triangles / 5);
    }
    text += "part=x,y,0,0,0\nlien=BATI\n";
    for (const char* axis : {"axis=X,+x,", "axis=Y,+y,", "axis=Z,+z,"}) {
      text += axis + body(triangles / 5);
    }
    definition.write(text + "tool=z,0,0,120\n");
    machine = std::make_unique<Machine>(loaded(definition.path(), Format::version2));
    at = std::make_unique<Position>(
        machine->position({{"X", 10.0}, {"Y", -20.0}, {"Z", 30.0}, {"A", -40.0}, {"C", 50.0}}));
    for (int i = 0; i < (*machine)->getElemNumber(); ++i) {
      const zkin::KMachineElem* e = (*machine)->getElemByRank(i);
      if (!e->getGeomFile().empty()) motions.push_back((*machine)->getMatrix(*at, e));
    }
  }

  std::string body(int triangles) {
    files.push_back(std::make_unique<Scratch>(".stl"));
    writeBinaryStl(*files.back(), triangles);
    paths.push_back(files.back()->path());
    return paths.back() + "\n";
  }

  std::vector<zgeo::UTri> ours() const {
    std::vector<zgeo::UTri> out;
    (*machine)->getTrianglesU(*at, out);
    return out;
  }
  Doubles plain() const { return readAndMove(paths, motions); }

  double worst() const {
    const std::vector<zgeo::UTri> a = ours();
    const Doubles b = plain();
    if (9 * a.size() != b.count) return HUGE_VAL;
    double largest = 0;
    for (std::size_t i = 0; i < b.count; ++i) {
      const zgeo::UVec3d& p = a[i / 9].p[i / 3 % 3];
      const double x = i % 3 == 0 ? p.x : i % 3 == 1 ? p.y : p.z;
      largest = std::max(largest, std::abs(x - b.at[i]));
    }
    return largest;
  }

  std::vector<std::unique_ptr<Scratch>> files;
  std::vector<std::string> paths;
  Scratch definition{".def"};
  std::unique_ptr<Machine> machine;
  std::unique_ptr<Position> at;
  std::vector<zgeo::UMatrix> motions;  // of the files, in order
};

Pair triangles(int count) {
  const auto w = std::make_shared<Work>(count);
  Pair pair;
  if (const double worst = w->worst(); worst > 1e-9)
    pair.disagreement = disagree("the corners", worst);
  pair.ours = [w] { use(w->ours().back().p[2].z); };
  pair.peer = [w] {
    const Doubles all = w->plain();
    use(all.at[all.count - 1]);
  };
  return pair;
}

}  // namespace

void addBodies() {
  const int count = amount(1'000'000, 10'000);
  add(Row{"bodies/triangles", "getTrianglesU, " + grouped(count) + " STL triangles",
          "read, widen and move them in one loop", atMost(1.3), [=] { return triangles(count); },
          15});
}

}  // namespace korvo::bench
