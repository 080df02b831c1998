#pragma once

#include <nlohmann/json_fwd.hpp>
#include <vector>

#include "toolkit/Describe.h"
#include "toolkit/answer/Served.h"
#include "tools/Session.h"
#include "tools/ToolPoint.h"

namespace korvo::tools {

/// A point or direction as [x, y, z].
nlohmann::json vectorJson(const zgeo::UVec3d& v);

/// Rows of a matrix.
nlohmann::json matrixJson(const zgeo::UMatrix& m);

/// The answer of `korvo info` in schema "korvo.info/1"; `atZero` belongs to `info.tools`.
nlohmann::json infoJson(const Session& session, const MachineInfo& info,
                        const std::vector<ToolPoint>& atZero, const Served& served);

}  // namespace korvo::tools
