#ifndef _WIN32

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <string_view>

#include "platform/os/Files.h"
#include "platform/os/Names.h"

namespace korvo::os {
namespace {

struct CloseFolder {
  void operator()(DIR* folder) const { closedir(folder); }
};
using Folder = std::unique_ptr<DIR, CloseFolder>;

/// The bytes that a wide name or path may stand for, the likelier first, each once.
using Readings = std::array<std::optional<std::string>, 2>;

Readings readingsOf(std::wstring_view text) {
  Readings readings = {utf8Of(text), bytesOf(text)};
  if (readings[1] == readings[0]) readings[1].reset();
  return readings;
}

bool exists(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0;
}

bool isRegular(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

std::wstring withSlashes(std::wstring path) {
  std::ranges::replace(path, L'\\', L'/');
  return path;
}

/// The one entry of `folder` that is `name` ignoring case; nothing when none or several are.
std::optional<std::string> onlyFit(const std::string& folder, std::string_view name) {
  const Folder entries(opendir(folder.empty() ? "." : folder.c_str()));
  if (!entries) return std::nullopt;
  std::optional<std::string> fit;
  while (const dirent* entry = readdir(entries.get())) {
    if (!isSameIgnoringCase(entry->d_name, name)) continue;
    if (fit) return std::nullopt;
    fit = entry->d_name;
  }
  return fit;
}

/// Path `folder` (empty, or ended by a slash) and `name`, as written or else as the folder spells
/// it; nothing when there is no such entry.
std::optional<std::string> spelled(const std::string& folder, std::wstring_view name) {
  const Readings readings = readingsOf(name);
  for (const std::optional<std::string>& reading : readings) {
    if (reading && exists(folder + *reading)) return folder + *reading;
  }
  for (const std::optional<std::string>& reading : readings) {
    const std::optional<std::string> fit = reading ? onlyFit(folder, *reading) : std::nullopt;
    if (fit) return folder + *fit;
  }
  return std::nullopt;
}

/// The path with each name as its folder spells it; nothing when a name is not there. Each name has
/// a reading of its own: a folder that a program gave in characters may hold a file whose name was
/// copied byte by byte from a definition file.
std::optional<std::string> asFoldersSpell(std::wstring_view path) {
  std::string found;
  while (!path.empty()) {
    const std::size_t length = std::min(path.find(L'/'), path.size());
    if (length > 0) {
      std::optional<std::string> longer = spelled(found, path.substr(0, length));
      if (!longer) return std::nullopt;
      found = *std::move(longer);
    }
    path.remove_prefix(length);
    const std::size_t slashes = std::min(path.find_first_not_of(L'/'), path.size());
    found.append(slashes, '/');
    path.remove_prefix(slashes);
  }
  if (!exists(found)) return std::nullopt;
  return found;
}

/// The first reading of a whole path that names something.
std::optional<std::string> firstThere(const std::wstring& path) {
  for (std::optional<std::string>& reading : readingsOf(path)) {
    if (reading && exists(*reading)) return std::move(reading);
  }
  return std::nullopt;
}

/// The narrow path of what a wide one names, of whatever kind. A path as written comes before all
/// others, so a name that a folder can hold always finds itself.
std::optional<std::string> find(const std::wstring& path) {
  if (path.size() >= PATH_MAX) return std::nullopt;  // no need to try every name of it
  if (auto found = firstThere(path)) return found;
  const std::wstring slashed = withSlashes(path);
  if (slashed != path) {
    if (auto found = firstThere(slashed)) return found;
  }
  return asFoldersSpell(slashed);
}

bool isRegular(int descriptor) {
  struct stat status;
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

/// Without O_NONBLOCK the open would wait for the writer of a pipe that took the file's place
/// since it was looked at.
int openDescriptor(const std::string& path) {
  return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

}  // namespace

std::optional<std::string> resolve(const std::wstring& path) {
  std::optional<std::string> found = find(path);
  if (found && !isRegular(*found)) found.reset();
  return found;
}

File openRead(const std::wstring& path) {
  const std::optional<std::string> found = resolve(path);
  return found ? openRead(*found) : nullptr;
}

File openRead(const std::string& path) {
  const int descriptor = openDescriptor(path);
  if (descriptor < 0) return nullptr;
  File file(isRegular(descriptor) ? fdopen(descriptor, "rb") : nullptr);
  if (!file) close(descriptor);
  return file;
}

std::int64_t sizeOf(std::FILE* file) {
  struct stat status;
  return fstat(fileno(file), &status) == 0 ? status.st_size : -1;
}

int _waccess(const wchar_t* path, int mode) {
  if (path == nullptr) return -1;
  if (mode == 0) return find(path) ? 0 : -1;
  // NOLINTNEXTLINE(clang-analyzer-unix.Stream): the unique_ptr closes the file
  return mode == 4 && openRead(path) ? 0 : -1;
}

}  // namespace korvo::os

#endif
