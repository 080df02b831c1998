#pragma once

#include <filesystem>
#include <string>

namespace korvo {

/// A file of its own in the folder for temporary files, removed at the end.
class TemporaryFile {
 public:
  /// Throws std::filesystem::filesystem_error when it cannot be written.
  explicit TemporaryFile(const std::string& content);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace korvo
