#include "tests/faults/FaultyFile.h"

#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>

namespace korvo::test {
namespace {

/// The fault that is set. Plain data: it is looked at before constructors have run.
struct Present {
  bool isSet = false;
  const char* path = nullptr;
  ReadFault fault;
  int openings = 0;
  int injected = 0;
};
Present present;
std::string path;
std::function<void(int)> tell;

/// A descriptor of the faulty file that reads as the fault says.
struct Source {
  int descriptor = -1;
  std::FILE* stream = nullptr;  ///< Null where the reader has the descriptor alone.
  bool isFaulty = false;
  bool hasStumbled = false;
};
std::array<Source, 16> sources;

Source* sourceOf(int descriptor) {
  for (Source& source : sources) {
    if (descriptor >= 0 && source.descriptor == descriptor) return &source;
  }
  return nullptr;
}

Source* sourceOf(const std::FILE* stream) {
  for (Source& source : sources) {
    if (stream != nullptr && source.stream == stream) return &source;
  }
  return nullptr;
}

Source& newSource(int descriptor) {
  for (Source& source : sources) {
    if (source.descriptor >= 0) continue;
    source = {descriptor, nullptr, false, false};
    return source;
  }
  std::abort();
}

template <class Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

ssize_t systemRead(int descriptor, void* to, std::size_t size) {
  return syscall(SYS_read, descriptor, to, size);
}

bool isSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool isFaultyFile(int descriptor) {
  struct stat mine, its;
  if (!present.isSet || stat(present.path, &mine) != 0) return false;
  return fstat(descriptor, &its) == 0 && isSameFile(mine, its);
}

/// Whether the opening that begins now is a faulty one.
bool countOpening() {
  ++present.openings;
  if (tell) tell(present.openings);
  return present.fault.opening == 0 || present.fault.opening == present.openings;
}

ssize_t failed() {
  ++present.injected;
  errno = EIO;
  return -1;
}

/// How many of `size` bytes from `place` come; nothing when the read fails.
std::optional<std::size_t> allowed(Source& source, std::uint64_t place, std::size_t size) {
  const ReadFault& fault = present.fault;
  if (!present.isSet || !source.isFaulty || fault.kind == ReadFault::none) return size;
  if (fault.kind == ReadFault::trickles) {
    present.injected += size > fault.at;
    return std::min<std::uint64_t>(size, fault.at);
  }
  if (source.hasStumbled) return size;
  const std::uint64_t before = fault.at - std::min(fault.at, place);
  if (before > 0) return std::min<std::uint64_t>(size, before);
  if (fault.kind == ReadFault::ends) {
    ++present.injected;
    return 0;
  }
  source.hasStumbled = fault.kind == ReadFault::stumbles;
  return std::nullopt;
}

ssize_t faultyRead(Source& source, void* to, std::size_t size) {
  const off_t place = lseek(source.descriptor, 0, SEEK_CUR);
  const std::optional<std::size_t> wanted =
      allowed(source, static_cast<std::uint64_t>(place), size);
  return wanted ? systemRead(source.descriptor, to, *wanted) : failed();
}

// --- a stream over a source

ssize_t readCookie(void* cookie, char* to, std::size_t size) {
  return faultyRead(*static_cast<Source*>(cookie), to, size);
}

int seekCookie(void* cookie, off64_t* place, int whence) {
  const off_t there = lseek(static_cast<Source*>(cookie)->descriptor, *place, whence);
  if (there < 0) return -1;
  *place = there;
  return 0;
}

int closeCookie(void* cookie) {
  Source& source = *static_cast<Source*>(cookie);
  const int descriptor = std::exchange(source.descriptor, -1);
  source.stream = nullptr;
  return close(descriptor);
}

std::FILE* faultyStream(int descriptor) {
  const bool isFaulty = countOpening();
  if (isFaulty && present.fault.kind == ReadFault::isRefused) {
    ++present.injected;
    errno = EMFILE;
    return nullptr;
  }
  Source& source = newSource(descriptor);
  source.isFaulty = isFaulty;
  source.stream = fopencookie(&source, "rb", {readCookie, nullptr, seekCookie, closeCookie});
  return source.stream;
}

std::FILE* openStream(const char* name, const char* mode, const char* function) {
  std::FILE* const stream = next<std::FILE*(const char*, const char*)>(function)(name, mode);
  if (!present.isSet || stream == nullptr || !isFaultyFile(fileno(stream))) return stream;
  const int descriptor = dup(fileno(stream));
  std::fclose(stream);
  std::FILE* const faulty = faultyStream(descriptor);
  if (faulty == nullptr) close(descriptor);
  return faulty;
}

}  // namespace

FaultyFile::FaultyFile(const std::filesystem::path& file, const ReadFault& fault,
                       std::function<void(int)> atOpening) {
  path = file.string();
  tell = std::move(atOpening);
  present = {true, path.c_str(), fault, 0, 0};
}

FaultyFile::~FaultyFile() {
  present.isSet = false;
  tell = nullptr;
}

int FaultyFile::openings() { return present.openings; }
int FaultyFile::injected() { return present.injected; }

int openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<int>(std::distance(begin(all), end(all)));
}

}  // namespace korvo::test

using namespace korvo::test;  // NOLINT: what follows has to be global

extern "C" [[gnu::visibility("default")]] std::FILE* fdopen(int descriptor,
                                                            const char* mode) noexcept {
  if (isFaultyFile(descriptor)) return faultyStream(descriptor);
  return next<std::FILE*(int, const char*)>("fdopen")(descriptor, mode);
}

extern "C" [[gnu::visibility("default")]] std::FILE* fopen(const char* name, const char* mode) {
  return openStream(name, mode, "fopen");
}

// A reader by this name is the standard library's file stream, which reads from the descriptor.
extern "C" [[gnu::visibility("default")]] std::FILE* fopen64(const char* name, const char* mode) {
  return openStream(name, mode, "fopen64");
}

extern "C" [[gnu::visibility("default")]] int fileno(std::FILE* stream) noexcept {
  const Source* const source = sourceOf(stream);
  return source ? source->descriptor : next<int(std::FILE*)>("fileno")(stream);
}

extern "C" [[gnu::visibility("default")]] ssize_t read(int descriptor, void* to, std::size_t size) {
  Source* const source = sourceOf(descriptor);
  return source ? faultyRead(*source, to, size) : systemRead(descriptor, to, size);
}
