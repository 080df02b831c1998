// A whole toolpath in APT text, line by line. Every target is finite, has a direction and one line
// of the text, in order; a problem lies within its line; and read again it is the same.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

#include "toolkit/path/Apt.h"

namespace {

using korvo::AptProblem;
using korvo::PathTarget;
using zgeo::UVec3d;

void require(bool holds) {
  if (!holds) std::abort();
}

bool isFinite(const UVec3d& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

void checkTarget(const PathTarget& t) {
  require(isFinite(t.target.tip) && isFinite(t.target.direction));
  require(t.target.direction != UVec3d());
  require(t.feed >= 0);
}

struct Read {
  std::size_t targets = 0;
  int line = 0;
  std::optional<AptProblem> problem;
};

Read read(const std::vector<std::string_view>& lines) {
  Read all;
  korvo::AptReader reader([&all](const PathTarget& target, int line) {
    checkTarget(target);
    require(line > all.line);
    all.line = line;
    ++all.targets;
  });
  for (const std::string_view line : lines) {
    all.problem = reader.line(line);
    if (all.problem) break;
  }
  if (!all.problem) all.problem = reader.end();
  require(reader.skipped().size() <= 101);
  return all;
}

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = text.find('\n', begin);
    lines.push_back(text.substr(begin, end - begin));
    if (end == std::string_view::npos) break;
    begin = end + 1;
  }
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<std::string_view> lines = linesOf({reinterpret_cast<const char*>(data), size});
  const Read once = read(lines), again = read(lines);
  require(once.targets == again.targets && once.problem.has_value() == again.problem.has_value());
  if (const auto& problem = once.problem) {
    require(problem->line >= 1 && static_cast<std::size_t>(problem->line) <= lines.size());
    const std::string_view line = lines[static_cast<std::size_t>(problem->line) - 1];
    require(problem->column >= 1 && static_cast<std::size_t>(problem->column) <= line.size() + 1);
    require(!problem->text.empty());
  }
  return 0;
}
