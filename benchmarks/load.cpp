// Reading a definition file against reading its lines.
#include <memory>

#include "benchmarks/Bench.h"
#include "benchmarks/Machines.h"
#include "benchmarks/Scratch.h"
#include "benchmarks/peers/Lines.h"

namespace korvo::bench {
namespace {

// A machine anew at each load, so that its elements' storage is part of it as it is for a host.
int readAll(const Scratch& file) {
  zkin::KMachine machine(file.wide().c_str(), 2);
  return machine.readDataFile() == 0 ? machine.getElemNumber() : -1;
}

Pair load(int elements) {
  const auto file = std::make_shared<Scratch>(".def");
  file->write(bodiesText(elements));
  const int times = std::max(1, 2000 / elements);
  Pair pair;
  pair.calls = times;
  if (const int found = readAll(*file); found != elements) {
    pair.disagreement = disagree("elements read", found - elements);
  }
  const std::size_t lines = static_cast<std::size_t>(2 * elements - 7);
  if (plainLines(file->path()) != lines) pair.disagreement = "results disagree: lines read";
  pair.ours = [file, times] {
    for (int i = 0; i < times; ++i) use(readAll(*file));
  };
  pair.peer = [file, times] {
    for (int i = 0; i < times; ++i) use(static_cast<double>(plainLines(file->path())));
  };
  return pair;
}

}  // namespace

void addLoad() {
  const std::string peer = "std::getline over its lines";
  for (const int elements : {100, 10'000}) {
    add(Row{"load/" + std::to_string(elements),
            "readDataFile, " + grouped(elements) + " element lines", peer, atMost(30),
            [elements] { return load(elements); }, elements < 1000 ? 41 : 15});
  }
  add(Curve{"growth/load",
            "readDataFile by element lines",
            peer,
            kLinear,
            {10, 100, 300, 1000, 3000, 10'000},
            load,
            15});
}

}  // namespace korvo::bench
