#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>

#include "kinematics/KMachine.h"
#include "tools/Engine.h"
#include "tools/Options.h"

namespace korvo::tools {

/// What `korvo forward` was asked.
struct ForwardOptions {
  CommonOptions common;
  std::optional<std::string> at;
  std::optional<std::string> positions;
  Engine engine = Engine::library;
  bool elements = false;
  bool strict = false;
  bool stats = false;
};

/// Motion matrices of all elements.
nlohmann::json elementsJson(const zkin::KMachine& machine, const zkin::KMachineValueBase& v);

}  // namespace korvo::tools
