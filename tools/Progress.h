#pragma once

#include <chrono>
#include <cstdint>

namespace korvo::tools {

enum class Stream { output = 1, error = 2 };
bool isTerminal(Stream stream);

/// A progress bar on standard error, when that is a terminal; silent otherwise.
class Progress {
 public:
  Progress();
  ~Progress();  ///< Wipes the bar.
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Shows how much is done, at most ten times a second. A total of 0 means not known.
  void show(std::uint64_t done, std::uint64_t total);

  void wipe();  ///< Clears its line for something else; it comes again when shown.

 private:
  bool isTerminal_;
  bool isShown_ = false;
  std::chrono::steady_clock::time_point next_;
};

}  // namespace korvo::tools
