#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

/// Files that fail while they are read. The streams and reads of this program and of the libraries
/// that it uses come from here (fdopen, fopen, fileno, read are replaced), so nothing but the file
/// named is touched and no privilege is needed.
namespace korvo::test {

struct ReadFault {
  enum Kind {
    none,
    fails,     ///< From byte `at` on the system cannot read (EIO).
    stumbles,  ///< As `fails`, but once only: asked again it goes on behind that place.
    ends,      ///< Nothing comes from byte `at` on, whatever size the file has.
    trickles,  ///< At most `at` bytes come at a time.
    isRefused  ///< It does not open (no descriptors, no memory for the stream).
  };
  Kind kind = none;
  std::uint64_t at = 0;
  int opening = 0;  ///< Which opening of the file since the fault was set, from 1; 0: every one.
};

/// While it lives, the file at `path` is faulty, in all threads. One at a time.
class FaultyFile {
 public:
  /// @param atOpening  Called before each opening with its number.
  FaultyFile(const std::filesystem::path& path, const ReadFault& fault,
             std::function<void(int)> atOpening = {});
  ~FaultyFile();
  FaultyFile(const FaultyFile&) = delete;
  FaultyFile& operator=(const FaultyFile&) = delete;

  static int openings();  ///< How often the file was opened.
  static int injected();  ///< How often the fault showed.
};

/// Descriptors that this program has open.
int openDescriptors();

}  // namespace korvo::test
