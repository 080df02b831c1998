#pragma once

#include <filesystem>
#include <string>

namespace korvo {

/// The path as the library wants it. Bytes that are not UTF-8 go one by one, which it undoes.
std::wstring wideOf(const std::filesystem::path& path);

/// The path for messages, in UTF-8 whatever its bytes are.
std::string utf8Of(const std::filesystem::path& path);

}  // namespace korvo
