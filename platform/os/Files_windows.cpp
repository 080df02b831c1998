#ifdef _WIN32

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include "platform/os/Files.h"
#include "platform/os/Names.h"

namespace korvo::os {
namespace {

bool exists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

/// A handle to the disk file at `path`: no folder (that does not open), no device, no pipe.
HANDLE openDiskFile(const std::wstring& path) {
  constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE handle = CreateFileW(path.c_str(), GENERIC_READ, kShare, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE || GetFileType(handle) == FILE_TYPE_DISK) return handle;
  CloseHandle(handle);
  return INVALID_HANDLE_VALUE;
}

bool holdsNul(const std::wstring& path) { return path.find(L'\0') != std::wstring::npos; }

}  // namespace

// Windows itself takes both separators and ignores case: a path is used as it is written.
File openRead(const std::wstring& path) {
  if (holdsNul(path)) return nullptr;
  const HANDLE handle = openDiskFile(path);
  if (handle == INVALID_HANDLE_VALUE) return nullptr;
  const int descriptor =
      _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
  if (descriptor < 0) {
    CloseHandle(handle);
    return nullptr;
  }
  File file(_fdopen(descriptor, "rb"));
  if (!file) _close(descriptor);
  return file;
}

std::int64_t sizeOf(std::FILE* file) { return _filelengthi64(_fileno(file)); }

File openRead(const std::string& path) { return openRead(charactersOf(path)); }

std::optional<std::string> resolve(const std::wstring& path) {
  if (!openRead(path)) return std::nullopt;
  const int wide = static_cast<int>(path.size());
  const auto convert = [&](char* out, int room) {
    return WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, path.data(), wide, out, room, nullptr,
                               nullptr);
  };
  const int length = convert(nullptr, 0);
  if (length <= 0) return std::nullopt;
  std::string narrow(static_cast<std::size_t>(length), '\0');
  convert(narrow.data(), length);
  return narrow;
}

int _waccess(const wchar_t* path, int mode) {
  if (path == nullptr) return -1;
  if (mode == 0) return exists(path) ? 0 : -1;
  return mode == 4 && openRead(path) ? 0 : -1;
}

}  // namespace korvo::os

#endif
