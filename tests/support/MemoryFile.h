#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <string>

namespace korvo::test {

/// A file in memory with a path of its own; gone with the object.
class MemoryFile {
 public:
  MemoryFile(const void* data, std::size_t size) : descriptor_(memfd_create("korvo", 0)) {
    if (descriptor_ < 0 || write(descriptor_, data, size) != static_cast<ssize_t>(size))
      std::abort();
  }
  explicit MemoryFile(const std::string& bytes) : MemoryFile(bytes.data(), bytes.size()) {}
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

}  // namespace korvo::test
