#pragma once

#include <unistd.h>

#include <array>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace korvo::test {

/// Sets a locale whose decimal point is a comma and whose thousands are grouped by points, as long
/// as the object lives; then that of before is back. It brings that locale along (the C library's
/// file of one category), so no machine needs to have one installed; a test asks `isSet()` first.
class CommaLocale {
 public:
  CommaLocale() {
    if (const char* path = std::getenv("LOCPATH")) formerPath_ = path;
    writeNumericCategory();
    setenv("LOCPATH", root_.c_str(), 1);
    isSet_ = std::setlocale(LC_NUMERIC, kName) != nullptr && std::strtod("1,5", nullptr) == 1.5;
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;
  ~CommaLocale() {
    formerPath_ ? setenv("LOCPATH", formerPath_->c_str(), 1) : unsetenv("LOCPATH");
    std::setlocale(LC_NUMERIC, former_.c_str());  // found by the former path
    std::error_code ignored;
    std::filesystem::remove_all(root_, ignored);
  }

  bool isSet() const { return isSet_; }

 private:
  static constexpr const char* kName = "korvo_comma";

  /// glibc's layout: magic number of the category, number of fields, their offsets, the fields
  /// (point, separator, grouping, both characters as wide ones, name of the character set).
  void writeNumericCategory() const {
    constexpr std::uint32_t kMagic = 0x20031115 ^ LC_NUMERIC;
    constexpr std::array<std::uint32_t, 8> kHeader{kMagic, 6, 32, 34, 36, 40, 44, 48};
    constexpr std::string_view kTexts{",\0.\0\3\3\0\0", 8};
    constexpr std::array<std::uint32_t, 2> kWide{',', '.'};
    constexpr std::string_view kCharset{"ANSI_X3.4-1968\0", 15};
    const std::filesystem::path folder = root_ / kName;
    std::filesystem::create_directories(folder);
    std::FILE* file = std::fopen((folder / "LC_NUMERIC").c_str(), "wb");
    if (file == nullptr) return;
    std::fwrite(kHeader.data(), sizeof kHeader, 1, file);
    std::fwrite(kTexts.data(), kTexts.size(), 1, file);
    std::fwrite(kWide.data(), sizeof kWide, 1, file);
    std::fwrite(kCharset.data(), kCharset.size(), 1, file);
    std::fclose(file);
  }

  std::filesystem::path root_ =
      std::filesystem::temp_directory_path() / ("korvo_locale_" + std::to_string(getpid()));
  std::string former_ = std::setlocale(LC_NUMERIC, nullptr);
  std::optional<std::string> formerPath_;
  bool isSet_ = false;
};

}  // namespace korvo::test
