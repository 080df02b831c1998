// Loading STL files. Binary, two million triangles: against mapping the file and copying its floats
// into fresh doubles, 0.6 of that speed is wanted. ASCII: against assimp, twice its speed is
// wanted, and against a bare loop of std::from_chars over the mapped file. Each round runs all of
// them, one after the other; medians. Then the peak memory of a program that loads a file of 100
// MB: at most 16 MB above the triangles themselves is wanted.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <assimp/scene.h>
#include <algorithm>
#include <assimp/Importer.hpp>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "platform/zgeo/UTri.h"

namespace {

using zgeo::UTri;

constexpr std::uint32_t kBinary = 2'000'000, kText = 400'000;
constexpr int kRounds = 9;

double sink = 0;  ///< Takes something of every result, so that no work is left out.

// --- The files

/// Corners of one triangle after the other, all over a machine's body, in tenths of micrometres.
class Corners {
 public:
  void next(float (&x)[9]) {
    for (float& value : x) {
      value = static_cast<float>(static_cast<std::int32_t>(random_() % 20'000'000) - 10'000'000) *
              1e-4f;
    }
  }

 private:
  std::mt19937 random_{1};
};

void writeBinary(const std::string& path, std::uint32_t count) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  const char header[80] = {};
  std::fwrite(header, sizeof header, 1, file);
  std::fwrite(&count, sizeof count, 1, file);
  Corners corners;
  char record[50] = {};
  for (std::uint32_t i = 0; i < count; ++i) {
    float x[9];
    corners.next(x);
    std::memcpy(record + 12, x, sizeof x);
    std::fwrite(record, sizeof record, 1, file);
  }
  std::fclose(file);
}

void writeText(const std::string& path, std::uint32_t count) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  std::fputs("solid body\n", file);
  Corners corners;
  for (std::uint32_t i = 0; i < count; ++i) {
    float x[9];
    corners.next(x);
    std::fputs("  facet normal 0.000000e+00 0.000000e+00 1.000000e+00\n    outer loop\n", file);
    for (const float* p = x; p != x + 9; p += 3) {
      std::fprintf(file, "      vertex %e %e %e\n", double{p[0]}, double{p[1]}, double{p[2]});
    }
    std::fputs("    endloop\n  endfacet\n", file);
  }
  std::fputs("endsolid body\n", file);
  std::fclose(file);
}

class Mapped {
 public:
  explicit Mapped(const std::string& path) : descriptor_(open(path.c_str(), O_RDONLY)) {
    if (descriptor_ < 0) std::abort();
    struct stat status{};
    fstat(descriptor_, &status);
    size_ = static_cast<std::size_t>(status.st_size);
    begin_ = static_cast<const char*>(mmap(nullptr, size_, PROT_READ, MAP_PRIVATE, descriptor_, 0));
    if (begin_ == MAP_FAILED) std::abort();
  }
  ~Mapped() {
    munmap(const_cast<char*>(begin_), size_);
    close(descriptor_);
  }
  Mapped(const Mapped&) = delete;
  Mapped& operator=(const Mapped&) = delete;

  const char* begin() const { return begin_; }
  const char* end() const { return begin_ + size_; }

 private:
  int descriptor_;
  std::size_t size_ = 0;
  const char* begin_ = nullptr;
};

// --- What is compared

void loadOurs(const std::string& path) {
  std::vector<UTri> out;
  if (UTri::_loadSTL(std::wstring(path.begin(), path.end()), out) != 0) std::abort();
  sink += out.back().p[2].z;
}

void mapAndCopy(const std::string& path) {
  const Mapped file(path);
  const std::size_t count = static_cast<std::size_t>(file.end() - file.begin() - 84) / 50;
  const auto doubles = std::make_unique_for_overwrite<double[]>(9 * count);
  const char* record = file.begin() + 84;
  for (double* out = doubles.get(); out != doubles.get() + 9 * count; out += 9, record += 50) {
    float x[9];
    std::memcpy(x, record + 12, sizeof x);
    std::copy(x, x + 9, out);
  }
  sink += doubles[9 * count - 1];
}

