#include "tools/Examples.h"

#include <algorithm>
#include <set>
#include <vector>

#include "tools/Failure.h"

namespace fs = std::filesystem;

namespace korvo::tools {
namespace {

fs::path& programFolder() {
  static fs::path folder;
  return folder;
}

std::vector<fs::path> exampleFolders() {
  return {programFolder() / KORVO_INSTALLED_EXAMPLES, KORVO_SOURCE_EXAMPLES};
}

std::string exampleNames() {
  std::set<std::string> names;
  for (const fs::path& folder : exampleFolders()) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
      if (entry.path().extension() == ".def") names.insert(entry.path().stem().string());
    }
  }
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return list.empty() ? "none installed" : list;
}

bool isPlainName(const std::string& name) {
  return !name.empty() && name.find_first_of("/\\") == std::string::npos;
}

}  // namespace

void setProgramPath(const char* argv0) {
  std::error_code error;
  fs::path program = fs::read_symlink("/proc/self/exe", error);
  if (error) program = fs::absolute(argv0 ? argv0 : "", error);
  programFolder() = program.parent_path();
}

fs::path findMachine(const std::string& name) {
  std::error_code error;
  if (fs::exists(name, error) || !isPlainName(name)) return name;
  for (const fs::path& folder : exampleFolders()) {
    for (const char* ending : {".def", ""}) {
      const fs::path file = folder / (name + ending);
      if (fs::is_regular_file(file, error)) return file;
    }
  }
  throw Failure(Exit::refused, name + ": expected a definition file or an example (" +
                                   exampleNames() + "), found no such file");
}

}  // namespace korvo::tools
