#ifndef KORVO_SANITIZED  // sanitizers keep books of their own on every byte

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>

#include "tests/zgeo/StlFiles.h"

namespace zgeo {
namespace {

using korvo::test::TempDir;

constexpr long kAllowed = 16 << 10;  ///< KiB above the triangles themselves.

long residentKib() {
  long total = 0, resident = 0;
  std::FILE* const file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr || std::fscanf(file, "%ld %ld", &total, &resident) != 2) resident = 0;
  if (file != nullptr) std::fclose(file);
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

/// KiB that loading took at its peak above what the triangles take; negative when it did not load
/// as many triangles as wanted. Called in a process of its own, whose peak starts where it is.
long excess(const std::wstring& path, std::size_t count) {
  const long before = residentKib();
  std::vector<UTri> out;
  if (UTri::_loadSTL(path, out) != UTri::STL_LOADED || out.size() != count) return -1;
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return std::max(0L, usage.ru_maxrss - before - static_cast<long>(count * sizeof(UTri) / 1024));
}

/// The same from a child, in MiB, rounded up; 255 when it did not load.
int excessInChild(const std::wstring& path, std::size_t count) {
  const pid_t child = fork();
  if (child == 0) {
    const long kib = excess(path, count);
    _exit(kib < 0 ? 255 : static_cast<int>(std::min(254L, (kib + 1023) / 1024)));
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 255;
}

/// Writes `head`, then `part` so many times.
std::wstring writeLarge(const TempDir& folder, const std::string& head, const std::string& part,
                        std::size_t times) {
  const auto path = folder.write("large.stl", head);
  std::string block;
  for (int i = 0; i < 1000; ++i) block += part;
  std::ofstream out(path, std::ios::binary | std::ios::app);
  for (std::size_t i = 0; i < times / 1000; ++i) out << block;
  return test::wide(path);
}

TEST(StlMemory, OfABinaryFileOf100MegabytesIsItsTriangles) {
  const TempDir folder;
  constexpr std::uint32_t kCount = 2'000'000;
  const std::wstring path =
      writeLarge(folder, test::binary({}, kCount), test::record(test::kA), kCount);
  EXPECT_LE(excessInChild(path, kCount), kAllowed / 1024);
}

TEST(StlMemory, OfATextOf100MegabytesIsItsTriangles) {
  const TempDir folder;
  constexpr std::size_t kCount = 1'000'000;  // of 108 bytes, so that the triangles weigh most
  const std::wstring path =
      writeLarge(folder, "solid\n",
                 "facet normal 0 0 1\nouter loop\nvertex 1 2 3\nvertex 4 5 6\nvertex 7 8 9\n"
                 "endloop\nendfacet\n        ",
                 kCount);
  EXPECT_LE(excessInChild(path, kCount), kAllowed / 1024);
}

TEST(StlMemory, OfATextWithoutTrianglesIsNone) {
  const TempDir folder;
  const std::wstring path =
      writeLarge(folder, "solid\nendsolid\nsolid ", std::string(100, 'x'), 1'000'000);
  EXPECT_LE(excessInChild(path, 0), kAllowed / 1024);
}

}  // namespace
}  // namespace zgeo

#endif
