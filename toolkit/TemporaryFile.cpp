#include "toolkit/TemporaryFile.h"

#include <cstdio>
#include <random>
#include <system_error>

namespace korvo {
namespace {

constexpr int kTries = 100;

std::string randomName() {
  std::random_device random;
  return "korvo-" + std::to_string(random()) + "-" + std::to_string(random());
}

// "x": nobody else's file is ever opened, nor a link that waits there.
std::FILE* create(const std::filesystem::path& path) {
#if defined(_WIN32)
  return _wfopen(path.c_str(), L"wbx");
#else
  return std::fopen(path.c_str(), "wbxe");
#endif
}

[[noreturn]] void fail(const std::filesystem::path& path) {
  throw std::filesystem::filesystem_error("expected to write a temporary file", path,
                                          std::make_error_code(std::errc::io_error));
}

}  // namespace

TemporaryFile::TemporaryFile(const std::string& content) {
  const std::filesystem::path folder = std::filesystem::temp_directory_path();
  std::FILE* file = nullptr;
  for (int i = 0; i < kTries && !file; ++i) file = create(path_ = folder / randomName());
  if (!file) fail(path_);
  const bool isWhole = std::fwrite(content.data(), 1, content.size(), file) == content.size();
  const bool isClosed = std::fclose(file) == 0;
  if (isWhole && isClosed) return;
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);
  fail(path_);
}

TemporaryFile::~TemporaryFile() {
  std::error_code ignored;
  std::filesystem::remove(path_, ignored);
}

}  // namespace korvo
