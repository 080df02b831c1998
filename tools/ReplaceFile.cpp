#include "tools/ReplaceFile.h"

#include <fstream>
#include <sstream>

#include "toolkit/export/WholeFile.h"
#include "tools/Failure.h"

namespace fs = std::filesystem;

namespace korvo::tools {

std::string readBytes(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream bytes;
  if (stream.peek() != std::ifstream::traits_type::eof()) bytes << stream.rdbuf();
  if (!stream.is_open() || stream.bad()) {
    throw Failure(Exit::refused, path.string() + ": expected a readable file");
  }
  return bytes.str();
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
