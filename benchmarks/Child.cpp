#include "benchmarks/Child.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace korvo::bench {
namespace {

pid_t start(const Words& words, const std::string& output) {
  std::vector<char*> arguments;
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  const pid_t child = fork();
  if (child != 0) return child;
  const int file = open(output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (file >= 0 && dup2(file, STDOUT_FILENO) >= 0) execv(arguments[0], arguments.data());
  _exit(127);
}

void require(bool isGood, const Words& words) {
  if (isGood) return;
  std::fprintf(stderr, "%s failed\n", words[0].c_str());
  std::exit(2);
}

/// The high-water mark of a process ("self" or a number), MB; 0 when it is gone.
double highWater(const std::string& process) {
  std::ifstream status("/proc/" + process + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::strtod(line.c_str() + 6, nullptr) * 1024e-6;
  }
  return 0;
}

bool isGood(int status) { return WIFEXITED(status) && WEXITSTATUS(status) == 0; }

}  // namespace

void run(const Words& words, const std::string& output) {
  const pid_t child = start(words, output);
  int status = 0;
  require(child > 0 && waitpid(child, &status, 0) == child && isGood(status), words);
}

double peakOf(const Words& words, const std::string& output) {
  const pid_t child = start(words, output);
  require(child > 0, words);
  double peak = 0, now = 0;
  int status = 0;
  // The mark falls once, when the copy of this process becomes the program.
  for (; waitpid(child, &status, WNOHANG) == 0; usleep(1000)) {
    now = highWater(std::to_string(child));
    if (now > 0) peak = now;
  }
  require(isGood(status), words);
  return peak;
}

double ownPeak() { return highWater("self"); }

}  // namespace korvo::bench
