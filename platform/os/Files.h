#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>

/// What the library asks of the operating system: wide-named files, and names compared ignoring
/// case. On POSIX a wide path is taken as UTF-8; when nothing is there and every character fits one
/// byte, as those bytes (so a name copied byte by byte from a file still opens).
///
/// Paths written on Windows work on POSIX: a path that does not exist as written is tried with "\"
/// as "/", then name by name: each as UTF-8, as bytes, and then ignoring case when exactly one
/// entry fits. So one path may mix both readings. A name that is there as written is taken before
/// those that differ in case.
namespace korvo::os {

/// 0 when `path` names a regular file that opens for reading (mode 4); -1 otherwise.
/// @errors  Modes other than 4 and 0 (exists) give -1. A name that does not convert exactly to the
///          file system's encoding, or that holds a NUL, gives -1. Never throws.
int _waccess(const wchar_t* path, int mode);

/// Below 0, 0 or above 0 as `a` sorts before, with or after `b`, ignoring case by a fixed table
/// (ASCII and Latin-1 letters), whatever the locale. Neither may be null.
int _wcsicmp(const wchar_t* a, const wchar_t* b);

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Opens the regular file at `path` for reading bytes; null when `_waccess(path, 4)` would fail.
/// The descriptor is closed in child programs.
File openRead(const std::wstring& path);

/// The same at exactly this narrow path, with none of the other readings (UTF-8 on Windows).
File openRead(const std::string& path);

/// How many bytes an open regular file has; -1 when the system does not say.
std::int64_t sizeOf(std::FILE* file);

/// The narrow path that `openRead` would open; nothing when there is no such regular file.
std::optional<std::string> resolve(const std::wstring& path);

}  // namespace korvo::os
