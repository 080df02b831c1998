#include "tools/CheckJson.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "tools/Session.h"

using nlohmann::json;

namespace korvo::tools {
namespace {

json fixJson(const std::optional<Fix>& fix) {
  if (!fix) return nullptr;
  return {
      {"line", fix->line}, {"column", fix->column}, {"length", fix->length}, {"text", fix->text}};
}

json diagnosticJson(const Diagnostic& d) {
  return {{"file", d.file},          {"line", d.line},
          {"column", d.column},      {"length", d.length},
          {"code", d.code},          {"severity", toString(d.severity)},
          {"text", d.text},          {"suggestion", d.suggestion},
          {"source", d.source},      {"fix", fixJson(d.fix)},
          {"isEndless", d.isEndless}};
}

json fileJson(const CheckedFile& file) {
  json diagnostics = json::array();
  for (const Diagnostic& d : file.result.diagnostics) diagnostics.push_back(diagnosticJson(d));
  return {{"file", file.name},
          {"format", file.result.format.version},
          {"formatReason", file.result.format.reason},
          {"likelyFormat", file.result.likely.version},
          {"diagnostics", std::move(diagnostics)}};
}

}  // namespace

json checkJson(const std::vector<CheckedFile>& files, Language language) {
  const Counts counts = countsOf(files);
  json list = json::array();
  for (const CheckedFile& file : files) list.push_back(fileJson(file));
  return {{"schema", "korvo.check/1"}, {"units", unitsJson()},        {"language", tagOf(language)},
          {"errors", counts.errors},   {"warnings", counts.warnings}, {"notes", counts.notes},
          {"fixes", counts.fixes},     {"files", std::move(list)}};
}

}  // namespace korvo::tools
