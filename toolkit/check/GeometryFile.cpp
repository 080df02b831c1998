#include "toolkit/check/GeometryFile.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <system_error>

#include "geometry/ZrnFile.h"
#include "platform/zgeo/UTri.h"
#include "toolkit/Text.h"

namespace fs = std::filesystem;

namespace korvo::checking {
namespace {

constexpr std::string_view kFolderBytes = "$ZRN_MACHINE_DEF";

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

bool isSameIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lowered(x) == lowered(y); });
}

// The two ways in which the library reads the characters of a name, the likelier first.
std::vector<std::string> readingsOf(std::wstring_view name) {
  std::vector<std::string> readings{toUtf8(name)};
  if (bytesOf(name) != readings[0]) readings.push_back(bytesOf(name));
  return readings;
}

fs::path pathOf(const std::string& text) {
#if defined(_WIN32)
  return fs::path(toWide(text));
#else
  return fs::path(text);
#endif
}

std::string textOf(const fs::path& path) {
#if defined(_WIN32)
  return toUtf8(path.wstring());
#else
  return path.string();
#endif
}

bool exists(const std::string& path) {
  std::error_code error;
  return fs::exists(pathOf(path), error);
}

bool isFile(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(pathOf(path), error);
}

std::string withSlashes(std::string text) {
  std::replace(text.begin(), text.end(), '\\', '/');
  return text;
}

bool isBody(std::wstring_view name) {
  const std::wstring extension = extensionOf(name);
  return extension == L".stl" || extension == L".zrn";
}

}  // namespace

// --- names

std::wstring extensionOf(std::wstring_view name) {
  const std::size_t slash = name.find_last_of(L"\\/");
  if (slash != std::wstring_view::npos) name.remove_prefix(slash + 1);
  name = name.substr(0, name.find(L':'));
  const std::size_t dot = name.rfind(L'.');
  if (dot == std::wstring_view::npos || dot == 0 || name == L"..") return {};
  std::wstring extension(name.substr(dot));
  for (wchar_t& c : extension) {
    if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c + 32);
  }
  return extension;
}

bool isAbsolute(std::wstring_view name) {
  const auto isLetter = [](wchar_t c) { return (c | 0x20) >= L'a' && (c | 0x20) <= L'z'; };
  if (name.starts_with(L'/') || name.starts_with(L'\\')) return true;
  return name.size() > 1 && name[1] == L':' && isLetter(name[0]);
}

std::string bytesOf(std::wstring_view name) {
  std::string bytes;
  for (const wchar_t c : name) bytes += static_cast<char>(c);
  return bytes;
}

// --- folders

const std::vector<std::string>& GeometryFolders::entries(const std::string& folder) {
  constexpr std::size_t kMostEntries = 2'000;  // of a folder with more, the first are looked at
  const auto [at, isNew] = entries_.try_emplace(folder);
  if (!isNew) return at->second;
  std::error_code error;
  fs::directory_iterator entry(pathOf(folder.empty() ? "." : folder), error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (at->second.size() >= kMostEntries) break;
    at->second.push_back(textOf(entry->path().filename()));
  }
  return at->second;
}

// The path with each name as its folder spells it.
std::optional<std::string> GeometryFolders::spelled(const std::string& path) {
  constexpr std::ptrdiff_t kDeepest = 64;  // each name costs a look at the disk
  if (std::count(path.begin(), path.end(), '/') > kDeepest) return {};
  std::string found;
  std::size_t at = 0;
  while (at < path.size()) {
    const std::size_t end = std::min(path.find('/', at), path.size());
    const std::string name = path.substr(at, end - at);
    if (!name.empty() && exists(found + name)) {
      found += name;
    } else if (!name.empty()) {
      const std::vector<std::string>& all = entries(found);
      const auto fits = [&](const std::string& e) { return isSameIgnoringCase(e, name); };
      if (std::count_if(all.begin(), all.end(), fits) != 1) return {};
      found += *std::find_if(all.begin(), all.end(), fits);
    }
    if (end < path.size()) found += '/';
    at = end + 1;
  }
  return found;
}

std::optional<FoundFile> GeometryFolders::findText(const std::string& text) {
  if (isFile(text)) return FoundFile{pathOf(text)};
  const std::string slashed = withSlashes(text);
  if (isFile(slashed)) return FoundFile{pathOf(slashed)};
  const std::optional<std::string> other = spelled(slashed);
  if (!other || !isFile(*other)) return {};
  return FoundFile{pathOf(*other), *other};
}

