#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "toolkit/export/Write.h"

namespace korvo::exporting {

/// Rows from above, three bytes (red, green, blue) a pixel.
struct Picture {
  PictureSize size;
  std::vector<std::uint8_t> bytes;
};

/// The picture that `writePng` writes.
Picture drawn(std::span<const Body> bodies, PictureSize size);

}  // namespace korvo::exporting
