// One call, some times, for an instrument that counts: what `callgrind --toggle-collect` sees is
// the body of `measured` alone. Links our libraries and no peer.
//
//   bench_calls CALL            runs that call
//   bench_calls stl-peak FILE   prints the peak resident memory, MB, of loading it
//   bench_calls path-peak COUNT prints how many bytes a target a toolpath takes beside its targets
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>

#include "benchmarks/Child.h"
#include "benchmarks/Scratch.h"
#include "benchmarks/Swirl.h"
#include "platform/zgeo/UTri.h"
#include "toolkit/Machine.h"
#include "toolkit/solve/Solver.h"

/// Not static: it has to be found by its name, and not to be inlined.
__attribute__((noinline)) void measured(const std::function<void()>& call) { call(); }

namespace {

using korvo::Machine, korvo::Position, korvo::bench::Scratch;
using zgeo::UTri, zgeo::UVec3d;

/// Once before it counts: the first call of a process pays for finding functions and for memory.
void afterOnce(const std::function<void()>& call) {
  call();
  measured(call);
}

Machine example(const char* name) {
  return *korvo::load(std::string(KORVO_MACHINES "/") + name + ".def").machine;
}

Machine limited(const char* name) {
  Machine machine = example(name);
  for (const wchar_t* axis : {L"A", L"C"}) {
    machine->getElemByName(axis)->setMin(-360, true);
    machine->getElemByName(axis)->setMax(360, true);
  }
  return machine;
}

/// Positions with every axis somewhere else each time.
Position position(const Machine& machine, int i) {
  Position v = machine.position();
  for (int k = 0; k < v.size(); ++k) v[k] = (17 * i + 23 * k) % 40 - 19.5;
  return v;
}

constexpr int kTimes = 50;

void forward(const char* name) {
  const Machine machine = example(name);
  for (int i = 0; i < kTimes; ++i) {
    const Position v = position(machine, i);
    afterOnce([&] { machine->getMatrix_H2T(v); });
  }
}

Machine wristArm() {
  const Scratch file(".def");
  file.write(korvo::bench::wristArmText());
  return *korvo::load(file.path()).machine;
}

void inverse(const Machine& machine) {
  for (int i = 0; i < kTimes; ++i) {
    const Position v = position(machine, i);
    Position start = position(machine, i + 1), out = machine.position();
    UVec3d tip, direction;
    machine->getTool(v, tip, direction, 1);
    afterOnce([&] { machine->getConfigPlus(start, tip, direction, out); });
  }
}

void list() {
  const Machine machine = limited("table-ac");
  UVec3d tip, direction;
  machine->getTool(position(machine, 3), tip, direction, 1);
  afterOnce([&] {
    korvo::PositionList out;
    machine->getPossibleConfigs(direction, tip, out.raw(), 1);
  });
}

void solver() {
  const Machine machine = limited("table-ac");
  const korvo::Solver solver(machine);
  std::vector<korvo::Solution> out;
  for (int i = 0; i < kTimes; ++i) {
    korvo::Target target;
    machine->getTool(position(machine, i), target.tip, target.direction, 1);
    afterOnce([&] { solver.solve(target, {}, out); });
  }
}

void load() {
  const Scratch file(".def");
  file.write(korvo::bench::bodiesText(1000));
  afterOnce([&] {
    zkin::KMachine machine(file.wide().c_str(), 2);
    machine.readDataFile();
  });
}

void stl() {
  const Scratch file(".stl");
  constexpr int kCount = 1000;
  std::string bytes(84 + 50 * kCount, '\0');
  bytes[80] = static_cast<char>(kCount % 256), bytes[81] = static_cast<char>(kCount / 256);
  for (std::size_t i = 84; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * 7 % 64);
  file.write(bytes);
  std::vector<UTri> out;
  afterOnce([&] { UTri::_loadSTL(file.wide(), out); });
  if (out.size() != kCount) std::abort();
}

const std::map<std::string, std::function<void()>>& calls() {
  static const std::map<std::string, std::function<void()>> all = {
      {"forward-five-axis", [] { forward("table-ac"); }},
      {"forward-arm", [] { forward("arm-irb2400"); }},
      {"inverse-five-axis", [] { inverse(example("table-ac")); }},
      {"inverse-arm", [] { inverse(wristArm()); }},
      {"list-five-axis", list},
      {"solver-five-axis", solver},
      {"load-definition", load},
      {"load-stl", stl}};
  return all;
}

int printPeak(const std::string& path) {
  std::vector<UTri> out;
  if (UTri::_loadSTL(std::wstring(path.begin(), path.end()), out) != 0) return 1;
  std::printf("%.3f\n", korvo::bench::ownPeak());
  return 0;
}

int printPathPeak(int count) {
  const Machine machine = example("table-ac");
  const auto targets = korvo::bench::swirl(machine, count);
  const double before = korvo::bench::ownPeak();
  double last = 0.0;
  korvo::Toolpath(machine).run(targets, [&](const korvo::PathPosition& p) { last = p.values[0]; });
  std::printf("%.1f\n", (korvo::bench::ownPeak() - before) * 1e6 / count);
  return last > 1e9 ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::string(argv[1]) == "stl-peak") return printPeak(argv[2]);
  if (argc == 3 && std::string(argv[1]) == "path-peak") return printPathPeak(std::atoi(argv[2]));
  const auto found = calls().find(argc == 2 ? argv[1] : "");
  if (found != calls().end()) {
    found->second();
    return 0;
  }
  for (const auto& [name, call] : calls()) std::printf("%s\n", name.c_str());
  return argc == 1 ? 0 : 2;
}