std::string GeometryFolders::inFolder(std::string name) const {
  const std::string folder = folder_.empty() ? "." : textOf(folder_);
  for (std::size_t at = name.find(kFolderBytes); at != std::string::npos;
       at = name.find(kFolderBytes, at + folder.size())) {
    name.replace(at, kFolderBytes.size(), folder);
  }
  return name;
}

std::optional<FoundFile> GeometryFolders::find(std::wstring_view name) {
  if (name.find(L'\0') != std::wstring_view::npos) return {};
  for (const std::string& reading : readingsOf(name)) {
    if (auto found = findText(reading)) return found;
  }
  for (const std::string& reading : readingsOf(name)) {
    const std::string text = inFolder(reading);
    std::optional<FoundFile> found = text == reading ? std::nullopt : findText(text);
    if (!found) continue;
    found->isInFolder = true;
    const std::string folder = inFolder(std::string(kFolderBytes));
    if (found->spelled.starts_with(folder)) {
      found->spelled.replace(0, folder.size(), kFolderBytes);
    }
    return found;
  }
  return {};
}

std::optional<fs::path> GeometryFolders::beside(std::wstring_view name) const {
  for (const std::string& reading : readingsOf(name)) {
    fs::path path = folder_ / pathOf(withSlashes(reading));
    if (isFile(textOf(path))) return path;
  }
  return {};
}

std::vector<std::wstring> GeometryFolders::neighbours(std::wstring_view name) {
  const std::string path = withSlashes(inFolder(bytesOf(name)));
  const std::size_t slash = path.rfind('/');
  std::vector<std::wstring> names;
  for (const std::string& entry :
       entries(slash == std::string::npos ? std::string() : path.substr(0, slash + 1))) {
    const std::wstring wide = toWide(entry);
    if (isBody(wide)) names.push_back(wide);
  }
  return names;
}

// --- contents

namespace {

constexpr std::size_t kStlHead = 84;  // of a binary STL: 80 bytes of any text, a count
constexpr std::size_t kStlTriangle = 50;

// How much of a text is looked at for what says that it has triangles.
constexpr std::size_t kTextStart = 1 << 20;

// The first bytes of a file; empty when it cannot be read.
std::string startOf(std::istream& file, std::size_t most) {
  std::string bytes(most, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(most));
  bytes.resize(static_cast<std::size_t>(file.gcount()));
  return bytes;
}

std::uint32_t wordAt(const char* bytes) {
  std::uint32_t word = 0;
  for (int i = 3; i >= 0; --i) word = word << 8 | static_cast<unsigned char>(bytes[i]);
  return word;
}

struct StlHead {
  std::uint64_t size = 0;   ///< Of the file.
  std::uint64_t count = 0;  ///< Of triangles, in a binary one.
  bool isText = false;

  bool isWhole() const { return count > 0 && size >= kStlHead + kStlTriangle * count; }
};

bool beginsWithSolid(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n\xEF\xBB\xBF"), text.size()));
  return isSameIgnoringCase(text.substr(0, 5), "solid");
}

// Some programs begin the header of binary files with "solid" too: then the size decides.
StlHead stlHeadOf(std::string_view bytes, std::uint64_t size) {
  StlHead head{size};
  if (bytes.size() >= kStlHead) head.count = wordAt(bytes.data() + 80);
  const bool isExact = head.count > 0 && size == kStlHead + kStlTriangle * head.count;
  head.isText = beginsWithSolid(bytes) && !isExact;
  return head;
}

BodyContent stlContent(std::string_view bytes, std::uint64_t size) {
  const StlHead head = stlHeadOf(bytes, size);
  if (!head.isText && head.isWhole()) return BodyContent::triangles;
  if (!head.isText) {
    const bool isNone = head.count == 0 && size == kStlHead;
    return isNone ? BodyContent::noTriangles : BodyContent::damaged;
  }
  constexpr std::string_view kFacet = "facet";
  const auto at = std::search(bytes.begin(), bytes.end(), kFacet.begin(), kFacet.end(),
                              [](char a, char b) { return lowered(a) == b; });
  if (at != bytes.end() || bytes.size() < size) return BodyContent::triangles;
  return BodyContent::noTriangles;
}

// The first line of a surface of poles and knots is two counts from 2 up, then its code.
bool isSurfaceHead(const char* line) {
  constexpr long kCode = 9;
  long numbers[3] = {};
  for (long& number : numbers) {
    char* end = nullptr;
    number = std::strtol(line, &end, 10);
    if (end == line) return false;
    line = end;
  }
  return numbers[0] >= 2 && numbers[1] >= 2 && numbers[2] == kCode;
}

BodyContent zrnContent(const std::string& bytes, std::uint64_t size) {
  if (bytes.find('\0') != std::string::npos) return BodyContent::damaged;
  for (std::size_t at = 0; at < bytes.size();) {
    const std::size_t end = std::min(bytes.find('\n', at), bytes.size());
    if (isSurfaceHead(bytes.substr(at, std::min<std::size_t>(end - at, 255)).c_str())) {
      return BodyContent::triangles;
    }
    at = end + 1;
  }
  return bytes.size() < size ? BodyContent::unknown : BodyContent::noTriangles;
}

// A box about points, as far as they are numbers.
struct Box {
  std::array<float, 3> low, high;

