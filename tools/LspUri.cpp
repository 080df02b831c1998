#include "tools/LspUri.h"

#include <string_view>

namespace korvo::tools {
namespace {

constexpr std::string_view kScheme = "file://";

// -1 for a character that is no hexadecimal digit.
int hexOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

// An escape that is none stays as it is.
std::string unescaped(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isEscape =
        text[i] == '%' && i + 2 < text.size() && hexOf(text[i + 1]) >= 0 && hexOf(text[i + 2]) >= 0;
    out += isEscape ? static_cast<char>(hexOf(text[i + 1]) * 16 + hexOf(text[i + 2])) : text[i];
    if (isEscape) i += 2;
  }
  return out;
}

}  // namespace

std::filesystem::path pathOfUri(const std::string& uri) {
  if (!uri.starts_with(kScheme)) return unescaped(uri.substr(uri.find_last_of("/:") + 1));
  const std::size_t path = uri.find('/', kScheme.size());  // behind the host, which is this one
  if (path == uri.npos) return {};
  std::string name = unescaped(std::string_view(uri).substr(path));
#if defined(_WIN32)
  if (name.size() > 2 && name[2] == ':') name.erase(0, 1);  // "/c:/folder"
#endif
  return name;
}

}  // namespace korvo::tools
