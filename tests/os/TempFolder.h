#pragma once

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace korvo::test {

/// A folder of its own for one test, removed with all that is in it. Its path is plain ASCII.
class TempFolder {
 public:
  TempFolder() {
    static int count = 0;
    path_ = std::filesystem::temp_directory_path() /
            ("korvo_test_" + std::to_string(getpid()) + "_" + std::to_string(++count));
    std::filesystem::create_directories(path_);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }

  /// Narrow and wide path of an entry.
  std::string narrow(std::string_view name) const {
    return path_.native() + "/" + std::string(name);
  }
  std::wstring wide(std::wstring_view name) const {
    const std::string& folder = path_.native();
    return std::wstring(folder.begin(), folder.end()) + L"/" + std::wstring(name);
  }

  /// Writes a file, and the folders it lies in.
  void write(std::string_view name, std::string_view content = "content") const {
    const std::filesystem::path file = narrow(name);
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
  }

 private:
  std::filesystem::path path_;
};

}  // namespace korvo::test
