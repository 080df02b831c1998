#pragma once

#include <filesystem>
#include <string>

#include "toolkit/export/WholeFile.h"
#include "tools/path.h"

namespace korvo::tools {

/// The table of positions that `korvo path -o` writes: whole or not at all.
class PathTable {
 public:
  /// Throws Failure (refused) when no file can be written there.
  PathTable(const std::string& file, const PathInput& input, const AxisNames& names);

  void take(const PathPosition& position);

  /// Where it is until then.
  const std::filesystem::path& temporary() const { return file_.temporary(); }

  /// Puts it in its place.
  void commit();

 private:
  void flush();

  const PathInput& input_;
  std::size_t axes_;
  std::string out_;
  WholeFile file_;
};

}  // namespace korvo::tools
