// Every row of results.md: ours beside a peer, on one processor.
#include <malloc.h>
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

/// What glibc's allocator comes to by itself once a process has freed a block of 32 MB: smaller
/// ones stay with the process. Left to itself it gets there at some row, and those before pay for
/// fresh pages at every repetition.
void settleHeap() {
  mallopt(M_MMAP_THRESHOLD, 32 << 20);
  mallopt(M_TRIM_THRESHOLD, 64 << 20);
}

}  // namespace

int main(int argc, char** argv) {
  using namespace korvo::bench;
  pin();
  settleHeap();
  addForward();
  addInverse();
  addLimits();
  addSolver();
  addPath();
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
