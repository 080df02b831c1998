#include "toolkit/Machine.h"

#include "toolkit/Path.h"
#include "toolkit/check/Check.h"

namespace korvo {

Machine::Machine(const zkin::KMachine& machine)
    : machine_(machine), names_(std::make_shared<const AxisNames>(machine_)) {}

Position Machine::position(
    std::initializer_list<std::pair<std::string_view, double>> values) const {
  Position result = position();
  for (const auto& [axis, value] : values) result[axis] = value;
  return result;
}

Loaded load(const std::filesystem::path& path, Format format) {
  CheckResult checked = check(path, format);
  Loaded loaded{std::nullopt, checked.format, std::move(checked.diagnostics)};
  if (hasError(loaded.reasons)) return loaded;
  zkin::KMachine machine(wideOf(path).c_str(), loaded.format.version);
  if (machine.readDataFile() != 0) {
    loaded.reasons.push_back({utf8Of(path), 0, 0, "not-loaded", Severity::error,
                              "expected a complete machine, found that the library refused it"});
    return loaded;
  }
  machine.setCurrentTool(1);  // the library leaves it unset, and then most queries answer nothing
  loaded.machine.emplace(std::move(machine));
  return loaded;
}

}  // namespace korvo