  Box() {
    low.fill(std::numeric_limits<float>::infinity());
    high.fill(-std::numeric_limits<float>::infinity());
  }
  void add(std::size_t place, float value) {
    if (!std::isfinite(value)) return;
    low[place] = std::min(low[place], value);
    high[place] = std::max(high[place], value);
  }
  double extent() const {
    double largest = 0.0;
    for (std::size_t i = 0; i < 3; ++i) largest = std::max(largest, double{high[i]} - low[i]);
    return largest;
  }
};

// A normal, then three corners, each three numbers.
void addTriangle(Box& box, const char* bytes) {
  for (std::size_t i = 3; i < 12; ++i) {
    box.add(i % 3, std::bit_cast<float>(wordAt(bytes + 4 * i)));
  }
}

}  // namespace

BodyContent contentOf(const fs::path& path, std::wstring_view extension) {
  std::error_code error;
  const std::uint64_t size = fs::file_size(path, error);
  std::ifstream file(path, std::ios::binary);
  if (error || !file) return BodyContent::unknown;
  if (size == 0) return BodyContent::nothing;
  const std::string bytes = startOf(file, kTextStart);
  return extension == L".stl" ? stlContent(bytes, size) : zrnContent(bytes, size);
}

namespace {

// How many facets a text announces: "facet normal" in small letters.
std::size_t facetsOf(std::string_view text) {
  constexpr std::string_view kFacet = "facet normal";
  std::size_t count = 0;
  for (std::size_t at = text.find(kFacet); at != std::string::npos;
       at = text.find(kFacet, at + kFacet.size())) {
    ++count;
  }
  return count;
}

// A text that was written to its end says so behind its last facet.
bool isCutOff(std::string_view text) {
  const std::size_t end = text.rfind("endsolid");
  const std::size_t last = text.rfind("endfacet");
  return end == std::string_view::npos || (last != std::string_view::npos && end < last);
}

// Of a binary file no facet is lost but those with a corner that is no number.
bool losesFacets(const fs::path& path, std::uint64_t size) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes = startOf(file, size);
  std::vector<zgeo::UTri> triangles;
  zgeo::UTri::_loadSTL(toWide(textOf(path)), triangles);
  const StlHead head = stlHeadOf(bytes, size);
  if (!head.isText) return triangles.size() < head.count;
  std::transform(bytes.begin(), bytes.end(), bytes.begin(), lowered);
  return isCutOff(bytes) || triangles.size() < facetsOf(bytes);
}

bool losesSurfaces(const fs::path& path) {
  bool isLost = false;
  const auto listen = [&isLost](const char* text) {
    isLost = isLost || std::string_view(text).find("could not read") != std::string_view::npos;
  };
  zkin::CGeomFileNodeList nodes;
  double scale = 1.0;
  const int code = zkin::ZRN_LoadFile(textOf(path).c_str(), nodes, scale, nullptr, nullptr, listen);
  return code != 0 || isLost;
}

}  // namespace

bool losesParts(const fs::path& path, std::wstring_view extension) {
  constexpr std::uint64_t kLargest = 64 << 20;
  std::error_code error;
  const std::uint64_t size = fs::file_size(path, error);
  if (error || size > kLargest) return false;
  return extension == L".stl" ? losesFacets(path, size) : losesSurfaces(path);
}

std::optional<double> extentOf(const fs::path& path, double enough) {
  constexpr std::uint64_t kMostTriangles = 100'000;
  std::error_code error;
  const std::uint64_t size = fs::file_size(path, error);
  std::ifstream file(path, std::ios::binary);
  if (error || !file) return {};
  const StlHead head = stlHeadOf(startOf(file, kStlHead), size);
  if (head.isText || !head.isWhole()) return {};
  Box box;
  std::array<char, kStlTriangle> triangle;
  for (std::uint64_t i = 0; i < std::min(head.count, kMostTriangles); ++i) {
    if (!file.read(triangle.data(), kStlTriangle)) return {};
    addTriangle(box, triangle.data());
    if (box.extent() >= enough) return enough;
  }
  return box.extent();
}

}  // namespace korvo::checking
