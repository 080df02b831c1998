#include "toolkit/Machine.h"

#include <utility>

#include "toolkit/check/Checking.h"

namespace korvo {

Machine::Machine(const zkin::KMachine& machine)
    : machine_(machine), names_(std::make_shared<const AxisNames>(machine_)) {}

Position Machine::position(
    std::initializer_list<std::pair<std::string_view, double>> values) const {
  Position result = position();
  for (const auto& [axis, value] : values) result[axis] = value;
  return result;
}

Loaded load(const std::filesystem::path& path, Format format, Checks checks, Language language) {
  checking::Checked checked = checking::checkAndLoad(path, format, language, checks);
  return {std::move(checked.machine), checked.result.format, checked.result.likely,
          std::move(checked.result.diagnostics)};
}

}  // namespace korvo
