#pragma once

namespace korvo::tools {

/// Takes the first SIGINT or SIGTERM as the wish to stop with what is done; the second one ends the
/// program at once, as it does before and after.
class Stop {
 public:
  Stop();
  ~Stop();
  Stop(const Stop&) = delete;
  Stop& operator=(const Stop&) = delete;

  bool isWanted() const;
};

}  // namespace korvo::tools