/// Every number of the file, normals too, and nothing but the numbers.
void scanNumbers(const std::string& path) {
  const Mapped file(path);
  std::vector<double> numbers;
  for (const char* at = file.begin(); at != file.end();) {
    double value = 0;
    const auto [end, error] = std::from_chars(at, file.end(), value);
    const bool isNumber = error == std::errc{};
    if (isNumber) numbers.push_back(value);
    at = isNumber ? end : at + 1;
  }
  sink += numbers.back();
}

void loadAssimp(const std::string& path) {
  Assimp::Importer importer;
  const aiScene* scene = importer.ReadFile(path, 0);
  if (scene == nullptr) std::abort();
  sink += static_cast<double>(scene->mMeshes[0]->mNumFaces);
}

template <typename Work>
double secondsOf(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + std::ssize(values) / 2, values.end());
  return values[values.size() / 2];
}

struct Way {
  const char* name;
  void (*run)(const std::string&);
  std::vector<double> seconds = {};
  std::vector<double> ratio = {};  ///< Its time over that of the first way, round by round.
};

void compare(const std::string& path, std::vector<Way> ways) {
  const double megabytes = static_cast<double>(std::filesystem::file_size(path)) * 1e-6;
  for (int round = 0; round <= kRounds; ++round) {
    for (Way& way : ways) way.seconds.push_back(secondsOf([&] { way.run(path); }));
    if (round == 0) {  // the file comes into memory
      for (Way& way : ways) way.seconds.clear();
      continue;
    }
    for (Way& way : ways) way.ratio.push_back(way.seconds.back() / ways[0].seconds.back());
  }
  for (const Way& way : ways) {
    const double seconds = median(way.seconds);
    std::printf("  %-22s %7.1f ms %7.0f MB/s, its time over ours %.2f\n", way.name, seconds * 1e3,
                megabytes / seconds, median(way.ratio));
  }
}

// --- Peak memory, in a program of its own

long peakKilobytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

int printPeak(const std::string& path) {
  std::vector<UTri> out;
  if (UTri::_loadSTL(std::wstring(path.begin(), path.end()), out) != 0) return 1;
  const double triangles = static_cast<double>(out.size() * sizeof(UTri)) * 0x1p-20;
  const double peak = static_cast<double>(peakKilobytes()) * 0x1p-10;
  std::printf("  peak %.1f MiB in all, triangles %.1f MiB, above them %.1f MiB\n", peak, triangles,
              peak - triangles);
  return 0;
}

void runPeak(const char* form, const std::string& path) {
  std::printf("Peak memory, %s, %.0f MB:\n", form,
              static_cast<double>(std::filesystem::file_size(path)) * 1e-6);
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    execl("/proc/self/exe", "stl_load", path.c_str(), nullptr);
    _exit(127);
  }
  waitpid(child, nullptr, 0);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2) return printPeak(argv[1]);
  const std::string folder = std::filesystem::temp_directory_path().string() + "/korvo_stl_";
  const std::string binary = folder + std::to_string(getpid()) + "_binary.stl",
                    text = folder + std::to_string(getpid()) + "_text.stl";
  writeBinary(binary, kBinary);
  writeText(text, kText);
  std::printf("Binary, %u triangles:\n", kBinary);
  compare(binary, {{"ours", loadOurs}, {"map and copy", mapAndCopy}});
  std::printf("ASCII, %u triangles:\n", kText);
  compare(text, {{"ours", loadOurs}, {"std::from_chars", scanNumbers}, {"assimp", loadAssimp}});
  runPeak("binary", binary);
  runPeak("ASCII", text);
  std::filesystem::remove(binary);
  std::filesystem::remove(text);
  return sink == 0.5;
}
