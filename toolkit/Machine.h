#pragma once

#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "kinematics/KMachine.h"
#include "toolkit/Export.h"
#include "toolkit/Format.h"
#include "toolkit/Language.h"
#include "toolkit/Position.h"
#include "toolkit/check/Diagnostic.h"

namespace korvo {

/// A loaded machine: the library's `KMachine` with positions that release themselves.
///
/// `->` and `*` give the machine itself: every query of the library is there. Copies answer alike
/// and share nothing. Do not add elements: the axis names are those of the load.
class KORVO_TOOLKIT_API Machine {
 public:
  explicit Machine(const zkin::KMachine& machine);

  zkin::KMachine* operator->() { return &machine_; }
  const zkin::KMachine* operator->() const { return &machine_; }
  zkin::KMachine& operator*() { return machine_; }
  const zkin::KMachine& operator*() const { return machine_; }

  const AxisNames& axisNames() const { return *names_; }

  Position position() const { return Position(machine_, names_); }  ///< All zero.

  /// Zero but for the named axes, as in `position({{"X", 10.0}, {"C", 90.0}})`. Throws
  /// std::out_of_range for an unknown name.
  Position position(std::initializer_list<std::pair<std::string_view, double>> values) const;

 private:
  zkin::KMachine machine_;
  std::shared_ptr<const AxisNames> names_;
};

/// Which rules a file has to pass before it is loaded.
enum class Checks {
  all,
  endless,  ///< Only those about what would never end, or fill the memory.
};

/// A machine, or the reasons why not.
struct Loaded {
  std::optional<Machine> machine;   ///< Set exactly when the file was accepted.
  FormatChoice format;              ///< The format version taken, and why.
  FormatChoice likely;              ///< The format that the axis lines speak for.
  std::vector<Diagnostic> reasons;  ///< Why there is no machine; warnings and notes when there is.

  explicit operator bool() const { return machine.has_value(); }
};

/// Checks the definition file at `path`, loads it and sets tool 1.
///
/// @errors  Refused, with the reasons: what `check` finds with severity error. A machine given has
///          1 to 12 axes, one frame, one part, a tool; with Checks::endless it has what the library
///          accepts.
KORVO_TOOLKIT_API Loaded load(const std::filesystem::path& path, Format format = Format::automatic,
                              Checks checks = Checks::all, Language language = Language::english);

}  // namespace korvo
