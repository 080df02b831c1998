#include "tools/Stop.h"

#include <atomic>
#include <csignal>

#if !defined(_WIN32)
#include <unistd.h>
#endif

namespace korvo::tools {
namespace {

// What a handler may touch.
volatile std::sig_atomic_t isStopWanted = 0;
volatile std::sig_atomic_t isDelayed = 0;
volatile std::sig_atomic_t delayedSignal = 0;
std::array<std::atomic<const char*>, 2> unfinished{};
static_assert(std::atomic<const char*>::is_always_lock_free);

constexpr int kSignals[] = {SIGINT, SIGTERM};

void removeUnfinished() {
#if !defined(_WIN32)  // there an open file stays anyway
  for (const auto& file : unfinished) {
    if (const char* name = file.load()) unlink(name);
  }
#endif
}

extern "C" void takeSignal(int signal) {
  if (isStopWanted != 0 && isDelayed != 0) {
    delayedSignal = signal;
  } else if (isStopWanted != 0) {
    removeUnfinished();
    std::signal(signal, SIG_DFL);
    std::raise(signal);
  }
  isStopWanted = 1;
#if defined(_WIN32)
  std::signal(signal, takeSignal);  // there it is given back before it is called
#endif
}

void setAll(void (*handler)(int)) {
  for (const int signal : kSignals) std::signal(signal, handler);
}

}  // namespace

Stop::Delay::Delay() {
  delayedSignal = 0;
  isDelayed = 1;
}

Stop::Delay::~Delay() {
  isDelayed = 0;
  if (delayedSignal != 0) std::raise(delayedSignal);
}

Stop::Stop() {
  isStopWanted = 0;
  setAll(takeSignal);
}

Stop::~Stop() {
  setAll(SIG_DFL);
  for (auto& file : unfinished) file = nullptr;
}

bool Stop::isWanted() { return isStopWanted != 0; }

void Stop::setEndsReading([[maybe_unused]] bool endsReading) {
#if !defined(_WIN32)
  for (const int signal : kSignals) {
    struct sigaction action = {};
    action.sa_handler = takeSignal;
    action.sa_flags = endsReading ? 0 : SA_RESTART;
    sigaction(signal, &action, nullptr);
  }
#endif
}

void Stop::removeAtEnd(const std::filesystem::path& file) {
  files_.at(count_) = file.string();
  unfinished.at(count_) = files_.at(count_).c_str();
  ++count_;
}

}  // namespace korvo::tools
