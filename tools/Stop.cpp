#include "tools/Stop.h"

#include <csignal>

namespace korvo::tools {
namespace {

volatile std::sig_atomic_t isStopWanted = 0;  // what a handler may touch

constexpr int kSignals[] = {SIGINT, SIGTERM};

void setAll(void (*handler)(int)) {
  for (const int signal : kSignals) std::signal(signal, handler);
}

extern "C" void takeSignal(int) {
  isStopWanted = 1;
  setAll(SIG_DFL);
}

}  // namespace

Stop::Stop() {
  isStopWanted = 0;
  setAll(takeSignal);
}

Stop::~Stop() { setAll(SIG_DFL); }

bool Stop::isWanted() const { return isStopWanted != 0; }

}  // namespace korvo::tools
