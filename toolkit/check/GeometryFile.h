#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvo::checking {

/// The word in geometry file names that stands for the folder of the definition file.
inline constexpr std::wstring_view kFolderWord = L"$ZRN_MACHINE_DEF";

/// The extension of a geometry file's name, in lower case: what follows the last dot of the name
/// behind the last "/" or "\", up to a ":". Empty without one, and for a name that is an extension.
std::wstring extensionOf(std::wstring_view name);

/// Whether a name says a place that only one machine has: "/a", "\a", "C:a".
bool isAbsolute(std::wstring_view name);

/// The bytes of a name from a definition file, which is read one byte a character.
std::string bytesOf(std::wstring_view name);

/// Where a geometry file was found.
struct FoundFile {
  std::filesystem::path path;
  std::string spelled{};    ///< The name as the folders spell it; empty when that is as written.
  bool isInFolder = false;  ///< Only with the folder of the definition file for its word.
};

/// Looks for geometry files as the library does, and keeps the lists of the folders it looks into.
class GeometryFolders {
 public:
  explicit GeometryFolders(std::filesystem::path folder) : folder_(std::move(folder)) {}

  /// The regular file that the library opens for a name: as written, with "\" as "/", then with
  /// the names of each folder matched ignoring case when exactly one fits; the same once more with
  /// the folder of the definition file for its word.
  std::optional<FoundFile> find(std::wstring_view name);

  /// The file of that relative name beside the definition file, which the library does not try.
  std::optional<std::filesystem::path> beside(std::wstring_view name) const;

  /// The names of the body files in the folder where a name would be looked for.
  std::vector<std::wstring> neighbours(std::wstring_view name);

 private:
  std::optional<FoundFile> findText(const std::string& text);
  std::optional<std::string> spelled(const std::string& path);
  const std::vector<std::string>& entries(const std::string& folder);
  std::string inFolder(std::string name) const;

  std::filesystem::path folder_;
  std::map<std::string, std::vector<std::string>> entries_;
};

/// What a body file holds, as far as its beginning shows.
enum class BodyContent {
  triangles,
  nothing,      ///< 0 bytes.
  damaged,      ///< Not of the kind that its name says, or cut off.
  noTriangles,  ///< Sound, but with nothing to draw.
  unknown,      ///< It cannot be read, or nothing can be said.
};
BodyContent contentOf(const std::filesystem::path& path, std::wstring_view extension);

/// Whether a file with triangles has more facets or surfaces than can be read: it is cut off in the
/// middle, or numbers in it are spoilt. Reads the whole file; one above 64 MB is left alone.
bool losesParts(const std::filesystem::path& path, std::wstring_view extension);

/// The largest extent of a binary STL's box, or `enough` when it reaches that: the rest is not
/// read, nor what comes after 100,000 triangles. Nothing for other files.
std::optional<double> extentOf(const std::filesystem::path& path, double enough);

}  // namespace korvo::checking
