#pragma once

#include <filesystem>
#include <string>

namespace korvo::tools {

/// The bytes of a file, all of them: a read that fails on the way throws Failure.
std::string readBytes(const std::filesystem::path& path);

/// Gives the file at `path` the content `bytes`, or leaves it as it is: a file beside it is written
/// and takes its place. Permissions stay, and a link stays one: the file it leads to is replaced.
/// Throws Failure; a file that may not be written is none of ours to replace.
void replaceFile(const std::filesystem::path& path, const std::string& bytes);

}  // namespace korvo::tools
