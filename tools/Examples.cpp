#include "tools/Examples.h"

#include <cctype>
#include <set>

#include "tools/Failure.h"
#include "tools/Messages.h"

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

// "TABLE-AC" and "table-ac.def" for table-ac, or letters mistyped.
std::string didYouMean(std::string name) {
  constexpr int kMistypedLetters = 2;
  for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (name.ends_with(".def")) name.resize(name.size() - 4);
  for (const std::string& example : exampleNames()) {
    if (letterDistance(example, name) <= kMistypedLetters) {
      return " (did you mean '" + example + "'?)";
    }
  }
  return "";
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

std::vector<std::string> exampleNames() {
  std::set<std::string> names;
  for (const fs::path& folder : exampleFolders()) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
      if (entry.path().extension() == ".def") names.insert(entry.path().stem().string());
    }
  }
  return {names.begin(), names.end()};
}

std::optional<fs::path> findExample(const std::string& name) {
  if (!isPlainName(name)) return {};
  for (const fs::path& folder : exampleFolders()) {
    std::error_code error;
    fs::path file = folder / (name + ".def");
    if (fs::is_regular_file(file, error)) return file;
  }
  return {};
}

fs::path findMachine(const std::string& name) {
  if (name.empty()) failUsage("a definition file or the name of an example", "''");
  if (name == "-") failUsage("the name of a file: no machine is read from standard input", "'-'");
  std::error_code error;
  const bool isFile = fs::exists(name, error) && !fs::is_directory(name, error);
  const std::optional<fs::path> example = findExample(name);
  if (isFile && example) say("korvo: taking the file " + name + ", not the example of that name");
  if (!isFile && example) return *example;
  if (isFile || fs::exists(name, error) || !isPlainName(name)) return name;
  throw Failure(Exit::refused, name + ": expected a definition file or an example (" +
                                   joined(exampleNames()) + "), found no such file" +
                                   didYouMean(name));
}

}  // namespace korvo::tools
