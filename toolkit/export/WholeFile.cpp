#include "toolkit/export/WholeFile.h"

#include <fstream>
#include <random>
#include <string>
#include <system_error>

#include "toolkit/Path.h"

namespace fs = std::filesystem;

namespace korvo {
namespace {

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

[[noreturn]] void fail(const fs::path& path, const char* problem) {
  throw WriteError(utf8Of(path) + ": expected " + problem);
}

[[noreturn]] void failRoom(const fs::path& path) {
  std::error_code error;
  const fs::path folder = path.parent_path();
  if (!folder.empty() && !fs::is_directory(folder, error)) {
    fail(path, "a folder to write it into, found none of that name");
  }
  if (!fs::exists(path, error)) fail(path, "room and permission to write it, found none");
  fail(path, "room and permission to write a file beside it, found none; it is as it was");
}

// A link to what a program has open. Where it leads is none of our business even when it is a file:
// others write to it already, and would go on with the one that was replaced.
bool leadsToStream(fs::path path) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  for (int links = 0; links < kMostLinks; ++links) {
    const fs::path parent = path.parent_path();
    const fs::path folder = fs::canonical(parent.empty() ? "." : parent, error);
    if (error) return false;
    if (folder.generic_string().starts_with("/proc/")) return true;
    const fs::path next = fs::read_symlink(folder / path.filename(), error);
    if (error) return false;
    path = folder / next;
  }
  return false;
}

// What stands at `path`, a link followed; `path` itself when nothing does. A link is never
// replaced, so it has to lead to a file.
fs::path targetOf(const fs::path& path) {
  std::error_code error;
  if (!fs::exists(fs::symlink_status(path, error))) return path;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) fail(path, "a file, found a link to none");
  if (!fs::is_regular_file(status)) fail(path, "a file, found something else of that name");
  if (leadsToStream(path)) fail(path, "a file, found what leads to an open stream");
  const fs::path target = fs::canonical(path, error);
  if (error) fail(path, "a file, found a link to none");
  if (!std::ofstream(target, std::ios::binary | std::ios::app)) {
    fail(path, "a file that may be written, found one that may only be read");
  }
  return target;
}

}  // namespace

// The permissions come first: nobody reads in the meantime what only the owner may read.
WholeFile::WholeFile(const fs::path& path)
    : target_(targetOf(path)), temporary_(beside(target_)), file_(create(temporary_)) {
  if (!file_) failRoom(path);
  std::error_code error;
  const fs::file_status status = fs::status(target_, error);
  if (fs::exists(status)) fs::permissions(temporary_, status.permissions(), error);
  isWhole_ = !error || !fs::exists(status);
}

WholeFile::~WholeFile() {
  if (file_) close();
  std::error_code ignored;
  if (!temporary_.empty()) fs::remove(temporary_, ignored);
}

void WholeFile::write(std::string_view bytes) {
  isWhole_ = std::fwrite(bytes.data(), 1, bytes.size(), file_) == bytes.size() && isWhole_;
}

void WholeFile::overwriteStart(std::string_view bytes) {
  isWhole_ = std::fseek(file_, 0, SEEK_SET) == 0 && isWhole_;
  write(bytes);
}

void WholeFile::close() {
  isWhole_ = std::fclose(file_) == 0 && isWhole_;
  file_ = nullptr;
}

void WholeFile::commit() {
  close();
  std::error_code error;
  if (isWhole_) fs::rename(temporary_, target_, error);
  if (!isWhole_ || error) failRoom(target_);
  temporary_.clear();
}

}  // namespace korvo
