#pragma once

#include <span>
#include <string_view>

namespace korvo::tools {

/// A commented definition file to begin a machine of one's own with.
struct Start {
  std::string_view name;
  std::string_view summary;
  int version;  ///< Format version it is written in.
  std::string_view text;
};

std::span<const Start> starts();

}  // namespace korvo::tools
