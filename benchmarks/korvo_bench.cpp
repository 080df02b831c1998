// Every row of results.md: ours beside a peer, on one processor.
#include <sched.h>

#include "benchmarks/Bench.h"

namespace {

/// Keeps the process on the last processor that it may use: the first has most interrupts.
void pin() {
  cpu_set_t allowed;
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) return;
  for (int i = CPU_SETSIZE - 1; i >= 0; --i) {
    if (!CPU_ISSET(i, &allowed)) continue;
    CPU_ZERO(&allowed);
    CPU_SET(i, &allowed);
    sched_setaffinity(0, sizeof allowed, &allowed);
    return;
  }
}

}  // namespace

int main(int argc, char** argv) {
  using namespace korvo::bench;
  pin();
  addForward();
  addInverse();
  addLimits();
  addSolver();
  addExternal();
  addLoad();
  addStl();
  addGeometry();
  addFaces();
  addBodies();
  addTables();
  addExport();
  return runAll(argc, argv);
}
