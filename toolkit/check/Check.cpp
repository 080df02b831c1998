#include "toolkit/check/Check.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

#include "toolkit/Path.h"
#include "toolkit/check/Document.h"
#include "toolkit/check/FormatGuess.h"
#include "toolkit/check/Links.h"
#include "toolkit/check/rules.h"

namespace korvo {
namespace {

std::vector<Diagnostic> applyRules(const std::string& file, const checking::Source& source) {
  std::vector<Diagnostic> diagnostics;
  for (const checking::Rule& rule : checking::rules()) {
    for (const checking::Finding& finding : rule.find(source)) {
      diagnostics.push_back({file, finding.line, finding.column, rule.code, rule.severity,
                             std::string(rule.wanted) + ", found " + finding.found});
    }
  }
  return diagnostics;
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

// Of what openRead does not open.
const char* whatIsThere(const std::filesystem::path& path) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (error == std::errc::permission_denied) return "no permission";
  if (!std::filesystem::exists(status)) return "none";
  if (std::filesystem::is_directory(status)) return "a folder";
  return std::filesystem::is_regular_file(status) ? "no permission" : "a pipe or a device";
}

File openRead(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error)) return nullptr;  // a pipe would block
#if defined(_WIN32)
  return File(_wfopen(path.c_str(), L"rb"));
#else
  return File(std::fopen(path.c_str(), "rbe"));
#endif
}

}  // namespace

CheckResult check(const std::filesystem::path& path, Format format) {
  const std::string name = utf8Of(path);
  const File file = openRead(path);
  if (!file) {
    return {{},
            {{name, 0, 0, "file-unreadable", Severity::error,
              std::string("expected a readable file, found ") + whatIsThere(path)}}};
  }
  const checking::Document document = checking::readDocument(file.get());
  const FormatChoice choice = checking::chooseFormat(document, format);
  const checking::LinkedElements linked = checking::linkElements(document, choice.version);
  return {choice, applyRules(name, {document, linked})};
}

}  // namespace korvo
