#pragma once

#include <filesystem>
#include <string>

namespace korvo::tools {

/// The path that a document's URI names: of "file:" URIs with "%20" and the like resolved, of
/// others (a document that has no file yet) the last part of the name.
std::filesystem::path pathOfUri(const std::string& uri);

}  // namespace korvo::tools
