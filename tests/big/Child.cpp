#include "tests/big/Child.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace korvo::test {
namespace {

long residentKib() {
  long total = 0, resident = 0;
  std::FILE* const file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr || std::fscanf(file, "%ld %ld", &total, &resident) != 2) std::abort();
  std::fclose(file);
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

void work(const std::function<int()>& what, std::uint64_t addressSpace, ChildAnswer& answer) {
  if (addressSpace > 0) {
    const rlimit limit{addressSpace, addressSpace};
    if (setrlimit(RLIMIT_AS, &limit) != 0) std::abort();
  }
  const long before = residentKib();
  answer.code = what();
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  answer.peakMib = (std::max(0L, usage.ru_maxrss - before) + 1023) / 1024;
}

}  // namespace

ChildAnswer inChild(const std::function<int()>& what, std::uint64_t addressSpace) {
  void* const shared =
      mmap(nullptr, sizeof(ChildAnswer), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) std::abort();
  auto& answer = *new (shared) ChildAnswer;
  const pid_t child = fork();
  if (child == 0) {
    work(what, addressSpace, answer);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ChildAnswer copy = answer;
  copy.hasEnded = child > 0 && WIFEXITED(status);
  munmap(shared, sizeof(ChildAnswer));
  return copy;
}

}  // namespace korvo::test
