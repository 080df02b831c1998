#pragma once

#include <fstream>
#include <string>

namespace korvo::bench {

/// Reads a file line by line and does nothing with them.
/// @return  Their number.
inline std::size_t plainLines(const std::string& path) {
  std::ifstream stream(path);
  std::string line;
  std::size_t count = 0;
  while (std::getline(stream, line)) ++count;
  return count;
}

}  // namespace korvo::bench
