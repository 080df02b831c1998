#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace korvo::tools {

/// Tells where this program is, for the examples installed beside it. Called once, by main.
void setProgramPath(const char* argv0);

/// Names of the example machines, sorted.
std::vector<std::string> exampleNames();

/// The file of the example of that name (without ".def"): of the installation, else of the source
/// tree; nothing when there is none.
std::optional<std::filesystem::path> findExample(const std::string& name);

/// The definition file meant by `name`: the file of that path, else the example of that name. Says
/// so when both exist. Throws Failure.
std::filesystem::path findMachine(const std::string& name);

}  // namespace korvo::tools
