#include "tools/ReplaceFile.h"

#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <system_error>

#include "tools/Failure.h"

namespace fs = std::filesystem;

namespace korvo::tools {
namespace {

[[noreturn]] void fail(const fs::path& path, const std::string& problem) {
  throw Failure(Exit::refused, path.string() + ": expected " + problem);
}

// "x": a file that somebody else made in between is left alone.
std::FILE* create(const fs::path& path) {
#if defined(_WIN32)
  return _wfopen(path.c_str(), L"wbx");
#else
  return std::fopen(path.c_str(), "wbxe");
#endif
}

fs::path beside(const fs::path& path) {
  std::random_device random;
  fs::path temporary = path;
  return temporary.replace_filename("." + path.filename().string() + "." +
                                    std::to_string(random()));
}

// The permissions come first: nobody reads in the meantime what only the owner may read.
bool write(std::FILE* file, const fs::path& path, const fs::path& original,
           const std::string& bytes) {
  std::error_code error;
  fs::permissions(path, fs::status(original, error).permissions(), error);
  const bool isWhole = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  return std::fclose(file) == 0 && isWhole && !error;
}

}  // namespace

std::string readBytes(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream bytes;
  if (stream.peek() != std::ifstream::traits_type::eof()) bytes << stream.rdbuf();
  if (!stream.is_open() || stream.bad()) fail(path, "a readable file");
  return bytes.str();
}

void replaceFile(const fs::path& path, const std::string& bytes) {
  std::error_code error;
  const fs::path target = fs::canonical(path, error);
  if (error || !std::ofstream(target, std::ios::binary | std::ios::app)) {
    fail(path, "a file that may be written, found one that may only be read");
  }
  const fs::path temporary = beside(target);
  if (std::FILE* file = create(temporary)) {
    const bool isWritten = write(file, temporary, target, bytes);
    if (isWritten) fs::rename(temporary, target, error);
    if (isWritten && !error) return;
    fs::remove(temporary, error);
  }
  fail(path, "room and permission to write a file beside it, found none; it is as it was");
}

}  // namespace korvo::tools
