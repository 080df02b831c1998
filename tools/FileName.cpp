#include "tools/FileName.h"

#include <algorithm>
#include <filesystem>

namespace korvo::tools {

// ASCII letters alone: the locale plays no part in what a file is.
std::string suffixOf(const std::string& file) {
  std::string suffix = std::filesystem::path(file).extension().string();
  std::transform(suffix.begin(), suffix.end(), suffix.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return suffix;
}

}  // namespace korvo::tools
