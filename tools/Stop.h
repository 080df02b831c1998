#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>

namespace korvo::tools {

/// Takes the first SIGINT or SIGTERM as the wish to stop with what is done; the second one ends the
/// program at once, as it does before and after, with nothing left that is unfinished. There is one
/// at a time.
class Stop {
 public:
  Stop();
  ~Stop();
  Stop(const Stop&) = delete;
  Stop& operator=(const Stop&) = delete;

  static bool isWanted();

  /// Meanwhile the second signal waits: for what makes a file and says so behind it.
  class Delay {
   public:
    Delay();
    ~Delay();
    Delay(const Delay&) = delete;
    Delay& operator=(const Delay&) = delete;
  };

  /// Whether a signal ends the wait for what is read; otherwise it goes on behind the signal.
  void setEndsReading(bool endsReading);

  /// A file that the second signal removes.
  void removeAtEnd(const std::filesystem::path& file);

 private:
  std::array<std::string, 2> files_;
  std::size_t count_ = 0;
};

}  // namespace korvo::tools
