// Runs a fuzz target once on each file given, and on each file of each folder given.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

namespace fs = std::filesystem;

void run(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(in), {}};
  LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

int runAll(const fs::path& path) {
  if (!fs::is_directory(path)) return run(path), 1;
  int count = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
    if (entry.is_regular_file()) run(entry.path()), ++count;
  }
  return count;
}

}  // namespace

int main(int argc, char** argv) {
  int count = 0;
  for (int i = 1; i < argc; ++i) count += runAll(argv[i]);
  std::printf("%d inputs\n", count);
  return count > 0 ? 0 : 2;  // a folder without inputs would be a test that tests nothing
}
