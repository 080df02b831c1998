#pragma once

#include <filesystem>
#include <string>

namespace korvo::tools {

/// Tells where this program is, for the examples installed beside it. Called once, by main.
void setProgramPath(const char* argv0);

/// The definition file meant by `name`: the file of that path, else the example of that name (with
/// or without ".def") of the installation, else of the source tree. Throws Failure (refused).
std::filesystem::path findMachine(const std::string& name);

}  // namespace korvo::tools
