#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace korvo::test {

/// A folder of its own for one test, gone with everything in it when the object dies.
class TempDir {
 public:
  TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "korvo_").string();
    pattern.append(6, 'X');  // the six that mkdtemp replaces
    if (!mkdtemp(pattern.data())) {
      throw std::filesystem::filesystem_error("no temporary folder", std::error_code());
    }
    path_ = pattern;
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  std::filesystem::path path() const { return path_; }

  /// Writes `bytes` as they stand to the file `name` (folders in the name are made) and returns
  /// its path.
  std::filesystem::path write(const std::string& name, const std::string& bytes) const {
    const std::filesystem::path file = path_ / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary).write(bytes.data(), std::ssize(bytes));
    return file;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace korvo::test
