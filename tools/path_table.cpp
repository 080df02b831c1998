#include "tools/path_table.h"

#include <cmath>

#include "tools/Failure.h"
#include "tools/Numbers.h"
#include "tools/TableRun.h"

namespace korvo::tools {
namespace {

constexpr std::size_t kOutBlock = 1 << 18;

WholeFile opened(const std::string& file) try {
  return WholeFile(std::filesystem::path(file));
} catch (const WriteError& e) {
  throw Failure(Exit::refused, e.what());
}

}  // namespace

PathTable::PathTable(const std::string& file, const PathInput& input, const AxisNames& names)
    : input_(input), axes_(static_cast<std::size_t>(names.size())), file_(opened(file)) {
  const char separator = input.separator;
  for (const char* name : {"target", "line", "added", "break", "feed"}) {
    out_ += std::string(out_.empty() ? "" : std::string(1, separator)) + name;
  }
  for (const std::string& name : names.all()) {
    out_ += separator;
    appendNames(out_, {name}, separator);
  }
  out_ += '\n';
}

void PathTable::take(const PathPosition& position) {
  const char separator = input_.separator;
  out_ += std::to_string(position.target + 1) + separator;
  out_ += std::to_string(input_.lineOf(position.target)) + separator;
  out_ += position.isAdded() ? '1' : '0';
  out_ += separator;
  out_ += position.isAfterBreak ? '1' : '0';
  out_ += separator;
  if (std::isinf(position.feed)) {
    out_ += "rapid";
  } else if (position.feed != 0.0) {
    appendExact(out_, position.feed);
  }
  for (std::size_t i = 0; i < axes_; ++i) {
    out_ += separator;
    appendExact(out_, position.values[i]);
  }
  out_ += '\n';
  if (out_.size() >= kOutBlock) flush();
}

void PathTable::flush() {
  file_.write(out_);
  out_.clear();
}

void PathTable::commit() {
  flush();
  try {
    file_.commit();
  } catch (const WriteError& e) {
    throw Failure(Exit::refused, e.what());
  }
}

}  // namespace korvo::tools
