#pragma once

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include "toolkit/Export.h"

namespace korvo {

/// Why a file could not be written, for people: "path: expected ..., found ...".
class KORVO_TOOLKIT_API WriteError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A file that appears whole or not at all: it is written beside its place and takes it in the end.
///
/// Permissions of a file that is replaced stay, and a link stays one: the file it leads to is
/// replaced. What is no regular file, or may only be read, is none of ours to replace, nor is a
/// link to none or to an open stream (/dev/stdout).
class KORVO_TOOLKIT_API WholeFile {
 public:
  /// Throws WriteError when no file can be written there.
  explicit WholeFile(const std::filesystem::path& path);
  ~WholeFile();  ///< Without `commit` everything is as it was.
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  /// Appends. A failure shows in `commit`.
  void write(std::string_view bytes);

  /// Writes over the beginning, once all else is written. A failure shows in `commit`.
  void overwriteStart(std::string_view bytes);

  /// Where the bytes are until `commit`: what is left when the program is ended before.
  const std::filesystem::path& temporary() const { return temporary_; }

  /// Ends the file and puts it in its place. Throws WriteError when not all of it could be written.
  void commit();

 private:
  void close();

  std::filesystem::path target_;
  std::filesystem::path temporary_;
  std::FILE* file_ = nullptr;
  bool isWhole_ = true;
};

}  // namespace korvo
