// Loading STL files: against what no reader can avoid, and against assimp.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <memory>
#include <vector>

#include "benchmarks/Bench.h"
#include "benchmarks/Child.h"
#include "benchmarks/StlFiles.h"
#include "benchmarks/peers/Triangles.h"
#include "platform/zgeo/UTri.h"

namespace korvo::bench {
namespace {

using zgeo::UTri;

std::vector<UTri> load(const Scratch& file) {
  std::vector<UTri> out;
  UTri::_loadSTL(file.wide(), out);
  return out;
}

enum class Form { binary, text };
enum class Peer { floor, assimp };

std::shared_ptr<Scratch> written(Form form, int triangles) {
  const auto file = std::make_shared<Scratch>(".stl");
  form == Form::binary ? writeBinaryStl(*file, triangles) : writeTextStl(*file, triangles);
  return file;
}

/// The corners as the floor has them: of a text every number but the normal's three.
std::vector<double> floorCorners(Form form, const Scratch& file) {
  std::vector<double> out;
  if (form == Form::binary) {
    const Doubles all = mapAndCopy(file.path());
    return {all.at.get(), all.at.get() + all.count};
  }
  const std::vector<double> all = scanNumbers(file.path());
  for (std::size_t i = 0; i + 12 <= all.size(); i += 12) {
    out.insert(out.end(), all.begin() + static_cast<std::ptrdiff_t>(i) + 3,
               all.begin() + static_cast<std::ptrdiff_t>(i) + 12);
  }
  return out;
}

/// The largest difference of any coordinate; infinite when there are more or fewer.
double worst(const std::vector<UTri>& ours, const std::vector<double>& peer) {
  if (9 * ours.size() != peer.size()) return HUGE_VAL;
  double largest = 0;
  const double* at = peer.data();
  for (const UTri& t : ours) {
    for (const auto& p : t.p) {
      for (const double x : {p.x, p.y, p.z}) largest = std::max(largest, std::abs(x - *at++));
    }
  }
  return largest;
}

// Single precision is all that assimp keeps, and all that a binary file holds.
constexpr double kSingle = 1e-4;

Pair loads(Form form, Peer peer, int triangles) {
  const auto file = written(form, triangles);
  Pair pair;
  pair.ours = [file] { use(load(*file).back().p[2].z); };
  const std::vector<UTri> ours = load(*file);
  double difference = 0;
  if (peer == Peer::assimp) {
    pair.peer = [file] { use(static_cast<double>(loadAssimp(file->path()))); };
    difference = worst(ours, cornersOfAssimp(file->path()));
    if (difference > kSingle) pair.disagreement = disagree("ours and assimp's corners", difference);
    return pair;
  }
  if (form == Form::binary) {
    pair.peer = [file] {
      const Doubles all = mapAndCopy(file->path());
      use(all.at[all.count - 1]);
    };
  } else {
    pair.peer = [file] { use(scanNumbers(file->path()).back()); };
  }
  difference = worst(ours, floorCorners(form, *file));
  if (difference > 0) pair.disagreement = disagree("ours and the plain loop's corners", difference);
  return pair;
}

/// Megabytes that a small program takes at most, above the triangles that it loads.
double peakAbove(Form form, int triangles) {
  const auto file = written(form, triangles);
  const Scratch said(".txt");
  run({KORVO_BENCH_CALLS, "stl-peak", file->path()}, said.path());
  double peak = 0;
  std::ifstream(said.path()) >> peak;
  return peak - static_cast<double>(sizeof(UTri)) * triangles * 1e-6;
}

}  // namespace

void addStl() {
  const int binary = amount(2'000'000, 20'000), text = amount(200'000, 2'000);
  const std::string binaryWhat = "binary STL, " + grouped(binary) + " triangles";
  const std::string textWhat = "ASCII STL, " + grouped(text) + " triangles";
  add(Row{"stl/binary/floor", binaryWhat, "map and copy into fresh doubles", atLeast(0.7),
          [=] { return loads(Form::binary, Peer::floor, binary); }, 15});
  add(Row{"stl/binary/assimp", binaryWhat, "assimp", atLeast(3.5),
          [=] { return loads(Form::binary, Peer::assimp, binary); }, 9});
  add(Row{"stl/ascii/floor", textWhat, "a std::from_chars loop", atLeast(0.75),
          [=] { return loads(Form::text, Peer::floor, text); }, 15});
  add(Row{"stl/ascii/assimp", textWhat, "assimp", atLeast(2),
          [=] { return loads(Form::text, Peer::assimp, text); }, 15});
  add(Figure{"stl/binary/peak", binaryWhat + ", peak resident memory", "the triangles themselves",
             "MB above", atMost(16), [=] { return peakAbove(Form::binary, binary); }});
  add(Figure{"stl/ascii/peak", textWhat + ", peak resident memory", "the triangles themselves",
             "MB above", atMost(16), [=] { return peakAbove(Form::text, text); }});
  add(Curve{"growth/triangles",
            "binary STL by triangles",
            "map and copy into fresh doubles",
            kLinear,
            {1000, 10'000, 100'000, 1'000'000, amount(10'000'000, 2'000'000)},
            [](int triangles) { return loads(Form::binary, Peer::floor, triangles); },
            7});
}

}  // namespace korvo::bench
