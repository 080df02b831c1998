#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "platform/zgeo/UVec3d.h"
#include "tools/Session.h"

namespace korvo::tools {

/// The position that `text` names: "X=10,C=90" (axes without a name in it are 0) or all values in
/// order. Throws Failure (usage) that names `option`.
Position positionOf(const Session& session, const std::string& text, const std::string& option);

/// The three finite numbers of `text`. Throws Failure (usage) that asks for `wanted`.
zgeo::UVec3d vectorOf(const std::string& text, const std::string& wanted);

/// "X=10 C=90", exact.
std::string textOf(const Position& v);

/// The same with at most six decimals, for positions that were computed.
std::string roundedText(const Position& v);

/// "1  2  3", rounded for people.
std::string textOf(const zgeo::UVec3d& v);

/// [{"axis": name, "value": number}, ...].
nlohmann::json jsonOf(const Position& v);

}  // namespace korvo::tools
