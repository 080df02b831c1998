#include "tools/Progress.h"

#include <algorithm>
#include <cstdio>
#include <string>

#if defined(_WIN32)
#include <io.h>
#else
#include <unistd.h>
#endif

namespace korvo::tools {
namespace {

constexpr int kWidth = 40;
constexpr std::chrono::milliseconds kPause(100);

}  // namespace

bool isTerminal(Stream stream) {
#if defined(_WIN32)
  return _isatty(static_cast<int>(stream)) != 0;
#else
  return isatty(static_cast<int>(stream)) != 0;
#endif
}

Progress::Progress()
    : isTerminal_(isTerminal(Stream::error)), next_(std::chrono::steady_clock::now() + kPause) {}

Progress::~Progress() { wipe(); }

void Progress::wipe() {
  if (isShown_) std::fputs("\r\x1b[K", stderr);
  isShown_ = false;
}

void Progress::show(std::uint64_t done, std::uint64_t total) {
  if (!isTerminal_ || total == 0 || std::chrono::steady_clock::now() < next_) return;
  next_ = std::chrono::steady_clock::now() + kPause;
  const auto filled = static_cast<int>(std::min(done, total) * kWidth / total);
  const std::string bar = std::string(static_cast<std::size_t>(filled), '#') +
                          std::string(static_cast<std::size_t>(kWidth - filled), '.');
  std::fprintf(stderr, "\r[%s] %3d %%", bar.c_str(), filled * 100 / kWidth);
  isShown_ = true;
}

}  // namespace korvo::tools
