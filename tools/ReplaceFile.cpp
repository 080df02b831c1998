#include "tools/ReplaceFile.h"

#include <array>
#include <cstddef>
#include <fstream>

#include "toolkit/export/WholeFile.h"
#include "tools/Failure.h"

namespace fs = std::filesystem;

namespace korvo::tools {

std::string readBytes(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  std::string bytes;
  std::array<char, 65536> block;
  // `read` keeps a failure of the system in the stream; `<< stream.rdbuf()` takes it for the end.
  while (stream.read(block.data(), block.size()) || stream.gcount() > 0) {
    bytes.append(block.data(), static_cast<std::size_t>(stream.gcount()));
  }
  if (!stream.is_open() || stream.bad()) {
    throw Failure(Exit::refused, path.string() + ": expected a readable file");
  }
  return bytes;
}

void replaceFile(const fs::path& path, const std::string& bytes) {
  try {
    WholeFile file(path);
    file.write(bytes);
    file.commit();
  } catch (const WriteError& e) {
    throw Failure(Exit::refused, e.what());
  }
}

}  // namespace korvo::tools
