#include "toolkit/Path.h"

#include "toolkit/Text.h"

namespace korvo {

std::wstring wideOf(const std::filesystem::path& path) {
#if defined(_WIN32)
  return path.wstring();
#else
  return toWide(path.string());
#endif
}

std::string utf8Of(const std::filesystem::path& path) {
#if defined(_WIN32)
  return toUtf8(path.wstring());
#else
  return shownText(path.string());
#endif
}

}  // namespace korvo
